#include "casetable/listing/ReadAhead.h"

#include <cstddef>
#include <list>
#include <memory>
#include <ostream>
#include <random>
#include <string>
#include <vector>

#include <sys/resource.h>

#include <gtest/gtest.h>

#include "casetable/listing/FileSystem.h"
#include "crawler/FolderCrawler.h"
#include "tests/casetable/support/ListingCalls.h"
#include "tests/casetable/support/OrdinaryUser.h"
#include "tests/casetable/support/RandomTree.h"
#include "tests/casetable/support/TemporaryTree.h"
#include "tests/support/Sanitizer.h"

namespace casetable {
namespace tests {

namespace {

using Limits = ReadAhead::Limits;

const Limits many = {16, 128, 1'000'000, 1000};
const Limits few = {3, 1, 100'000, 2};
const Limits tiny = {2, 0, 1, 1};
const Limits none = {0, 0, 0, 0};

// Everything that a walk tells.
struct Told {
    std::list<std::string> files;
    std::string error;
    std::vector<std::string> warnings;
    std::size_t hiddenLeftOut = 0;
    FileSystem::Refused refused = FileSystem::Refused::Nothing;
};

bool operator==(const Told& a, const Told& b)
{
    return a.files == b.files && a.error == b.error && a.warnings == b.warnings &&
           a.hiddenLeftOut == b.hiddenLeftOut && a.refused == b.refused;
}

std::ostream& operator<<(std::ostream& stream, const Told& told)
{
    return stream << testing::PrintToString(told.files) << " error: " << told.error
                  << " warnings: " << testing::PrintToString(told.warnings) << ' '
                  << told.hiddenLeftOut;
}

struct Options {
    bool followLinks = false;
    bool leaveOutUnreadable = false;
    Selection selection;
};

// What a walk of `root` tells, with `ahead` or, if that is null, without threads.
Told toldOf(const Options& options, const std::string& root,
            const std::shared_ptr<ReadAhead>& ahead)
{
    Told told;
    const auto fileSystem = std::make_shared<FileSystem>();
    fileSystem->followLinks = options.followLinks;
    fileSystem->leaveOutUnreadable = options.leaveOutUnreadable;
    fileSystem->selection = options.selection;
    fileSystem->warn = [&told](const std::string& text) { told.warnings.push_back(text); };
    FolderCrawler crawler(fileSystemRoot(fileSystem, root, ahead));
    crawler.run();
    if (ahead)
        ahead->close();
    told.files = crawler.result().files;
    told.error = crawler.result().errorString.toStdString();
    told.hiddenLeftOut = fileSystem->hiddenLeftOut;
    told.refused = fileSystem->refused;
    return told;
}

std::shared_ptr<ReadAhead> withThreadsAtOnce(const Limits& limits)
{
    return std::make_shared<ReadAhead>(limits, ReadAhead::Duration(0));
}

Options randomOptions(std::mt19937& random)
{
    Options options;
    options.followLinks = random() % 3 == 0;
    options.leaveOutUnreadable = random() % 3 != 0;
    options.selection.hidden = random() % 2 == 0;
    if (random() % 3 == 0)
        options.selection.maxDepth = 1 + random() % 5;
    if (random() % 3 == 0)
        options.selection.excluded = {Glob("*7"), Glob("/e1*/**/e2*")};
    return options;
}

// Walks random trees with and without threads, and returns how many threads listed at most.
std::size_t expectTheSameOfRandomTrees(unsigned seeds, bool withUnreadable)
{
    std::size_t threads = 0;
    for (unsigned seed = 0; seed < seeds; ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        const TemporaryTree tree;
        makeRandomTree(tree, random, 60, withUnreadable);
        const Options options = randomOptions(random);
        const Told plain = toldOf(options, tree.path("root"), nullptr);
        for (const Limits& limits : {many, few, tiny, none}) {
            longestDelay = random() % 2 == 0 ? 1000 : 0;
            threadsThatListed();
            EXPECT_EQ(toldOf(options, tree.path("root"), withThreadsAtOnce(limits)), plain)
                << limits.threads;
            threads = std::max(threads, threadsThatListed());
        }
        longestDelay = 0;
    }
    return threads;
}

} // namespace

TEST(ReadAheadTrees, AreWalkedAsWithoutThreads)
{
    EXPECT_GT(expectTheSameOfRandomTrees(60, false), 2u) << "hardly anything was done ahead";
}

TEST(ReadAheadTrees, WithUnreadableFoldersAreWalkedAsWithoutThreads)
{
    if (BUILT_WITH_THREAD_SANITIZER)
        GTEST_SKIP() << "the sanitizer lets no process of its own start threads";
    SKIP_UNLESS_ORDINARY_USER_IS_POSSIBLE();
    asOrdinaryUser([] { EXPECT_GT(expectTheSameOfRandomTrees(60, true), 2u); });
}

TEST(ReadAheadTrees, OfOneFolderTakeNoThread)
{
    const TemporaryTree tree({"root/a", "root/b"});
    longestDelay = 1000;
    threadsThatListed();

    const Told told = toldOf(Options(), tree.path("root"), withThreadsAtOnce(many));

    longestDelay = 0;
    EXPECT_EQ(told.files, (std::list<std::string>{"a", "b"}));
    EXPECT_EQ(threadsThatListed(), 1u);
}

TEST(ReadAheadTrees, AreWalkedWithFewerThreadsWhereDescriptorsAreFew)
{
    SKIP_WHERE_SANITIZERS_NEED_DESCRIPTORS();
    if (BUILT_WITH_THREAD_SANITIZER)
        GTEST_SKIP() << "the sanitizer lets no process of its own start threads";
    const TemporaryTree tree;
    std::list<std::string> files;
    for (char a = 'a'; a < 'k'; ++a) {
        for (char b = 'a'; b < 'g'; ++b) {
            files.push_back(std::string({a, '/', b, '/', 'c', '/', 'f'}));
            tree.file("root/" + files.back());
        }
    }
    inOwnProcess([&] {
        const rlimit limit = {12, 12};
        ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &limit), 0);
        longestDelay = 500;

        for (const auto& ahead : {std::shared_ptr<ReadAhead>(), withThreadsAtOnce(many)}) {
            const Told told = toldOf(Options(), tree.path("root"), ahead);

            EXPECT_EQ(told.error, "");
            EXPECT_EQ(told.files, files);
        }
    });
}

} // namespace tests
} // namespace casetable
