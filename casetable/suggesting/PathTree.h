#ifndef CASETABLE_SUGGESTING_PATHTREE_H
#define CASETABLE_SUGGESTING_PATHTREE_H

#include <cstddef>
#include <cstdint>
#include <list>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "casetable/suggesting/NameTokens.h"

namespace casetable {

/// The name of files or folders, however often it occurs.
struct Name {
    std::string_view text;
    std::vector<Token> tokens;
    std::size_t stem;    ///< The length without the extensions that it has as a file's name.
    std::uint32_t shape; ///< The same for names that differ in their numbers only.
};

/// More of the same kind tell nothing new about what they are like.
const std::size_t enoughToLookAt = 4096;

/// Whether to look at the thing of this number when only some of `count` are looked at: all of few,
/// and about enoughToLookAt of many. Neighbours are alike, and so are things in a regular distance,
/// so nothing about a number but chance tells whether it is.
inline bool isLookedAt(std::uint64_t number, std::size_t count)
{
    number = (number ^ number >> 30) * 0xbf58476d1ce4e5b9U;
    number = (number ^ number >> 27) * 0x94d049bb133111ebU;
    return (number ^ number >> 31) % (count / enoughToLookAt + 1) == 0;
}

/// The folders and files of a list of relative paths. Refers to the list, which must outlive it and
/// stay as it is. Names, folders and files are numbered by the byte order of the paths, so that the
/// order of the list does not show.
class PathTree {
public:
    using Index = std::uint32_t;

    struct Folder {
        Index name;
        Index parent;        ///< The root's is the root.
        std::size_t nameAt;  ///< Where its name begins in the paths below it.
        Index firstFile = 0; ///< Its files, those of its folders included.
        Index lastFile = 0;  ///< One past its last file.
        std::vector<Index> folders;
        std::vector<Index> files;
    };

    struct File {
        std::string_view path;
        Index name;
        Index folder;
        std::size_t nameAt; ///< Where its name begins in the path.
    };

    static const Index root = 0;

    explicit PathTree(const std::list<std::string>& paths);

    const std::vector<Name>& names() const { return names_; }
    const std::vector<Folder>& folders() const { return folders_; }
    const std::vector<File>& files() const { return files_; } ///< Each path once.

    std::size_t fileCount(Index folder) const
    {
        return folders_[folder].lastFile - folders_[folder].firstFile;
    }

private:
    Index nameIndex(std::string_view text);
    void add(std::string_view path, std::vector<Index>& open);
    void divideNames();

    std::vector<Name> names_;
    std::unordered_map<std::string_view, Index> nameIndices_;
    std::vector<Folder> folders_;
    std::vector<File> files_;
};

} // namespace casetable

#endif
