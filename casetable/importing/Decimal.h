#ifndef CASETABLE_IMPORTING_DECIMAL_H
#define CASETABLE_IMPORTING_DECIMAL_H

#include <string>
#include <string_view>

namespace casetable {

/// A number as it is written, with all of its digits, of which a double keeps some 16: 0.DIGITS
/// times ten to the power of the exponent. Equal numbers are equal, however they are written.
class Decimal {
public:
    /// Reads a text that converts to a finite number: a sign, digits with a point, and an exponent
    /// with "e" or "E", each of which may be missing.
    explicit Decimal(std::string_view text);

    friend bool operator<(const Decimal& a, const Decimal& b);
    friend bool operator==(const Decimal& a, const Decimal& b);

    /// A text that is the same for equal numbers alone.
    std::string key() const;

private:
    bool isNegative_ = false;
    long exponent_ = 0;
    std::string digits_; // Without zeros at its ends; empty for zero, which has no sign.
};

} // namespace casetable

#endif
