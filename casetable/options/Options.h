#ifndef CASETABLE_OPTIONS_OPTIONS_H
#define CASETABLE_OPTIONS_OPTIONS_H

#include <optional>
#include <string>
#include <vector>

#include "casetable/importing/Reading.h"
#include "casetable/listing/Source.h"
#include "casetable/writing/Formats.h"
#include "crawler/AuxFileIdentifierValidator.h"

namespace casetable {

/// What is asked for: a table, markers for one, or how one path is read.
enum class Mode { Table, Suggest, Explain };

/// What the rows of the output stand for.
enum class Rows { Cases, Files, Unmatched };

/// What the command line means, checked.
struct Options {
    Mode mode = Mode::Table;
    Source source;
    /// By markers or templates in the order in which they were given; by none to suggest some.
    Reading reading;
    std::vector<AuxFileIdentifier> identifiers;
    /// As asked for, or as the ending of `output` says; null where neither says anything.
    const Format* format = nullptr;
    std::optional<std::string> output; ///< Standard output when there is none.
    Rows rows = Rows::Cases;
    std::string explained; ///< The path to explain, below `source.root`; not empty in that mode.
    bool quiet = false;
};

/// Reads the command line. Answers nothing when --help or --version was asked for and printed.
/// Throws Failure with ExitCode::WrongUsage, or ExitCode::OutputFailed when it could not be
/// printed.
std::optional<Options> parseOptions(int argc, const char* const* argv);

/// The arguments that mean `options`: for them, parseOptions() answers what it has answered before.
/// Options may also be incomplete, without a root or markers, and so are the arguments then.
std::vector<std::string> arguments(const Options& options);

} // namespace casetable

#endif
