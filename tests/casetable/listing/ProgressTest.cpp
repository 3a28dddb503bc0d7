#include "casetable/listing/Progress.h"

#include <chrono>
#include <cstddef>
#include <string>

#include <gtest/gtest.h>

namespace casetable {
namespace tests {

namespace {

// Of a list "list" of 1,000 bytes.
std::string progress(std::size_t bytesRead, double seconds)
{
    return listProgress("list", 7, bytesRead, 1000, std::chrono::duration<double>(seconds));
}

} // namespace

TEST(Progress, TellsFoldersFilesAndTheFolderLastEntered)
{
    Progress progress;
    progress.enterFolder("root");
    progress.enterFolder("root/a");
    progress.enterFolder(QString::fromUtf8("root/\xc3\xa4"));

    EXPECT_EQ(progress.text(1234), "3 folders, 1234 files: root/\xc3\xa4");
}

TEST(Progress, CountsAFolderAgainThatIsEnteredAgain)
{
    Progress progress;
    progress.enterFolder("root");
    progress.enterFolder("root");

    EXPECT_EQ(progress.text(0), "2 folders, 0 files: root");
}

TEST(Progress, OfAListTellsTheShareOfItsBytes)
{
    EXPECT_EQ(progress(0, 0.2), "7 paths, 0 %: list");
    EXPECT_EQ(progress(9, 0.2), "7 paths, 0 %: list");
    EXPECT_EQ(progress(290, 0.2), "7 paths, 29 %: list");
    EXPECT_EQ(progress(999, 0.2), "7 paths, 99 %: list");
    EXPECT_EQ(progress(1000, 0.2), "7 paths, 100 %: list");
}

TEST(Progress, OfAListTellsTheTimeLeftFromTheSecondSecondOn)
{
    EXPECT_EQ(progress(500, 0.99), "7 paths, 50 %: list");
    EXPECT_EQ(progress(500, 1), "7 paths, 50 %, 1 s left: list");
    EXPECT_EQ(progress(0, 5), "7 paths, 0 %: list");
    EXPECT_EQ(progress(1000, 5), "7 paths, 100 %: list");
}

TEST(Progress, OfAListRoundsTheTimeLeftUp)
{
    struct Time {
        double seconds;
        std::string text;
    };
    // As much as has passed, so it is half way.
    for (const Time& time :
         {Time{1.01, "2 s"}, Time{9.5, "10 s"}, Time{10.5, "15 s"}, Time{55, "55 s"},
          Time{55.1, "60 s"}, Time{60.1, "2 min"}, Time{120, "2 min"}, Time{3541, "60 min"},
          Time{3601, "1 h 10 min"}, Time{7200, "2 h"}, Time{90'000, "25 h"}})
        EXPECT_EQ(progress(500, time.seconds), "7 paths, 50 %, " + time.text + " left: list");
}

TEST(Progress, OfAListReckonsWithTheWholeTimeSoFar)
{
    EXPECT_EQ(progress(100, 1), "7 paths, 10 %, 9 s left: list");
    EXPECT_EQ(progress(110, 2), "7 paths, 11 %, 20 s left: list");
    EXPECT_EQ(progress(900, 9), "7 paths, 90 %, 1 s left: list");
}

TEST(Progress, OfAListOfUnknownLengthTellsItsPathsAlone)
{
    EXPECT_EQ(listProgress("pipe", 0, 0, 0, std::chrono::seconds(5)), "0 paths: pipe");
    EXPECT_EQ(listProgress("pipe", 12, 500, 0, std::chrono::seconds(5)), "12 paths: pipe");
    EXPECT_EQ(listProgress("grown", 12, 501, 500, std::chrono::seconds(5)), "12 paths: grown");
}

} // namespace tests
} // namespace casetable
