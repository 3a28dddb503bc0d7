#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/casetable/support/Csv.h"
#include "tests/casetable/support/Program.h"
#include "tests/casetable/support/TemporaryTree.h"

namespace casetable {
namespace tests {

namespace {

std::vector<std::string> paths(const Outcome& outcome)
{
    EXPECT_EQ(outcome.exitCode, 0) << outcome;
    std::vector<std::string> paths;
    for (const Record& record : parseCsv(outcome.output))
        paths.push_back(record.at(0));
    if (!paths.empty())
        paths.erase(paths.begin());
    return paths;
}

} // namespace

TEST(CasetableTree, HoldsRegularFilesAndLinksToFiles)
{
    const TemporaryTree tree({"results/T1/file", "results/T1/.hidden", "elsewhere"});
    tree.link("results/T1/link", "../../elsewhere");
    tree.link("results/T1/linked link", "link");
    tree.file("results/T1/closed");
    tree.setMode("results/T1/closed", 0);

    EXPECT_EQ(paths(run(tree, {"-n", "T", "--files", "--hidden", "results"})),
              std::vector<std::string>(
                  {"T1/.hidden", "T1/closed", "T1/file", "T1/link", "T1/linked link"}));
}

TEST(CasetableTree, LeavesOutBrokenLinksPipesSocketsAndDevices)
{
    const TemporaryTree tree({"results/T1/file"});
    tree.link("results/T1/broken", "missing");
    tree.link("results/T1/itself", "itself");
    tree.link("results/T1/device", "/dev/null");
    tree.pipe("results/T1/pipe");
    tree.link("results/T1/link to pipe", "pipe");
    tree.socket("results/T1/socket");

    for (const char* follow : {"--quiet", "--follow"}) {
        const Outcome outcome = run(tree, {"-n", "T", "--files", follow, "results"});
        EXPECT_EQ(paths(outcome), std::vector<std::string>({"T1/file"}));
        EXPECT_EQ(outcome.errors, "");
    }
}

TEST(CasetableTree, MayHoldAnyName)
{
    const std::vector<std::string> names = {
        "\n",   "\r\n",     "\"",           "'",     ",",    " ",    "  two  ", "-",
        "--",   "-n",       "--files",      "\\",    "*",    "?",    "...",     ".x",
        "\xff", "\xc3\xa4", "\xed\xa0\x80", "a\xc3", "\x01", "\x7f", "%s%n",    "$(x)"};
    const TemporaryTree tree;
    std::vector<Record> expected = {{"path", "case", "T"}};
    for (std::size_t i = 0; i < names.size(); ++i) {
        const std::string number = std::to_string(10 + i);
        const std::string path = "T" + number + "/" + names[i] + "/" + names[i];
        tree.file("results/" + path);
        expected.push_back({path, std::to_string(i), number});
    }

    const Outcome outcome = run(tree, {"-n", "T", "--files", "--hidden", "results"});

    EXPECT_EQ(outcome.exitCode, 0) << outcome;
    EXPECT_EQ(parseCsv(outcome.output), expected);
}

TEST(CasetableTree, MayHaveAnyRoot)
{
    const std::vector<std::string> roots = {"-root", "--files", "--", "-n", "a b",
                                            "a\nb",  "\xff",    "{}", "%%", "[a,b]"};
    const TemporaryTree tree;
    for (const std::string& root : roots) {
        SCOPED_TRACE(testing::PrintToString(root));
        tree.file(root + "/T1/file");
        EXPECT_EQ(paths(run(tree, {"-n", "T", "--files", "--", root})),
                  std::vector<std::string>({"T1/file"}));
    }
}

TEST(CasetableTree, HasTheSameFilesHoweverTheRootIsWritten)
{
    const TemporaryTree tree({"results/T1/file"});
    tree.link("link", "results");
    const std::vector<std::string> roots = {"results",
                                            "results/",
                                            "results//",
                                            "./results",
                                            "link",
                                            "link/",
                                            "results/.",
                                            "results/T1/..",
                                            tree.path("results"),
                                            "../" + tree.path().substr(tree.path().rfind('/') + 1) +
                                                "/results"};
    for (const std::string& root : roots) {
        SCOPED_TRACE(root);
        EXPECT_EQ(paths(run(tree, {"-n", "T", "--files", root})),
                  std::vector<std::string>({"T1/file"}));
    }
}

TEST(CasetableTree, MayBeTheWorkingDirectory)
{
    const TemporaryTree tree({"T1/file"});

    EXPECT_EQ(paths(run(tree, {"-n", "T", "--files", "."})), std::vector<std::string>({"T1/file"}));
}

TEST(CasetableTree, DoesNotCountMarkersInThePathOfTheRoot)
{
    const TemporaryTree tree({"T7/T1/file"});

    EXPECT_EQ(run(tree, {"-n", "T", "T7"}), prints("case,T,files\n0,1,1\n"));
}

TEST(CasetableTree, MayBeEmpty)
{
    const TemporaryTree tree({"results/a/b/"});

    EXPECT_EQ(run(tree, {"-n", "T", "results"}),
              ends(1, "case,T,files\n", "no file matched: there is no file below results"));
}

TEST(CasetableTree, MayHoldManyFilesInOneFolder)
{
    const TemporaryTree tree({"results/T1/"});
    const std::string longName(200, 'x');
    for (int i = 0; i < 1000; ++i)
        tree.file("results/T1/" + longName + std::to_string(i));

    EXPECT_EQ(paths(run(tree, {"-n", "T", "--files", "results"})).size(), 1000u);
}

} // namespace tests
} // namespace casetable
