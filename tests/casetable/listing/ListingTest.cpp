#include "casetable/listing/Listing.h"

#include <algorithm>
#include <new>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "casetable/listing/Source.h"
#include "casetable/system/Console.h"
#include "casetable/system/ExitCode.h"
#include "crawler/FolderCrawler.h"
#include "tests/casetable/support/TemporaryTree.h"

namespace casetable {
namespace tests {

namespace {

using Files = std::vector<std::string>;

class ListingOfFiles : public testing::Test {
protected:
    ListingOfFiles()
    {
        console_.beQuiet();
        source_.root = tree_.path("results");
        source_.selection.hidden = false;
    }

    Files listed()
    {
        Listing listing(source_, console_);
        Files files;
        bool isFinished = false;
        const auto take = [&](const Shard& shard) {
            EXPECT_FALSE(isFinished);
            for (const std::string_view path : shard.paths())
                files.emplace_back(path);
        };
        listing.run(size_, {take, [&isFinished] { isFinished = true; }});
        EXPECT_TRUE(isFinished);
        return files;
    }

    const TemporaryTree tree_{{"results/a/b/file", "results/c", "results/.d", "results/.e/file"}};
    Console console_;
    Source source_;
    ShardSize size_;
};

} // namespace

TEST_F(ListingOfFiles, TakesThoseBelowARoot)
{
    EXPECT_EQ(listed(), Files({"a/b/file", "c"}));
}

TEST_F(ListingOfFiles, CountsWhatIsHidden)
{
    Listing listing(source_, console_);
    listing.run(size_, {[](const Shard&) {}});

    EXPECT_EQ(listing.hiddenLeftOut(), 2u);
}

TEST_F(ListingOfFiles, TakesThoseThatAreSelected)
{
    source_.selection.hidden = true;
    source_.selection.maxDepth = 1;
    source_.selection.excluded.emplace_back("c");

    EXPECT_EQ(listed(), Files({".d"}));
}

TEST_F(ListingOfFiles, FollowsLinksOnRequest)
{
    tree_.link("results/link", "a");
    EXPECT_EQ(listed(), Files({"a/b/file", "c"}));

    source_.follow = true;

    EXPECT_EQ(listed(), Files({"a/b/file", "c", "link/b/file"}));
}

TEST_F(ListingOfFiles, TakesThoseOfAListInPlaceOfARoot)
{
    tree_.file("list", std::string("x/y\nz\0w", 7));
    source_.list = tree_.path("list");
    EXPECT_THROW(listed(), Failure) << "a NUL is in no path";

    source_.nullSeparated = true;
    EXPECT_EQ(listed(), Files({"w", "x/y\nz"}));
    source_.selection.excluded.emplace_back("x");
    EXPECT_EQ(listed(), Files({"w"}));
}

TEST_F(ListingOfFiles, CutsShardsAsLargeAsTheyMayBe)
{
    Listing listing(source_, console_);
    std::size_t shards = 0;

    listing.run({1, 1000}, {[&shards](const Shard&) { ++shards; }});

    EXPECT_EQ(shards, 2u);
}

TEST_F(ListingOfFiles, ReadsAListOnceMoreWhereItIsNotInByteOrder)
{
    // Longer than what is read at once.
    std::string text;
    for (int i = 10'000; i < 30'000; ++i)
        text += "a/" + std::to_string(i) + "\n";
    tree_.file("list", text + "a/15000\n" + "a/9\n");
    source_.list = tree_.path("list");

    Files files = listed();
    EXPECT_EQ(files.size(), 20'001u);
    std::sort(files.begin(), files.end());
    EXPECT_EQ(std::unique(files.begin(), files.end()), files.end());

    tree_.file("list", text + "a/15000/x\n");
    try {
        listed();
        ADD_FAILURE() << "no failure";
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.what(), tree_.path("list") + ": line 20001: a/15000/x: line 5001 names "
                                                       "a/15000 as a file; list files only");
    }
}

TEST_F(ListingOfFiles, HasTheRootToBeChecked)
{
    EXPECT_EQ(Listing(source_, console_).root()->fullPath(), tree_.path("results"));
    source_.list = "-";
    EXPECT_EQ(Listing(source_, console_).root()->fullPath(), "standard input");
    EXPECT_TRUE(Listing(source_, console_).root()->isDirectory());
}

TEST_F(ListingOfFiles, FailsWithThePathOfTheRoot)
{
    source_.root = tree_.path("missing");
    try {
        listed();
        ADD_FAILURE() << "no failure";
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.code, ExitCode::ImportFailed);
        EXPECT_EQ(failure.what(),
                  tree_.path("missing: ") + FolderCrawler::ROOT_PATH_DOES_NOT_EXIST_ERROR_STRING);
    }
}

TEST_F(ListingOfFiles, FailsWhereTheListCannotBeRead)
{
    source_.list = tree_.path("missing");
    EXPECT_THROW(listed(), Failure);
}

TEST_F(ListingOfFiles, HandsOnWhatTheTakerThrows)
{
    const auto listed = [this](const Listing::Taker& taker) {
        Listing listing(source_, console_);
        listing.run(size_, taker);
    };

    EXPECT_THROW(listed({[](const Shard&) { throw std::bad_alloc(); }}), std::bad_alloc);
    EXPECT_THROW(listed({[](const Shard&) { throw 7; }}), int);
    EXPECT_THROW(listed({[](const Shard&) {}, [] { throw std::length_error("length"); }}),
                 std::length_error);
}

} // namespace tests
} // namespace casetable
