#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/casetable/support/Csv.h"
#include "tests/casetable/support/OrdinaryUser.h"
#include "tests/casetable/support/Program.h"
#include "tests/casetable/support/TemporaryTree.h"

namespace casetable {
namespace tests {

namespace {

using Paths = std::vector<std::string>;

// The matched files of "results", with further options.
Paths paths(const TemporaryTree& tree, const Arguments& options)
{
    Arguments arguments = {"-n", "T", "--files", "results"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    const Outcome outcome = run(tree, arguments);
    EXPECT_LE(outcome.exitCode, 1) << outcome;
    Paths paths;
    for (const Record& record : parseCsv(outcome.output))
        paths.push_back(record.at(0));
    if (!paths.empty())
        paths.erase(paths.begin());
    return paths;
}

Setting onTerminal(const TemporaryTree& tree)
{
    return withErrors(tree, Stream::Terminal);
}

} // namespace

TEST(CasetableExclude, LeavesOutNamesAtAnyDepth)
{
    const TemporaryTree tree({"results/T1.log", "results/T1", "results/a/T2.log", "results/a/T2",
                              "results/old/T3", "results/a/old/T4/x"});

    EXPECT_EQ(paths(tree, {"--exclude", "*.log"}), Paths({"T1", "a/T2", "a/old/T4/x", "old/T3"}));
    EXPECT_EQ(paths(tree, {"-E", "old"}), Paths({"T1", "T1.log", "a/T2", "a/T2.log"}));
    EXPECT_EQ(paths(tree, {"-E", "old", "-E", "*.log"}), Paths({"T1", "a/T2"}));
}

TEST(CasetableExclude, LeavesOutPathsBelowTheRoot)
{
    const TemporaryTree tree(
        {"results/old/T1", "results/a/old/T2", "results/a/b/old/T3", "results/a/T4"});

    EXPECT_EQ(paths(tree, {"-E", "/old"}), Paths({"a/T4", "a/b/old/T3", "a/old/T2"}));
    EXPECT_EQ(paths(tree, {"-E", "./old"}), Paths({"a/T4", "a/b/old/T3", "a/old/T2"}));
    EXPECT_EQ(paths(tree, {"-E", "*/old"}), Paths({"a/T4", "a/b/old/T3", "old/T1"}));
    EXPECT_EQ(paths(tree, {"-E", "a/**/old"}), Paths({"a/T4", "old/T1"}));
    EXPECT_EQ(paths(tree, {"-E", "**/old/T[12]"}), Paths({"a/T4", "a/b/old/T3"}));
    EXPECT_EQ(paths(tree, {"-E", "results/old"}).size(), 4u) << "the root is not part of the path";
}

TEST(CasetableExclude, LeavesOutFoldersAloneWhereTheGlobEndsWithASlash)
{
    const TemporaryTree tree({"results/T1", "results/a/T1/T2"});

    EXPECT_EQ(paths(tree, {"-E", "T1/"}), Paths({"T1"}));
    EXPECT_EQ(paths(tree, {"-E", "T1"}), Paths());
}

TEST(CasetableExclude, EntersNoFolderThatItLeavesOut)
{
    SKIP_UNLESS_ORDINARY_USER_IS_POSSIBLE();
    const TemporaryTree tree({"results/T1", "results/a/closed/"});
    tree.setMode("results/a/closed", 0);
    const Setting setting = withOrdinaryUser(tree);
    const std::string table = "case,T,files\n0,1,1\n";

    for (const char* const glob : {"closed", "closed/", "a/closed", "a/*/", "/a"}) {
        EXPECT_EQ(run({"-n", "T", "-E", glob, "results"}, setting), prints(table));
        EXPECT_EQ(run({"-n", "T", "--keep-going", "-E", glob, "results"}, setting), prints(table));
    }
    EXPECT_EQ(run({"-n", "T", "-d", "2", "results"}, setting), prints(table));
    EXPECT_EQ(run({"-n", "T", "-d", "2", "--keep-going", "results"}, setting), prints(table));
    EXPECT_EQ(run({"-n", "T", "-d", "3", "results"}, setting).exitCode, 3);
}

TEST(CasetableExclude, TakesBytes)
{
    const TemporaryTree tree({"results/T1\xff\n", "results/T2\xc3\xa4", "results/-E/T3"});

    EXPECT_EQ(paths(tree, {"-E", "*\xff?"}), Paths({"-E/T3", "T2\xc3\xa4"}));
    EXPECT_EQ(paths(tree, {"-E", "T??"}), Paths({"-E/T3", "T1\xff\n", "T2\xc3\xa4"}));
    EXPECT_EQ(paths(tree, {"-E", "-E"}), Paths({"T1\xff\n", "T2\xc3\xa4"}));
}

TEST(CasetableHidden, EntriesAreLeftOutUnlessAskedFor)
{
    const TemporaryTree tree({"results/T1", "results/.T2", "results/a/.T3", "results/.a/T4",
                              "results/..T5", "results/a./T6"});

    EXPECT_EQ(paths(tree, {}), Paths({"T1", "a./T6"}));
    const Paths all = {"..T5", ".T2", ".a/T4", "T1", "a./T6", "a/.T3"};
    EXPECT_EQ(paths(tree, {"--hidden"}), all);
    EXPECT_EQ(paths(tree, {"-H"}), all);
}

TEST(CasetableHidden, EntriesThatAreLeftOutAreNotEntered)
{
    SKIP_UNLESS_ORDINARY_USER_IS_POSSIBLE();
    const TemporaryTree tree({"results/T1", "results/.closed/"});
    tree.setMode("results/.closed", 0);
    const Setting setting = withOrdinaryUser(tree);

    EXPECT_EQ(run({"-n", "T", "results"}, setting).errors, "");
    EXPECT_EQ(run({"-n", "T", "-H", "results"}, setting).exitCode, 3);
}

TEST(CasetableHidden, RootsAreTaken)
{
    const TemporaryTree tree({".results/T1", ".results/sub/"});

    for (const char* const root :
         {".results", ".results/", "./.results", ".results/.", ".results/sub/.."})
        EXPECT_EQ(run(tree, {"-n", "T", root}), prints("case,T,files\n0,1,1\n")) << root;
    Setting inside;
    for (const auto& [folder, root] : {std::pair{".results", "."}, {".results/sub", ".."}}) {
        inside.folder = tree.path(folder);
        EXPECT_EQ(run({"-n", "T", root}, inside), prints("case,T,files\n0,1,1\n")) << root;
    }
}

TEST(CasetableHidden, EntriesLeftOutAreCountedInTheRemark)
{
    const TemporaryTree tree({"results/T1/a", "results/.T2/a"});
    const Arguments arguments = {"-n", "T", "results"};

    EXPECT_EQ(message(run(arguments, onTerminal(tree)).errors),
              "cases: 1, from 1 of 1 files; 1 hidden entry left out, --hidden takes it");
    tree.file("results/T1/.b");
    tree.file("results/none");
    EXPECT_EQ(message(run(arguments, onTerminal(tree)).errors),
              "cases: 1, from 1 of 2 files; --unmatched lists the others; "
              "2 hidden entries left out, --hidden takes them");
    EXPECT_EQ(message(run({"-n", "T", "-H", "results"}, onTerminal(tree)).errors),
              "cases: 2, from 3 of 4 files; --unmatched lists the others");
    EXPECT_EQ(message(run({"-n", "T", "-E", ".*", "results"}, onTerminal(tree)).errors),
              "cases: 1, from 1 of 2 files; --unmatched lists the others");
    EXPECT_EQ(run(tree, arguments).errors, "") << "remarks are for terminals";
}

TEST(CasetableHidden, EntriesLeftOutAreCountedInTheErrorWhenNoFileMatched)
{
    const TemporaryTree tree({"results/.T1"});
    EXPECT_EQ(run(tree, {"-n", "T", "results"}),
              ends(1, "case,T,files\n",
                   "no file matched: there is no file below results; "
                   "1 hidden entry left out, --hidden takes it"));

    tree.file("results/.T2");
    tree.file("results/none");
    EXPECT_EQ(run(tree, {"-n", "T", "-q", "results"}),
              ends(1, "case,T,files\n",
                   "no file matched: marker 'T' failed for 1 file; --unmatched lists them; "
                   "2 hidden entries left out, --hidden takes them"));
}

TEST(CasetableMaxDepth, IsOneForTheFilesInTheRoot)
{
    const TemporaryTree tree({"results/T1", "results/a/T2", "results/a/b/T3", "results/a/b/c/T4"});

    EXPECT_EQ(paths(tree, {"--max-depth", "1"}), Paths({"T1"}));
    EXPECT_EQ(paths(tree, {"-d", "2"}), Paths({"T1", "a/T2"}));
    EXPECT_EQ(paths(tree, {"-d3"}), Paths({"T1", "a/T2", "a/b/T3"}));
    EXPECT_EQ(paths(tree, {"-d", "18446744073709551615"}).size(), 4u);
    EXPECT_EQ(paths(tree, {"-d", "1", "-d", "2"}), Paths({"T1", "a/T2"})) << "the last counts";
}

TEST(CasetableMaxDepth, CountsFollowedLinksAsFolders)
{
    const TemporaryTree tree({"target/T1"});
    tree.link("results/link", "../target");

    EXPECT_EQ(paths(tree, {"-L", "-d", "1"}), Paths());
    EXPECT_EQ(paths(tree, {"-L", "-d", "2"}), Paths({"link/T1"}));
}

TEST(CasetableMaxDepth, IsNamedWhereNoFileIsLeft)
{
    const TemporaryTree tree({"results/a/T1"});

    EXPECT_EQ(run(tree, {"-n", "T", "-d", "1", "results"}),
              ends(1, "case,T,files\n",
                   "no file matched: there is no file below results, with --max-depth"));
    EXPECT_EQ(run(tree, {"-n", "T", "-E", "a", "results"}),
              ends(1, "case,T,files\n",
                   "no file matched: there is no file below results, with --exclude"));
}

TEST(CasetableSelection, IsRemarkedUponWhereAGlobLeavesNothingOut)
{
    const TemporaryTree tree({"results/T1/x", "results/T1/y.tmp"});
    const auto remarks = [&](const Arguments& arguments) {
        return run(arguments, withErrors(tree, Stream::Terminal)).errors;
    };

    EXPECT_EQ(remarks({"-n", "T", "-E", "*.tmp", "-E", "*.TMP", "results"}),
              "casetable: cases: 1, from 1 of 1 files\n"
              "casetable: --exclude '*.TMP' left nothing out\n");
    tree.file("list", "T1/x\n");
    EXPECT_EQ(remarks({"-n", "T", "-E", "y", "-E", "z", "--from-list", "list"}),
              "casetable: cases: 1, from 1 of 1 files\n"
              "casetable: --exclude 'y' left nothing out\n"
              "casetable: --exclude 'z' left nothing out\n");
    EXPECT_EQ(run(tree, {"-n", "T", "-E", "*.TMP", "results"}).errors, "");
}

} // namespace tests
} // namespace casetable
