#ifndef WINDOW_MODEL_COMMANDTEXT_H
#define WINDOW_MODEL_COMMANDTEXT_H

#include <string>
#include <string_view>
#include <vector>

namespace casetable {

/// The words of a shell's command line, with quotes '...', "...", $'...' and "\" as a shell takes
/// them; nothing else is expanded. So the words of shellWord() come back. Line feeds divide words
/// too, and "\" in front of one continues the line.
///
/// Throws std::invalid_argument with half a sentence when a quote is not closed.
std::vector<std::string> commandWords(std::string_view line);

} // namespace casetable

#endif
