#ifndef CASETABLE_SYSTEM_PRINTABLE_H
#define CASETABLE_SYSTEM_PRINTABLE_H

#include <cstddef>
#include <string>
#include <string_view>

namespace casetable {

/// `bytes` made safe to show on a terminal in one line. Control and format characters, line
/// separators, unassigned and private-use code points, and bytes that are not UTF-8 become escapes
/// such as `\n`, `\x1b` or `\u{202e}`; all else stays. It is for people to read, and cannot be
/// turned back into the bytes, as a backslash among them is not escaped.
std::string printable(std::string_view bytes);

/// The number of terminal columns that `text` takes, which printable() has made.
std::size_t displayWidth(std::string_view text);

/// The longest beginning of `text`, which printable() has made, that takes at most `columns`
/// terminal columns; it refers to the same bytes.
std::string_view fitting(std::string_view text, std::size_t columns);

} // namespace casetable

#endif
