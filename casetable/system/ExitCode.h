#ifndef CASETABLE_SYSTEM_EXITCODE_H
#define CASETABLE_SYSTEM_EXITCODE_H

#include <stdexcept>
#include <string>

namespace casetable {

/// What the program leaves with. A program stopped by a signal leaves with 128 + its number.
enum class ExitCode {
    Cases = 0,        ///< A table with cases was written.
    NoCases = 1,      ///< No file matched; the table is empty.
    WrongUsage = 2,   ///< An option or argument cannot be used.
    ImportFailed = 3, ///< The walk, the matching or an identifier failed.
    OutputFailed = 4  ///< The output could not be written.
};

/// Ends the program with a one-line message and an exit code.
class Failure : public std::runtime_error {
public:
    Failure(ExitCode code, const std::string& message, const std::string& excerpt = "")
        : std::runtime_error(message), code(code), excerpt(excerpt)
    {
    }

    const ExitCode code;

    /// Printable lines to show below the message, each with its end: what is wrong, and marks under
    /// the place.
    const std::string excerpt;
};

} // namespace casetable

#endif
