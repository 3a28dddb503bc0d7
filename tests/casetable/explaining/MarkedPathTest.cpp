#include "casetable/explaining/MarkedPath.h"

#include <string>

#include <gtest/gtest.h>

namespace casetable {
namespace tests {

TEST(MarkedPath, PutsMarksUnderPartsOfAPath)
{
    const MarkedPath marked("wingA/T20", {4, 5, 0}, false);

    EXPECT_EQ(marked.text(), "wingA/T20");
    EXPECT_EQ(marked.marks(0, 4, 5), "^^^^~  ");
    EXPECT_EQ(marked.marks(4, 4, 5), "    ~  ");
    EXPECT_EQ(marked.marks(4, 5, 5), "    ^  ");
    EXPECT_EQ(marked.marks(5, 5, 5), "       ");
}

TEST(MarkedPath, PutsMarksBehindTheEnd)
{
    EXPECT_EQ(MarkedPath("ab", {2}, false).marks(2, 2, 2), "    ");
    EXPECT_EQ(MarkedPath("", {0}, false).marks(0, 0, 0), "  ");
}

TEST(MarkedPath, CountsTheColumnsOfEscapesAndOfWideCharacters)
{
    const MarkedPath marked("a\n\xe7\xbf\xbc\xff.", {1, 2, 5, 6}, false);

    EXPECT_EQ(marked.text(), "a\\n\xe7\xbf\xbc\\xff.");
    EXPECT_EQ(marked.marks(1, 2, 5), " ^^~~  ");
    EXPECT_EQ(marked.marks(5, 5, 6), "     ~~~~  ");
}

TEST(MarkedPath, DividesACharacterWhereAMarkDoes)
{
    const MarkedPath marked("\xc3\xa4", {0, 1, 2}, false);

    EXPECT_EQ(marked.text(), "\\xc3\\xa4");
    EXPECT_EQ(marked.marks(0, 1, 2), "^^^^~~~~  ");
}

TEST(MarkedPath, ColoursTheMarksAlone)
{
    const MarkedPath marked("abc", {1, 2, 3}, true);

    EXPECT_EQ(marked.text(), "abc");
    EXPECT_EQ(marked.marks(1, 2, 3), " \x1b[1m^~\x1b[0m  ");
}

TEST(MarkedPath, QuotesBytesAsTheyArePrinted)
{
    EXPECT_EQ(quoted("a\n"), "'a\\n'");
    EXPECT_EQ(quoted(""), "''");
}

} // namespace tests
} // namespace casetable
