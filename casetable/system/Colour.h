#ifndef CASETABLE_SYSTEM_COLOUR_H
#define CASETABLE_SYSTEM_COLOUR_H

#include <string>

namespace casetable {

enum class Colour { Bold, BoldRed, BoldYellow };

/// Whether the user wants colours where something is shown on a terminal: NO_COLOR is not set or
/// is empty, and TERM names a terminal that is not "dumb".
bool coloursAreWanted();

/// `text` between the sequences that switch a terminal to the colour and back.
std::string coloured(Colour colour, const std::string& text);

} // namespace casetable

#endif
