#include "casetable/system/Processors.h"

#include <string>
#include <vector>

#include <sched.h>

#include <gtest/gtest.h>

#include "tests/casetable/support/OrdinaryUser.h"
#include "tests/casetable/support/TemporaryTree.h"

namespace casetable {
namespace tests {

namespace {

const std::size_t all = 16;

// A file of made-up control groups.
struct File {
    std::string path;
    std::string content;
};

// For how many of `all` processors a process with this membership has time.
std::size_t processors(const std::string& membership, const std::vector<File>& files)
{
    const TemporaryTree tree({"groups/"});
    tree.file("membership", membership);
    for (const File& file : files)
        tree.file("groups/" + file.path, file.content);
    return processorsOfGroups(tree.path("membership"), tree.path("groups"), all);
}

} // namespace

TEST(Processors, AreThoseForWhichTheControlGroupHasTime)
{
    struct Limit {
        std::string content;
        std::size_t processors;
    };
    for (const Limit& limit :
         {Limit{"200000 100000\n", 2}, Limit{"150000 100000\n", 2}, Limit{"200001 100000\n", 3},
          Limit{"100000 100000\n", 1}, Limit{"1000 100000\n", 1}, Limit{"50000 10000\n", 5},
          Limit{"9000000 100000\n", all}, Limit{"max 100000\n", all}, Limit{"0 100000\n", all},
          Limit{"100000 0\n", all}, Limit{"100000", all}, Limit{"", all}, Limit{"no\n", all},
          Limit{"99999999999999999999999 100000\n", all}})
        EXPECT_EQ(processors("0::/one\n", {{"one/cpu.max", limit.content}}), limit.processors)
            << limit.content;
}

TEST(Processors, AreThoseOfTheNarrowestGroupOnTheWayToTheRoot)
{
    const File none = {"one/two/cpu.max", "max 100000\n"};
    const File three = {"one/cpu.max", "300000 100000\n"};
    const File two = {"one/two/cpu.max", "200000 100000\n"};
    const File root = {"cpu.max", "400000 100000\n"};
    const File below = {"one/two/three/cpu.max", "100000 100000\n"};

    EXPECT_EQ(processors("0::/one/two\n", {none, three, root, below}), 3u);
    EXPECT_EQ(processors("0::/one/two\n", {two, three, root}), 2u);
    EXPECT_EQ(processors("0::/one/two\n", {none, root}), 4u);
    EXPECT_EQ(processors("0::/\n", {two, root}), 4u) << "as in a container";
    EXPECT_EQ(processors("0::/elsewhere/two\n", {two, root}), 4u)
        << "where the group's own path cannot be seen";
}

TEST(Processors, AreLimitedByTheQuotasOfOlderHierarchies)
{
    const std::string membership = "12:cpuset:/sets\n4:cpu,cpuacct:/one/two\n1:name=x:/one\n";
    const File period = {"cpu,cpuacct/one/two/cpu.cfs_period_us", "50000\n"};
    const auto withQuota = [&](const std::string& quota) {
        return processors(membership,
                          {period, {"cpu,cpuacct/one/two/cpu.cfs_quota_us", quota + "\n"}});
    };

    EXPECT_EQ(withQuota("100000"), 2u);
    EXPECT_EQ(withQuota("100001"), 3u);
    EXPECT_EQ(withQuota("-1"), all);
    EXPECT_EQ(processors(membership, {{"cpu,cpuacct/one/cpu.cfs_quota_us", "100000\n"},
                                      {"cpu,cpuacct/one/cpu.cfs_period_us", "100000\n"}}),
              1u)
        << "of a group above";
    EXPECT_EQ(processors(membership + "0::/\n", {period}), all) << "without a quota";
    EXPECT_EQ(processors("7:cpuacct,cpu:/\n", {{"cpuacct,cpu/cpu.cfs_quota_us", "300000\n"},
                                               {"cpuacct,cpu/cpu.cfs_period_us", "100000\n"}}),
              3u);
}

TEST(Processors, AreAllWhereTheGroupsCannotBeRead)
{
    EXPECT_EQ(processors("0::/one\n", {}), all);
    EXPECT_EQ(processors("", {{"cpu.max", "100000 100000\n"}}), all);
    EXPECT_EQ(processors("nonsense\n:\n0:\n::", {}), all);
    const TemporaryTree tree;
    EXPECT_EQ(processorsOfGroups(tree.path("missing"), tree.path("missing"), all), all);
}

TEST(Processors, AreNoMoreThanTheProcessMayRunOn)
{
    inOwnProcess([] {
        cpu_set_t present;
        ASSERT_EQ(sched_getaffinity(0, sizeof present, &present), 0);
        EXPECT_LE(availableProcessors(), static_cast<std::size_t>(CPU_COUNT(&present)));
        EXPECT_GE(availableProcessors(), 1u);
        int first = 0;
        while (!CPU_ISSET(first, &present))
            ++first;
        cpu_set_t one;
        CPU_ZERO(&one);
        CPU_SET(first, &one);
        ASSERT_EQ(sched_setaffinity(0, sizeof one, &one), 0);

        EXPECT_EQ(availableProcessors(), 1u);
    });
}

} // namespace tests
} // namespace casetable
