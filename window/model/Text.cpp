#include "window/model/Text.h"

#include <algorithm>
#include <iterator>

#include "casetable/system/Printable.h"

namespace casetable {

namespace {

// Where the surrogates begin that stand for bytes. In text they only stand behind others.
const ushort firstByte = 0xdc00;

// The number of bytes of the UTF-8 character at the begin of `bytes`, or 0 where there is none.
std::size_t characterLength(std::string_view bytes)
{
    const auto lead = static_cast<unsigned char>(bytes.front());
    const std::size_t length = lead < 0x80                   ? 1
                               : lead >= 0xc2 && lead < 0xe0 ? 2
                               : lead >= 0xe0 && lead < 0xf0 ? 3
                               : lead >= 0xf0 && lead < 0xf5 ? 4
                                                             : 0;
    if (length == 0 || length > bytes.size())
        return 0;
    unsigned code = length == 1 ? lead : lead & (0x7fU >> length);
    for (std::size_t i = 1; i < length; ++i) {
        const auto byte = static_cast<unsigned char>(bytes[i]);
        if ((byte & 0xc0U) != 0x80)
            return 0;
        code = (code << 6U) | (byte & 0x3fU);
    }
    const bool isOverlong = (length == 3 && code < 0x800) || (length == 4 && code < 0x10000);
    const bool isSurrogate = code >= 0xd800 && code < 0xe000;
    return isOverlong || isSurrogate || code > 0x10ffff ? 0 : length;
}

QString utf16(std::string_view utf8)
{
    return QString::fromUtf8(utf8.data(), static_cast<int>(utf8.size()));
}

} // namespace

// QString::fromUtf8() would take a byte order mark off the begin.
QString editable(std::string_view bytes)
{
    QString text;
    text.reserve(static_cast<int>(bytes.size()));
    while (!bytes.empty()) {
        const auto byte = static_cast<unsigned char>(bytes.front());
        const std::size_t length = characterLength(bytes);
        const bool isText = length > 0 && byte >= 0x20 && byte != 0x7f;
        if (!isText)
            text += QChar(static_cast<ushort>(firstByte + byte));
        else if (bytes.substr(0, length) == "\xef\xbb\xbf")
            text += QChar(QChar::ByteOrderMark);
        else
            text += utf16(bytes.substr(0, length));
        bytes.remove_prefix(isText ? length : 1);
    }
    return text;
}

std::string bytesOf(const QString& text)
{
    std::string bytes;
    for (int i = 0; i < text.size(); ++i) {
        const ushort unit = text[i].unicode();
        if (text[i].isHighSurrogate() && i + 1 < text.size() && text[i + 1].isLowSurrogate()) {
            bytes += text.mid(i, 2).toUtf8().toStdString();
            ++i;
        } else if (unit >= firstByte && unit < firstByte + 0x100) {
            bytes += static_cast<char>(unit - firstByte);
        } else {
            bytes += QString(text[i]).toUtf8().toStdString();
        }
    }
    return bytes;
}

ShownText::ShownText(std::string_view bytes)
{
    places_.clear();
    std::size_t offset = 0;
    while (offset < bytes.size()) {
        places_.push_back({offset, text_.size()});
        const std::size_t length = std::max<std::size_t>(1, characterLength(bytes.substr(offset)));
        text_ += utf16(printable(bytes.substr(offset, length)));
        offset += length;
    }
    places_.push_back({offset, text_.size()});
}

int ShownText::placeOf(std::size_t offset) const
{
    const auto behind =
        std::upper_bound(places_.begin(), places_.end(), offset,
                         [](std::size_t o, const Place& place) { return o < place.offset; });
    return std::prev(behind)->place;
}

std::size_t ShownText::offsetAt(int place) const
{
    const auto behind = std::upper_bound(places_.begin(), places_.end(), std::max(place, 0),
                                         [](int p, const Place& each) { return p < each.place; });
    return std::prev(behind)->offset;
}

std::size_t ShownText::next(std::size_t offset) const
{
    const auto behind =
        std::upper_bound(places_.begin(), places_.end(), offset,
                         [](std::size_t o, const Place& place) { return o < place.offset; });
    return behind == places_.end() ? places_.back().offset : behind->offset;
}

std::size_t ShownText::previous(std::size_t offset) const
{
    const auto at =
        std::lower_bound(places_.begin(), places_.end(), offset,
                         [](const Place& place, std::size_t o) { return place.offset < o; });
    return at == places_.begin() ? 0 : std::prev(at)->offset;
}

QString shown(std::string_view bytes)
{
    return utf16(printable(bytes));
}

} // namespace casetable
