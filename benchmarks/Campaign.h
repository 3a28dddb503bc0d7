#ifndef BENCHMARKS_CAMPAIGN_H
#define BENCHMARKS_CAMPAIGN_H

#include <cstddef>
#include <string>
#include <vector>

#include "crawler/AuxFileIdentifierValidator.h"
#include "crawler/MetadataPattern.h"

/// The campaign that every benchmark works on: ten files a case, five cases a folder of runs, names
/// and depths that differ from wing to wing. 200,000 files stand in about 24,000 folders and make
/// 20,000 cases under patterns().
namespace campaign {

/// The files a case has.
const std::size_t filesPerCase = 10;

/// The first `count` files of the campaign as relative paths, those of a folder together. The same
/// count gives the same paths everywhere.
std::vector<std::string> paths(std::size_t count);

/// Makes the first `count` files of the campaign, empty, below the new folder `root`. Throws
/// std::system_error.
void makeTree(const std::string& root, std::size_t count);

/// Four number markers that match every path: Mach, AoA, Re and run_.
std::vector<MetadataPattern> patterns();

/// A template that reads the same values, so that it makes the same cases.
extern const char* const pathTemplate;

/// Two identifiers: `*.vtu`, which selects four files of a case, and `*probe*.dat`, which selects
/// two.
std::vector<AuxFileIdentifier> identifiers();

} // namespace campaign

#endif
