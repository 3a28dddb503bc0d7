#ifndef WINDOW_MODEL_SUGGESTIONS_H
#define WINDOW_MODEL_SUGGESTIONS_H

#include <atomic>
#include <cstddef>
#include <string>
#include <vector>

#include "window/model/Files.h"

namespace casetable {

/// A column, and the values that it would have.
struct SuggestedColumn {
    std::string name;
    bool isNumber = false;
    std::size_t valueCount = 0;
    std::vector<std::string> sample; ///< Some values, in the order of --sort.
};

/// A template that could be taken, with what it would give alone.
struct Suggestion {
    std::string text;
    std::size_t fileCount = 0; ///< Of all files, those that it fits.
    std::size_t caseCount = 0;
    std::vector<SuggestedColumn> columns;
};

/// The templates that --suggest proposes for the files, each with the counts of an import by it
/// alone. What was cancelled meanwhile is not complete.
std::vector<Suggestion> suggestionsFor(const Files& files, std::size_t jobs,
                                       const std::atomic<bool>& isCancelled);

} // namespace casetable

#endif
