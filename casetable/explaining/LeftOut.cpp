#include "casetable/explaining/LeftOut.h"

#include <algorithm>
#include <cstddef>

#include "casetable/listing/FilePath.h"

namespace casetable {

namespace {

std::string whyNoFile(const std::string& path)
{
    switch (pathFault(path)) {
    case PathFault::Empty:
        return "the path is empty";
    case PathFault::Absolute:
        return "the path is absolute; name it as it stands below ROOT";
    case PathFault::EmptyComponent:
        return "a component of the path is empty";
    case PathFault::NamesFolder:
        return std::string("a path that ends in ") + path.back() + " names a folder";
    case PathFault::ClimbsOut:
        return "the path climbs out by \"..\"";
    case PathFault::None:
        break;
    }
    return "";
}

} // namespace

std::string whyLeftOut(const Selection& selection, const std::string& path)
{
    std::string fault = whyNoFile(path);
    if (!fault.empty())
        return fault;
    std::string entry; // The path so far, as an import meets it.
    std::size_t depth = 0;
    for (std::size_t begin = 0, end = 0; end < path.size(); begin = end + 1) {
        end = std::min(path.find('/', begin), path.size());
        const std::string name = path.substr(begin, end - begin);
        if (name == ".")
            continue;
        entry += (entry.empty() ? "" : "/") + name;
        const bool isFolder = end < path.size();
        switch (selection.judge(entry, ++depth, isFolder)) {
        case Selection::Verdict::Hidden:
            return name + " is hidden; --hidden takes it";
        case Selection::Verdict::LeftOut:
            return (isFolder && depth >= selection.maxDepth ? "--max-depth" : "--exclude") +
                   (" leaves " + name) + " out";
        case Selection::Verdict::Taken:
            break;
        }
    }
    return "";
}

} // namespace casetable
