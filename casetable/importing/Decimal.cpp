#include "casetable/importing/Decimal.h"

#include <algorithm>
#include <cstdlib>
#include <tuple>

#include "crawler/private/PathReading.h"

namespace casetable {

Decimal::Decimal(std::string_view text)
{
    const std::size_t end = std::min(text.find_first_of("eE"), text.size());
    bool isBehindPoint = false;
    for (const char c : text.substr(0, end)) {
        if (c == '.') {
            isBehindPoint = true;
        } else if (reading::isDigit(c)) {
            // A zero in front of all other digits only moves the point.
            const bool isKept = c != '0' || !digits_.empty();
            if (isKept)
                digits_ += c;
            exponent_ += isKept ? (isBehindPoint ? 0 : 1) : (isBehindPoint ? -1 : 0);
        }
    }
    digits_.erase(digits_.find_last_not_of('0') + 1);
    if (digits_.empty()) {
        exponent_ = 0;
        return;
    }
    isNegative_ = text.front() == '-';
    if (end < text.size())
        exponent_ += std::strtol(std::string(text.substr(end + 1)).c_str(), nullptr, 10);
}

bool operator<(const Decimal& a, const Decimal& b)
{
    const auto sign = [](const Decimal& number) {
        return number.digits_.empty() ? 0 : number.isNegative_ ? -1 : 1;
    };
    if (sign(a) != sign(b))
        return sign(a) < sign(b);
    const Decimal& nearer = a.isNegative_ ? b : a; // To zero, if a is less.
    const Decimal& farther = a.isNegative_ ? a : b;
    return std::tie(nearer.exponent_, nearer.digits_) <
           std::tie(farther.exponent_, farther.digits_);
}

bool operator==(const Decimal& a, const Decimal& b)
{
    return std::tie(a.isNegative_, a.exponent_, a.digits_) ==
           std::tie(b.isNegative_, b.exponent_, b.digits_);
}

std::string Decimal::key() const
{
    return (isNegative_ ? "-" : "") + digits_ + 'e' + std::to_string(exponent_);
}

} // namespace casetable
