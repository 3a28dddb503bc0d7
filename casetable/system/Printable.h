#ifndef CASETABLE_SYSTEM_PRINTABLE_H
#define CASETABLE_SYSTEM_PRINTABLE_H

#include <cstddef>
#include <string>
#include <string_view>

namespace casetable {

/// `bytes` made safe to show on a terminal in one line: control and format characters, line
/// separators, unassigned and private-use code points and bytes that are not UTF-8 become escapes
/// (`\n`, `\x1b`,
/// `\u{202e}`), everything else stays. For people to read; a backslash in the text is not escaped.
std::string printable(std::string_view bytes);

/// The number of terminal columns that a printable() text takes.
std::size_t displayWidth(std::string_view text);

/// The longest beginning of a printable() text that takes at most `columns`.
std::string_view fitting(std::string_view text, std::size_t columns);

} // namespace casetable

#endif
