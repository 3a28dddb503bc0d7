#ifndef CASETABLE_EXPLAINING_MARKEDPATH_H
#define CASETABLE_EXPLAINING_MARKEDPATH_H

#include <cstddef>
#include <map>
#include <set>
#include <string>
#include <string_view>

namespace casetable {

/// A path as it is shown to people, with marks to put under parts of it. Bytes count from 0.
class MarkedPath {
public:
    /// `places` are the bytes of the path, or its size, at which marks are to begin and end. With
    /// `inColour` the marks are bold.
    MarkedPath(const std::string& path, const std::set<std::size_t>& places, bool inColour);

    /// The path, made printable.
    const std::string& text() const { return text_; }

    /// What stands under the path: "^" from `marker` to `value`, and "~" from there to `end`, all
    /// of them places, and two blanks.
    std::string marks(std::size_t marker, std::size_t value, std::size_t end) const;

private:
    std::string text_;
    std::map<std::size_t, std::size_t> columns_; // Of the places.
    bool inColour_;
};

/// `bytes` made printable, in quotes.
std::string quoted(std::string_view bytes);

} // namespace casetable

#endif
