#ifndef CASETABLE_SUGGESTING_CENSUS_H
#define CASETABLE_SUGGESTING_CENSUS_H

#include <cstddef>
#include <string_view>
#include <vector>

#include "casetable/suggesting/Shape.h"

namespace casetable {

/// At most `count` of the paths that a system can have, in byte order: the same ones in whatever
/// order they are given, and spread over all of them.
std::vector<std::string_view> samplePaths(const std::vector<std::string_view>& paths,
                                          std::size_t count);

/// Divides the paths, and gives a shape for those that have parts of the same kinds between the
/// same separators, the shape of the most paths first. A point in a number does not divide, nor
/// does what stands in a date, nor a "-" that is a sign; what is known of all paths decides.
std::vector<Shape> takeCensus(const std::vector<std::string_view>& paths);

/// Divides "wingA2c0.5" into "wing", "A", "2", "c", and "0.5". Nothing where there are other bytes.
std::vector<std::string_view> runsOf(std::string_view text);

/// Whether the byte is an ASCII letter.
bool isLetter(char byte);

} // namespace casetable

#endif
