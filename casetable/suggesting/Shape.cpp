#include "casetable/suggesting/Shape.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace casetable {

namespace {

// Costs say how much vaguer a template gets. They are weighed against the places that agree.
const std::size_t maxShapes = 64;
const double never = std::numeric_limits<double>::infinity();

bool isFree(const ShapeSlot& slot)
{
    return (slot.kinds & freeKind) != 0;
}

bool isCode(const ShapeSlot& slot)
{
    return !slot.key.empty() || (slot.kinds & ~(numberKind | fixedKind | endingKind)) == 0;
}

// Both are values of one column.
double costOfMatch(const ShapeSlot& a, const ShapeSlot& b)
{
    const Kinds differences = a.kinds ^ b.kinds;
    if (a.key != b.key || (differences & (emptyKind | endingKind)) != 0)
        return never;
    if (isCode(a) && isCode(b))
        return 0;
    if (isFree(a) || isFree(b))
        return isCode(a) || isCode(b) ? 0.2 : 0.02;
    const bool haveCommon =
        std::any_of(b.values.distinct.begin(), b.values.distinct.end(),
                    [&](std::string_view text) { return a.values.distinct.count(text) > 0; });
    return haveCommon ? 0.02 : (differences & b.kinds) == 0 ? 0.06 : 0.6;
}

// Whether the slot may be missing in some paths. Without a key it must have been seen in several
// names, else it is only a part of them: "-b16" of "vit-b16".
bool isOwn(const ShapeSlot& slot)
{
    const std::size_t least =
        slot.values.isConstant() ? 2 : 3 * (isCode(slot) ? 1 : slot.values.distinct.size());
    return slot.isOptional || !slot.key.empty() || (!isFree(slot) && slot.names >= least);
}

// The slot at `index` gets optional. If it would stand beside a free one of the other shape, before
// or behind `place`, it is taken up.
double costOfGap(const Shape& shape, std::size_t index, const Shape& other, std::size_t place)
{
    const ShapeSlot& slot = shape.slots[index];
    const bool isTakenUp = (place > 0 && isFree(other.slots[place - 1]) && !shape.opens(index)) ||
                           (place < other.slots.size() && isFree(other.slots[place]) &&
                            other.opens(place) == shape.opens(index));
    if (slot.isOptional)
        return 0;
    if (!slot.key.empty())
        return 0.3;
    if (isTakenUp)
        return isCode(slot) ? 0.1 : 0.02;
    return !isOwn(slot) ? 0.9 : isCode(slot) ? 0.5 : 0.7;
}

// Of folders, only one that is but a key and a value may be missing.
bool mayMiss(const Shape& shape, std::size_t index)
{
    return index + 1 < shape.slots.size() &&
           (!shape.opens(index) ||
            (index > 0 && !shape.slots[index].key.empty() && shape.opens(index + 1)));
}

// The slots of two shapes side by side. Either may be missing.
struct Alignment {
    double cost;
    double matches; // Places that agree. Constant text and free columns count half.
    std::vector<std::pair<const ShapeSlot*, const ShapeSlot*>> slots;
};

// The cheapest alignment, which comes of a table of what is left of both shapes.
Alignment align(const Shape& shapeA, const Shape& shapeB)
{
    struct Step {
        double cost = never;
        double matches = 0;
        std::size_t takenA = 0;
        std::size_t takenB = 0;
    };
    const std::vector<ShapeSlot>& a = shapeA.slots;
    const std::vector<ShapeSlot>& b = shapeB.slots;
    std::vector<Step> table((a.size() + 1) * (b.size() + 1));
    const auto at = [&](std::size_t i, std::size_t j) -> Step& {
        return table[i * (b.size() + 1) + j];
    };
    at(a.size(), b.size()).cost = 0;
    for (std::size_t i = a.size() + 1; i-- > 0;)
        for (std::size_t j = b.size() + 1; j-- > 0;) {
            const auto offer = [&](double cost, double matches, std::size_t takenA,
                                   std::size_t takenB) {
                const Step& next = at(i + takenA, j + takenB);
                if (cost + next.cost < at(i, j).cost)
                    at(i, j) = {cost + next.cost, matches + next.matches, takenA, takenB};
            };
            if (mayMiss(shapeA, i))
                offer(costOfGap(shapeA, i, shapeB, j), 0, 1, 0);
            if (mayMiss(shapeB, j))
                offer(costOfGap(shapeB, j, shapeA, i), 0, 0, 1);
            if (i == a.size() || j == b.size() || (i == 0) != (j == 0) ||
                a[i].separator != b[j].separator)
                continue;
            const bool isText =
                a[i].values.isConstant() && a[i].values.distinct == b[j].values.distinct;
            const bool isHalf = isText || isFree(a[i]) || isFree(b[j]);
            const bool isEnding = i + 1 == a.size();
            offer(costOfMatch(a[i], b[j]), isEnding ? 0 : isHalf ? 0.5 : 1, 1, 1);
            const std::size_t endA = shapeA.endOfComponent(i);
            const std::size_t endB = shapeB.endOfComponent(j);
            // The first part of a name that one of them lacks.
            if (shapeA.opens(i) && i + 1 < endA)
                offer(costOfGap(shapeA, i, shapeB, j) + costOfMatch(a[i + 1], b[j]), 1, 2, 1);
            if (shapeB.opens(j) && j + 1 < endB)
                offer(costOfGap(shapeB, j, shapeA, i) + costOfMatch(a[i], b[j + 1]), 1, 1, 2);
            // One name of a folder is as good as another.
            if (shapeA.opens(i) && endA < a.size() && endB < b.size() &&
                (a[i].names == 1 || b[j].names == 1))
                at(i, j).cost = std::min(at(i, j).cost, at(endA, endB).cost + 0.36);
        }
    Alignment alignment{at(0, 0).cost, at(0, 0).matches, {}};
    for (std::size_t i = 0, j = 0; at(i, j).takenA + at(i, j).takenB > 0;) {
        const Step& step = at(i, j);
        if (step.takenA != step.takenB)
            alignment.slots.emplace_back(step.takenA > step.takenB ? &a[i] : nullptr,
                                         step.takenB > step.takenA ? &b[j] : nullptr);
        i += step.takenA;
        j += step.takenB;
        if (step.takenA > 0 && step.takenB > 0)
            alignment.slots.emplace_back(&a[i - 1], &b[j - 1]);
    }
    return alignment;
}

// What a shape of so many paths has for a slot of another that it lacks.
ShapeSlot missing(const ShapeSlot& slot, std::size_t paths)
{
    ShapeSlot none{
        slot.separator, slot.key, isOwn(slot) ? slot.kinds : slot.kinds | freeKind, true, {}};
    none.values.all.resize(paths);
    return none;
}

ShapeSlot join(ShapeSlot slot, const ShapeSlot& other)
{
    // Where a first part is missing, the separator behind it.
    if (slot.separator.empty() || slot.separator.find('/') != std::string_view::npos)
        slot.separator = other.separator;
    slot.kinds |= other.kinds;
    slot.isOptional = slot.isOptional || other.isOptional;
    for (const std::string_view value : other.values.all)
        slot.values.add(value);
    return slot;
}

// Makes one free column of what differs too much: a part that only some names have and that is no
// value of its own, with a neighbour, if it can be of the same kind. A first part that may be
// missing is told from the next by the separator behind it, so that one may not be missing, too.
void widenFree(Shape& shape)
{
    const auto isWord = [](const ShapeSlot& slot) {
        return slot.kinds == letterKind && (slot.isOptional || !slot.values.isConstant());
    };
    const auto widen = [&](bool ofOneKind) {
        for (std::size_t i = 0; i + 1 < shape.slots.size(); ++i) {
            const ShapeSlot& a = shape.slots[i];
            const ShapeSlot& b = shape.slots[i + 1];
            const Kinds kinds = a.kinds | b.kinds | freeKind;
            if (shape.opens(i + 1) || !a.key.empty() || !b.key.empty() ||
                (kinds & endingKind) != 0 || (!a.isOptional && !b.isOptional) ||
                (!isFree(a) && !isFree(b) && (!isWord(a) || !isWord(b)) &&
                 (!shape.opens(i) || !a.isOptional || !b.isOptional)) ||
                (ofOneKind && (a.kinds | freeKind) != (b.kinds | freeKind)))
                continue;
            shape.slots[i] = {
                a.separator, {}, kinds, a.isOptional && b.isOptional, shape.stretch(i, i + 2)};
            shape.slots.erase(shape.slots.begin() + static_cast<std::ptrdiff_t>(i) + 1);
            return true;
        }
        return false;
    };
    while (widen(true) || widen(false))
        continue;
}

// The shape of the paths of both.
Shape joinAll(const Alignment& alignment, std::size_t pathsA, std::size_t pathsB)
{
    Shape shape;
    for (const auto& [a, b] : alignment.slots)
        shape.slots.push_back(a == nullptr   ? join(missing(*b, pathsA), *b)
                              : b == nullptr ? join(*a, missing(*a, pathsB))
                                             : join(*a, *b));
    widenFree(shape);
    shape.countNames();
    return shape;
}

} // namespace

