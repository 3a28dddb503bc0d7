#include "casetable/listing/FilePath.h"

#include <cstddef>

namespace casetable {

PathFault pathFault(std::string_view path)
{
    if (path.empty())
        return PathFault::Empty;
    if (path.front() == '/')
        return PathFault::Absolute;
    if (path.back() == '/')
        return PathFault::NamesFolder;
    std::string_view component;
    bool climbsOut = false;
    for (std::size_t begin = 0; begin <= path.size(); begin += component.size() + 1) {
        component = path.substr(begin, path.find('/', begin) - begin);
        if (component.empty())
            return PathFault::EmptyComponent;
        climbsOut = climbsOut || component == "..";
    }
    if (component == ".")
        return PathFault::NamesFolder;
    return climbsOut ? PathFault::ClimbsOut : PathFault::None;
}

} // namespace casetable
