#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/casetable/Csv.h"
#include "tests/casetable/Program.h"
#include "tests/casetable/TemporaryTree.h"

namespace casetable {
namespace tests {

namespace {

// What the first line that was suggested prints, run by a shell in `tree`.
Outcome runInShell(const TemporaryTree& tree, const std::string& suggestion)
{
    Setting setting = in(tree);
    setting.program = {"/bin/bash", "-c",
                       R"(program=$0; casetable() { "$program" "$@"; }; eval "$1")"};
    return run({suggestion.substr(0, suggestion.find('\n'))}, setting);
}

// The proposed line makes as many cases as was said.
void expectLineToWork(const TemporaryTree& tree, const Arguments& arguments, std::size_t files,
                      std::size_t cases)
{
    SCOPED_TRACE(testing::PrintToString(arguments));
    const Outcome suggested = run(tree, arguments);
    ASSERT_EQ(suggested.exitCode, 0) << suggested;
    EXPECT_EQ(suggested.errors, "");
    EXPECT_NE(suggested.output.find("\nmatches " + std::to_string(files) + " of "),
              std::string::npos)
        << suggested;
    EXPECT_NE(suggested.output.find(" files, " + std::to_string(cases) + " cases\n"),
              std::string::npos)
        << suggested;

    const Outcome outcome = runInShell(tree, suggested.output);
    ASSERT_EQ(outcome.exitCode, 0) << suggested << outcome;
    EXPECT_EQ(parseCsv(outcome.output).size(), cases + 1) << suggested << outcome;
}

} // namespace

TEST(CasetableSuggest, PrintsACommandLineThatWorks)
{
    const TemporaryTree tree;
    for (const char* path : {"Mach0.80/AoA-2/flow.vtu", "Mach0.80/AoA2/flow.vtu",
                             "Mach0.85/AoA-2/flow.vtu", "Mach0.85/AoA-2/solver.log", "README"})
        tree.file(std::string("results/") + path);

    const Outcome outcome = run(tree, {"--suggest", "results"});

    EXPECT_EQ(outcome.exitCode, 0) << outcome;
    EXPECT_EQ(outcome.output, "casetable -n Mach -n AoA results\n"
                              "\n"
                              "marker  type    values  sample\n"
                              "Mach    number       2  0.80, 0.85\n"
                              "AoA     number       2  -2, 2\n"
                              "\n"
                              "matches 4 of 5 files, 3 cases\n");
    expectLineToWork(tree, {"--suggest", "results"}, 4, 3);
}

TEST(CasetableSuggest, QuotesAnyBytesForTheShell)
{
    for (const std::string word : {"a b",
                                   "a'b",
                                   "$(touch made)",
                                   "`touch made`",
                                   "a\nb",
                                   "\xff\xfe",
                                   "*",
                                   "\\",
                                   "\"",
                                   "~",
                                   "!!",
                                   "#",
                                   ";",
                                   "-",
                                   "--",
                                   "\xce\xb1",
                                   "\xe2\x80\xae",
                                   "a=",
                                   "{x,y}",
                                   "[1,2]"}) {
        SCOPED_TRACE(testing::PrintToString(word));
        const TemporaryTree tree;
        const std::string root = "-r" + word;
        for (const char* value : {"300", "400", "500"})
            tree.file(root + "/" + word + "_T" + word + value + "/flow.vtu");
        expectLineToWork(tree, {"--suggest", "--", root}, 3, 3);
        EXPECT_FALSE(tree.exists("made"));
    }
}

TEST(CasetableSuggest, PassesMarkersThatBeginWithADash)
{
    const TemporaryTree tree;
    for (const char* path : {"r/300--x/f", "r/400--x/f", "r/300--yy/f"})
        tree.file(path);
    const Outcome outcome = run(tree, {"--suggest", "."});
    ASSERT_EQ(outcome.exitCode, 0) << outcome;
    EXPECT_EQ(runInShell(tree, outcome.output).exitCode, 0) << outcome;
}

TEST(CasetableSuggest, RepeatsTheOptionsOfTheWalk)
{
    const TemporaryTree tree;
    tree.file("elsewhere/T300/flow.vtu");
    tree.file("elsewhere/T400/flow.vtu");
    tree.folder("results");
    tree.link("results/link", "../elsewhere");

    EXPECT_EQ(run(tree, {"--suggest", "results"}).exitCode, 1);
    const Outcome outcome = run(tree, {"--suggest", "-L", "--keep-going", "results"});
    EXPECT_EQ(outcome.output.substr(0, outcome.output.find('\n')),
              "casetable --keep-going --follow -n T results");
    expectLineToWork(tree, {"--suggest", "-L", "results"}, 2, 2);
}

TEST(CasetableSuggest, GoesToAFileToo)
{
    const TemporaryTree tree;
    tree.file("results/T300/flow.vtu");
    tree.file("results/T400/flow.vtu");
    const Outcome printed = run(tree, {"--suggest", "results"});

    const Outcome outcome = run(tree, {"--suggest", "results", "-o", "line"});

    EXPECT_EQ(outcome.exitCode, 0) << outcome;
    EXPECT_EQ(outcome.output, "");
    EXPECT_EQ(tree.content("line"), printed.output);
}

TEST(CasetableSuggest, SaysWhyThereIsNoMarker)
{
    const TemporaryTree tree;
    tree.folder("empty");
    tree.file("plain/a.dat");
    tree.file("plain/b.dat");

    for (const std::string root : {"empty", "plain"}) {
        const Outcome outcome = run(tree, {"--suggest", root, "-o", "line"});
        EXPECT_EQ(outcome.exitCode, 1) << outcome;
        EXPECT_EQ(outcome.output, "");
        EXPECT_EQ(message(outcome.errors),
                  "no marker can be suggested: " +
                      std::string(root == "empty"
                                      ? "there is no file below empty"
                                      : "no text is followed by varying values in most paths "
                                        "below plain"));
        EXPECT_FALSE(tree.exists("line"));
    }
}

TEST(CasetableSuggest, SaysThatFoldersDifferBeforeWhichNoMarkerCanStand)
{
    const TemporaryTree tree;
    for (const std::string folder : {"300", "350", "400"})
        tree.file("nn/" + folder + "/out.dat");

    EXPECT_EQ(
        message(run(tree, {"--suggest", "nn"}).errors),
        "no marker can be suggested: no text is followed by varying values in most paths below "
        "nn; the names of the first folders differ (300, 350, 400), but no marker can stand "
        "before them; the folder above as ROOT makes room");
    const Outcome above = run(tree, {"--suggest", "."});
    EXPECT_EQ(above.exitCode, 0) << above;
    EXPECT_EQ(above.output.substr(0, above.output.find('\n')), "casetable -n nn/ .");
}

TEST(CasetableSuggest, SaysWhatIsHidden)
{
    const TemporaryTree tree;
    tree.file("results/.T1");

    EXPECT_EQ(message(run(tree, {"--suggest", "results"}).errors),
              "no marker can be suggested: there is no file below results; "
              "1 hidden entry left out, --hidden takes it");
}

TEST(CasetableSuggest, FailsLikeAnyRunWhereTheFolderIsMissing)
{
    const TemporaryTree tree;
    EXPECT_EQ(run(tree, {"--suggest", "missing"}).exitCode, 3);
}

TEST(CasetableSuggest, ExcludesWhatBelongsToATable)
{
    const TemporaryTree tree;
    tree.file("results/T300/flow.vtu");
    const std::vector<std::pair<std::string, Arguments>> excluded = {
        {"--string", {"-s", "T"}}, {"--number", {"-n", "T"}},
        {"--aux", {"-a", "*=x"}},  {"--format", {"--format", "csv"}},
        {"--files", {"--files"}},  {"--unmatched", {"--unmatched"}}};
    for (const auto& [option, given] : excluded) {
        Arguments arguments = {"--suggest", "results"};
        arguments.insert(arguments.end(), given.begin(), given.end());
        const Outcome outcome = run(tree, arguments);
        EXPECT_EQ(outcome.exitCode, 2) << outcome;
        EXPECT_EQ(outcome.output, "");
        EXPECT_EQ(message(outcome.errors), "--suggest and " + option + " exclude each other");
    }
}

TEST(CasetableSuggest, TakesTreesOfManyLevels)
{
    const TemporaryTree tree;
    tree.chain("deep", 300, "T1", "file");
    tree.chain("deep2/T2", 300, "T1", "file");
    EXPECT_LE(run(tree, {"--suggest", "."}).exitCode, 1);
}

} // namespace tests
} // namespace casetable
