#ifndef CASETABLE_IMPORTING_PARTIAL_H
#define CASETABLE_IMPORTING_PARTIAL_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "casetable/importing/Cases.h"

namespace casetable {

/// What is kept of single files, beside the cases and the files that an identifier selects.
struct KeptFiles {
    bool matched = false;
    bool unmatched = false;
    std::string watched; ///< A path of which Partial::isWatchedMatched() is to tell.
};

/// What the import of some files came to: cases that are not numbered yet. Those of two sets of
/// files, of which none is in both, can be merged, in any order.
///
/// Used by one thread at a time.
class Partial {
public:
    static constexpr std::uint32_t none = UINT32_MAX;

    /// Some files that are kept, which take their bytes and 12 more each.
    struct Files {
        struct File {
            std::uint32_t end;        ///< Of its path in `text`.
            std::uint32_t caseIndex;  ///< Of its case, or none if it is not matched.
            std::uint32_t identifier; ///< The first that selects it, or none.
        };

        std::string text; ///< All paths, without anything between them.
        std::vector<File> files;

        void append(std::string_view path, std::uint32_t caseIndex, std::uint32_t identifier);
        std::string_view path(std::size_t index) const;
    };

    /// Why the matching failed.
    struct MatchFailure {
        std::string path; ///< The first in byte order at which it does.
        std::string message;
    };

    std::size_t fileCount = 0; ///< Of all files, matched or not.
    Cases cases;
    std::vector<Files> files;                 ///< In no order.
    std::vector<bool> validIdentifiers;       ///< Of each, whether it selects a matched file.
    bool isWatchedMatched = false;            ///< Whether the watched file is there and in a case.
    std::optional<MatchFailure> matchFailure; ///< With it, all else is incomplete.

    /// Takes over what `other` has, which has the same identifiers. The indices of cases may
    /// change. Takes time for the cases and files of the one that has fewer cases.
    void merge(Partial&& other);

    /// The number of files that are in a case.
    std::size_t matchedCount() const;
};

/// The key of a case: a text that tells the values, in their order.
class CaseKey {
public:
    /// Appends the next value.
    static void append(std::string& key, std::string_view value);

    /// The values in the key.
    static std::vector<std::string_view> values(std::string_view key);
};

} // namespace casetable

#endif
