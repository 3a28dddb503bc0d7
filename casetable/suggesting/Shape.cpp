#include "casetable/suggesting/Shape.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace casetable {

namespace {

// Costs say how much vaguer a template gets. They are weighed against the places that agree.
const Kinds codeKinds = numberKind | fixedKind;
const double never = std::numeric_limits<double>::infinity();

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

// Adds what the values of all the slots say of each path, from the first's key on.
void addStretch(ShapeTexts& texts, const ShapeSlot* begin, const ShapeSlot* end)
{
    for (std::size_t path = 0; path < begin->values.all.size(); ++path) {
        const char* from = nullptr;
        const char* to = nullptr;
        for (const ShapeSlot* slot = begin; slot != end; ++slot) {
            const std::string_view value = slot->values.all[path];
            if (value.data() == nullptr)
                continue;
            from = from == nullptr ? value.data() - slot->key.size() : from;
            to = value.data() + value.size();
        }
        texts.add({from, static_cast<std::size_t>(to - from)});
    }
}

void addAll(ShapeTexts& texts, const std::vector<std::string_view>& more)
{
    for (const std::string_view text : more)
        texts.add(text);
}

struct Weights {
    double cost;
    double matches; // Places that agree. Constant text counts half.
};

// Lays the slots of both side by side in the cheapest way, which comes of a table of the costs of
// what is left of both. What differs too much becomes one free column, words rather than numbers
// and keys. Adds the slots of both to `joined`, if given.
Weights alignSlots(const ShapeComponent& a, const ShapeComponent& b, std::vector<ShapeSlot>* joined)
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
        return std::count_if(&slots[i], &slots[i] + (end - i), [](const ShapeSlot& slot) {
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
    Weights result{at(0, 0).cost, 0};
    bool hasGapA = false;
    bool hasGapB = false;
    for (std::size_t i = 0, j = 0; result.cost < never && (i < sizeA || j < sizeB);) {
        const Step step = at(i, j);
        const ShapeSlot* const slotA = step.takenA > 0 ? &a.slots[i] : nullptr;
        const ShapeSlot* const slotB = step.takenB > 0 ? &b.slots[j] : nullptr;
        const bool isMatch = slotA != nullptr && slotB != nullptr;
        const ShapeSlot& some = step.takenA > 0 ? a.slots[i] : b.slots[j];
        if (slotA != nullptr && slotB != nullptr)
            result.matches += step.isFree || (some.values.isConstant() &&
                                              some.values.distinct == slotB->values.distinct)
                                  ? 0.5
                                  : 1;
        else if (some.key.empty() && !some.isOptional)
            (slotA != nullptr ? hasGapA : hasGapB) = true;
        i += step.takenA;
        j += step.takenB;
        if (joined == nullptr)
            continue;
        joined->push_back({some.separator, some.key, some.kinds, some.isOptional || !isMatch, {}});
        ShapeSlot& slot = joined->back();
        if (step.isFree) {
            slot = {some.separator, {}, freeKind, false, {}};
            addStretch(slot.values, slotA, slotA + step.takenA);
            addStretch(slot.values, slotB, slotB + step.takenB);
            continue;
        }
        const std::vector<std::string_view> none((slotA == nullptr ? a : b).texts.all.size());
        addAll(slot.values, slotA != nullptr ? slotA->values.all : none);
        addAll(slot.values, slotB != nullptr ? slotB->values.all : none);
        if (slotA != nullptr && slotB != nullptr) {
            slot.kinds |= slotB->kinds;
            slot.isOptional = slot.isOptional || slotB->isOptional;
            slot.separator = slot.separator.empty() ? slotB->separator : slot.separator;
        }
    }
    result.cost += hasGapA && hasGapB ? 0.5 : 0;
    return result;
}

// An optional part beside a free one belongs to it.
void widenFree(std::vector<ShapeSlot>& slots)
{
    const auto isLoose = [](const ShapeSlot& slot) { return slot.isOptional && slot.key.empty(); };
    for (std::size_t i = 0; i + 1 < slots.size();) {
        const bool isJoined = (isFree(slots[i]) && isLoose(slots[i + 1])) ||
                              (i == 0 && isLoose(slots[i]) && isFree(slots[i + 1]));
        if (isJoined) {
            ShapeSlot free{slots[i].separator, {}, freeKind, false, {}};
            addStretch(free.values, &slots[i], &slots[i] + 2);
            slots[i] = std::move(free);
            slots.erase(slots.begin() + static_cast<std::ptrdiff_t>(i) + 1);
        } else {
            ++i;
        }
    }
}

std::optional<MergedShape> mergeAligned(const Shape& shape, const Shape& other)
{
    Weights all{0, 0};
    for (std::size_t i = 0; i < shape.components.size() && all.cost < never; ++i) {
        const ShapeComponent& a = shape.components[i];
        const ShapeComponent& b = other.components[i];
        const Weights weights = alignSlots(a, b, nullptr);
        // One name of a folder is as good as another.
        const bool isFolder = i + 1 < shape.components.size() && weights.cost < never &&
                              (a.texts.isConstant() || b.texts.isConstant());
        all.cost += isFolder ? std::min(weights.cost, 0.36) : weights.cost;
        all.matches += weights.matches;
    }
    // A few files are not worth a vaguer template.
    const bool areFew = other.paths * (other.paths < 3 ? 4 : 50) < shape.paths;
    if (all.cost > 0.31 * all.matches || (all.cost > 0.15 && areFew))
        return std::nullopt;
    MergedShape merged{shape, all.cost};
    for (std::size_t i = 0; i < shape.components.size(); ++i) {
        ShapeComponent& joined = merged.shape.components[i];
        const ShapeComponent& b = other.components[i];
        std::vector<ShapeSlot> slots;
        alignSlots(shape.components[i], b, &slots);
        widenFree(slots);
        joined.slots = std::move(slots);
        joined.isOptional = joined.isOptional || b.isOptional;
        addAll(joined.texts, b.texts.all);
        // A first part that may be missing is told from the next by the separator behind it.
        const std::size_t size = joined.slots.size();
        ShapeSlot& front = joined.slots.front();
        front.isOptional = front.isOptional && !joined.isOptional;
        if ((front.isOptional && (size == 1 || joined.slots[1].isOptional)) ||
            (joined.isOptional && size > 1))
            return std::nullopt;
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
