#ifndef CASETABLE_SUGGESTING_SHAPE_H
#define CASETABLE_SUGGESTING_SHAPE_H

#include <cstddef>
#include <optional>
#include <set>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "casetable/suggesting/Census.h"

namespace casetable {

/// What stands at a place, in each path of a shape; without data where a path does not have it.
struct ShapeTexts {
    std::vector<std::string_view> all;
    std::unordered_set<std::string_view> distinct;

    void add(std::string_view text);
    bool isConstant() const { return distinct.size() == 1; }
};

/// A part of the names of a shape.
struct ShapeSlot {
    std::string_view separator;
    std::string_view key;
    Kinds kinds = 0;
    bool isOptional = false;
    ShapeTexts values;
};

struct ShapeComponent {
    /// If it is optional, there is one, with a key.
    std::vector<ShapeSlot> slots;
    bool isOptional = false;
    ShapeTexts texts;
};

/// What the paths of one class, or of several that were merged, have in common.
struct Shape {
    std::vector<ShapeComponent> components;
    std::set<std::string_view> endings;
    std::set<std::string_view> names; ///< Of files, with their endings.
    std::size_t paths;

    explicit Shape(const PathClass& members);
};

/// A shape of the paths of both, and how much vaguer it is.
struct MergedShape {
    Shape shape;
    double cost;
};

/// None where they are two kinds of files.
std::optional<MergedShape> mergeShapes(const Shape& shape, const Shape& other);

} // namespace casetable

#endif
