#ifndef CASETABLE_SUGGEST_H
#define CASETABLE_SUGGEST_H

#include <cstddef>
#include <list>
#include <string>
#include <vector>

#include "crawler/MetadataPattern.h"

namespace casetable {

/// A marker with what it reads.
struct SuggestedPattern {
    MetadataPattern pattern;
    std::size_t valueCount; ///< Different values, as text.
    /// The first few of them, numbers in the order of their size and text in byte order.
    std::vector<std::string> sample;
};

/// Markers for a list of paths. The counts are those of the module, run on all of the paths.
struct Suggestion {
    std::vector<SuggestedPattern> patterns; ///< Empty when nothing can be said.
    std::size_t files = 0;
    std::size_t matchedFiles = 0;
    std::size_t cases = 0;
    /// The first few values that stand at the very beginning of paths, where no marker can be.
    std::vector<std::string> unmarked;
};

/// Finds texts that are followed by varying values in the same place of most of `paths`, which are
/// relative and joined by "/". What it answers does not depend on their order.
Suggestion suggest(const std::list<std::string>& paths);

/// The command line that imports `root` with the suggested markers, quoted for a shell (bash or
/// zsh where bytes must be escaped) such that every byte arrives; `given` are other arguments,
/// placed first. Without a root, which is empty then, they name a list.
std::string commandLine(const Suggestion& suggestion, const std::vector<std::string>& given,
                        const std::string& root);

/// What to tell people: the command line, a line for each marker and the counts; or, on one line
/// without its end, why no marker can be suggested.
std::string suggestionText(const Suggestion& suggestion, const std::vector<std::string>& given,
                           const std::string& root);

} // namespace casetable

#endif
