#ifndef CASETABLE_SYSTEM_CONSOLE_H
#define CASETABLE_SYSTEM_CONSOLE_H

#include <mutex>
#include <string>

#include "casetable/system/Colour.h"

namespace casetable {

/// Standard error, to which go messages of one line each, and on a terminal one status line below
/// them. All text is made printable. On a terminal, the beginning of an error or a warning is
/// coloured if the user wants colours. Where standard error cannot be written to, nothing is said.
/// May be used from several threads at once.
class Console {
public:
    Console();

    /// Leaves out warnings, remarks and the status line from now on.
    void beQuiet();

    /// Tells why the program fails; always shown. Below it `excerpt` is shown as it is: printable
    /// lines, each ended by a line feed.
    void error(const std::string& message, const std::string& excerpt = "");

    /// Warns, while a run goes on, of something that is left out or doubtful; shown unless quiet.
    void warning(const std::string& message);

    /// Remarks on how a run went, and on what may not have been meant; shown on a terminal unless
    /// quiet.
    void remark(const std::string& message);

    /// Tells how far a long run has come, where there is no terminal for a status line; shown
    /// unless quiet.
    void progress(const std::string& message);

    /// Whether there is no terminal, but what progress() tells is shown.
    bool showsProgress() const;

    /// Whether remarks are shown, for callers to whom making them is costly.
    bool showsRemarks() const;

    /// Shows `text`, cut to the terminal's width, in place of the status before; on a terminal
    /// unless quiet. The next message takes its place.
    void setStatus(const std::string& text);

    /// Takes the status line off the terminal.
    void clearStatus();

private:
    void writeLine(const std::string& beginning, const std::string& message,
                   const std::string& excerpt = "");
    std::string inColour(Colour colour, const std::string& text) const;

    const bool terminal_;
    const bool colours_;
    bool quiet_ = false;
    bool statusShown_ = false;
    mutable std::mutex mutex_;
};

} // namespace casetable

#endif
