#ifndef CASETABLE_OPTIONS_COMMANDLINE_H
#define CASETABLE_OPTIONS_COMMANDLINE_H

#include <string>
#include <vector>

#include "casetable/options/OptionTable.h"

namespace casetable {

/// A command line as it was typed.
struct CommandLine {
    struct Item {
        const Option* option; ///< A row of optionTable(); that of ROOT for what is no option.
        std::string value;    ///< Empty for a flag.
    };

    std::vector<Item> items; ///< In the order in which they were typed.
    std::string unknown;     ///< The first option that is not in the table; empty if all are.

    /// Whether the option was typed.
    bool has(OptionId id) const;

    /// The values that were typed for the option, in their order.
    std::vector<std::string> valuesOf(OptionId id) const;
};

/// Reads arguments, without the program's name, by the table of options. It has those that only
/// another program than `program` has too, so that they can be refused by name.
///
/// A long name must be written out; its value stands behind "=" or is the next argument. Letters
/// may stand together behind one dash. The first that takes a value ends them: the value is the
/// rest of the argument or, if there is none, the next argument. A next argument is taken as a
/// value whatever it begins with. All else is ROOT: "-", what does not begin with "-", and
/// everything behind "--".
///
/// Throws Failure with ExitCode::WrongUsage where a value is missing, is empty behind "=" or is
/// given to a flag, and where a long name of the program has only one dash.
CommandLine readCommandLine(const std::vector<std::string>& arguments,
                            Program program = Program::Casetable);

/// Throws Failure with ExitCode::WrongUsage and the message, one line without its end.
[[noreturn]] void failUsage(const std::string& message);

} // namespace casetable

#endif
