#ifndef CASETABLE_SYSTEM_COLOUR_H
#define CASETABLE_SYSTEM_COLOUR_H

#include <string>

namespace casetable {

/// How a part of a text is set off on a terminal.
enum class Colour { Bold, BoldRed, BoldYellow };

/// Whether the user wants colours on terminals: the environment's NO_COLOR is empty or not set, and
/// its TERM names a terminal other than "dumb".
bool coloursAreWanted();

/// `text` between the sequences that switch a terminal to the colour and back.
std::string coloured(Colour colour, const std::string& text);

} // namespace casetable

#endif
