#include "casetable/listing/Glob.h"

#include <cstddef>
#include <optional>
#include <stdexcept>

#include <fnmatch.h>

namespace casetable {

namespace {

const char* const anyComponents = "**";

// The components of `path`, without those that are ".".
std::vector<std::string> componentsOf(std::string_view path)
{
    std::vector<std::string> components;
    for (std::size_t begin = 0; begin <= path.size();) {
        const std::string_view component = path.substr(begin, path.find('/', begin) - begin);
        if (component != ".")
            components.emplace_back(component);
        begin += component.size() + 1;
    }
    return components;
}

void checkComponent(const std::string& component)
{
    if (component.empty())
        throw std::invalid_argument("a component is empty");
    const std::size_t behindOthers = component.find_last_not_of('\\') + 1;
    if ((component.size() - behindOthers) % 2 != 0)
        throw std::invalid_argument("nothing follows the backslash at the end of a component");
}

// The program sets no locale, so this compares bytes.
bool matchesComponent(const std::string& pattern, const std::string& component)
{
    return ::fnmatch(pattern.c_str(), component.c_str(), 0) == 0;
}

} // namespace

Glob::Glob(const std::string& text) : text_(text)
{
    std::string_view path = text;
    if (!path.empty() && path.back() == '/') {
        foldersOnly_ = true;
        path.remove_suffix(1);
    }
    needsPath_ = path.find('/') != std::string_view::npos;
    if (!path.empty() && path.front() == '/')
        path.remove_prefix(1);
    components_ = componentsOf(path);
    for (const std::string& component : components_)
        checkComponent(component);
    if (components_.empty())
        throw std::invalid_argument("it names no entry");
}

bool Glob::matches(std::string_view path, bool isFolder) const
{
    if (!isMatch(path, isFolder))
        return false;
    *matched_ = true;
    return true;
}

bool Glob::isMatch(std::string_view path, bool isFolder) const
{
    if (foldersOnly_ && !isFolder)
        return false;
    if (needsPath_)
        return matchesPath(componentsOf(path));
    const std::string name(path.substr(path.rfind('/') + 1));
    return name != "." && matchesComponent(components_.front(), name);
}

// Where a component does not match, the last "**" before it takes one component more. Any "**"
// before that need not: whatever it could take more, the last one can take instead.
bool Glob::matchesPath(const std::vector<std::string>& path) const
{
    if (path.empty())
        return false; // It is the root, which a list may also name ".".
    std::size_t pattern = 0;
    std::size_t component = 0;
    std::optional<std::size_t> behindAny;
    std::size_t takenByAny = 0;
    while (component < path.size()) {
        if (pattern < components_.size() && components_[pattern] == anyComponents) {
            behindAny = ++pattern;
            takenByAny = component;
        } else if (pattern < components_.size() &&
                   matchesComponent(components_[pattern], path[component])) {
            ++pattern;
            ++component;
        } else if (behindAny) {
            pattern = *behindAny;
            component = ++takenByAny;
        } else {
            return false;
        }
    }
    return pattern == components_.size();
}

} // namespace casetable
