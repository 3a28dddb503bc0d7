#include "casetable/listing/Walk.h"

#include <list>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

#include "casetable/listing/FileSystem.h"
#include "casetable/system/Console.h"
#include "casetable/system/ExitCode.h"
#include "crawler/FolderCrawler.h"
#include "tests/casetable/support/OrdinaryUser.h"
#include "tests/casetable/support/TemporaryTree.h"
#include "tests/support/Sanitizer.h"

namespace casetable {
namespace tests {

namespace {

class Walk : public testing::Test {
protected:
    Walk()
    {
        console_.beQuiet();
        tree_.file("results/a/file");
        tree_.file("results/b");
    }

    const TemporaryTree tree_;
    Console console_;
    const std::shared_ptr<FileSystem> fileSystem_ = std::make_shared<FileSystem>();
};

} // namespace

TEST_F(Walk, GivesTheCrawlerWithItsResult)
{
    const auto crawler = walk(fileSystem_, tree_.path("results"), console_);

    EXPECT_TRUE(crawler->isFinished());
    EXPECT_EQ(crawler->result().files, std::list<std::string>({"a/file", "b"}));
    EXPECT_EQ(fileSystem_->filesSeen, 2u);
}

TEST_F(Walk, FailsWithThePathOfTheRoot)
{
    try {
        walk(fileSystem_, tree_.path("missing"), console_);
        ADD_FAILURE() << "no failure";
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.code, ExitCode::ImportFailed);
        EXPECT_EQ(failure.what(),
                  tree_.path("missing: ") + FolderCrawler::ROOT_PATH_DOES_NOT_EXIST_ERROR_STRING);
    }
}

TEST_F(Walk, HandsOnWhatNobodyExpectedOnItsThread)
{
    if (BUILT_WITH_THREAD_SANITIZER)
        GTEST_SKIP() << "the sanitizer lets no process of its own start threads";
    SKIP_UNLESS_ORDINARY_USER_IS_POSSIBLE();
    tree_.setMode("results/a", 0);
    asOrdinaryUser([this] {
        fileSystem_->leaveOutUnreadable = true;
        fileSystem_->warn = [](const std::string&) { throw std::bad_alloc(); };
        EXPECT_THROW(walk(fileSystem_, tree_.path("results"), console_), std::bad_alloc);
        fileSystem_->warn = [](const std::string&) { throw std::length_error("length"); };
        EXPECT_THROW(walk(fileSystem_, tree_.path("results"), console_), std::length_error);
        fileSystem_->warn = [](const std::string&) { throw 7; };
        EXPECT_THROW(walk(fileSystem_, tree_.path("results"), console_), int);
    });
}

} // namespace tests
} // namespace casetable
