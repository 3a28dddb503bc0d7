#ifndef CASETABLE_SYSTEM_CONSOLE_H
#define CASETABLE_SYSTEM_CONSOLE_H

#include <mutex>
#include <string>

#include "casetable/system/Colour.h"

namespace casetable {

/// Standard error: messages of one line each, and a status line that gives way to them. May be used
/// from several threads at once. All text is made printable. On a terminal, what begins an error or
/// a warning is coloured where the user wants colours.
class Console {
public:
    Console();

    /// Leaves out warnings, remarks and the status line from now on.
    void beQuiet();

    /// An error, always shown; `excerpt` is printable lines, each with its end, to show below it as
    /// they are.
    void error(const std::string& message, const std::string& excerpt = "");

    /// A warning, shown unless quiet.
    void warning(const std::string& message);

    /// A remark on how it went, shown on a terminal unless quiet.
    void remark(const std::string& message);

    /// Whether remarks are shown.
    bool showsRemarks() const;

    /// Shows `text`, cut to the terminal's width, in place of the last status; on a terminal unless
    /// quiet.
    void setStatus(const std::string& text);

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
