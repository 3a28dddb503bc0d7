#include "casetable/suggesting/Shape.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace casetable {

namespace {

// Costs say how much vaguer a template gets. They are weighed against the places that agree.
const Kinds codeKinds = numberKind | fixedKind;
const double never = std::numeric_limits<double>::infinity();

bool isLoose(const ShapeSlot& slot)
{
    return slot.isOptional && slot.key.empty();
}

bool isFree(const ShapeSlot& slot)
{
    return slot.kinds == freeKind;
}

// Both are values of one column.
double costOfMatch(const ShapeSlot& a, const ShapeSlot& b)
{
    const Kinds differences = a.kinds ^ b.kinds;
    if (a.key != b.key || isFree(a) || isFree(b) || (differences & emptyKind) != 0)
        return never;
    if (!a.key.empty() || ((a.kinds | b.kinds) & ~codeKinds) == 0)
        return 0;
    // Beside a free column, words had better be in it.
    return (differences & b.kinds) == 0 ? 0.02 : 0.6;
}

// The slot gets optional. Without a key it must have been seen in several names, else it is only a
// part of them: "-b16" of "vit-b16".
double costOfGap(const ShapeSlot& slot, const ShapeComponent& component)
{
    if (slot.isOptional || component.isOptional)
        return 0;
    if (!slot.key.empty())
        return 0.3;
    const bool isNumber = (slot.kinds & ~codeKinds) == 0;
    const std::size_t least =
        slot.values.isConstant() ? 2 : 3 * (isNumber ? 1 : slot.values.distinct.size());
    return isFree(slot) || component.texts.distinct.size() < least ? never : isNumber ? 0.5 : 0.7;
}

// Two slots side by side, or one beside nothing.
struct Pair {
    const ShapeSlot* a;
    const ShapeSlot* b;
    bool isFree; // One column for all pairs that are free.
};

bool isOfStretch(const Pair& pair)
{
    return pair.isFree;
}

struct Alignment {
    double cost = never;
    std::vector<Pair> pairs;
};

// The cheapest way to lay the slots of both side by side, from a table of the costs of what is left
// of both. What differs too much becomes one free column; words rather than numbers and keys.
Alignment align(const ShapeComponent& a, const ShapeComponent& b)
{
    struct Step {
        double cost;
        std::size_t takenA;
        std::size_t takenB;
        bool isFree;
    };
    const std::size_t sizeA = a.slots.size();
    const std::size_t sizeB = b.slots.size();
    std::vector<Step> steps((sizeA + 1) * (sizeB + 1), {never, 0, 0, false});
    const auto at = [&](std::size_t i, std::size_t j) -> Step& {
        return steps[i * (sizeB + 1) + j];
    };
    // A first part has no separator, though elsewhere others may stand in front of it.
    const auto fit = [&](std::size_t i, std::size_t j) {
        return (i == 0) == (j == 0) ? a.slots[i].separator == b.slots[j].separator
                                    : (i == 0 ? a.slots[i] : b.slots[j]).separator.empty();
    };
    const bool isFreeAlready = std::any_of(a.slots.begin(), a.slots.end(), isFree) ||
                               std::any_of(b.slots.begin(), b.slots.end(), isFree);
    const auto countCodes = [](const std::vector<ShapeSlot>& slots, std::size_t i,
                               std::size_t end) {
        return std::count_if(slots.begin() + i, slots.begin() + end, [](const ShapeSlot& slot) {
            return !slot.key.empty() || (slot.kinds & ~codeKinds) == 0;
        });
    };
    at(sizeA, sizeB).cost = 0;
    for (std::size_t i = sizeA + 1; i-- > 0;)
        for (std::size_t j = sizeB + 1; j-- > 0;) {
            const auto offer = [&](double cost, std::size_t takenA, std::size_t takenB,
                                   bool isFree) {
                cost += at(i + takenA, j + takenB).cost;
                if (cost < at(i, j).cost)
                    at(i, j) = {cost, takenA, takenB, isFree};
            };
            const bool doFit = i < sizeA && j < sizeB && fit(i, j);
            if (doFit)
                offer(costOfMatch(a.slots[i], b.slots[j]), 1, 1, false);
            if (i < sizeA)
                offer(costOfGap(a.slots[i], a), 1, 0, false);
            if (j < sizeB)
                offer(costOfGap(b.slots[j], b), 0, 1, false);
            // As many are left behind it in both.
            for (std::size_t left = 0; doFit && left < std::min(sizeA - i, sizeB - j); ++left)
                offer((isFreeAlready ? 0 : 1.2) +
                          0.1 * static_cast<double>(countCodes(a.slots, i, sizeA - left) +
                                                    countCodes(b.slots, j, sizeB - left)),
                      sizeA - left - i, sizeB - left - j, true);
        }
    Alignment result{at(0, 0).cost, {}};
    bool hasGapA = false;
    bool hasGapB = false;
    for (std::size_t i = 0, j = 0; result.cost < never && (i < sizeA || j < sizeB);) {
        const Step step = at(i, j);
        const bool isMatch = step.takenA > 0 && step.takenB > 0 && !step.isFree;
        hasGapA |= step.takenB == 0 && a.slots[i].key.empty() && !a.slots[i].isOptional;
        hasGapB |= step.takenA == 0 && b.slots[j].key.empty() && !b.slots[j].isOptional;
        if (isMatch)
            result.pairs.push_back({&a.slots[i], &b.slots[j], false});
        for (std::size_t k = i; k < i + step.takenA && !isMatch; ++k)
            result.pairs.push_back({&a.slots[k], nullptr, step.isFree});
        for (std::size_t k = j; k < j + step.takenB && !isMatch; ++k)
            result.pairs.push_back({nullptr, &b.slots[k], step.isFree});
        i += step.takenA;
        j += step.takenB;
    }
    result.cost += hasGapA && hasGapB ? 0.5 : 0;
    return result;
}

// Constant text counts half.
double countMatches(const Alignment& alignment)
{
    const std::vector<Pair>& pairs = alignment.pairs;
    double matches = std::any_of(pairs.begin(), pairs.end(), isOfStretch) ? 0.5 : 0;
    for (const Pair& pair : alignment.pairs)
        if (pair.a != nullptr && pair.b != nullptr)
            matches +=
                pair.a->values.isConstant() && pair.a->values.distinct == pair.b->values.distinct
                    ? 0.5
                    : 1;
    return matches;
}

// One slot for those from `first` to before `last`.
void freeSlots(std::vector<ShapeSlot>& slots, std::size_t first, std::size_t last)
{
    ShapeSlot free{slots[first].separator, {}, freeKind, false, {}};
    for (std::size_t path = 0; path < slots[first].values.all.size(); ++path) {
        const char* begin = nullptr;
        const char* end = nullptr;
        for (std::size_t i = first; i < last; ++i) {
            const std::string_view value = slots[i].values.all[path];
            if (begin == nullptr && value.data() != nullptr)
                begin = value.data() - slots[i].key.size();
            end = value.data() != nullptr ? value.data() + value.size() : end;
        }
        free.values.add({begin, static_cast<std::size_t>(end - begin)});
    }
    slots[first] = std::move(free);
    slots.erase(slots.begin() + static_cast<std::ptrdiff_t>(first) + 1,
                slots.begin() + static_cast<std::ptrdiff_t>(last));
}

ShapeTexts joinTexts(ShapeTexts a, const ShapeTexts& b)
{
    for (const std::string_view text : b.all)
        a.add(text);
    return a;
}

std::optional<ShapeComponent> joinComponents(const ShapeComponent& a, const ShapeComponent& b,
                                             const std::vector<Pair>& pairs)
{
    ShapeComponent joined{{}, a.isOptional || b.isOptional, joinTexts(a.texts, b.texts)};
    std::vector<ShapeSlot>& slots = joined.slots;
    ShapeTexts none;
    for (const Pair& pair : pairs) {
        ShapeSlot slot = pair.a != nullptr ? *pair.a : *pair.b;
        slot.isOptional =
            pair.a == nullptr || pair.b == nullptr || pair.a->isOptional || pair.b->isOptional;
        none.all.assign((pair.a == nullptr ? a : b).texts.all.size(), std::string_view());
        slot.values = joinTexts(pair.a != nullptr ? pair.a->values : none,
                                pair.b != nullptr ? pair.b->values : none);
        if (pair.a != nullptr && pair.b != nullptr) {
            slot.kinds |= pair.b->kinds;
            slot.separator = slot.separator.empty() ? pair.b->separator : slot.separator;
        }
        slots.push_back(std::move(slot));
    }
    const auto first = static_cast<std::size_t>(
        std::find_if(pairs.begin(), pairs.end(), isOfStretch) - pairs.begin());
    const auto count =
        static_cast<std::size_t>(std::count_if(pairs.begin(), pairs.end(), isOfStretch));
    if (count > 0)
        freeSlots(slots, first, first + count);
    if (joined.isOptional) {
        slots.front().isOptional = false;
        return slots.size() == 1 && !slots.front().key.empty()
                   ? std::optional<ShapeComponent>(std::move(joined))
                   : std::nullopt;
    }
    // Where much is optional, the parts say nothing.
    if (std::count_if(slots.begin(), slots.end(), isLoose) > 3) {
        const auto begin = std::find_if(slots.begin(), slots.end(), isLoose);
        const auto end = std::find_if(slots.rbegin(), slots.rend(), isLoose).base();
        freeSlots(slots, static_cast<std::size_t>(begin - slots.begin()),
                  static_cast<std::size_t>(end - slots.begin()));
    }
    // A first part that may be missing is told from the next by the separator behind it.
    if (slots.front().isOptional && (slots.size() == 1 || slots[1].isOptional))
        return std::nullopt;
    return joined;
}

std::optional<MergedShape> mergeAligned(const Shape& shape, const Shape& other)
{
    double cost = 0;
    double matches = 0;
    std::vector<Alignment> alignments;
    for (std::size_t i = 0; i < shape.components.size() && cost < never; ++i) {
        const ShapeComponent& a = shape.components[i];
        const ShapeComponent& b = other.components[i];
        alignments.push_back(align(a, b));
        // One name of a folder is as good as another.
        const bool isFolder =
            i + 1 < shape.components.size() && (a.texts.isConstant() || b.texts.isConstant());
        const std::vector<Pair>& pairs = alignments.back().pairs;
        if (isFolder && std::any_of(pairs.begin(), pairs.end(), isOfStretch))
            alignments.back().cost *= 0.3;
        cost += alignments.back().cost;
        matches += countMatches(alignments.back());
    }
    // A few files are not worth a vaguer template.
    const bool areFew = other.paths * (other.paths < 3 ? 4 : 50) < shape.paths;
    if (cost > 0.31 * matches || (cost > 0.15 && areFew))
        return std::nullopt;
    MergedShape merged{shape, cost};
    for (std::size_t i = 0; i < alignments.size(); ++i) {
        std::optional<ShapeComponent> joined =
            joinComponents(shape.components[i], other.components[i], alignments[i].pairs);
        if (!joined)
            return std::nullopt;
        merged.shape.components[i] = std::move(*joined);
    }
    merged.shape.endings.insert(other.endings.begin(), other.endings.end());
    merged.shape.names.insert(other.names.begin(), other.names.end());
    merged.shape.paths += other.paths;
    return merged;
}

} // namespace

