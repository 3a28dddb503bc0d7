#ifndef CASETABLE_LISTING_PIECES_H
#define CASETABLE_LISTING_PIECES_H

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <boost/shared_ptr.hpp>

#include "casetable/listing/ListReader.h"
#include "casetable/listing/Source.h"
#include "host/FileInfoInterface.h"

namespace casetable {

/// What came of listing a piece, besides its files.
struct PieceReport {
    std::vector<std::string> warnings; ///< In the order of the walk.
    std::size_t hiddenLeftOut = 0;     ///< As FileSystem counts them.
    std::size_t pathCount = 0;         ///< Of a list: the paths, equal ones included.
    ListReader::Oddities oddities;     ///< Of a list.
    ListReader::Edges edges;           ///< Of a list in byte order.
};

/// What was looked at to divide a source, so that others can tell whether they see the same.
struct Sight {
    std::string path;   ///< Of a folder, or of the list, as users know it.
    std::uint64_t hash; ///< Of what was seen there.
};

/// The files of a source, divided into pieces, of which several processes list some each. What they
/// list together is what a Listing lists: each file is in one piece, and the pieces follow each
/// other in the order of the walk or of the lines.
///
/// Whoever divides the same source for the same number of pieces gets the same pieces. Used by one
/// thread at a time, where nothing else is said.
class Pieces {
public:
    virtual ~Pieces() = default;
    Pieces(const Pieces&) = delete;
    Pieces& operator=(const Pieces&) = delete;

    /// How many there are, at least one.
    virtual std::size_t count() const = 0;

    /// All that was looked at to find the pieces, in an order that they give.
    virtual const std::vector<Sight>& sights() const = 0;

    /// Hands each file of a piece to `file`, on the calling thread, and puts into `report` what
    /// came of it, as far as it came. Each piece is listed once, and after those in front of it
    /// that are listed here.
    ///
    /// Throws Failure with ExitCode::ImportFailed, the path and the reason when a folder or the
    /// list cannot be read, or the part of the list is refused; Interrupted when a signal has come
    /// in; and what `file` throws.
    virtual void list(std::size_t piece, const std::function<void(std::string_view path)>& file,
                      PieceReport& report) = 0;

    /// The root of the files, as Listing has it.
    virtual boost::shared_ptr<FileInfoInterface const> root() const = 0;

    /// The folders and the files that were met so far; may be asked from any thread at any time.
    std::size_t foldersSeen() const { return foldersSeen_; }
    std::size_t filesSeen() const { return filesSeen_; }

protected:
    Pieces() = default;

    std::atomic<std::size_t> foldersSeen_{0};
    std::atomic<std::size_t> filesSeen_{0};
};

/// Divides the folder into about `wanted` pieces; into fewer where it has not so many folders.
/// Looks at the top levels for that, until there are as many subtrees. The files that lie directly
/// in one folder are in one piece with each other, or with the subtrees beside them. `source` must
/// outlive the pieces. `readsAhead` says whether threads may list folders before list() comes to
/// them. Throws Interrupted.
std::unique_ptr<Pieces> divideTree(const Source& source, std::size_t wanted, bool readsAhead);

/// Divides the list, which must be a regular file, into ranges of bytes that end at line ends. It
/// must be in byte order, unless the source says that no path is in it twice.
///
/// What it shows of the list is its size, and 4 KiB at each cut: the whole of a list that has no
/// more for each piece.
///
/// Throws Failure with ExitCode::ImportFailed and the reason when the file cannot be read;
/// Interrupted.
std::unique_ptr<Pieces> divideList(const Source& source, std::size_t wanted);

/// What is known of a list in byte order of which parts were read by several: whether a path in one
/// is a file, and in another a folder of files. The parts are told in their order.
class JoinedEdges {
public:
    /// Whether the next part agrees with all in front of it.
    bool join(const ListReader::Edges& next);

private:
    std::vector<std::string> files_; // Those that the last path so far begins with.
};

/// Reads the whole list by itself, only to throw the Failure with which it is refused; returns
/// where it is not. Throws Interrupted.
void refuseList(const Source& source);

/// What the maker of a list has probably not meant, a warning for each, where the parts of the list
/// were read by several.
std::vector<std::string> listWarnings(const Source& source, const ListReader::Oddities& oddities,
                                      std::size_t pathCount);

} // namespace casetable

#endif
