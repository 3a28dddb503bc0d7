#ifndef CASETABLE_SUGGESTING_PATHTEMPLATES_H
#define CASETABLE_SUGGESTING_PATHTEMPLATES_H

#include <cstddef>
#include <string>
#include <vector>

#include "casetable/suggesting/PathTree.h"
#include "crawler/MetadataPattern.h"

namespace casetable {

/// A place in the names of like files or folders where a value may stand.
struct Slot {
    MetadataPattern::ValueType type;
    std::size_t firstToken;
    std::size_t beginInToken; ///< Where in its first token it begins.
    std::size_t endToken;     ///< One past the last token; `toTheEnd` for all that follows.
    /// The text that stands before it in all of these paths, as far back as the slot before, or
    /// into the folder above. Empty when there is none, as at the beginning of a path.
    std::string left;
    std::size_t leftInName; ///< How much of it belongs to the name of the slot.
    bool afterText;         ///< Whether a slot of text ends where that part begins.
    bool isPair;            ///< Whether it is the value of a key, as in `T=300`.

    static constexpr std::size_t toTheEnd = static_cast<std::size_t>(-1);
};

/// Folders that are alike, and so are the folders that they stand in.
struct FolderClass {
    std::size_t parent; ///< The root's is the root.
    std::vector<PathTree::Index> folders;
    std::vector<Slot> slots; ///< In the names of these folders.
    std::string tail;        ///< What all their names end with behind the last slot.
};

/// Files that are alike, in folders of one class.
struct FileClass {
    std::size_t folders;
    std::vector<PathTree::Index> files;
    std::vector<Slot> slots; ///< In the names of these files.
};

/// All paths, sorted into classes.
struct PathTemplates {
    std::vector<FolderClass> folders; ///< The root first, and a class behind its parent.
    std::vector<FileClass> files;
};

/// Finds out which paths of `tree` are alike. The text in file names, which mostly tells what is in
/// a file, makes slots only if `textInFileNames` is set, or where keys and values are joined by
/// "=", or several by "-". Where very many names stand at one place, only some of them are looked
/// at.
PathTemplates pathTemplates(const PathTree& tree, bool textInFileNames);

/// The bytes of a name that a slot stands for; `stem` is the name's length without extensions. A
/// name may be empty, as between two slashes.
inline std::string_view valueOf(const Slot& slot, const Name& name, std::size_t stem)
{
    if (name.text.empty())
        return name.text;
    const std::size_t begin = name.tokens[slot.firstToken].begin + slot.beginInToken;
    const std::size_t end =
        slot.endToken == Slot::toTheEnd ? stem : name.tokens[slot.endToken - 1].end;
    return name.text.substr(begin, end - begin);
}

} // namespace casetable

#endif
