#ifndef CASETABLE_OPTIONS_COMMANDLINE_H
#define CASETABLE_OPTIONS_COMMANDLINE_H

#include <string>
#include <vector>

#include "casetable/options/OptionTable.h"

namespace casetable {

/// A command line as it was typed.
struct CommandLine {
    struct Item {
        const Option* option; ///< Also ROOT, which is there as often as it was typed.
        std::string value;    ///< Empty for a flag.
    };

    std::vector<Item> items; ///< In the order in which they were typed.
    std::string unknown;     ///< The first option that there is not; empty where all are known.

    /// Whether it was typed.
    bool has(OptionId id) const;

    /// The values that were typed for it, in order.
    std::vector<std::string> valuesOf(OptionId id) const;
};

/// Reads arguments, without the program's name, by the table of options.
///
/// Long names are exact; their value stands behind "=" or is the next argument. Letters may stand
/// together behind one dash, up to the first that takes a value, which is what is left, or the next
/// argument. Any next argument is taken as a value. All else is ROOT: "-", what does not begin with
/// "-", and everything behind "--".
///
/// Throws Failure with ExitCode::WrongUsage where a value is missing, is empty behind "=" or is
/// given to a flag, and where a long name has only one dash.
CommandLine readCommandLine(const std::vector<std::string>& arguments);

/// Throws Failure with ExitCode::WrongUsage.
[[noreturn]] void failUsage(const std::string& message);

} // namespace casetable

#endif
