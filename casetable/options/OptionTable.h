#ifndef CASETABLE_OPTIONS_OPTIONTABLE_H
#define CASETABLE_OPTIONS_OPTIONTABLE_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace casetable {

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
    Exclude,
    Hidden,
    MaxDepth,
    Suggest,
    Files,
    Unmatched,
    Explain,
    KeepGoing,
    Follow,
    Quiet,
    Root
};

/// What an option is about, which is where the manual page tells of it.
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
    bool repeatable;      ///< Whether each occurrence counts, and not the last alone.
    Completion completion;
    std::string help;   ///< For --help and completions: no full stop, no line breaks.
    std::string manual; ///< For the manual page, in roff: lines, each ended.

    /// What it cannot be given with. It is enough that one of the two says so.
    std::vector<OptionId> excludes = {};
    /// What it cannot be given without.
    std::optional<OptionId> needs = {};
    /// What its value is one of; empty where it is free.
    std::vector<std::string> words = {};
};

/// All rows, in the order of --help. They last as long as the program.
const std::vector<Option>& optionTable();

const Option& optionOf(OptionId id);

/// The option of that long name, dashes included; null where there is none.
const Option* optionNamed(std::string_view name);

/// The option of that letter; null where there is none.
const Option* optionOfLetter(char letter);

/// Whether the option takes a value, from the rest of its argument or from the next.
bool takesValue(const Option& option);

/// The words, at least one, as a choice in a sentence: "a, b or c".
std::string choice(const std::vector<std::string>& words);

} // namespace casetable

#endif
