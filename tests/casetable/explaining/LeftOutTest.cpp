#include "casetable/explaining/LeftOut.h"

#include <cstddef>
#include <random>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "casetable/listing/ListReader.h"
#include "casetable/system/ExitCode.h"

namespace casetable {
namespace tests {

namespace {

// Whether a list of this one path hands it on.
bool isListed(const Selection& selection, const std::string& path)
{
    bool isTaken = false;
    ListReader reader({"list", true, selection, nullptr},
                      [&isTaken](std::string_view) { isTaken = true; });
    try {
        reader.append(path + '\0');
        reader.finish();
    } catch (const Failure&) {
        return false;
    }
    return isTaken;
}

} // namespace

TEST(LeftOut, IsAPathThatCanNameNoFileBelowTheRoot)
{
    const Selection everything;

    EXPECT_EQ(whyLeftOut(everything, "a/T3/x"), "");
    EXPECT_EQ(whyLeftOut(everything, "./a/./T3/x"), "");
    EXPECT_EQ(whyLeftOut(everything, ""), "the path is empty");
    EXPECT_EQ(whyLeftOut(everything, "/a/T3/x"),
              "the path is absolute; name it as it stands below ROOT");
    EXPECT_EQ(whyLeftOut(everything, "a//T3/x"), "a component of the path is empty");
    EXPECT_EQ(whyLeftOut(everything, "a/T3/"), "a path that ends in / names a folder");
    EXPECT_EQ(whyLeftOut(everything, "a/T3/."), "a path that ends in . names a folder");
    EXPECT_EQ(whyLeftOut(everything, "a/../T3/x"), "the path climbs out by \"..\"");
}

TEST(LeftOut, NamesTheOptionAndTheEntryThatItKeepsOut)
{
    Selection selection;
    selection.hidden = false;
    selection.maxDepth = 2;
    selection.excluded = {Glob("*.log"), Glob("b/")};

    EXPECT_EQ(whyLeftOut(selection, "a/x"), "");
    EXPECT_EQ(whyLeftOut(selection, "a/.x"), ".x is hidden; --hidden takes it");
    EXPECT_EQ(whyLeftOut(selection, ".a/b/x"), ".a is hidden; --hidden takes it");
    EXPECT_EQ(whyLeftOut(selection, "a/x.log"), "--exclude leaves x.log out");
    EXPECT_EQ(whyLeftOut(selection, "b/.x"), "--exclude leaves b out");
    EXPECT_EQ(whyLeftOut(selection, "a/c/x"), "--max-depth leaves c out");
    EXPECT_EQ(whyLeftOut(selection, "./a/./x"), "") << "\".\" counts for no level";
    EXPECT_EQ(whyLeftOut(selection, "a/\n\xff.log"), "--exclude leaves \n\xff.log out");
}

TEST(LeftOut, IsJustWhatAWalkThroughAListDoesNotComeTo)
{
    const unsigned seed = 1848;
    std::mt19937 random(seed);
    std::size_t walked = 0;
    std::size_t leftOut = 0;
    for (int round = 0; round < 5000; ++round) {
        Selection selection;
        selection.maxDepth = 1 + random() % 4;
        if (random() % 2 == 0)
            selection.excluded = {Glob(random() % 2 == 0 ? "aa" : "b/a/")};
        std::string path(random() % 8, '\0');
        for (char& c : path)
            c = "//.aab"[random() % 6];
        SCOPED_TRACE("seed " + std::to_string(seed) + ", round " + std::to_string(round) +
                     ", path \"" + path + "\"");

        const bool isTaken = whyLeftOut(selection, path).empty();

        ASSERT_EQ(isTaken, isListed(selection, path));
        ++(isTaken ? walked : leftOut);
    }
    EXPECT_GT(walked, 1000u);
    EXPECT_GT(leftOut, 1000u);
}

} // namespace tests
} // namespace casetable
