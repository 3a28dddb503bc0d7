#ifndef CASETABLE_IMPORTING_CASES_H
#define CASETABLE_IMPORTING_CASES_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <memory_resource>
#include <string_view>
#include <vector>

namespace casetable {

/// The cases of some files, each at the index at which it was added.
///
/// Takes about 100 bytes for each case, the bytes of its key, and at most twice those of its
/// longest least path so far. Movable; what was moved from may only be assigned to or destroyed.
/// Used by one thread at a time.
class Cases {
public:
    class Case {
    public:
        /// Tells the values. Refers to the cases, as does leastPath().
        std::string_view key() const { return key_; }

        /// The least of the files in byte order.
        std::string_view leastPath() const { return {path_, pathLength_}; }

        std::size_t fileCount() const { return fileCount_; }

    private:
        friend class Cases;

        std::string_view key_;
        char* path_ = nullptr;
        std::size_t pathLength_ = 0;
        std::size_t pathRoom_ = 0; // The bytes that there are for a path.
        std::size_t fileCount_ = 0;
    };

    /// Adds `fileCount` files, of which `leastPath` is the least in byte order, to the case with
    /// `key`, which is made if there is none. Returns its index. Throws std::length_error where
    /// there would be 2^32 - 1 cases.
    std::uint32_t add(std::string_view key, std::string_view leastPath, std::size_t fileCount);

    /// Adds each of `others`, in their order, as add() does, and returns the index of each here.
    /// Takes less time than add() for each where there are many cases here, as the processor
    /// fetches what is needed of several at once.
    std::vector<std::uint32_t> addAll(const Cases& others);

    bool empty() const { return cases_.empty(); }
    std::size_t size() const { return cases_.size(); }
    const Case& operator[](std::size_t index) const { return cases_[index]; }
    std::vector<Case>::const_iterator begin() const { return cases_.begin(); }
    std::vector<Case>::const_iterator end() const { return cases_.end(); }

private:
    // A case in the table in which it is found by the hash of its key.
    struct Slot {
        std::uint32_t hash; // A part of it, which tells nearly all other keys apart.
        std::uint32_t index;
    };

    static constexpr std::uint32_t free = UINT32_MAX; // The index in a slot without a case.

    std::uint32_t add(std::string_view key, std::size_t hash, std::string_view leastPath,
                      std::size_t fileCount);
    void fetch(const std::vector<std::size_t>& hashes) const;
    std::size_t homeOf(std::size_t hash) const { return hash & (slots_.size() - 1); }
    Slot& slotOf(std::string_view key, std::size_t hash);
    void growSlots();
    void setLeastPath(Case& each, std::string_view path);
    char* room(std::size_t size);

    std::vector<Case> cases_;
    std::vector<Slot> slots_; // As many as a power of two.
    // Where the keys and paths stand; large blocks.
    std::unique_ptr<std::pmr::monotonic_buffer_resource> texts_;
};

} // namespace casetable

#endif
