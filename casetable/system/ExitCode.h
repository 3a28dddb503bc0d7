#ifndef CASETABLE_SYSTEM_EXITCODE_H
#define CASETABLE_SYSTEM_EXITCODE_H

#include <stdexcept>
#include <string>

namespace casetable {

/// The program's exit status. A program that a signal interrupts exits with 128 + its number.
enum class ExitCode {
    Cases = 0,        ///< There are cases, markers to suggest, or an explained path that matches.
    NoCases = 1,      ///< There are none.
    WrongUsage = 2,   ///< An option or argument cannot be used.
    ImportFailed = 3, ///< The walk, the list, the matching, an identifier or --missing failed.
    OutputFailed = 4  ///< The output could not be written.
};

/// Thrown to end the program with a message, one line without its end, and an exit code.
class Failure : public std::runtime_error {
public:
    Failure(ExitCode code, const std::string& message, const std::string& excerpt = "")
        : std::runtime_error(message), code(code), excerpt(excerpt)
    {
    }

    const ExitCode code;

    /// Printable lines to show below the message, each ended by a line feed: the text that is
    /// wrong, with a mark under the place.
    const std::string excerpt;
};

} // namespace casetable

#endif
