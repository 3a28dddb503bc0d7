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

/// A list of files that someone else made, as a tree of folders in memory. Must outlive the entries
/// of the tree, which are read by one thread at a time.
///
/// The list is text: paths relative to one folder, each ended by a separator, which may be missing
/// behind the last. Paths are bytes and taken as they stand: "./a" is the file "a" in the folder
/// ".". A path that occurs more than once is one file.
///
/// Give the text to append(), in pieces cut anywhere, then call finish(), then read the tree. Both
/// throw Failure with ExitCode::ImportFailed and one line that names the list, the path and the
/// number of its line where a path
/// - is empty, has an empty component, or holds a NUL;
/// - is absolute, or has ".." among its components;
/// - names a folder, as it ends in "/" or in a component ".";
/// - lies below more folders than a walk can enter, or is longer than 16 MiB;
/// - is a file here, while another path has it for a folder.
/// Only finish() can tell the last, and names the first line that contradicts an earlier one. It
/// also refuses lines where paths that end in NULs are expected, and there is no NUL at all.
class FileList {
public:
    /// `name` is what messages call the list. Paths end in NULs or, otherwise, in line feeds.
    FileList(std::string name, bool nullSeparated);

    /// Which entries of the tree are listed. Set it before the tree is read.
    Selection selection;

    /// The number of files listed by entries so far; may be read from any thread at any time.
    std::atomic<std::size_t> filesSeen{0};

    /// Takes the next piece of the text.
    void append(std::string_view text);

    /// Takes the text as complete, and makes the tree.
    void finish();

    const std::string& name() const { return name_; }

    /// The number of paths, equal ones included, that are complete so far.
    std::size_t pathCount() const { return pathCount_; }

    /// What in a finished list its maker has probably not meant, a warning of one line for each: a
    /// byte order mark, a carriage return behind every path, quotes around paths. The paths keep
    /// them nevertheless.
    std::vector<std::string> warnings() const;

    /// The root of the tree: the folder that all paths are relative to. Every entry exists and is
    /// readable. The full path of the root is the list's name, and that of any other entry is its
    /// path in the list. A folder lists its entries in such an order that a walk meets the files in
    /// byte order of path.
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
