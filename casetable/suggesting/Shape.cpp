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

// Words that people make up, "Sinnock-solid", are many; those of a code are few.
bool isProse(const ShapeSlot& slot, const ShapeTexts& names)
{
    return slot.key.empty() && slot.kinds < againKind && slot.values.distinctWithoutDigits > 8 &&
           8 * slot.values.distinctWithoutDigits > names.distinct.size();
}

// Both are values of one column.
double costOfMatch(const ShapeSlot& a, const ShapeSlot& b)
{
    const Kinds differences = a.kinds ^ b.kinds;
    if (a.key != b.key || isFree(a) || isFree(b) || (differences & emptyKind) != 0)
        return never;
    if (differences == 0)
        return a.values.letters != b.values.letters ? 0.5 : 0; // "z03" and "c1"
    return !a.key.empty() || (differences & b.kinds) == 0 || differences == codeKinds ? 0 : 0.6;
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
    const std::size_t least = isNumber ? 3 : 2 * slot.values.distinct.size();
    return isFree(slot) || component.texts.distinct.size() < least ? never : isNumber ? 0.5 : 0.7;
}

// Two slots side by side, or one beside nothing.
struct Pair {
    const ShapeSlot* a;
    const ShapeSlot* b;
    bool isFree; // One column for all pairs that are free.
};

struct Alignment {
    double cost = never;
    std::vector<Pair> pairs;
};

// The cheapest way to lay the slots of both side by side, from a table of the costs of what is left
// of both.
Alignment alignSlots(const ShapeComponent& a, const ShapeComponent& b)
{
    struct Step {
        double cost;
        std::size_t takenA;
        std::size_t takenB;
    };
    const std::size_t sizeA = a.slots.size();
    const std::size_t sizeB = b.slots.size();
    std::vector<Step> steps((sizeA + 1) * (sizeB + 1), {never, 0, 0});
    const auto at = [&](std::size_t i, std::size_t j) -> Step& {
        return steps[i * (sizeB + 1) + j];
    };
    // A first part has no separator, though elsewhere others may stand in front of it.
    const auto fit = [&](std::size_t i, std::size_t j) {
        return (i == 0) == (j == 0) ? a.slots[i].separator == b.slots[j].separator
                                    : (i == 0 ? a.slots[i] : b.slots[j]).separator.empty();
    };
    at(sizeA, sizeB).cost = 0;
    for (std::size_t i = sizeA + 1; i-- > 0;)
        for (std::size_t j = sizeB + 1; j-- > 0;) {
            const auto offer = [&](double cost, std::size_t takenA, std::size_t takenB) {
                cost += at(i + takenA, j + takenB).cost;
                if (cost < at(i, j).cost)
                    at(i, j) = {cost, takenA, takenB};
            };
            if (i < sizeA && j < sizeB && fit(i, j))
                offer(costOfMatch(a.slots[i], b.slots[j]), 1, 1);
            if (i < sizeA)
                offer(costOfGap(a.slots[i], a), 1, 0);
            if (j < sizeB)
                offer(costOfGap(b.slots[j], b), 0, 1);
        }
    Alignment result{at(0, 0).cost, {}};
    bool hasGapA = false;
    bool hasGapB = false;
    for (std::size_t i = 0, j = 0; result.cost < never && (i < sizeA || j < sizeB);) {
        const Step& step = at(i, j);
        const Pair pair{step.takenA > 0 ? &a.slots[i] : nullptr,
                        step.takenB > 0 ? &b.slots[j] : nullptr, false};
        hasGapA |= pair.b == nullptr && pair.a->key.empty() && !pair.a->isOptional;
        hasGapB |= pair.a == nullptr && pair.b->key.empty() && !pair.b->isOptional;
        result.pairs.push_back(pair);
        i += step.takenA;
        j += step.takenB;
    }
    result.cost += hasGapA && hasGapB ? 0.5 : 0;
    return result;
}

// What agrees from the left and from the right is divided; what lies between is one column.
Alignment alignEnds(const std::vector<ShapeSlot>& a, const std::vector<ShapeSlot>& b)
{
    const auto agree = [](const ShapeSlot& left, const ShapeSlot& right) {
        const bool areWords = left.key.empty() && ((left.kinds | right.kinds) &
                                                   (letterKind | mixedKind | otherKind)) != 0;
        return left.separator == right.separator && !left.isOptional && !right.isOptional &&
               costOfMatch(left, right) == 0 &&
               (!areWords || left.values.distinct == right.values.distinct ||
                !left.values.letters.empty());
    };
    const std::size_t most = std::min(a.size(), b.size()) - 1;
    std::size_t left = 0;
    while (left < most && agree(a[left], b[left]))
        ++left;
    std::size_t right = 0;
    while (right < most - left && agree(a[a.size() - 1 - right], b[b.size() - 1 - right]))
        ++right;
    const bool isFreeAlready =
        std::any_of(a.begin(), a.end(), isFree) || std::any_of(b.begin(), b.end(), isFree);
    Alignment result{isFreeAlready ? 0 : 1.2, {}};
    for (std::size_t i = 0; i < left; ++i)
        result.pairs.push_back({&a[i], &b[i], false});
    for (std::size_t i = left; i + right < a.size(); ++i)
        result.pairs.push_back({&a[i], nullptr, true});
    for (std::size_t j = left; j + right < b.size(); ++j)
        result.pairs.push_back({nullptr, &b[j], true});
    for (std::size_t i = right; i > 0; --i)
        result.pairs.push_back({&a[a.size() - i], &b[b.size() - i], false});
    return result;
}

