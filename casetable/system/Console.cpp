#include "casetable/system/Console.h"

#include <cstddef>

#include <sys/ioctl.h>
#include <unistd.h>

#include "casetable/system/Printable.h"

namespace casetable {

namespace {

// Back to the first column, and nothing right of it.
const char* const eraseLine = "\r\x1b[K";

std::size_t terminalColumns()
{
    winsize size = {};
    return ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : 80;
}

void writeAll(const std::string& text)
{
    std::size_t written = 0;
    while (written < text.size()) {
        const ssize_t count = ::write(STDERR_FILENO, text.data() + written, text.size() - written);
        if (count <= 0)
            return; // There is no better place to complain.
        written += static_cast<std::size_t>(count);
    }
}

} // namespace

Console::Console()
    : terminal_(isatty(STDERR_FILENO) == 1), colours_(terminal_ && coloursAreWanted())
{
}

void Console::beQuiet()
{
    const std::lock_guard<std::mutex> lock(mutex_);
    quiet_ = true;
}

void Console::error(const std::string& message, const std::string& excerpt)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    writeLine(inColour(Colour::BoldRed, "casetable:") + " ", message, excerpt);
}

void Console::warning(const std::string& message)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    if (!quiet_)
        writeLine("casetable: " + inColour(Colour::BoldYellow, "warning:") + " ", message);
}

void Console::remark(const std::string& message)
{
    if (!showsRemarks())
        return;
    const std::lock_guard<std::mutex> lock(mutex_);
    writeLine("casetable: ", message);
}

void Console::progress(const std::string& message)
{
    if (!showsProgress())
        return;
    const std::lock_guard<std::mutex> lock(mutex_);
    writeLine("casetable: ", message);
}

bool Console::showsProgress() const
{
    const std::lock_guard<std::mutex> lock(mutex_);
    return !terminal_ && !quiet_;
}

bool Console::showsRemarks() const
{
    const std::lock_guard<std::mutex> lock(mutex_);
    return terminal_ && !quiet_;
}

void Console::setStatus(const std::string& text)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    if (!terminal_ || quiet_)
        return;
    const std::string line = printable(text);
    writeAll(eraseLine + std::string(fitting(line, terminalColumns() - 1)));
    statusShown_ = true;
}

void Console::clearStatus()
{
    const std::lock_guard<std::mutex> lock(mutex_);
    if (statusShown_)
        writeAll(eraseLine);
    statusShown_ = false;
}

void Console::writeLine(const std::string& beginning, const std::string& message,
                        const std::string& excerpt)
{
    const std::string erase = statusShown_ ? eraseLine : "";
    statusShown_ = false;
    writeAll(erase + beginning + printable(message) + "\n" + excerpt);
}

std::string Console::inColour(Colour colour, const std::string& text) const
{
    return colours_ ? coloured(colour, text) : text;
}

} // namespace casetable
