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

// In slots. They grow by a quarter when nine tenths are taken, so at least 72 in 100 are.
const std::size_t leastSlots = 16;

// Spreads the hashes evenly over the slots.
std::size_t slotOf(std::uint64_t hash, std::size_t slots)
{
    return static_cast<std::size_t>((static_cast<unsigned __int128>(hash) * slots) >> 64U);
}

} // namespace

PathLines::Entry PathLines::insert(std::string_view path, Kind kind, std::size_t line)
{
    const XXH128_hash_t hash = XXH3_128bits(path.data(), path.size());
    Part& part = parts_[hash.high64 & 0xffU];
    if (part.used * 10 >= part.slots.size() * 9)
        grow(part);
    const std::uint64_t rest = hash.high64 & hashMask;
    std::size_t index = slotOf(hash.low64, part.slots.size());
    for (;; index = index + 1 == part.slots.size() ? 0 : index + 1) {
        Slot& slot = part.slots[index];
        if (slot.rest == 0) {
            slot.hash = hash.low64;
            slot.rest = rest | (kind == Kind::Folder ? folderBit : 0) |
                        std::min<std::uint64_t>(line, lineMask);
            ++part.used;
            return {kind, line};
        }
        if (slot.hash == hash.low64 && (slot.rest & hashMask) == rest)
            return {(slot.rest & folderBit) != 0 ? Kind::Folder : Kind::File,
                    static_cast<std::size_t>(slot.rest & lineMask)};
    }
}

void PathLines::grow(Part& part)
{
    std::vector<Slot> slots(std::max(leastSlots, part.slots.size() + part.slots.size() / 4));
    for (const Slot& slot : part.slots) {
        if (slot.rest == 0)
            continue;
        std::size_t index = slotOf(slot.hash, slots.size());
        while (slots[index].rest != 0)
            index = index + 1 == slots.size() ? 0 : index + 1;
        slots[index] = slot;
    }
    part.slots = std::move(slots);
}

} // namespace casetable
