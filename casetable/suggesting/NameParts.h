#ifndef CASETABLE_SUGGESTING_NAMEPARTS_H
#define CASETABLE_SUGGESTING_NAMEPARTS_H

#include <cstddef>
#include <cstdint>
#include <set>
#include <string_view>
#include <utility>
#include <vector>

#include "casetable/templates/Matcher.h"

namespace casetable {

/// What the bytes of a part are; the kinds of several parts are or-ed.
using Kinds = std::uint64_t;
const Kinds numberKind = 1;   ///< "007", "0.85", "1e-3"
const Kinds letterKind = 2;   ///< "rest"
const Kinds mixedKind = 4;    ///< letters and numbers in turn: "run12", "r2c3"
const Kinds otherKind = 8;    ///< other bytes too: "(1)", "1.2.3"
const Kinds fixedKind = 16;   ///< "2024-05-01", "123000" behind a date, or a UUID
const Kinds emptyKind = 32;   ///< behind the "_" of "x_"
const Kinds freeKind = 64;    ///< any number of parts
const Kinds listedKind = 128; ///< a file of which each run has one: "forces.dat"
/// The first component of the path again; for the others, the next bits.
const Kinds againKind = 256;
const std::size_t maxAgain = 48; ///< Components that may come again, from the first.

/// A part of a component. All are pieces of the component.
struct NamePart {
    std::string_view separator; ///< in front of it
    std::string_view key;       ///< "sub-" of "sub-01", else empty
    std::string_view text;      ///< "01"
    Kinds kind;
};

using Words = std::set<std::string_view>;

/// Divides names of files and folders.
class NameReader {
public:
    /// Words of letters. A "-" between a signed word and a number is a sign: "AoA" of "AoA-2.5".
    /// Keys are bound to what stands behind their "-"; before a "=", any word is.
    NameReader(const Words& signedWords, const Words& keys);

    /// Divides at "_", "-", "=", ",", ".", "@", "+" and blanks, but not at the point in a number,
    /// in a date, or at a sign. One part at least; with their separators, they are all of the name.
    /// Texts of `again`, components by their places, are one part each.
    std::vector<NamePart>
    divide(std::string_view name,
           const std::vector<std::pair<std::size_t, std::string_view>>& again);

private:
    Matcher matcher_;
};

/// Divides "wingA2c0.5" into "wing", "A", "2", "c", and "0.5". Nothing where there are other bytes.
std::vector<std::string_view> runsOf(std::string_view text);

/// The ending of a file name with its point, ".csv", ".fastq.gz"; may be empty.
std::string_view endingOf(std::string_view name);

bool isDigit(char byte);
bool isLetter(char byte);
bool isSeparator(char byte);

} // namespace casetable

#endif
