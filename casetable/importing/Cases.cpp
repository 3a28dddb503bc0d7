#include "casetable/importing/Cases.h"

#include <algorithm>
#include <functional>
#include <stdexcept>

namespace casetable {

namespace {

const std::size_t leastSlots = 16;

std::size_t hashOf(std::string_view key)
{
    return std::hash<std::string_view>()(key);
}

// The low bits of a hash choose the slot.
std::uint32_t storedPart(std::size_t hash)
{
    return static_cast<std::uint32_t>(hash >> 32U);
}

} // namespace

std::uint32_t Cases::add(std::string_view key, std::string_view leastPath, std::size_t fileCount)
{
    if (cases_.size() >= slots_.size() / 4 * 3)
        growSlots();
    const std::size_t hash = hashOf(key);
    Slot& slot = slotOf(key, hash);
    if (slot.index == free) {
        if (cases_.size() == free)
            throw std::length_error("there are too many cases");
        Case added;
        char* const text = room(key.size());
        added.key_ = {text, key.copy(text, key.size())};
        setLeastPath(added, leastPath);
        cases_.push_back(added);
        slot = {storedPart(hash), static_cast<std::uint32_t>(cases_.size() - 1)};
    }
    Case& owner = cases_[slot.index];
    owner.fileCount_ += fileCount;
    if (leastPath < owner.leastPath())
        setLeastPath(owner, leastPath);
    return slot.index;
}

// Takes twice the room where there is too little, so that what is given up is never more than what
// is in use.
void Cases::setLeastPath(Case& each, std::string_view path)
{
    if (path.size() > each.pathRoom_) {
        each.pathRoom_ = std::max(path.size(), 2 * each.pathRoom_);
        each.path_ = room(each.pathRoom_);
    }
    each.pathLength_ = path.copy(each.path_, path.size());
}

// That of the case with the key, or the free one that it may have.
Cases::Slot& Cases::slotOf(std::string_view key, std::size_t hash)
{
    for (std::size_t next = hash;; ++next) {
        Slot& slot = slots_[next & (slots_.size() - 1)];
        if (slot.index == free ||
            (slot.hash == storedPart(hash) && cases_[slot.index].key() == key))
            return slot;
    }
}

void Cases::growSlots()
{
    slots_.assign(std::max(leastSlots, 2 * slots_.size()), {0, free});
    for (std::uint32_t index = 0; index < cases_.size(); ++index) {
        const std::string_view key = cases_[index].key();
        const std::size_t hash = hashOf(key);
        slotOf(key, hash) = {storedPart(hash), index};
    }
}

char* Cases::room(std::size_t size)
{
    if (!texts_)
        texts_ = std::make_unique<std::pmr::monotonic_buffer_resource>();
    return static_cast<char*>(texts_->allocate(size, 1));
}

} // namespace casetable
