#include "casetable/listing/FilePath.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace casetable {

namespace {

using Word = std::uint64_t;

Word wordAt(std::string_view text, std::size_t begin)
{
    Word word = 0;
    std::memcpy(&word, text.data() + begin, sizeof word);
    return word;
}

// Where the component begins that has the byte behind the first `shared`. Those in front of it are
// shared whole.
std::size_t firstUnshared(std::string_view path, std::size_t shared)
{
    const std::size_t slash = path.substr(0, shared).rfind('/');
    return slash == std::string_view::npos ? 0 : slash + 1;
}

} // namespace

PathFault pathFault(std::string_view path, std::size_t shared)
{
    if (path.empty())
        return PathFault::Empty;
    if (path.front() == '/')
        return PathFault::Absolute;
    if (path.back() == '/')
        return PathFault::NamesFolder;
    std::string_view component;
    bool climbsOut = false;
    for (std::size_t begin = firstUnshared(path, shared); begin <= path.size();
         begin += component.size() + 1) {
        component = path.substr(begin, path.find('/', begin) - begin);
        if (component.empty())
            return PathFault::EmptyComponent;
        climbsOut = climbsOut || component == "..";
    }
    if (component == ".")
        return PathFault::NamesFolder;
    return climbsOut ? PathFault::ClimbsOut : PathFault::None;
}

std::size_t commonLength(std::string_view left, std::string_view right)
{
    const std::size_t most = std::min(left.size(), right.size());
    std::size_t length = 0;
    // Paths of a list mostly share much with the one in front, so most words are equal.
    while (length + sizeof(Word) <= most && wordAt(left, length) == wordAt(right, length))
        length += sizeof(Word);
    while (length < most && left[length] == right[length])
        ++length;
    return length;
}

} // namespace casetable
