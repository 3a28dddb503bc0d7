#ifndef CASETABLE_SUGGESTING_MARKERFINDER_H
#define CASETABLE_SUGGESTING_MARKERFINDER_H

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "crawler/MetadataPattern.h"

namespace casetable {

/// A value that paths share, by what stands before it in all of them.
struct ValuePlace {
    MetadataPattern::ValueType type;
    std::size_t constant; ///< The bytes right before it in which no other value may stand.
    /// The bytes between it and a text, which must not be read with the text.
    std::optional<std::size_t> behindText;
};

/// A path, and where the values begin and end in it, in the order of the places.
struct Trial {
    std::string_view path;
    std::vector<std::size_t> begins;
    std::vector<std::size_t> ends;
    std::vector<bool> exact; ///< Whether the value must end there and not later.

    std::string_view value(std::size_t k) const
    {
        return path.substr(begins[k], ends[k] - begins[k]);
    }
};

/// Finds the markers for places of values by trying them on paths. Whether a marker is found where
/// it should depends on the one before, so all are chosen together.
class MarkerFinder {
public:
    /// There must be a place and a trial at least.
    MarkerFinder(std::vector<ValuePlace> places, std::vector<Trial> trials);

    /// Gives each place a marker, in their order. Otherwise answers the place that must be given up
    /// first, and the patterns mean nothing.
    std::optional<std::size_t> find(std::vector<MetadataPattern>& patterns) const;

private:
    // A marker for a place, with the best choice for the places before.
    struct Choice {
        std::string marker;
        std::size_t cost; // The paths in which something is not found, before the pleasantness.
        std::size_t before;
    };

    std::string_view commonLeft(std::size_t k) const;
    std::vector<std::string> markers(std::size_t k) const;
    std::size_t foundInPlace(std::size_t k, const std::string& marker,
                             std::size_t lengthBefore) const;
    std::size_t textsRead(std::size_t k, const std::string& marker, std::size_t lengthBehind) const;
    std::vector<std::size_t> readWell(const std::vector<MetadataPattern>& patterns) const;
    std::optional<std::size_t> addChoices(std::vector<std::vector<Choice>>& choices) const;

    std::vector<ValuePlace> places_;
    std::vector<Trial> trials_;
};

/// Where the last word of `left`, with the separators behind it, begins.
std::size_t lastWord(std::string_view left);

} // namespace casetable

#endif
