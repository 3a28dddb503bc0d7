#ifndef CASETABLE_OPTIONS_OPTIONS_H
#define CASETABLE_OPTIONS_OPTIONS_H

#include <optional>
#include <string>
#include <vector>

#include "casetable/listing/Selection.h"
#include "casetable/writing/Formats.h"
#include "crawler/AuxFileIdentifierValidator.h"
#include "crawler/MetadataPattern.h"

namespace casetable {

/// What the rows of the output stand for.
enum class Rows { Cases, Files, Unmatched };

/// The command line, checked.
struct Options {
    std::string root; ///< Empty when a list is given; may be when a path is explained.
    std::optional<std::string> list; ///< The file of the list; "-" is standard input.
    bool nullSeparated = false;      ///< Whether the list is divided by NULs.
    Selection selection;
    bool suggest = false; ///< Whether markers are to be suggested instead of applied.
    /// In the order of the options; at least one, but none with `suggest`.
    std::vector<MetadataPattern> patterns;
    std::vector<AuxFileIdentifier> identifiers;
    /// As asked for, or as the ending of `output` says; null where neither says anything.
    const Format* format = nullptr;
    std::optional<std::string> output; ///< Standard output when there is none.
    Rows rows = Rows::Cases;
    std::optional<std::string> explain; ///< The path to explain instead of an import, below `root`.
    bool keepGoing = false;
    bool follow = false;
    bool quiet = false;
};

/// Reads the command line. Answers nothing when --help or --version was asked for and printed.
/// Throws Failure with ExitCode::WrongUsage, or ExitCode::OutputFailed when it could not be
/// printed.
std::optional<Options> parseOptions(int argc, const char* const* argv);

/// The arguments that make another run see the same files below the same root.
std::vector<std::string> walkArguments(const Options& options);

} // namespace casetable

#endif
