#ifndef CRAWLER_PRIVATE_UNIQUENAME_H
#define CRAWLER_PRIVATE_UNIQUENAME_H

#include <cstdint>
#include <string>

/// The name of a column that should be called `base`: the first of `base`, "base(2)", "base(3)" ...
/// for which `isTaken` answers false. It is asked about each in turn, as a const std::string&.
/// Neither installed nor exported.
template <class IsTaken> std::string uniqueName(const std::string& base, IsTaken isTaken)
{
    std::string candidate = base;
    for (std::uint64_t counter = 2; isTaken(candidate); ++counter)
        candidate = base + "(" + std::to_string(counter) + ")";
    return candidate;
}

#endif
