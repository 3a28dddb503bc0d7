#include "casetable/listing/PathLines.h"

#include <algorithm>
#include <utility>

#include <xxhash.h>

namespace casetable {

namespace {

// Of the second word of a slot, from the lowest bit.
const unsigned lineBits = 39;
const std::uint64_t lineMask = (std::uint64_t{1} << lineBits) - 1;
const std::uint64_t folderBit = std::uint64_t{1} << lineBits;
const std::uint64_t hashMask = ~(lineMask | folderBit); // 24 bits; 8 more choose the part.

// They grow by a quarter when nine tenths are taken, so at least 72 in 100 are.
const std::size_t leastHomes = 16;

// More slots at the end than hashes belong in; more than these are hardly ever needed.
const std::size_t spareSlots = 32;

// So many a processor fetches at once.
const std::size_t fetchedSlots = 4;

// Spreads the hashes evenly, in their order.
std::size_t homeOf(std::uint64_t hash, std::size_t homes)
{
    return static_cast<std::size_t>((static_cast<unsigned __int128>(hash) * homes) >> 64U);
}

XXH128_hash_t hashOf(std::string_view path)
{
    return XXH3_128bits(path.data(), path.size());
}

} // namespace

PathLines::Entry PathLines::insert(std::string_view path, Kind kind, std::size_t line)
{
    const XXH128_hash_t hash = hashOf(path);
    const std::uint64_t rest = hash.high64 & hashMask;
    Part& part = parts_[hash.high64 & 0xffU];
    if (part.used * 10 >= part.homes * 9)
        grow(part);
    std::vector<Slot>& slots = part.slots;
    const auto isTaken = [&slots](std::size_t index) {
        return index < slots.size() && slots[index].rest != 0;
    };
    std::size_t index = homeOf(hash.low64, part.homes);
    while (isTaken(index) && slots[index].hash < hash.low64)
        ++index;
    for (; isTaken(index) && slots[index].hash == hash.low64; ++index) {
        const std::uint64_t known = slots[index].rest;
        if ((known & hashMask) == rest)
            return {(known & folderBit) != 0 ? Kind::Folder : Kind::File,
                    static_cast<std::size_t>(known & lineMask)};
    }
    std::size_t free = index;
    while (isTaken(free))
        ++free;
    if (free == slots.size())
        slots.emplace_back();
    const auto at = [&slots](std::size_t i) {
        return slots.begin() + static_cast<std::ptrdiff_t>(i);
    };
    std::move_backward(at(index), at(free), at(free + 1));
    slots[index] = {hash.low64, rest | (kind == Kind::Folder ? folderBit : 0) |
                                    std::min<std::uint64_t>(line, lineMask)};
    ++part.used;
    return {kind, line};
}

void PathLines::expect(std::string_view path) const
{
    const XXH128_hash_t hash = hashOf(path);
    const Part& part = parts_[hash.high64 & 0xffU];
    if (part.slots.empty())
        return;
    // As a search may go on behind the end of what is fetched at once, what follows is fetched too.
    const Slot* const home = part.slots.data() + homeOf(hash.low64, part.homes);
    __builtin_prefetch(home);
    __builtin_prefetch(home + fetchedSlots);
}

void PathLines::grow(Part& part)
{
    const std::size_t homes = std::max(leastHomes, part.homes + part.homes / 4);
    std::vector<Slot> slots;
    slots.reserve(homes + spareSlots);
    for (const Slot& slot : part.slots) {
        if (slot.rest == 0)
            continue;
        slots.resize(std::max(slots.size(), homeOf(slot.hash, homes)));
        slots.push_back(slot);
    }
    slots.resize(std::max(slots.size(), homes));
    part.slots = std::move(slots);
    part.homes = homes;
}

} // namespace casetable
