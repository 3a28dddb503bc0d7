#include "casetable/explaining/MarkedPath.h"

#include "casetable/system/Colour.h"
#include "casetable/system/Printable.h"

namespace casetable {

// The path is made printable piece by piece, up to each place, as the column of a place is the
// width of what then stands before it, escapes included.
MarkedPath::MarkedPath(const std::string& path, const std::set<std::size_t>& places, bool inColour)
    : inColour_(inColour)
{
    std::size_t begin = 0;
    for (const std::size_t place : places) {
        text_ += printable(std::string_view(path).substr(begin, place - begin));
        columns_[place] = displayWidth(text_);
        begin = place;
    }
    text_ += printable(std::string_view(path).substr(begin));
}

std::string MarkedPath::marks(std::size_t marker, std::size_t value, std::size_t end) const
{
    const std::size_t begin = columns_.at(marker);
    const std::size_t middle = columns_.at(value);
    const std::string marks =
        std::string(middle - begin, '^') + std::string(columns_.at(end) - middle, '~');
    return std::string(begin, ' ') + (inColour_ ? coloured(Colour::Bold, marks) : marks) + "  ";
}

std::string quoted(std::string_view bytes)
{
    return "'" + printable(bytes) + "'";
}

} // namespace casetable
