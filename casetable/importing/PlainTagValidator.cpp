#include "casetable/importing/PlainTagValidator.h"

#include <algorithm>

namespace casetable {

namespace {

// Control characters are U+0000 to U+001F, U+007F, and U+0080 to U+009F, which UTF-8 writes as the
// byte 0xc2 and one from 0x80 to 0x9f.
bool holdsControlCharacter(const std::string& text)
{
    const auto isControl = [](unsigned char byte) { return byte < 0x20 || byte == 0x7f; };
    const auto isHighControl = [](unsigned char first, unsigned char second) {
        return first == 0xc2 && second >= 0x80 && second <= 0x9f;
    };
    return std::any_of(text.begin(), text.end(), isControl) ||
           std::adjacent_find(text.begin(), text.end(), isHighControl) != text.end();
}

} // namespace

ortelo::ValidationResult PlainTagValidator::validate(const std::string& tag) const
{
    ortelo::ValidationResult result;
    if (tag.empty())
        result.setErrorString("the tag is empty");
    else if (holdsControlCharacter(tag))
        result.setErrorString("the tag holds a control character");
    return result;
}

} // namespace casetable
