#include "casetable/importing/Decimal.h"

#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace casetable {
namespace tests {

TEST(Decimal, IsEqualForEqualNumbersHoweverTheyAreWritten)
{
    for (const std::vector<std::string>& equal : std::vector<std::vector<std::string>>{
             {"5", "5.0", "+5", "05", "5e0", "0.5E1", "50e-1", ".5e+01", "5."},
             {"0", "-0", "0.000", "0e99", ".0"},
             {"-0.25", "-.25", "-25e-2", "-00.250"},
             {"12345678901234567890", "1234567890123456789.0e1"}}) {
        for (const std::string& text : equal) {
            EXPECT_TRUE(Decimal(text) == Decimal(equal.front())) << text;
            EXPECT_EQ(Decimal(text).key(), Decimal(equal.front()).key()) << text;
            EXPECT_FALSE(Decimal(text) < Decimal(equal.front())) << text;
        }
    }
}

TEST(Decimal, TellsNumbersApartThatAreOneDouble)
{
    EXPECT_FALSE(Decimal("20250311123456789") == Decimal("20250311123456788"));
    EXPECT_TRUE(Decimal("20250311123456788") < Decimal("20250311123456789"));
    EXPECT_TRUE(Decimal("-0.10000000000000000001") < Decimal("-0.1"));
    EXPECT_NE(Decimal("9007199254740993").key(), Decimal("9007199254740992").key());
}

TEST(Decimal, IsOrderedAsDoublesAreWhereTheseDiffer)
{
    std::mt19937 random(7);
    const auto number = [&random] {
        std::string text = random() % 3 == 0 ? "-" : "";
        for (std::size_t i = random() % 4; i > 0; --i)
            text += static_cast<char>('0' + random() % 10);
        text += random() % 2 == 0 ? "." : "0.";
        for (std::size_t i = 1 + random() % 3; i > 0; --i)
            text += static_cast<char>('0' + random() % 3);
        if (random() % 2 == 0)
            text += "e" + std::to_string(static_cast<int>(random() % 7) - 3);
        return text;
    };
    for (int round = 0; round < 20000; ++round) {
        const std::string a = number();
        const std::string b = number();
        const double valueOfA = std::strtod(a.c_str(), nullptr);
        const double valueOfB = std::strtod(b.c_str(), nullptr);
        ASSERT_EQ(Decimal(a) < Decimal(b), valueOfA < valueOfB) << a << ' ' << b;
        ASSERT_EQ(Decimal(a) == Decimal(b), valueOfA == valueOfB) << a << ' ' << b;
    }
}

} // namespace tests
} // namespace casetable
