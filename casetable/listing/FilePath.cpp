#include "casetable/listing/FilePath.h"

#include <algorithm>
#include <cstddef>

namespace casetable {

namespace {

// Whether one of the components is `component`.
bool hasComponent(std::string_view path, std::string_view component)
{
    for (std::size_t begin = 0; begin <= path.size();) {
        const std::size_t end = std::min(path.find('/', begin), path.size());
        if (path.substr(begin, end - begin) == component)
            return true;
        begin = end + 1;
    }
    return false;
}

} // namespace

PathFault pathFault(std::string_view path)
{
    if (path.empty())
        return PathFault::Empty;
    if (path.front() == '/')
        return PathFault::Absolute;
    if (path.back() == '/')
        return PathFault::NamesFolder;
    if (hasComponent(path, ""))
        return PathFault::EmptyComponent;
    if (path.substr(path.rfind('/') + 1) == ".")
        return PathFault::NamesFolder;
    return hasComponent(path, "..") ? PathFault::ClimbsOut : PathFault::None;
}

} // namespace casetable
