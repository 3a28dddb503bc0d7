#include "casetable/listing/Selection.h"

#include <algorithm>

namespace casetable {

bool Selection::needsPaths() const
{
    return std::any_of(excluded.begin(), excluded.end(),
                       [](const Glob& glob) { return glob.needsPath(); });
}

bool Selection::takesAll() const
{
    return excluded.empty() && hidden && maxDepth == std::numeric_limits<std::size_t>::max();
}

Selection::Verdict Selection::judge(std::string_view path, std::size_t depth, bool isFolder) const
{
    if (isFolder && depth >= maxDepth)
        return Verdict::LeftOut;
    const auto matches = [&](const Glob& glob) { return glob.matches(path, isFolder); };
    if (std::any_of(excluded.begin(), excluded.end(), matches))
        return Verdict::LeftOut;
    const bool isHidden = path[path.rfind('/') + 1] == '.';
    return isHidden && !hidden ? Verdict::Hidden : Verdict::Taken;
}

} // namespace casetable
