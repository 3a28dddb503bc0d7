#include "casetable/suggesting/Shape.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace casetable {

namespace {

// Costs say how much vaguer a template gets. They are weighed against the places that agree.
const double never = std::numeric_limits<double>::infinity();

bool isFree(const ShapeSlot& slot)
{
    return (slot.kinds & freeKind) != 0;
}

bool isCode(const ShapeSlot& slot)
{
    return !slot.key.empty() || (slot.kinds & ~(numberKind | fixedKind)) == 0;
}

// Both are values of one column.
double costOfMatch(const ShapeSlot& a, const ShapeSlot& b)
{
    const Kinds differences = a.kinds ^ b.kinds;
    if (a.key != b.key || (differences & emptyKind) != 0)
        return never;
    if (isCode(a) && isCode(b))
        return 0;
    if (isFree(a) || isFree(b))
        return isCode(a) || isCode(b) ? 0.2 : 0.02;
    return (differences & b.kinds) == 0 ? 0.02 : 0.6;
}

// Whether the slot may be missing in some paths. Without a key it must have been seen in several
// names, else it is only a part of them: "-b16" of "vit-b16".
bool isOwn(const ShapeSlot& slot)
{
    const std::size_t least =
        slot.values.isConstant() ? 2 : 3 * (isCode(slot) ? 1 : slot.values.distinct.size());
    return slot.isOptional || !slot.key.empty() || (!isFree(slot) && slot.names >= least);
}

// The slot gets optional. Beside what is free in the other shape, before `place`, it is taken up.
double costOfGap(const ShapeSlot& slot, const Shape& other, std::size_t place)
{
    const bool isTakenUp = (place > 0 && isFree(other.slots[place - 1])) ||
                           (place < other.slots.size() && isFree(other.slots[place]));
    if (slot.isOptional)
        return 0;
    if (!slot.key.empty())
        return 0.3;
    if (isTakenUp)
        return isCode(slot) ? 0.1 : 0.02;
    return !isOwn(slot) ? 0.9 : isCode(slot) ? 0.5 : 0.7;
}

// A part of an alignment: so many slots of both stand side by side.
struct Step {
    double cost = never; // Of this step and those behind it,
    double matches = 0;  // as are the places that agree. Constant text counts half.
    std::size_t takenA = 0;
    std::size_t takenB = 0;
};

// Lays the slots of both side by side in the cheapest way, which comes of a table of what is left
// of both.
std::vector<Step> align(const Shape& shapeA, const Shape& shapeB)
{
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
            // Of folders, only one that is but a key and a value may be missing.
            const auto mayMiss = [](const Shape& shape, std::size_t k) {
                return k < shape.slots.size() &&
                       (!shape.opens(k) || (k > 0 && !shape.slots[k].key.empty() &&
                                            k + 1 < shape.slots.size() && shape.opens(k + 1)));
            };
            if (mayMiss(shapeA, i))
                offer(costOfGap(a[i], shapeB, j), 0, 1, 0);
            if (mayMiss(shapeB, j))
                offer(costOfGap(b[j], shapeA, i), 0, 0, 1);
            if (i == a.size() || j == b.size() || (i == 0) != (j == 0) ||
                a[i].separator != b[j].separator)
                continue;
            const bool isSameText =
                a[i].values.isConstant() && a[i].values.distinct == b[j].values.distinct;
            offer(costOfMatch(a[i], b[j]), isSameText || isFree(a[i]) || isFree(b[j]) ? 0.5 : 1, 1,
                  1);
            const std::size_t endA = shapeA.endOfComponent(i);
            const std::size_t endB = shapeB.endOfComponent(j);
            // The first part of a name that one of them lacks.
            if (shapeA.opens(i) && i + 1 < endA)
                offer(costOfGap(a[i], shapeB, j) + costOfMatch(a[i + 1], b[j]), 1, 2, 1);
            if (shapeB.opens(j) && j + 1 < endB)
                offer(costOfGap(b[j], shapeA, i) + costOfMatch(a[i], b[j + 1]), 1, 1, 2);
            // One name of a folder is as good as another.
            if (shapeA.opens(i) && endA < a.size() && endB < b.size() &&
                (a[i].names == 1 || b[j].names == 1))
                at(i, j).cost = std::min(at(i, j).cost, at(endA, endB).cost + 0.36);
        }
    std::vector<Step> steps;
    std::size_t i = 0;
    std::size_t j = 0;
    do {
        steps.push_back(at(i, j));
        i += steps.back().takenA;
        j += steps.back().takenB;
    } while (steps.back().takenA + steps.back().takenB > 0);
    return steps;
}

