#include "casetable/listing/Selection.h"

#include <gtest/gtest.h>

namespace casetable {
namespace tests {

using Verdict = Selection::Verdict;

TEST(Selection, TakesEverythingUnlessToldOtherwise)
{
    const Selection selection;

    EXPECT_FALSE(selection.needsPaths());
    EXPECT_EQ(selection.judge("a/b", 2, false), Verdict::Taken);
    EXPECT_EQ(selection.judge(".a", 1, true), Verdict::Taken);
    EXPECT_EQ(selection.judge("a", 1000000, true), Verdict::Taken);
}

TEST(Selection, TellsHiddenEntriesByTheirOwnName)
{
    Selection selection;
    selection.hidden = false;

    for (const bool isFolder : {false, true}) {
        EXPECT_EQ(selection.judge(".a", 1, isFolder), Verdict::Hidden);
        EXPECT_EQ(selection.judge("...", 1, isFolder), Verdict::Hidden);
        EXPECT_EQ(selection.judge("a/.b", 2, isFolder), Verdict::Hidden);
        EXPECT_EQ(selection.judge("a.", 1, isFolder), Verdict::Taken);
        EXPECT_EQ(selection.judge(".a/b", 2, isFolder), Verdict::Taken) << "it stands in .a";
    }
}

TEST(Selection, LeavesOutWhatMatchesAnyGlob)
{
    Selection selection;
    selection.excluded = {Glob("*.log"), Glob("b/")};

    EXPECT_EQ(selection.judge("a/x.log", 2, false), Verdict::LeftOut);
    EXPECT_EQ(selection.judge("b", 1, true), Verdict::LeftOut);
    EXPECT_EQ(selection.judge("b", 1, false), Verdict::Taken);
}

TEST(Selection, SaysThatItTakesAllJustWhereNothingMayBeLeftOut)
{
    EXPECT_TRUE(Selection().takesAll());
    Selection globs;
    globs.excluded = {Glob("a")};
    Selection visible;
    visible.hidden = false;
    Selection shallow;
    shallow.maxDepth = 1000;
    for (const Selection& each : {globs, visible, shallow})
        EXPECT_FALSE(each.takesAll());
}

TEST(Selection, NeedsPathsForAnyGlobThatDoes)
{
    Selection selection;
    selection.excluded = {Glob("*.log"), Glob("log/")};
    EXPECT_FALSE(selection.needsPaths());

    selection.excluded.emplace_back("a/b");
    EXPECT_TRUE(selection.needsPaths());
}

TEST(Selection, LeavesOutFoldersOfTheGreatestDepthButNoFiles)
{
    Selection selection;
    selection.maxDepth = 2;

    EXPECT_EQ(selection.judge("a", 1, true), Verdict::Taken);
    EXPECT_EQ(selection.judge("a/b", 2, true), Verdict::LeftOut);
    EXPECT_EQ(selection.judge("a/b", 2, false), Verdict::Taken);
}

TEST(Selection, CallsNothingHiddenThatIsLeftOutAnyhow)
{
    Selection selection;
    selection.hidden = false;
    selection.maxDepth = 1;
    selection.excluded = {Glob(".git")};

    EXPECT_EQ(selection.judge(".git", 1, false), Verdict::LeftOut);
    EXPECT_EQ(selection.judge(".a", 1, true), Verdict::LeftOut);
    EXPECT_EQ(selection.judge(".a", 1, false), Verdict::Hidden);
}

} // namespace tests
} // namespace casetable
