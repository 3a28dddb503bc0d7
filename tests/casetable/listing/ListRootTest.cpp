#include "casetable/listing/ListRoot.h"

#include <gtest/gtest.h>

#include "crawler/FolderCrawler.h"

namespace casetable {
namespace tests {

TEST(ListRoot, IsAFolderThatHasNothingButItsName)
{
    const auto root = listRoot("the list");

    EXPECT_TRUE(root->exists() && root->isDirectory() && root->isReadable() && !root->isFile());
    EXPECT_EQ(root->fullPath(), "the list");
    EXPECT_EQ(root->fileName(), "the list");
}

TEST(ListRoot, IsWalkedWithoutFindingAnything)
{
    FolderCrawler crawler(listRoot("the list"));
    crawler.run();
    EXPECT_TRUE(crawler.result().files.empty());
    EXPECT_TRUE(crawler.result().errorString.isNull());
}

} // namespace tests
} // namespace casetable