// Constant text counts half.
double countMatches(const Alignment& alignment)
{
    double matches = std::any_of(alignment.pairs.begin(), alignment.pairs.end(),
                                 [](const Pair& pair) { return pair.isFree; })
                         ? 0.5
                         : 0;
    for (const Pair& pair : alignment.pairs)
        if (pair.a != nullptr && pair.b != nullptr)
            matches +=
                pair.a->values.isConstant() && pair.a->values.distinct == pair.b->values.distinct
                    ? 0.5
                    : 1;
    return matches;
}

// One slot for those from `first` to before `last`. False where a path has nothing there, or
// another separator in front.
bool freeSlots(std::vector<ShapeSlot>& slots, std::size_t first, std::size_t last,
               const std::vector<std::string_view>& texts)
{
    ShapeSlot free;
    free.separator = slots[first].separator;
    free.kinds = freeKind;
    for (std::size_t path = 0; path < texts.size(); ++path) {
        const char* begin = nullptr;
        const char* end = nullptr;
        for (std::size_t i = first; i < last; ++i) {
            const std::string_view value = slots[i].values.all[path];
            if (begin == nullptr && value.data() != nullptr)
                begin = value.data() - slots[i].key.size();
            end = value.data() != nullptr ? value.data() + value.size() : end;
        }
        if (begin == end)
            return false;
        const auto inFront = static_cast<std::size_t>(begin - texts[path].data());
        const std::size_t length = free.separator.size();
        if (inFront < length || (length == 0 && inFront > 0) ||
            texts[path].substr(inFront - length, length) != free.separator)
            return false;
        free.values.add({begin, static_cast<std::size_t>(end - begin)});
    }
    slots[first] = std::move(free);
    slots.erase(slots.begin() + static_cast<std::ptrdiff_t>(first) + 1,
                slots.begin() + static_cast<std::ptrdiff_t>(last));
    return true;
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
    const auto isOfStretch = [](const Pair& pair) { return pair.isFree; };
    const auto first = static_cast<std::size_t>(
        std::find_if(pairs.begin(), pairs.end(), isOfStretch) - pairs.begin());
    const auto count =
        static_cast<std::size_t>(std::count_if(pairs.begin(), pairs.end(), isOfStretch));
    if (count > 0 && !freeSlots(slots, first, first + count, joined.texts.all))
        return std::nullopt;
    if (joined.isOptional) {
        slots.front().isOptional = false;
        return slots.size() == 1 && !slots.front().key.empty()
                   ? std::optional<ShapeComponent>(std::move(joined))
                   : std::nullopt;
    }
    // Where much is optional, or prose is, the parts say nothing.
    const auto isProseHere = [&](const ShapeSlot& slot) { return isProse(slot, joined.texts); };
    const auto isVague = [&](const ShapeSlot& slot) { return isLoose(slot) || isProseHere(slot); };
    const auto loose = std::count_if(slots.begin(), slots.end(), isLoose);
    if (loose > 3 || (loose > 0 && std::any_of(slots.begin(), slots.end(), isProseHere))) {
        const auto begin = std::find_if(slots.begin(), slots.end(), isVague);
        const auto end = std::find_if(slots.rbegin(), slots.rend(), isVague).base();
        if (std::all_of(begin, end, [](const ShapeSlot& slot) { return slot.key.empty(); }))
            freeSlots(slots, static_cast<std::size_t>(begin - slots.begin()),
                      static_cast<std::size_t>(end - slots.begin()), joined.texts.all);
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
        alignments.push_back(alignSlots(a, b));
        if (alignments.back().cost > 0 && !a.slots.empty() && !b.slots.empty()) {
            Alignment ends = alignEnds(a.slots, b.slots);
            // One name of a folder is as good as another.
            const bool isFolder =
                i + 1 < shape.components.size() && (a.texts.isConstant() || b.texts.isConstant());
            if (ends.cost < alignments.back().cost) {
                alignments.back() = std::move(ends);
                alignments.back().cost *= isFolder ? 0.3 : 1;
            }
        }
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
    merged.shape.paths += other.paths;
    return merged;
}

} // namespace

void ShapeTexts::add(std::string_view text)
{
    all.push_back(text);
    if (text.data() == nullptr || !distinct.insert(text).second)
        return;
    distinctWithoutDigits += std::none_of(text.begin(), text.end(), isDigit) ? 1 : 0;
    const std::size_t end = text.find_first_of("0123456789");
    const bool isCode = end != std::string_view::npos &&
                        std::all_of(text.begin(), text.begin() + end, isLetter) &&
                        text.find_first_not_of("0123456789.", end) == std::string_view::npos;
    const std::string_view front = isCode ? text.substr(0, end) : std::string_view();
    letters = isConstant() || letters == front ? front : std::string_view();
}

Shape::Shape(const PathClass& members) : paths(members.size())
{
    components.resize(members.front().parts.size());
    for (std::size_t i = 0; i < components.size(); ++i) {
        for (const NamePart& part : members.front().parts[i])
            components[i].slots.push_back({part.separator, part.key, part.kind, false, {}});
        for (const DividedPath& member : members) {
            endings.insert(member.ending);
            components[i].texts.add(member.components[i]);
            for (std::size_t k = 0; k < components[i].slots.size(); ++k)
                components[i].slots[k].values.add(member.parts[i][k].text);
        }
    }
}

std::optional<MergedShape> mergeShapes(const Shape& shape, const Shape& other)
{
    const auto isListed = [](const Shape& s) {
        return s.components.back().slots.front().kinds == listedKind;
    };
    const std::size_t size = shape.components.size();
    const std::size_t otherSize = other.components.size();
    if (isListed(shape) != isListed(other) || size > otherSize + 1 || size + 1 < otherSize ||
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