// A slot of both shapes. Where one lacks it, its paths have nothing there.
ShapeSlot join(const ShapeSlot* a, std::size_t pathsA, const ShapeSlot* b, std::size_t pathsB)
{
    ShapeSlot slot;
    for (const auto& [part, paths] : {std::pair(a, pathsA), std::pair(b, pathsB)}) {
        for (std::size_t path = 0; path < paths; ++path)
            slot.values.add(part != nullptr ? part->values.all[path] : std::string_view());
        slot.isOptional = slot.isOptional || part == nullptr || part->isOptional;
        if (part == nullptr)
            continue;
        slot.separator = part->separator;
        slot.key = part->key;
        slot.kinds |= part->kinds;
    }
    if ((a == nullptr || b == nullptr) && !isOwn(a == nullptr ? *b : *a))
        slot.kinds = freeKind;
    return slot;
}

// Makes one free column of what differs too much: a part that only some names have and that is no
// value of its own, with its neighbour.
void widenFree(Shape& shape)
{
    const auto isWord = [](const ShapeSlot& slot) {
        return slot.kinds == letterKind && (slot.isOptional || !slot.values.isConstant());
    };
    for (std::size_t i = 0; i + 1 < shape.slots.size();) {
        const ShapeSlot& a = shape.slots[i];
        const ShapeSlot& b = shape.slots[i + 1];
        const bool isBeside = !shape.opens(i + 1) && a.key.empty() && b.key.empty() &&
                              (a.isOptional || b.isOptional) &&
                              (isFree(a) || isFree(b) || (isWord(a) && isWord(b)));
        if (isBeside) {
            shape.slots[i] = {
                a.separator, {}, freeKind, a.isOptional && b.isOptional, shape.stretch(i, i + 2)};
            shape.slots.erase(shape.slots.begin() + static_cast<std::ptrdiff_t>(i) + 1);
            i = 0;
        } else {
            ++i;
        }
    }
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

std::optional<MergedShape> mergeShapes(const Shape& shape, const Shape& other)
{
    if (shape.endings.distinct.count({}) != other.endings.distinct.count({}))
        return std::nullopt;
    const std::vector<Step> steps = align(shape, other);
    const double cost = steps.front().cost;
    // A few files are not worth a vaguer template.
    const bool areFew = other.paths() * (other.paths() < 3 ? 4 : 50) < shape.paths();
    if (cost > 0.31 * steps.front().matches || (cost > 0.15 && areFew))
        return std::nullopt;
    Shape merged{{}, shape.endings};
    for (const std::string_view ending : other.endings.all)
        merged.endings.add(ending);
    std::size_t i = 0;
    std::size_t j = 0;
    const auto add = [&](const ShapeSlot* a, const ShapeSlot* b) {
        merged.slots.push_back(join(a, shape.paths(), b, other.paths()));
    };
    for (const Step& step : steps) {
        if (step.takenA != step.takenB)
            add(step.takenA > step.takenB ? &shape.slots[i] : nullptr,
                step.takenB > step.takenA ? &other.slots[j] : nullptr);
        if (step.takenA > 0 && step.takenB > 0) {
            const ShapeSlot& a = shape.slots[i + step.takenA - 1];
            const ShapeSlot& b = other.slots[j + step.takenB - 1];
            add(&a, &b);
            merged.slots.back().separator = step.takenA > 1 ? a.separator : b.separator;
        }
        i += step.takenA;
        j += step.takenB;
    }
    widenFree(merged);
    merged.countNames();
    // A first part that may be missing is told from the next by the separator behind it.
    for (std::size_t k = 0; k + 1 < merged.slots.size(); ++k)
        if (merged.opens(k) && !merged.opens(k + 1) && merged.slots[k].isOptional &&
            merged.slots[k + 1].isOptional)
            return std::nullopt;
    return MergedShape{std::move(merged), cost};
}

} // namespace casetable
