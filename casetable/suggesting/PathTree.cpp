#include "casetable/suggesting/PathTree.h"

#include <algorithm>

namespace casetable {

PathTree::PathTree(const std::list<std::string>& paths)
{
    std::vector<std::string_view> sorted(paths.begin(), paths.end());
    if (!std::is_sorted(sorted.begin(), sorted.end()))
        std::sort(sorted.begin(), sorted.end());
    sorted.erase(std::unique(sorted.begin(), sorted.end()), sorted.end());

    files_.reserve(sorted.size());
    folders_.push_back(Folder{nameIndex(""), root, 0, 0, 0, {}, {}});
    std::vector<Index> open = {root}; // The folders that lead to the last path.
    for (const std::string_view path : sorted)
        add(path, open);
    for (const Index folder : open)
        folders_[folder].lastFile = static_cast<Index>(files_.size());
    divideNames();
}

PathTree::Index PathTree::nameIndex(std::string_view text)
{
    const auto entry = nameIndices_.emplace(text, static_cast<Index>(names_.size()));
    if (entry.second)
        names_.push_back(Name{text, {}, text.size(), 0});
    return entry.first->second;
}

// In byte order all paths below a folder stand together.
void PathTree::add(std::string_view path, std::vector<Index>& open)
{
    const auto file = static_cast<Index>(files_.size());
    std::size_t begin = 0;
    std::size_t level = 1;
    for (std::size_t slash; (slash = path.find('/', begin)) != std::string_view::npos;
         begin = slash + 1, ++level) {
        const std::string_view text = path.substr(begin, slash - begin);
        if (level < open.size() && names_[folders_[open[level]].name].text == text)
            continue;
        for (; open.size() > level; open.pop_back())
            folders_[open.back()].lastFile = file;
        const auto folder = static_cast<Index>(folders_.size());
        folders_.push_back(Folder{nameIndex(text), open.back(), begin, file, file, {}, {}});
        folders_[open.back()].folders.push_back(folder);
        open.push_back(folder);
    }
    for (; open.size() > level; open.pop_back())
        folders_[open.back()].lastFile = file;
    folders_[open.back()].files.push_back(file);
    files_.push_back(File{path, nameIndex(path.substr(begin)), open.back(), begin});
}

void PathTree::divideNames()
{
    Signs signs;
    for (std::size_t n = 0; n < names_.size(); ++n) {
        if (isLookedAt(n, names_.size()))
            signs.look(names_[n].text);
    }
    std::unordered_map<std::string, std::uint32_t> shapes;
    for (Name& name : names_) {
        name.tokens = tokensOf(name.text, signs);
        name.stem = beginOfExtensions(name.text, name.tokens);
        std::string shape;
        for (const Token& token : name.tokens) {
            if (token.kind == Token::Kind::Number || token.kind == Token::Kind::Numbers)
                shape += '\0';
            else
                shape += token.in(name.text);
        }
        name.shape = shapes.emplace(shape, static_cast<std::uint32_t>(shapes.size())).first->second;
    }
}

} // namespace casetable
