#include "window/model/Copying.h"

#include <cstddef>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/window/Kept.h"
#include "window/model/CommandText.h"

namespace casetable {
namespace tests {

namespace {

std::string copied(const std::string& bytes)
{
    return copyOfBytes(bytes).text.toStdString();
}

} // namespace

TEST(Copying, TakesPlainTextAsItIs)
{
    for (const std::string bytes : {"a b/c", "größe", "it's", "$'a'"}) {
        EXPECT_EQ(copied(bytes), bytes);
        EXPECT_EQ(copyOfBytes(bytes).asWords, 0U) << bytes;
    }
}

TEST(Copying, MakesAWordOfAShellOfOtherBytes)
{
    const std::vector<std::pair<std::string, std::string>> rows = {
        {"a\xff", "$'a\\377'"},
        {"a\nb", "$'a\\012b'"},
        {"\x1b'", "$'\\033\\047'"},
        {"\xef\xbb\xbf", "$'\\357\\273\\277'"}};
    for (const auto& [bytes, word] : rows) {
        EXPECT_EQ(copied(bytes), word);
        EXPECT_EQ(copyOfBytes(bytes).asWords, 1U) << word;
    }
}

TEST(Copying, LosesNoByteOfAnyPath)
{
    std::mt19937 random(7);
    for (int i = 0; i < 2000; ++i) {
        std::string bytes = "x";
        for (std::size_t n = random() % 6; n > 0; --n)
            bytes += static_cast<char>(1 + random() % 255);
        const Copy copy = copyOfBytes(bytes);
        const std::string text = copy.text.toStdString();
        EXPECT_EQ(copy.asWords == 0 ? text : commandWords(text).at(0), bytes);
    }
}

TEST(Copying, CountsThePathsThatAreWords)
{
    const Copy copy = copyOfPaths(filesOf({"a", "b\xff", "c", "d\x01"}), {0, 1, 3});
    EXPECT_EQ(copy.text, "a\n$'b\\377'\n$'d\\001'");
    EXPECT_EQ(copy.asWords, 2U);
}

TEST(Copying, QuotesCellsAsSpreadsheetsTakeThem)
{
    const auto matching =
        matched({"ab/cd", "a\"b/c\td", "\xff\"/ef"}, {"{x}/{y}"}, {{"*?", "all"}});
    const Copy copy = copyOfCases(*matching->table(), {1, 0, 2});
    EXPECT_EQ(copy.text, "case\tx\ty\tall\tall files\tfiles\n"
                         "1\tab\tcd\tab/cd\t1\t1\n"
                         "0\t\"a\"\"b\"\t\"c\td\"\t\"a\"\"b/c\td\"\t1\t1\n"
                         "2\t\"$'\\377\"\"'\"\tef\t\"$'\\377\"\"/ef'\"\t1\t1\n");
    EXPECT_EQ(copy.asWords, 2U);
}

} // namespace tests
} // namespace casetable
