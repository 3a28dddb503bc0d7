#include "casetable/system/Colour.h"

#include <cstdlib>

namespace casetable {

namespace {

std::string variable(const char* name)
{
    const char* const value = std::getenv(name);
    return value == nullptr ? "" : value;
}

const char* sequence(Colour colour)
{
    switch (colour) {
    case Colour::BoldRed:
        return "\x1b[1;31m";
    case Colour::BoldYellow:
        return "\x1b[1;33m";
    case Colour::Bold:
        break;
    }
    return "\x1b[1m";
}

} // namespace

bool coloursAreWanted()
{
    const std::string terminal = variable("TERM");
    return variable("NO_COLOR").empty() && !terminal.empty() && terminal != "dumb";
}

std::string coloured(Colour colour, const std::string& text)
{
    return sequence(colour) + text + "\x1b[0m";
}

} // namespace casetable
