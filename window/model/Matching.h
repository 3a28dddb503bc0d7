#ifndef WINDOW_MODEL_MATCHING_H
#define WINDOW_MODEL_MATCHING_H

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "casetable/importing/Import.h"
#include "casetable/importing/Reading.h"
#include "window/model/Files.h"
#include "window/model/Setup.h"

namespace casetable {

/// What a row of auxiliary files came to.
struct AuxResult {
    std::string error;         ///< The validator's message about what is wrong; empty for nothing.
    bool isTagWrong = false;   ///< Whether that is about the tag, or else the wildcard.
    std::size_t fileCount = 0; ///< The files that it selects.
};

/// What kept files came to by a reading. Immutable; threads may read one at once.
struct Matching {
    static constexpr std::uint32_t none = UINT32_MAX;

    Files files;
    std::shared_ptr<const Reading> reading;

    /// The import of the files; null where it failed.
    std::unique_ptr<const Import> import;
    std::string failure; ///< Why it failed.

    std::vector<AuxResult> aux; ///< One for each row.

    /// Of each file the index of its case, or none.
    std::vector<std::uint32_t> caseOf;
    /// Of each file the index of the row of auxiliary files that selects it, or none; empty where
    /// there are no such rows.
    std::vector<std::uint32_t> auxOf;
    /// The files of the cases, one case behind the other, and where each case begins.
    std::vector<std::uint32_t> filesByCase;
    std::vector<std::size_t> caseBegins;

    /// Null where the import failed.
    const CaseTable* table() const { return import ? &import->table() : nullptr; }
};

/// Matches all files by the reading, and collects auxiliary files by the rows; those that are bad
/// are told in Matching::aux, and left out. Works on as many as `jobs` threads. Returns null where
/// it was cancelled meanwhile.
///
/// `rootName` is what errors call the root.
std::shared_ptr<const Matching> matchFiles(const Files& files, const Reading& reading,
                                           const std::vector<Setup::AuxRow>& rows,
                                           const std::string& rootName, std::size_t jobs,
                                           const std::atomic<bool>& isCancelled);

} // namespace casetable

#endif
