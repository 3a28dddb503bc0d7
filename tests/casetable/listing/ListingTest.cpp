#include "casetable/listing/Listing.h"

#include <list>
#include <string>

#include <gtest/gtest.h>

#include "casetable/listing/Source.h"
#include "casetable/system/Console.h"
#include "casetable/system/ExitCode.h"
#include "tests/casetable/support/TemporaryTree.h"

namespace casetable {
namespace tests {

namespace {

using Files = std::list<std::string>;

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
        return listing.takeCrawler()->result().files;
    }

    const TemporaryTree tree_{{"results/a/b/file", "results/c", "results/.d", "results/.e/file"}};
    Console console_;
    Source source_;
};

} // namespace

TEST_F(ListingOfFiles, TakesThoseBelowARoot)
{
    EXPECT_EQ(listed(), Files({"a/b/file", "c"}));
}

TEST_F(ListingOfFiles, CountsWhatIsHidden)
{
    Listing listing(source_, console_);

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

TEST_F(ListingOfFiles, FailsWhereTheSourceCannotBeRead)
{
    source_.root = tree_.path("missing");
    EXPECT_THROW(listed(), Failure);
    source_.list = tree_.path("missing");
    EXPECT_THROW(listed(), Failure);
}

} // namespace tests
} // namespace casetable
