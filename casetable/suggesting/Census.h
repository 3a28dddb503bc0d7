#ifndef CASETABLE_SUGGESTING_CENSUS_H
#define CASETABLE_SUGGESTING_CENSUS_H

#include <cstddef>
#include <string_view>
#include <vector>

#include "casetable/suggesting/NameParts.h"

namespace casetable {

/// A path, divided. All are pieces of the path.
struct DividedPath {
    /// The last without its ending, unless it is a listed name.
    std::vector<std::string_view> components;
    std::string_view ending;
    /// Of each component.
    std::vector<std::vector<NamePart>> parts;
};

/// Paths whose parts are of the same kinds between the same separators.
using PathClass = std::vector<DividedPath>;

/// At most `count` of the paths, in byte order: the same ones in whatever order they are given, and
/// spread over all of them.
std::vector<std::string_view> samplePaths(const std::vector<std::string_view>& paths,
                                          std::size_t count);

/// The classes of the paths, the largest first. What is known of all paths decides how each is
/// divided.
std::vector<PathClass> takeCensus(const std::vector<std::string_view>& paths);

} // namespace casetable

#endif
