#include "casetable/system/TemporaryFile.h"

#include <atomic>
#include <cerrno>
#include <set>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "tests/casetable/support/OrdinaryUser.h"
#include "tests/casetable/support/TemporaryTree.h"

namespace casetable {
namespace tests {

namespace {

using Names = std::set<std::string>;

// The name of a temporary file for `target` that nobody holds.
std::string abandon(const TemporaryTree& tree, const std::string& target)
{
    const std::string path = makeTemporaryFile(tree.path(target)).path;
    return path.substr(tree.path("").size());
}

bool isFileAt(const Descriptor& file, const std::string& path)
{
    struct stat opened = {};
    struct stat named = {};
    return fstat(file.number(), &opened) == 0 && stat(path.c_str(), &named) == 0 &&
           opened.st_ino == named.st_ino;
}

} // namespace

TEST(TemporaryFile, StandsInTheFolderOfItsTargetUnderAHiddenNameOfItsOwn)
{
    const TemporaryTree tree;
    const TemporaryFile one = makeTemporaryFile(tree.path("out"));
    const TemporaryFile other = makeTemporaryFile(tree.path("out"));

    EXPECT_EQ(one.path.compare(0, tree.path(".casetable-").size(), tree.path(".casetable-")), 0)
        << one.path;
    EXPECT_NE(one.path, other.path);
    EXPECT_TRUE(isFileAt(one.opened, one.path));
    EXPECT_EQ(tree.mode(one.path.substr(tree.path("").size())), 0600u);
}

TEST(TemporaryFile, MayHaveATargetOfAnyNameInAnyFolder)
{
    const TemporaryTree tree({"folder/"});
    inOwnProcess([&tree] {
        ASSERT_EQ(chdir(tree.path().c_str()), 0);
        for (const std::string& target :
             {std::string(255, 'x'), std::string("folder/\xff\n"), tree.path("-o")}) {
            makeTemporaryFile(target);
            removeAbandonedFiles(target);
        }
        EXPECT_EQ(tree.names("."), Names({"folder"}));
        EXPECT_EQ(tree.names("folder"), Names());
    });
}

TEST(TemporaryFile, IsNotMadeWhereTheFolderIsMissing)
{
    const TemporaryTree tree;

    EXPECT_FALSE(makeTemporaryFile(tree.path("missing/out")).opened.isOpen());
    EXPECT_EQ(errno, ENOENT);
}

TEST(TemporaryFile, IsRemovedWhenNobodyHoldsIt)
{
    const TemporaryTree tree({"out"});
    abandon(tree, "out");
    abandon(tree, "out");
    EXPECT_EQ(tree.names(".").size(), 3u);

    removeAbandonedFiles(tree.path("out"));

    EXPECT_EQ(tree.names("."), Names({"out"}));
}

TEST(TemporaryFile, IsRemovedWhateverItsMode)
{
    SKIP_UNLESS_ORDINARY_USER_IS_POSSIBLE();
    const TemporaryTree tree;
    tree.setMode(abandon(tree, "out"), 0200);

    asOrdinaryUser([&tree] { removeAbandonedFiles(tree.path("out")); });

    EXPECT_EQ(tree.names("."), Names());
}

TEST(TemporaryFile, StaysWhileItIsHeld)
{
    const TemporaryTree tree;
    TemporaryFile file = makeTemporaryFile(tree.path("out"));
    removeAbandonedFiles(tree.path("out"));
    EXPECT_TRUE(isFileAt(file.opened, file.path));

    const Descriptor duplicate(fcntl(file.opened.number(), F_DUPFD_CLOEXEC, 0));
    file.opened = Descriptor();
    removeAbandonedFiles(tree.path("out"));

    EXPECT_TRUE(isFileAt(duplicate, file.path)) << "by a duplicate";
}

TEST(TemporaryFile, OfAnotherTargetStays)
{
    const TemporaryTree tree;
    const std::string other = abandon(tree, "other");

    removeAbandonedFiles(tree.path("out"));

    EXPECT_EQ(tree.names("."), Names({other}));
}

TEST(TemporaryFile, IsNotWhatMerelyHasANameLikeIt)
{
    const TemporaryTree tree;
    const std::string name = abandon(tree, "out");
    const std::string beginning = name.substr(0, name.size() - 6);
    tree.remove(name);
    for (const std::string ending : {"", "12345", "1234567", "12345.", "1234-6", "12345\xff"})
        tree.file(beginning + ending);
    tree.file(".casetable-123456");
    tree.file(name.substr(1));
    tree.folder(beginning + "folder");
    tree.pipe(beginning + "pipe00");
    tree.socket(beginning + "socket");
    tree.file("pointed at");
    tree.link(beginning + "linked", "pointed at");
    const Names all = tree.names(".");

    removeAbandonedFiles(tree.path("out"));

    EXPECT_EQ(tree.names("."), all);
}

TEST(TemporaryFile, StaysInAFolderThatMayNotBeReadOrWritten)
{
    SKIP_UNLESS_ORDINARY_USER_IS_POSSIBLE();
    const TemporaryTree tree;
    tree.folder("folder");
    const std::string name = abandon(tree, "folder/out");
    for (const mode_t mode : {0300u, 0500u}) {
        tree.setMode("folder", mode);
        asOrdinaryUser([&tree] { removeAbandonedFiles(tree.path("folder/out")); });
        tree.setMode("folder", 0700);
        EXPECT_EQ(tree.names("folder"), Names({name.substr(name.rfind('/') + 1)})) << mode;
    }
}

TEST(TemporaryFile, IsNeverTakenFromOneOfManyThatBeginAtOnce)
{
    const TemporaryTree tree;
    const std::string target = tree.path("out");
    const int rounds = 500;
    std::atomic<int> kept{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([&] {
            for (int round = 0; round < rounds; ++round) {
                removeAbandonedFiles(target);
                const TemporaryFile file = makeTemporaryFile(target);
                removeAbandonedFiles(target);
                const bool isThere = isFileAt(file.opened, file.path);
                const bool isPut = round % 3 == 0 || rename(file.path.c_str(), target.c_str()) == 0;
                kept += isThere && isPut ? 1 : 0;
            }
        });
    for (std::thread& thread : threads)
        thread.join();

    EXPECT_EQ(kept, 4 * rounds);
    removeAbandonedFiles(target);
    EXPECT_EQ(tree.names("."), Names({"out"})) << "those that were abandoned in between are gone";
}

} // namespace tests
} // namespace casetable
