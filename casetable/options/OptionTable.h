#ifndef CASETABLE_OPTIONS_OPTIONTABLE_H
#define CASETABLE_OPTIONS_OPTIONTABLE_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace casetable {

/// The programs of which this is the command line: casetable, and casetable-mpi, which imports in
/// several processes at once.
enum class Program { Casetable, CasetableMpi };

/// What a program is called.
const char* nameOf(Program program);

/// What may be typed: each option, and ROOT.
enum class OptionId {
    Help,
    Version,
    String,
    Number,
    Template,
    Aux,
    Format,
    Output,
    FromList,
    Null,
    NoDuplicates,
    Exclude,
    Hidden,
    MaxDepth,
    Suggest,
    Files,
    Unmatched,
    Missing,
    Sort,
    Explain,
    KeepGoing,
    Follow,
    Jobs,
    Quiet,
    Root
};

/// What an option is about. Each group is a section of the manual page.
enum class OptionGroup { Markers, Source, Output, Other };

/// What shells offer for the value of an option.
enum class Completion { Nothing, Files, Words };

/// A row of the table of options, from which the command line is read, and from which --help, the
/// manual page and the completions of the shells are made.
struct Option {
    OptionId id;
    OptionGroup group;
    char letter;          ///< '\0' where there is none.
    const char* name;     ///< "--string"; of ROOT, which has no dashes, "ROOT".
    const char* argument; ///< What its value is called; empty for a flag, which takes none.
    bool repeatable;      ///< Whether each occurrence counts, or else the last alone.
    Completion completion;
    std::string help;   ///< For --help and completions: no full stop, no line breaks.
    std::string manual; ///< For the manual page, in roff: lines, each ended by a line feed.

    /// The options that cannot be given together with it. It is enough that one of two says so.
    std::vector<OptionId> excludes = {};
    /// The option without which it cannot be given, if there is one.
    std::optional<OptionId> needs = {};
    /// The values that it may have; empty if it may have any.
    std::vector<std::string> words = {};
    /// The program that has it, if it is not both.
    std::optional<Program> only = {};

    bool isOf(Program program) const { return !only || *only == program; }
};

/// All rows, of both programs, in the order of --help. They last as long as the program.
const std::vector<Option>& optionTable();

/// The row of the option.
const Option& optionOf(OptionId id);

/// The option of that long name, dashes included; null if there is none.
const Option* optionNamed(std::string_view name);

/// The option of that letter; null if there is none.
const Option* optionOfLetter(char letter);

/// Whether the option takes a value; otherwise it is a flag.
bool takesValue(const Option& option);

/// The words, of which there must be one at least, as a sentence offers them: "a, b or c".
std::string choice(const std::vector<std::string>& words);

} // namespace casetable

#endif
