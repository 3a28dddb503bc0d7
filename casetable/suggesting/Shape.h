#ifndef CASETABLE_SUGGESTING_SHAPE_H
#define CASETABLE_SUGGESTING_SHAPE_H

#include <cstddef>
#include <string_view>
#include <unordered_set>
#include <vector>

namespace casetable {

/// What the bytes of a part are; the kinds of several parts are or-ed.
using Kinds = unsigned;
const Kinds numberKind = 1;   ///< "007", "0.85", "1e-3"
const Kinds letterKind = 2;   ///< "rest"
const Kinds mixedKind = 4;    ///< letters and numbers in turn: "run12", "r2c3"
const Kinds otherKind = 8;    ///< other bytes too: "(1)"
const Kinds fixedKind = 16;   ///< "2024-05-01", "123000" behind a date, or a UUID
const Kinds emptyKind = 32;   ///< behind the "_" of "x_"
const Kinds againKind = 64;   ///< the name of a folder further ahead
const Kinds freeKind = 128;   ///< any number of parts
const Kinds endingKind = 256; ///< ".csv", ".fastq.gz"; with emptyKind, none

/// What stands at a place, in each path of a shape; without data where a path does not have it.
struct ShapeTexts {
    std::vector<std::string_view> all;
    std::unordered_set<std::string_view> distinct;

    void add(std::string_view text);
    bool isConstant() const { return distinct.size() == 1; }
};

/// A part of the paths of a shape.
struct ShapeSlot {
    std::string_view separator; ///< In front of it. There is a "/" in it where a component begins.
    std::string_view key;       ///< "sub-" of "sub-01", else empty.
    Kinds kinds = 0;
    bool isOptional = false;
    ShapeTexts values;
    std::size_t names = 0; ///< How many different names the component has in which it is.
};

/// What paths have in common that are alike. The last slot is the ending.
struct Shape {
    std::vector<ShapeSlot> slots;

    std::size_t paths() const { return slots.front().values.all.size(); }

    /// Whether a component begins with the slot at `index`.
    bool opens(std::size_t index) const;

    /// Behind the last slot of the component in which the slot at `index` is.
    std::size_t endOfComponent(std::size_t index) const;

    /// What stands in each path from the slot at `begin` to that before `end`.
    ShapeTexts stretch(std::size_t begin, std::size_t end) const;

    /// To be called when all slots have their values.
    void countNames();
};

/// Merges each shape with the one before it that this makes least vague, as far as they are of one
/// kind of files; the shape of the most paths first.
std::vector<Shape> mergeShapes(const std::vector<Shape>& shapes);

} // namespace casetable

#endif