void ShapeTexts::add(std::string_view text)
{
    all.push_back(text);
    if (text.data() != nullptr)
        distinct.insert(text);
}

bool Shape::opens(std::size_t index) const
{
    return index == 0 || slots[index].separator.find('/') != std::string_view::npos;
}

std::size_t Shape::endOfComponent(std::size_t index) const
{
    do
        ++index;
    while (index < slots.size() && !opens(index));
    return index;
}

ShapeTexts Shape::stretch(std::size_t begin, std::size_t end) const
{
    ShapeTexts texts;
    for (std::size_t path = 0; path < paths(); ++path) {
        const char* from = nullptr;
        const char* to = nullptr;
        for (std::size_t i = begin; i < end; ++i) {
            const std::string_view value = slots[i].values.all[path];
            if (value.data() == nullptr)
                continue;
            from = from == nullptr ? value.data() - slots[i].key.size() : from;
            to = value.data() + value.size();
        }
        texts.add({from, static_cast<std::size_t>(to - from)});
    }
    return texts;
}

void Shape::countNames()
{
    for (std::size_t begin = 0; begin < slots.size();) {
        const std::size_t end = endOfComponent(begin);
        const std::size_t names = stretch(begin, end).distinct.size();
        for (; begin < end; ++begin)
            slots[begin].names = names;
    }
}

std::vector<Shape> mergeShapes(const std::vector<Shape>& shapes)
{
    std::vector<Shape> merged;
    for (const Shape& shape : shapes) {
        Alignment best{never, 0, {}};
        Shape* other = nullptr;
        for (Shape& candidate : merged) {
            Alignment alignment = align(candidate, shape);
            // A few files are not worth a vaguer template.
            const bool areFew = shape.paths() * (shape.paths() < 3 ? 4 : 50) < candidate.paths();
            if (alignment.cost < best.cost && alignment.cost <= 0.31 * alignment.matches &&
                (alignment.cost <= 0.15 || !areFew)) {
                best = std::move(alignment);
                other = &candidate;
            }
        }
        if (other != nullptr)
            *other = joinAll(best, other->paths(), shape.paths());
        else if (merged.size() < maxShapes)
            merged.push_back(shape);
    }
    std::stable_sort(merged.begin(), merged.end(),
                     [](const Shape& a, const Shape& b) { return a.paths() > b.paths(); });
    return merged;
}

} // namespace casetable
