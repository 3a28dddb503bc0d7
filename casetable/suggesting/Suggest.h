#ifndef CASETABLE_SUGGESTING_SUGGEST_H
#define CASETABLE_SUGGESTING_SUGGEST_H

#include <cstddef>
#include <list>
#include <optional>
#include <string>
#include <vector>

#include "casetable/suggesting/MixedFiles.h"
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
    /// A few values that stand at the very beginning of paths, where no marker can be.
    std::vector<std::string> unmarked;
    MixedFiles mixed;
};

/// Finds texts that are followed by varying values in the same place of most of `paths`, which are
/// relative and joined by "/". What it answers does not depend on their order.
Suggestion suggest(const std::list<std::string>& paths);

/// A suggestion with what else stands in the command line.
struct SuggestedRun {
    Suggestion suggestion;
    std::vector<std::string> given; ///< Other arguments, placed first.
    std::string root;               ///< Empty when the arguments name a list.
};

/// The command line that imports the root with the suggested markers, quoted for a shell (bash or
/// zsh where bytes must be escaped) such that every byte arrives.
std::string commandLine(const SuggestedRun& run);

/// The same paths with the folder above as root, and the name of the root below it.
struct RunAbove {
    SuggestedRun run;
    std::string name;
};

/// What to tell people: the command line, a line for each marker and the counts; or, on one line
/// without its end, why no marker can be suggested. With a run above, its command line too, or if
/// there are no markers otherwise, first; that needs a reason in the suggestion: values at the very
/// beginning or files of one name that are mixed.
std::string suggestionText(const SuggestedRun& run,
                           const std::optional<RunAbove>& above = std::nullopt);

} // namespace casetable

#endif