void ShapeTexts::add(std::string_view text)
{
    all.push_back(text);
    if (text.data() != nullptr)
        distinct.insert(text);
}

Shape::Shape(const PathClass& members) : paths(members.size())
{
    for (const DividedPath& member : members) {
        const std::string_view stem = member.components.back();
        endings.insert(member.ending);
        names.insert({stem.data(), stem.size() + member.ending.size()});
    }
    components.resize(members.front().parts.size());
    for (std::size_t i = 0; i < components.size(); ++i) {
        for (const NamePart& part : members.front().parts[i])
            components[i].slots.push_back({part.separator, part.key, part.kind, false, {}});
        for (const DividedPath& member : members) {
            components[i].texts.add(member.components[i]);
            for (std::size_t k = 0; k < components[i].slots.size(); ++k)
                components[i].slots[k].values.add(member.parts[i][k].text);
        }
    }
}

std::optional<MergedShape> mergeShapes(const Shape& shape, const Shape& other)
{
    const std::size_t size = shape.components.size();
    const std::size_t otherSize = other.components.size();
    if (size > otherSize + 1 || size + 1 < otherSize ||
        shape.endings.count({}) != other.endings.count({}))
        return std::nullopt;
    if (size == otherSize)
        return mergeAligned(shape, other);
    // A folder that is but a key and a value may be missing in one of them.
    std::optional<MergedShape> best;
    const Shape& longer = size > otherSize ? shape : other;
    for (std::size_t i = 0; i + 1 < longer.components.size(); ++i) {
        const std::vector<ShapeSlot>& slots = longer.components[i].slots;
        if (slots.size() != 1 || slots.front().key.empty())
            continue;
        Shape padded = size > otherSize ? other : shape;
        ShapeComponent none{{}, true, {}};
        none.texts.all.resize(padded.paths);
        padded.components.insert(padded.components.begin() + static_cast<std::ptrdiff_t>(i), none);
        std::optional<MergedShape> merged =
            size > otherSize ? mergeAligned(shape, padded) : mergeAligned(padded, other);
        if (merged && (!best || merged->cost < best->cost))
            best = std::move(merged);
    }
    return best;
}

} // namespace casetable
