#ifndef CASETABLE_LISTING_FILELIST_H
#define CASETABLE_LISTING_FILELIST_H

#include <atomic>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include <boost/shared_ptr.hpp>

#include "casetable/listing/Selection.h"
#include "host/FileInfoInterface.h"

namespace casetable {

/// A list of files that someone else made, as a tree of folders in memory. Must outlive the
/// entries.
///
/// The list is text: paths relative to one folder, each ended by a separator, which may be missing
/// behind the last. Paths are bytes and taken as they stand: "./a" is the file "a" in the folder
/// ".". A path that occurs more than once is one file.
///
/// Give the text to append(), in pieces cut anywhere, then call finish(), then read the tree. Both
/// throw Failure with ExitCode::ImportFailed and one line that names the list, the path and the
/// number of its line where a path
/// - is empty, or one of its components is, or holds a NUL;
/// - is the only one, goes over several lines and is not ended by the NUL that is expected;
/// - is absolute, or has ".." among its components;
/// - names a folder by a "." at its end;
/// - lies below more folders than a walk can enter, or does not end within 16 MiB;
/// - takes for a folder what another takes for a file.
/// The last can only be told by finish(), which names the first line that contradicts one before.
class FileList {
public:
    /// `name` is what the user knows the list as. Paths are divided by line ends or by NULs.
    FileList(std::string name, bool nullSeparated);

    /// Which of the entries are listed. Set it before the tree is read.
    Selection selection;

    /// The number of files listed by entries so far; may be read from any thread at any time.
    std::atomic<std::size_t> filesSeen{0};

    void append(std::string_view text);
    void finish();

    const std::string& name() const { return name_; }

    /// The number of paths that append() has met the end of.
    std::size_t pathCount() const { return pathCount_; }

    /// What in a finished list its maker has probably not meant, a line for each: a byte order
    /// mark, a carriage return behind every path, quotes around paths. Paths keep them all the
    /// same.
    std::vector<std::string> warnings() const;

    /// The folder that all paths are relative to. It exists, and everything can be read. Its full
    /// path is the list's name, and those below it are paths as they stand in the list. A folder
    /// lists its entries in the byte order of the paths below them.
    boost::shared_ptr<FileInfoInterface const> root();

private:
    class ListedEntry;

    void check(std::string_view path, std::size_t number) const;
    void checkFolders() const;
    std::size_t numberOf(std::string_view path) const;
    [[noreturn]] void refuse(std::string_view path, std::size_t number,
                             const std::string& reason) const;

    const std::string name_;
    const char separator_;
    std::string text_;
    std::size_t pathBegin_ = 0; // Of the path that is not complete yet.
    std::size_t pathCount_ = 0;
    std::vector<std::string_view> paths_; // In byte order, each once, within the text.
};

} // namespace casetable

#endif
