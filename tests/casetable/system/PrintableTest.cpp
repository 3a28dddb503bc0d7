#include "casetable/system/Printable.h"

#include <clocale>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

namespace casetable {
namespace tests {

namespace {

struct Printed {
    std::string bytes;
    std::string text;
};

void expectPrinted(const std::vector<Printed>& rows)
{
    for (const Printed& row : rows)
        EXPECT_EQ(printable(row.bytes), row.text) << testing::PrintToString(row.bytes);
}

} // namespace

TEST(Printable, PrintsOrdinaryTextAsItIs)
{
    for (const std::string text :
         {"", "plain", "two words ", "C:\\path\\n", "\"'`$%{}", "\xc3\xa4\xc3\x9f", "\xe2\x82\xac",
          "\xe7\xbf\xbc\xe5\x9e\x8b", "\xf0\x9f\x98\x80", "a\xcc\x88", "\xc2\xa0|\xe3\x80\x80",
          "\xd8\xa7\xd9\x84", "\xed\x9f\xbb", "\xef\xbf\xbd"})
        EXPECT_EQ(printable(text), text);
}

TEST(Printable, EscapesControlCharacters)
{
    expectPrinted({{"a\nb\rc\td", "a\\nb\\rc\\td"},
                   {"\x1b[31m", "\\x1b[31m"},
                   {std::string("\0", 1), "\\x00"},
                   {"\x01\a\b\v\f\x1f\x7f", "\\x01\\x07\\x08\\x0b\\x0c\\x1f\\x7f"},
                   {"\xc2\x80\xc2\x85\xc2\x9b\xc2\x9f", "\\u{80}\\u{85}\\u{9b}\\u{9f}"}});
}

TEST(Printable, EscapesFormatCharactersAndLineSeparators)
{
    expectPrinted({{"\xc2\xad", "\\u{ad}"},            // Soft hyphen.
                   {"\xe2\x80\x8b", "\\u{200b}"},      // Zero-width space.
                   {"\xe2\x80\x8e", "\\u{200e}"},      // Left-to-right mark.
                   {"\xe2\x80\xaa", "\\u{202a}"},      // Embedding ...
                   {"\xe2\x80\xae", "\\u{202e}"},      // ... and override.
                   {"\xe2\x81\xa6", "\\u{2066}"},      // Isolate.
                   {"\xef\xbb\xbf", "\\u{feff}"},      // Byte order mark.
                   {"\xf3\xa0\x81\x81", "\\u{e0041}"}, // Tag.
                   {"\xe2\x80\xa8\xe2\x80\xa9", "\\u{2028}\\u{2029}"}});
}

TEST(Printable, EscapesCodePointsWithoutAMeaningOfTheirOwn)
{
    expectPrinted({{"\xcd\xb8", "\\u{378}"},              // Unassigned.
                   {"\xee\x80\x80", "\\u{e000}"},         // For private use.
                   {"\xf4\x8f\xbf\xbd", "\\u{10fffd}"}}); // For private use.
}

TEST(Printable, EscapesEachByteThatIsNotUtf8)
{
    expectPrinted({{"\xff\xfe", "\\xff\\xfe"},
                   {"a\x80z", "a\\x80z"},                        // Continuation alone.
                   {"\xc3", "\\xc3"},                            // Truncated at the end ...
                   {"\xe2\x82", "\\xe2\\x82"},                   //
                   {"\xf0\x9f\x98", "\\xf0\\x9f\\x98"},          //
                   {"\xe2\x82z", "\\xe2\\x82z"},                 // ... and before a letter.
                   {"\xc3\xc3\xa4", "\\xc3\xc3\xa4"},            //
                   {"\xc0\xaf", "\\xc0\\xaf"},                   // Overlong.
                   {"\xe0\x80\xaf", "\\xe0\\x80\\xaf"},          //
                   {"\xf0\x80\x80\xaf", "\\xf0\\x80\\x80\\xaf"}, //
                   {"\xed\xa0\x80", "\\xed\\xa0\\x80"},          // Surrogates.
                   {"\xed\xbf\xbf", "\\xed\\xbf\\xbf"},          //
                   {"\xf4\x90\x80\x80", "\\xf4\\x90\\x80\\x80"}, // Beyond the last.
                   {"\xf8\x88\x80\x80\x80", "\\xf8\\x88\\x80\\x80\\x80"},
                   {"\xff\xc3\xa4\xff", "\\xff\xc3\xa4\\xff"}});
}

TEST(Printable, PrintsEveryByteAndPairOfBytesSafely)
{
    for (int first = 0; first < 256; ++first) {
        for (int second = 0; second < 256; ++second) {
            const std::string bytes = {static_cast<char>(first), static_cast<char>(second)};
            const std::string text = printable(bytes);
            for (const char c : text)
                ASSERT_TRUE(static_cast<unsigned char>(c) >= 0x20 && c != '\x7f')
                    << testing::PrintToString(bytes);
            ASSERT_EQ(printable(text), text) << testing::PrintToString(bytes);
        }
    }
}

TEST(Printable, TakesTheColumnsThatATerminalGivesIt)
{
    struct Row {
        const char* text;
        std::size_t width;
    };
    for (const Row& row : {Row{"", 0}, Row{"abc", 3}, Row{"\xc3\xa4", 1}, Row{"a\xcc\x88", 1},
                           Row{"\xe7\xbf\xbc\xe5\x9e\x8b", 4}, Row{"\xf0\x9f\x98\x80", 2},
                           Row{"\xe3\x80\x80", 2}, Row{"\xef\xbd\xb1", 1}, Row{"\\u{202e}", 8}})
        EXPECT_EQ(displayWidth(row.text), row.width) << row.text;
}

TEST(Printable, LeavesTheLanguageOfTheThreadAsItWas)
{
    const locale_t before = uselocale(nullptr);

    EXPECT_EQ(displayWidth("\xe7\xbf\xbc"), 2u);

    EXPECT_EQ(uselocale(nullptr), before);
}

TEST(Printable, FitsByWholeCharacters)
{
    struct Row {
        std::string_view text;
        std::size_t columns;
        std::string_view fitting;
    };
    for (const Row& row :
         {Row{"", 0, ""}, Row{"", 5, ""}, Row{"abc", 0, ""}, Row{"abc", 2, "ab"},
          Row{"abc", 3, "abc"}, Row{"abc", 4, "abc"}, Row{"\xc3\xa4\xc3\xb6", 1, "\xc3\xa4"},
          Row{"\xe7\xbf\xbc\xe5\x9e\x8b", 1, ""},
          Row{"\xe7\xbf\xbc\xe5\x9e\x8b", 2, "\xe7\xbf\xbc"},
          Row{"\xe7\xbf\xbc\xe5\x9e\x8b", 3, "\xe7\xbf\xbc"},
          Row{"\xe7\xbf\xbc\xe5\x9e\x8b", 4, "\xe7\xbf\xbc\xe5\x9e\x8b"},
          Row{"a\xcc\x88z", 1, "a\xcc\x88"}, Row{"a\xcc\x88z", 2, "a\xcc\x88z"}})
        EXPECT_EQ(fitting(row.text, row.columns), row.fitting) << row.text << " " << row.columns;
}

} // namespace tests
} // namespace casetable
