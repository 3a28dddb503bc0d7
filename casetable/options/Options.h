#ifndef CASETABLE_OPTIONS_OPTIONS_H
#define CASETABLE_OPTIONS_OPTIONS_H

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "casetable/importing/Reading.h"
#include "casetable/importing/Sorting.h"
#include "casetable/listing/Source.h"
#include "casetable/options/OptionTable.h"
#include "casetable/writing/Formats.h"
#include "crawler/AuxFileIdentifierValidator.h"

namespace casetable {

/// What a run gives: a table, templates to make one, or how one path is read.
enum class Mode { Table, Suggest, Explain };

/// What the rows of a table stand for: cases, matched files, files in no case, or combinations of
/// values that no case has.
enum class Rows { Cases, Files, Unmatched, Missing };

/// What the command line means, checked.
struct Options {
    Mode mode = Mode::Table;
    Source source;
    /// By the markers or templates in the order in which they were typed; by none in the mode that
    /// suggests templates.
    Reading reading;
    /// In the order in which they were typed.
    std::vector<AuxFileIdentifier> identifiers;
    /// The format that was asked for, or for which the ending of `output` stands; null if neither
    /// says anything.
    const Format* format = nullptr;
    std::optional<std::string> output; ///< The path of a file; none for standard output.
    Rows rows = Rows::Cases;
    std::vector<std::size_t> missingColumns; ///< In Rows::Missing: two or more different patterns.
    std::vector<SortKey> sortKeys;           ///< The columns are those of the table.
    std::string explained; ///< In Mode::Explain: the path, relative to `source.root`; not empty.
    bool quiet = false;
    std::optional<std::size_t> jobs; ///< Threads that import, from 1; none for as many as suit.
    /// The command line as it was typed, without the program's name.
    std::vector<std::string> words;
};

/// Reads the command line, of which `argv` holds `argc` arguments, the program's name first. Reads
/// the files of templates that it names, but looks at no other.
///
/// The command line is that of `program`: what only the other has is refused.
///
/// If --help or --version was asked for, prints that to standard output and returns nothing. Throws
/// Failure with ExitCode::WrongUsage and a message that names the option, or with
/// ExitCode::OutputFailed when it could not print.
std::optional<Options> parseOptions(int argc, const char* const* argv,
                                    Program program = Program::Casetable);

/// The arguments that mean `options`, without the program's name: parseOptions() reads the same
/// options from them. If the options lack a root or markers, the arguments lack them too.
std::vector<std::string> arguments(const Options& options);

} // namespace casetable

#endif
