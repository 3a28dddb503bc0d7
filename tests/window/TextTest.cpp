#include "window/model/Text.h"

#include <cstddef>
#include <random>
#include <string>

#include <gtest/gtest.h>

#include "casetable/system/Printable.h"

namespace casetable {
namespace tests {

namespace {

// Often UTF-8, and often nearly.
std::string randomBytes(std::mt19937& random)
{
    const std::string pieces[] = {"a",
                                  "/",
                                  "\n",
                                  "\xff",
                                  "\xc3\xa9",
                                  "\xc3",
                                  "\xe2\x80\xae",
                                  "\xed\xa0\x80",
                                  "\xe2\x80",
                                  "\\",
                                  "\xf0\x9f\x98\x80",
                                  "\x7f",
                                  "\xef\xbb\xbf",
                                  "\xc0\x80",
                                  "\xf4\x90\x80\x80"};
    std::string bytes;
    for (std::size_t n = random() % 8; n > 0; --n)
        bytes += pieces[random() % std::size(pieces)];
    return bytes;
}

} // namespace

TEST(EditableText, GivesBackItsBytes)
{
    std::mt19937 random(1);
    for (int i = 0; i < 20000; ++i) {
        const std::string bytes = randomBytes(random);
        EXPECT_EQ(bytesOf(editable(bytes)), bytes);
    }
    std::string all;
    for (int byte = 0; byte < 256; ++byte)
        all += static_cast<char>(byte);
    EXPECT_EQ(bytesOf(editable(all)), all);
}

TEST(EditableText, IsTextWhereTheBytesAre)
{
    EXPECT_EQ(editable("Größe 😀"), QString::fromUtf8("Größe 😀"));
    EXPECT_EQ(bytesOf(QString::fromUtf8("Größe 😀")), "Größe 😀");
}

TEST(ShownText, ShowsWhatTheProgramPrints)
{
    std::mt19937 random(2);
    for (int i = 0; i < 20000; ++i) {
        const std::string bytes = randomBytes(random);
        EXPECT_EQ(ShownText(bytes).text().toUtf8().toStdString(), printable(bytes));
    }
}

TEST(ShownText, KnowsWhichBytesStandWhere)
{
    const ShownText text("a\nb\xff\xc3\xa9z");
    ASSERT_EQ(text.text(), QString::fromUtf8("a\\nb\\xfféz"));
    const std::pair<std::size_t, int> places[] = {{0, 0}, {1, 1}, {2, 3}, {3, 4},
                                                  {4, 8}, {6, 9}, {7, 10}};
    for (const auto& [offset, place] : places) {
        EXPECT_EQ(text.placeOf(offset), place);
        EXPECT_EQ(text.offsetAt(place), offset);
    }
    EXPECT_EQ(text.placeOf(5), 8);
    EXPECT_EQ(text.offsetAt(6), 3U);
    EXPECT_EQ(text.offsetAt(99), 7U);
}

TEST(ShownText, GoesFromCharacterToCharacterAndBack)
{
    std::mt19937 random(3);
    for (int i = 0; i < 2000; ++i) {
        const std::string bytes = randomBytes(random);
        const ShownText text(bytes);
        std::size_t offset = 0;
        while (offset < bytes.size()) {
            const std::size_t next = text.next(offset);
            ASSERT_GT(next, offset);
            ASSERT_EQ(text.previous(next), offset);
            ASSERT_LT(text.placeOf(offset), text.placeOf(next));
            offset = next;
        }
        EXPECT_EQ(offset, bytes.size());
        EXPECT_EQ(text.next(offset), bytes.size());
    }
}

} // namespace tests
} // namespace casetable
