#ifndef WINDOW_MODEL_VIEW_H
#define WINDOW_MODEL_VIEW_H

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "casetable/importing/Sorting.h"
#include "window/model/Files.h"
#include "window/model/Matching.h"

namespace casetable {

/// Which files are shown: those that fit all of it.
struct PathFilter {
    enum class Which { All, Matched, Unmatched };

    struct Value {
        std::size_t column; ///< An index of Reading::patterns().
        std::string text;   ///< The cell of the case, whole.
    };

    std::string text; ///< Stands in the path; where it has no capital letter, in any case of ASCII.
    Which which = Which::All;
    std::optional<Value> value;
    std::vector<std::uint32_t> cases; ///< In ascending order; if empty, files of any case or none.

    bool isEmpty() const { return text.empty() && which == Which::All && !value && cases.empty(); }
};

/// The indices of the files that the filter shows, in ascending order. `matching` is of these
/// files; without it, the filter goes by the text alone. What was cancelled meanwhile is not
/// complete.
std::vector<std::uint32_t> shownFiles(const Files& files, const Matching* matching,
                                      const PathFilter& filter,
                                      const std::atomic<bool>& isCancelled);

/// Cases in an order.
struct CaseOrder {
    std::vector<std::uint32_t> cases; ///< Of each row the index of its case.
    std::vector<std::uint32_t> rows;  ///< Of each case its row.
};

/// The cases in the order of `keys`, columns of caseReport(), as sorted() has them.
CaseOrder orderOf(const CaseTable& table, const std::vector<SortKey>& keys);

} // namespace casetable

#endif
