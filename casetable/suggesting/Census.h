#ifndef CASETABLE_SUGGESTING_CENSUS_H
#define CASETABLE_SUGGESTING_CENSUS_H

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace casetable {

/// What the bytes of a part are; the kinds of several parts are or-ed.
using Kinds = std::uint64_t;
const Kinds numberKind = 1; ///< "007", "0.85", "1e-3"
const Kinds letterKind = 2; ///< "rest"
const Kinds mixedKind = 4;  ///< letters and numbers in turn: "run12", "r2c3"
const Kinds otherKind = 8;  ///< other bytes too: "(1)"
const Kinds fixedKind = 16; ///< "2024-05-01", "123000" behind a date, or a UUID
const Kinds emptyKind = 32; ///< behind the "_" of "x_"
const Kinds freeKind = 64;  ///< any number of parts
/// The first component of the path again; for the others, the next bits.
const Kinds againKind = 128;
const std::size_t maxAgain = 48; ///< Components that may come again, from the first.

/// A part of a component. All are pieces of the component.
struct NamePart {
    std::string_view separator; ///< in front of it
    std::string_view key;       ///< "sub-" of "sub-01", else empty
    std::string_view text;      ///< "01"
    Kinds kind;
};

/// A path, divided. All are pieces of the path.
struct DividedPath {
    std::vector<std::string_view> components; ///< The last without its ending.
    std::string_view ending; ///< With its point: ".csv", ".fastq.gz"; may be empty.
    /// Of each component: one at least; with their separators they are all of it. A point in a
    /// number does not divide, nor does what stands in a date, nor a "-" that is a sign.
    std::vector<std::vector<NamePart>> parts;
};

/// Paths whose parts are of the same kinds between the same separators.
using PathClass = std::vector<DividedPath>;

/// At most `count` of the paths that a system can have, in byte order: the same ones in whatever
/// order they are given, and spread over all of them.
std::vector<std::string_view> samplePaths(const std::vector<std::string_view>& paths,
                                          std::size_t count);

/// The classes of the paths, the largest first. What is known of all paths decides how each is
/// divided.
std::vector<PathClass> takeCensus(const std::vector<std::string_view>& paths);

/// Divides "wingA2c0.5" into "wing", "A", "2", "c", and "0.5". Nothing where there are other bytes.
std::vector<std::string_view> runsOf(std::string_view text);

bool isDigit(char byte);
bool isLetter(char byte);

} // namespace casetable

#endif
