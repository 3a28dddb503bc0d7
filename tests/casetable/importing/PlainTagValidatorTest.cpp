#include "casetable/importing/PlainTagValidator.h"

#include <string>

#include <gtest/gtest.h>

namespace casetable {
namespace tests {

TEST(PlainTagValidator, AcceptsAnyTextWithoutControlCharacters)
{
    for (const std::string tag : {"log", "a b", " ", "=", "*", "\xc3\xa4", "\xff", "a,\"b\""}) {
        const ortelo::ValidationResult result = PlainTagValidator().validate(tag);
        EXPECT_TRUE(result.isValid()) << tag;
        EXPECT_EQ(result.errorString(), "");
    }
}

TEST(PlainTagValidator, RefusesAnEmptyTag)
{
    const ortelo::ValidationResult result = PlainTagValidator().validate("");

    EXPECT_FALSE(result.isValid());
    EXPECT_EQ(result.errorString(), "the tag is empty");
}

TEST(PlainTagValidator, RefusesControlCharactersAnywhere)
{
    for (int byte = 0; byte < 128; ++byte) {
        const bool isControl = byte < 0x20 || byte == 0x7f;
        const char c = static_cast<char>(byte);
        for (const std::string& tag :
             {std::string("a") + c + "b", std::string("a") + c, std::string(1, c)}) {
            const ortelo::ValidationResult result = PlainTagValidator().validate(tag);
            EXPECT_EQ(result.isValid(), !isControl) << byte;
            EXPECT_EQ(result.errorString(), isControl ? "the tag holds a control character" : "");
        }
    }
}

TEST(PlainTagValidator, RefusesControlCharactersBeyondAscii)
{
    EXPECT_FALSE(PlainTagValidator().validate("a\xc2\x9b").isValid());
    EXPECT_FALSE(PlainTagValidator().validate("\xc2\x80").isValid());
    EXPECT_FALSE(PlainTagValidator().validate("\xc2\x9f").isValid());
    EXPECT_TRUE(PlainTagValidator().validate("\xc3\x80").isValid());
    EXPECT_TRUE(PlainTagValidator().validate("\xc2\xa1").isValid());
}

} // namespace tests
} // namespace casetable
