#include "casetable/system/Printable.h"

#include <clocale>
#include <cstdio>
#include <cwchar>

#include <QChar>

#include <utf8.h>

namespace casetable {

namespace {

bool isSafe(char32_t codePoint)
{
    switch (QChar::category(codePoint)) {
    case QChar::Other_Control:
    case QChar::Other_Format:
    case QChar::Other_Surrogate:
    case QChar::Other_PrivateUse:
    case QChar::Other_NotAssigned:
    case QChar::Separator_Line:
    case QChar::Separator_Paragraph:
        return false;
    default:
        return true;
    }
}

template <class... Arguments> std::string formatted(const char* format, Arguments... arguments)
{
    char buffer[32];
    static_cast<void>(std::snprintf(buffer, sizeof buffer, format, arguments...));
    return buffer;
}

std::string escaped(char32_t codePoint)
{
    switch (codePoint) {
    case '\n':
        return "\\n";
    case '\r':
        return "\\r";
    case '\t':
        return "\\t";
    default:
        return codePoint < 0x80 ? formatted("\\x%02x", static_cast<unsigned>(codePoint))
                                : formatted("\\u{%x}", static_cast<unsigned>(codePoint));
    }
}

// The width of a character in columns. It depends on the encoding alone, not on the user's
// language, so a fixed locale will do.
std::size_t characterWidth(char32_t codePoint)
{
    static const locale_t utf8 = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    if (utf8 == nullptr)
        return 1;
    const locale_t previous = uselocale(utf8);
    const int width = wcwidth(static_cast<wchar_t>(codePoint));
    uselocale(previous);
    return width < 0 ? 1 : static_cast<std::size_t>(width);
}

} // namespace

std::string printable(std::string_view bytes)
{
    std::string text;
    text.reserve(bytes.size());
    const char* next = bytes.data();
    const char* const end = next + bytes.size();
    while (next != end) {
        const char* const validEnd = utf8::find_invalid(next, end);
        while (next != validEnd) {
            const char* const character = next;
            const char32_t codePoint = utf8::unchecked::next(next);
            if (isSafe(codePoint))
                text.append(character, next);
            else
                text += escaped(codePoint);
        }
        if (next != end)
            text +=
                formatted("\\x%02x", static_cast<unsigned>(static_cast<unsigned char>(*next++)));
    }
    return text;
}

std::size_t displayWidth(std::string_view text)
{
    std::size_t width = 0;
    for (const char* next = text.data(); next < text.data() + text.size();)
        width += characterWidth(utf8::unchecked::next(next));
    return width;
}

std::string_view fitting(std::string_view text, std::size_t columns)
{
    std::size_t width = 0;
    for (const char* next = text.data(); next < text.data() + text.size();) {
        const char* const character = next;
        width += characterWidth(utf8::unchecked::next(next));
        if (width > columns)
            return text.substr(0, static_cast<std::size_t>(character - text.data()));
    }
    return text;
}

} // namespace casetable
