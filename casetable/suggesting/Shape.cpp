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
    return slot.kinds == freeKind;
}

bool isCode(const ShapeSlot& slot)
{
    return !slot.key.empty() || (slot.kinds & ~(numberKind | fixedKind)) == 0;
}

// Both are values of one column.
double costOfMatch(const ShapeSlot& a, const ShapeSlot& b)
{
    const Kinds differences = a.kinds ^ b.kinds;
    if (a.key != b.key || isFree(a) || isFree(b) || (differences & emptyKind) != 0)
        return never;
    if (isCode(a) && isCode(b))
        return 0;
    // Beside a free column, words had better be in it.
    return (differences & b.kinds) == 0 ? 0.02 : 0.6;
}

// The slot gets optional. Without a key it must have been seen in several names, else it is only a
// part of them: "-b16" of "vit-b16".
double costOfGap(const ShapeSlot& slot)
{
    if (slot.isOptional)
        return 0;
    if (!slot.key.empty())
        return 0.3;
    const std::size_t least =
        slot.values.isConstant() ? 2 : 3 * (isCode(slot) ? 1 : slot.values.distinct.size());
    return isFree(slot) || slot.names < least ? never : isCode(slot) ? 0.5 : 0.7;
}

// A part of an alignment: so many slots of both stand side by side.
struct Step {
    double cost = never; // Of this step and those behind it,
    double matches = 0;  // as are the places that agree. Constant text counts half.
    std::size_t takenA = 0;
    std::size_t takenB = 0;
    bool isFree = false;
};

// Lays the slots of both side by side in the cheapest way, which comes of a table of what is left
// of both. What differs too much in a component becomes one free column, words rather than numbers
// and keys.
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
                                   std::size_t takenB, bool isFree) {
                const Step& next = at(i + takenA, j + takenB);
                if (cost + next.cost < at(i, j).cost)
                    at(i, j) = {cost + next.cost, matches + next.matches, takenA, takenB, isFree};
            };
            // Of folders, only one that is but a key and a value may be missing.
            const auto mayMiss = [](const Shape& shape, std::size_t k) {
                return k < shape.slots.size() &&
                       (!shape.opens(k) || (k > 0 && !shape.slots[k].key.empty() &&
                                            k + 1 < shape.slots.size() && shape.opens(k + 1)));
            };
            if (mayMiss(shapeA, i))
                offer(costOfGap(a[i]), 0, 1, 0, false);
            if (mayMiss(shapeB, j))
                offer(costOfGap(b[j]), 0, 0, 1, false);
            if (i == a.size() || j == b.size() || (i == 0) != (j == 0) ||
                a[i].separator != b[j].separator)
                continue;
            const bool isSameText =
                a[i].values.isConstant() && a[i].values.distinct == b[j].values.distinct;
            offer(costOfMatch(a[i], b[j]), isSameText ? 0.5 : 1, 1, 1, false);
            const std::size_t endA = shapeA.endOfComponent(i);
            const std::size_t endB = shapeB.endOfComponent(j);
            // The first part of a name that one of them lacks.
            if (shapeA.opens(i) && i + 1 < endA)
                offer(costOfGap(a[i]) + costOfMatch(a[i + 1], b[j]), 1, 2, 1, false);
            if (shapeB.opens(j) && j + 1 < endB)
                offer(costOfGap(b[j]) + costOfMatch(a[i], b[j + 1]), 1, 1, 2, false);
            // As many are left behind it in both.
            for (std::size_t left = std::min(endA - i, endB - j); left-- > 0;) {
                const std::size_t takenA = endA - left - i;
                const std::size_t takenB = endB - left - j;
                const auto codes = std::count_if(&a[i], &a[i] + takenA, isCode) +
                                   std::count_if(&b[j], &b[j] + takenB, isCode);
                const bool isFreeAlready = std::any_of(&a[i], &a[i] + takenA, isFree) ||
                                           std::any_of(&b[j], &b[j] + takenB, isFree);
                offer((isFreeAlready ? 0 : 1.2) + 0.1 * static_cast<double>(codes), 0.5, takenA,
                      takenB, true);
            }
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
    return slot;
}

// The slots from `begin` on as one free column.
ShapeSlot freeSlot(const Shape& shape, std::size_t begin, std::size_t size)
{
    return {shape.slots[begin].separator, {}, freeKind, false, shape.stretch(begin, begin + size)};
}

// An optional part beside a free one, and a word beside words, belong to it.
void widenFree(Shape& shape)
{
    const auto isLoose = [&](std::size_t i) {
        return shape.slots[i].isOptional && shape.slots[i].key.empty();
    };
    const auto isWords = [&](std::size_t i) {
        const ShapeSlot& slot = shape.slots[i];
        return slot.key.empty() && slot.kinds == letterKind &&
               (slot.isOptional || !slot.values.isConstant());
    };
    for (std::size_t i = 0; i + 1 < shape.slots.size();) {
        const bool isBeside = (isFree(shape.slots[i]) && isLoose(i + 1)) ||
                              (shape.opens(i) && isLoose(i) && isFree(shape.slots[i + 1])) ||
                              (isWords(i) && isWords(i + 1) && (isLoose(i) || isLoose(i + 1)));
        if (isBeside && !shape.opens(i + 1)) {
            shape.slots[i] = freeSlot(shape, i, 2);
            shape.slots.erase(shape.slots.begin() + static_cast<std::ptrdiff_t>(i) + 1);
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
        if (step.isFree) {
            const ShapeSlot a = freeSlot(shape, i, step.takenA);
            const ShapeSlot b = freeSlot(other, j, step.takenB);
            add(&a, &b);
        } else {
            if (step.takenA != step.takenB)
                add(step.takenA > step.takenB ? &shape.slots[i] : nullptr,
                    step.takenB > step.takenA ? &other.slots[j] : nullptr);
            if (step.takenA > 0 && step.takenB > 0) {
                const ShapeSlot& a = shape.slots[i + step.takenA - 1];
                const ShapeSlot& b = other.slots[j + step.takenB - 1];
                add(&a, &b);
                merged.slots.back().separator = step.takenA > 1 ? a.separator : b.separator;
            }
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
