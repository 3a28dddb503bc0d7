#include <string>

#include <sys/resource.h>

#include <gtest/gtest.h>

#include "tests/casetable/support/Program.h"
#include "tests/casetable/support/TemporaryTree.h"
#include "tests/support/Sanitizer.h"

namespace casetable {
namespace tests {

namespace {

const int levels = 3000;
const std::string name = "folder";

Setting withFewDescriptors(const TemporaryTree& tree)
{
    Setting setting = in(tree);
    setting.prepare = [] {
        const rlimit limit = {256, 256};
        setrlimit(RLIMIT_NOFILE, &limit);
    };
    return setting;
}

std::string pathOfTheLast(const std::string& file)
{
    std::string path;
    for (int level = 0; level < levels; ++level)
        path += name + "/";
    return path + file;
}

} // namespace

TEST(CasetableDeepTree, IsWalkedBeyondTheLimitsOfPathsAndDescriptors)
{
    const TemporaryTree tree;
    tree.chain("results", levels, name, "T1.dat");

    for (const char* option : {"--quiet", "--follow", "--keep-going"})
        EXPECT_EQ(run({"-n", "T", "--files", option, "results"}, withFewDescriptors(tree)),
                  prints("path,case,T\n" + pathOfTheLast("T1.dat") + ",0,1\n"));
}

TEST(CasetableDeepTree, IsWalkedBranchAfterBranch)
{
    const TemporaryTree tree;
    for (const char* branch : {"T1", "T2", "T3"})
        tree.chain(std::string("results/") + branch, 300, name, "file");

    EXPECT_EQ(run({"-n", "T", "results"}, withFewDescriptors(tree)),
              prints("case,T,files\n0,1,1\n1,2,1\n2,3,1\n"));
}

TEST(CasetableDeepTree, IsAnErrorRatherThanHalfATableWhereDescriptorsRunOut)
{
    SKIP_WHERE_SANITIZERS_NEED_DESCRIPTORS();
    const TemporaryTree tree({"results/T1/file"});
    tree.chain("results", 100, name, "T2.dat");
    Setting setting = in(tree);
    setting.prepare = [] {
        const rlimit limit = {24, 24};
        setrlimit(RLIMIT_NOFILE, &limit);
    };

    for (const char* option : {"--quiet", "--keep-going"}) {
        const Outcome outcome = run({"-n", "T", option, "results"}, setting);
        EXPECT_EQ(outcome.exitCode, 3) << outcome;
        EXPECT_EQ(outcome.output, "");
        EXPECT_NE(message(outcome.errors).find(": Too many open files"), std::string::npos);
    }
}

} // namespace tests
} // namespace casetable
