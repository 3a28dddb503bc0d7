#ifndef CASETABLE_SUGGESTING_CENSUS_H
#define CASETABLE_SUGGESTING_CENSUS_H

#include <string_view>
#include <vector>

#include "casetable/suggesting/Shape.h"

namespace casetable {

/// Divides the paths, and gives a shape for those that have parts of the same kinds between the
/// same separators, the shape of the most paths first, and at most 300. A point in a number does
/// not divide, nor does what stands in a date, nor a "-" that is a sign; what is known of all paths
/// decides.
std::vector<Shape> takeCensus(const std::vector<std::string_view>& paths);

/// Divides "wingA2c0.5" into "wing", "A", "2", "c", and "0.5". Nothing where there are other bytes.
std::vector<std::string_view> runsOf(std::string_view text);

} // namespace casetable

#endif
