#include "casetable/suggesting/Shape.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace casetable {

namespace {

// So many are laid beside so many: time grows with both.
const std::size_t maxShapes = 300;
const std::size_t maxMerged = 64;
// Costs say how much vaguer a template gets. They are weighed against the places that agree.
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
    const bool haveCommon =
        std::any_of(b.values.distinct.begin(), b.values.distinct.end(),
                    [&](std::string_view text) { return a.values.distinct.count(text) > 0; });
    return haveCommon || isFree(a) || isFree(b) ? 0.02 : differences == 0 ? 0.06 : 0.6;
}

// Whether the slot may be missing in some paths. Without a key it must have been seen in several
// names, else it is only a part of them: "-b16" of "vit-b16".
bool isOwn(const ShapeSlot& slot)
{
    return slot.isOptional || !slot.key.empty() ||
           slot.names >= (slot.values.isConstant()
                              ? 2
                              : 3 * (isCode(slot) ? 1 : slot.values.distinct.size()));
}

// The slot at `index` gets optional. If it would stand behind a free one of the other shape, before
// `place`, it is taken up.
double costOfGap(const Shape& shape, std::size_t index, const Shape& other, std::size_t place)
{
    const ShapeSlot& slot = shape.slots[index];
    if (slot.isOptional || !slot.key.empty())
        return slot.isOptional ? 0 : 0.3;
    if (place > 0 && isFree(other.slots[place - 1]) && !shape.opens(index))
        return 0.02;
    return !isOwn(slot) ? 0.9 : isCode(slot) ? 0.5 : 0.7;
}

// Of folders, only one that is but a key and a value may be missing.
bool mayMiss(const Shape& shape, std::size_t index)
{
    return index + 1 < shape.slots.size() &&
           (!shape.opens(index) || (!shape.slots[index].key.empty() && shape.opens(index + 1)));
}

// The cheapest way to lay what is left of two shapes side by side, and the slots of each that it
// takes first: one of both; one of either, which the other lacks; or one and two, of which the
// first is lacking.
struct Step {
    double cost = never;
    double matches = 0; // Places that agree; the same text counts half.
    std::size_t takenA = 0;
    std::size_t takenB = 0;
};

// Steps for all that can be left: those of a slot of the first shape stand together.
using Alignment = std::vector<Step>;

Alignment align(const Shape& shapeA, const Shape& shapeB)
{
    const std::vector<ShapeSlot>& a = shapeA.slots;
    const std::vector<ShapeSlot>& b = shapeB.slots;
    Alignment table((a.size() + 1) * (b.size() + 1));
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
            offer(costOfMatch(a[i], b[j]), i + 1 == a.size() ? 0 : isText ? 0.5 : 1, 1, 1);
            const std::size_t endA = shapeA.endOfComponent(i);
            const std::size_t endB = shapeB.endOfComponent(j);
            // The first part of a name, or of all, that one of them lacks.
            if (shapeA.opens(i) && (i + 1 < endA || (i == 0 && mayMiss(shapeA, i))))
                offer(costOfGap(shapeA, i, shapeB, j) + costOfMatch(a[i + 1], b[j]), 1, 2, 1);
            if (shapeB.opens(j) && (j + 1 < endB || (j == 0 && mayMiss(shapeB, j))))
                offer(costOfGap(shapeB, j, shapeA, i) + costOfMatch(a[i], b[j + 1]), 1, 1, 2);
            // One name of a folder is as good as another.
            if (shapeA.opens(i) && endA < a.size() && endB < b.size() && at(i, j).takenA > 0)
                at(i, j).cost = std::min(at(i, j).cost, at(endA, endB).cost + 0.36);
        }
    return table;
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
    if (slot.separator.empty() ||
        (!other.separator.empty() && slot.separator.find('/') != std::string_view::npos))
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
    const auto isWord = [](const ShapeSlot& slot) { return slot.kinds == letterKind; };
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

// To be called when all slots have their values.
void countNames(Shape& shape)
{
    for (std::size_t begin = 0; begin < shape.slots.size();) {
        const std::size_t end = shape.endOfComponent(begin);
        const std::size_t names = shape.stretch(begin, end).distinct.size();
        for (; begin < end; ++begin)
            shape.slots[begin].names = names;
    }
}

void sortLargestFirst(std::vector<Shape>& shapes)
{
    std::stable_sort(shapes.begin(), shapes.end(),
                     [](const Shape& a, const Shape& b) { return a.paths() > b.paths(); });
}

// The shape of the paths of both.
Shape joinAll(const Alignment& alignment, const Shape& a, const Shape& b)
{
    Shape shape;
    for (std::size_t i = 0, j = 0; i < a.slots.size() || j < b.slots.size();) {
        const Step& step = alignment[i * (b.slots.size() + 1) + j];
        if (step.takenA > step.takenB)
            shape.slots.push_back(join(a.slots[i], missing(a.slots[i], b.paths())));
        if (step.takenB > step.takenA)
            shape.slots.push_back(join(missing(b.slots[j], a.paths()), b.slots[j]));
        i += step.takenA;
        j += step.takenB;
        if (step.takenA > 0 && step.takenB > 0)
            shape.slots.push_back(join(a.slots[i - 1], b.slots[j - 1]));
    }
    widenFree(shape);
    countNames(shape);
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

std::vector<Shape> mergeShapes(std::vector<Shape> shapes)
{
    sortLargestFirst(shapes);
    shapes.resize(std::min(shapes.size(), maxShapes));
    std::vector<Shape> merged;
    for (Shape& shape : shapes) {
        countNames(shape);
        Alignment best(1);
        Shape* other = nullptr;
        for (Shape& candidate : merged) {
            Alignment alignment = align(candidate, shape);
            // A few files are not worth a vaguer template.
            const bool areFew = shape.paths() * (shape.paths() < 3 ? 4 : 50) < candidate.paths();
            if (alignment[0].cost < best[0].cost &&
                alignment[0].cost <= 0.31 * alignment[0].matches && !areFew) {
                best = std::move(alignment);
                other = &candidate;
            }
        }
        if (other != nullptr)
            *other = joinAll(best, *other, shape);
        else if (merged.size() < maxMerged)
            merged.push_back(shape);
    }
    sortLargestFirst(merged);
    return merged;
}

} // namespace casetable
