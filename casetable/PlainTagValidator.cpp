#include "casetable/PlainTagValidator.h"

#include <algorithm>

namespace casetable {

namespace {

bool isControl(char c)
{
    const auto byte = static_cast<unsigned char>(c);
    return byte < 0x20 || byte == 0x7f;
}

} // namespace

ortelo::ValidationResult PlainTagValidator::validate(const std::string& tag) const
{
    ortelo::ValidationResult result;
    if (tag.empty())
        result.setErrorString("the tag is empty");
    else if (std::any_of(tag.begin(), tag.end(), isControl))
        result.setErrorString("the tag holds a control character");
    return result;
}

} // namespace casetable
