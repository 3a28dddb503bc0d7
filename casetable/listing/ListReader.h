#ifndef CASETABLE_LISTING_LISTREADER_H
#define CASETABLE_LISTING_LISTREADER_H

#include <atomic>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "casetable/listing/PathLines.h"
#include "casetable/listing/Selection.h"

namespace casetable {

/// Reads a list of files that someone else made, as it comes in, and hands on the files.
///
/// The list is text: paths relative to one folder, each ended by a separator, which may be missing
/// behind the last. Paths are bytes and taken as they stand: "./a" is the file "a" in the folder
/// ".". A path that occurs more than once is one file.
///
/// Give the text to append(), in pieces cut anywhere, then call finish(). Both throw Failure with
/// ExitCode::ImportFailed and one line that names the list, the path and the number of its line
/// where a path
/// - is empty, has an empty component, or holds a NUL;
/// - is absolute, or has ".." among its components;
/// - names a folder, as it ends in "/" or in a component ".";
/// - lies below more folders than a walk can enter, or is longer than 16 MiB;
/// - is a file here, while another path has it for a folder.
/// Only finish() tells the last, and names the first line that contradicts an earlier one. It also
/// refuses lines where paths that end in NULs are expected, and there is no NUL at all. Files that
/// stand in front of what is refused have been handed on before.
///
/// Takes no memory for the files while they come in byte order. From the first that does not, it
/// takes that of PathLines, for each path and each folder.
class ListReader {
public:
    /// Gives the text that was appended so far once more, in pieces.
    using Reread = std::function<void(const std::function<void(std::string_view piece)>& take)>;

    /// How paths are found that occur twice, or that are a file and another's folder.
    enum class Order {
        Any,     ///< In any order of the paths.
        Bytes,   ///< By their order: a path that is not in byte order is refused.
        Trusted, ///< Not at all: they are taken not to occur.
    };

    struct Options {
        /// What messages call the list.
        std::string name;
        /// Paths end in NULs or, otherwise, in line feeds.
        bool nullSeparated = false;
        /// Which files are handed on. Folders are judged as those of a tree would be.
        Selection selection;
        /// Called when paths turn out not to be in byte order. Without it, paths are remembered
        /// from the first on, in order or not.
        Reread reread;
        Order order = Order::Any;
        /// Whether the text is the whole list, or its beginning. What follows is read to be told
        /// of.
        bool isBeginning = true;
        /// In byte order, the path of the list in front of the text; empty if there is none.
        std::string before = {};
    };

    /// What the reader of one part of a list in byte order cannot know of those in front of it, or
    /// behind: whether a file there is a folder here.
    struct Edges {
        /// The folders of files here that no path here, nor the one in front, shows to be none.
        std::vector<std::string> folders;
        std::vector<std::string> files; ///< Those that the last path begins with, itself included.
        std::string last;               ///< The last path; empty if there is none.
    };

    /// What the maker of a list has probably not meant.
    struct Oddities {
        bool hasByteOrderMark = false;
        bool allEndInReturn = true; ///< All paths.
        bool anyQuoted = false;
    };

    /// `take` gets each file once, in the order of the lines; what it throws comes out of append()
    /// and finish().
    ListReader(Options options, std::function<void(std::string_view path)> take);

    /// Takes the next piece of the text.
    void append(std::string_view text);

    /// Takes the text as complete.
    void finish();

    const std::string& name() const { return options_.name; }

    /// The number of paths, equal ones included, that are complete so far; may be read from any
    /// thread at any time.
    std::size_t pathCount() const { return pathCount_; }

    /// What in a finished list its maker has probably not meant, a warning of one line for each: a
    /// byte order mark, a carriage return behind every path, quotes around paths. The paths keep
    /// them nevertheless.
    std::vector<std::string> warnings() const { return warnings(options_, oddities(), pathCount_); }

    /// The same for a list of `pathCount` paths, which was read in parts by several.
    static std::vector<std::string> warnings(const Options& options, const Oddities& oddities,
                                             std::size_t pathCount);

    /// Of the paths that were read.
    Oddities oddities() const;

    /// Of a finished part that is in byte order.
    Edges edges() const;

private:
    // A file whose path all paths since then begin with.
    struct Beginning {
        std::size_t length;
        std::size_t line;
    };

    // A folder on the way to a path.
    struct Level {
        std::size_t end; // Of its path.
        std::size_t depth;
        bool isTaken;
    };

    // A line that contradicts an earlier one.
    struct Contradiction {
        std::string path;
        std::size_t line;
        std::size_t earlierLine;
        std::string file; // The path of the earlier line, if it is the file; otherwise empty.
    };

    void take(std::string_view path);
    bool isNew(std::string_view path, std::size_t common);
    void keepInOrder(std::string_view path, std::size_t common);
    bool isNewInOrder(std::string_view path, std::size_t common);
    bool isNewInLines(std::string_view path, std::size_t common, std::size_t line);
    void rememberLines();
    void expect(std::string_view piece) const;
    bool isSelected(std::string_view path, std::size_t common);
    void check(std::string_view path, std::size_t shared, std::size_t number) const;
    std::string place(std::size_t number) const;
    [[noreturn]] void refuse(std::string_view path, std::size_t number,
                             const std::string& reason) const;

    const Options options_;
    const std::function<void(std::string_view path)> take_;
    const char separator_;
    const bool takesAll_;                   // As Selection has it.
    std::string beginning_;                 // The first bytes of the text.
    std::string rest_;                      // Of the path that is not complete yet.
    std::atomic<std::size_t> pathCount_{0}; // That are complete.

    std::string previous_;              // The path before.
    std::vector<Beginning> beginnings_; // Of the path before, while paths are in byte order.
    std::unique_ptr<PathLines> lines_;  // From when they are not.
    std::optional<Contradiction> contradiction_;

    std::size_t commonWithBefore_;       // Of all paths, with the one in front of the text.
    std::vector<std::string> undecided_; // As Edges::folders.

    std::vector<Level> levels_; // Of the path before, as far as they were judged.

    bool allEndInReturn_ = true;
    bool anyQuoted_ = false;
};

} // namespace casetable

#endif
