#ifndef CASETABLE_EXPLAINING_MARKEDPATH_H
#define CASETABLE_EXPLAINING_MARKEDPATH_H

#include <cstddef>
#include <map>
#include <set>
#include <string>
#include <string_view>

namespace casetable {

/// A path as it is shown to people, and marks to stand under parts of it in lines of their own.
class MarkedPath {
public:
    /// `places` are where marks may begin and end: indices of bytes of the path, or its size. With
    /// `inColour` the marks are bold.
    MarkedPath(const std::string& path, const std::set<std::size_t>& places, bool inColour);

    /// The path, made printable.
    const std::string& text() const { return text_; }

    /// The beginning of a line below the path: "^" under the bytes from `marker` to before `value`,
    /// "~" under those from there to before `end`, and two blanks. All three must be places.
    std::string marks(std::size_t marker, std::size_t value, std::size_t end) const;

private:
    std::string text_;
    std::map<std::size_t, std::size_t> columns_; // By place, in columns of the terminal.
    bool inColour_;
};

/// `bytes` made printable, in quotes.
std::string quoted(std::string_view bytes);

} // namespace casetable

#endif
