#include "casetable/importing/Cases.h"

#include <algorithm>
#include <functional>
#include <stdexcept>

namespace casetable {

namespace {

const std::size_t leastSlots = 16;

// Of so many cases at a time what is needed is fetched: more than a processor waits for at once,
// and so few that it is still there when they are added.
const std::size_t fetchedCases = 32;

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
    return add(key, hashOf(key), leastPath, fileCount);
}

std::vector<std::uint32_t> Cases::addAll(const Cases& others)
{
    std::vector<std::uint32_t> indices;
    indices.reserve(others.size());
    std::vector<std::size_t> hashes;
    auto next = others.begin();
    while (next != others.end()) {
        const auto end = next + std::min<std::ptrdiff_t>(fetchedCases, others.end() - next);
        hashes.clear();
        for (auto each = next; each != end; ++each)
            hashes.push_back(hashOf(each->key()));
        fetch(hashes);
        for (const std::size_t hash : hashes) {
            indices.push_back(add(next->key(), hash, next->leastPath(), next->fileCount()));
            ++next;
        }
    }
    return indices;
}

std::uint32_t Cases::add(std::string_view key, std::size_t hash, std::string_view leastPath,
                         std::size_t fileCount)
{
    if (cases_.size() >= slots_.size() / 4 * 3)
        growSlots();
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

// Has the processor fetch what add() will probably look at for each of the hashes, and does not
// wait for it. Each round needs what the round before has fetched.
void Cases::fetch(const std::vector<std::size_t>& hashes) const
{
    if (slots_.empty())
        return;
    const auto eachProbable = [&](const auto& act) {
        for (const std::size_t hash : hashes) {
            const Slot& slot = slots_[homeOf(hash)];
            if (slot.index != free && slot.hash == storedPart(hash))
                act(cases_[slot.index]);
        }
    };
    for (const std::size_t hash : hashes)
        __builtin_prefetch(&slots_[homeOf(hash)]);
    eachProbable([](const Case& each) { __builtin_prefetch(&each); });
    eachProbable([](const Case& each) {
        __builtin_prefetch(each.key_.data());
        __builtin_prefetch(each.path_);
        __builtin_prefetch(each.path_ + each.pathLength_);
    });
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
        Slot& slot = slots_[homeOf(next)];
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
