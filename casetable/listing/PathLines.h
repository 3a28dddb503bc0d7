#ifndef CASETABLE_LISTING_PATHLINES_H
#define CASETABLE_LISTING_PATHLINES_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace casetable {

/// The paths of a list, each with whether it is a file or a folder and the first line that says so.
///
/// Takes about 20 bytes a path, whatever its length, as it keeps 96 bits of a hash of 128 in place
/// of the path. So two paths may be taken for one: among n, with a chance of about n * n / 2^97,
/// which is 10^-13 for a hundred million.
class PathLines {
public:
    enum class Kind : bool { File, Folder };

    struct Entry {
        Kind kind;
        std::size_t line;
    };

    /// Records `path`, unless it is there. Returns what is recorded of it then. Lines up to 2^39
    /// are told apart.
    Entry insert(std::string_view path, Kind kind, std::size_t line);

    /// Has the processor fetch what insert() of the path needs, and does not wait for it. Told of
    /// some dozens of paths ahead, insert() takes less time in all. Changes nothing.
    void expect(std::string_view path) const;

private:
    // The first word is the half of the hash by which a slot is found; the second holds the kind,
    // the line and the rest of the hash. A slot with the line 0 is free.
    struct Slot {
        std::uint64_t hash = 0;
        std::uint64_t rest = 0;
    };

    // So that only a small part of all is copied at a time when it grows.
    //
    // The slots that are taken stand in the order of their hashes: each where its hash belongs, or
    // behind others that do not leave it that place. So a search ends at the first larger hash,
    // which is soon also where nearly all slots are taken.
    struct Part {
        std::vector<Slot> slots; // At the end some more than hashes belong in.
        std::size_t homes = 0;   // Slots that hashes belong in.
        std::size_t used = 0;
    };

    static void grow(Part& part);

    std::array<Part, 256> parts_;
};

} // namespace casetable

#endif
