#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/casetable/support/Csv.h"
#include "tests/casetable/support/Program.h"
#include "tests/casetable/support/TemporaryTree.h"

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
    EXPECT_EQ(outcome.output.substr(0, outcome.output.find('\n')), "casetable -n r/ --string=-- .");
    expectLineToWork(tree, {"--suggest", "."}, 3, 3);
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

TEST(CasetableSuggest, TakesTheFolderAboveWhereNoMarkerCanStandBeforeTheFirstFolders)
{
    const TemporaryTree tree;
    for (const std::string folder : {"300", "350", "400"})
        tree.file("nn/" + folder + "/out.dat");
    tree.file("beside/out.dat");
    tree.link("link", "nn");

    const std::vector<std::pair<std::string, std::string>> lines = {
        {"nn", "--keep-going -n nn/ ."},
        {"./nn//", "--keep-going -n nn/ ."},
        {"nn/.", "--keep-going -n nn/ nn/./.."},
        {"nn/300/..", "--keep-going -n nn/ nn/300/../.."},
        {tree.path("nn"), "--keep-going -n nn/ " + tree.path()},
        {"link", "--keep-going -n nn/ link/.."}};
    for (const auto& [root, line] : lines) {
        SCOPED_TRACE(root);
        const Outcome outcome = run(tree, {"--suggest", root});
        EXPECT_EQ(outcome.exitCode, 0) << outcome;
        EXPECT_EQ(outcome.output.substr(0, outcome.output.find('\n')), "casetable " + line);
        expectLineToWork(tree, {"--suggest", root}, 3, 3);
    }
    Setting below = in(tree);
    below.folder = tree.path("nn");
    for (const std::string root : {".", "./", "300/.."}) {
        const Outcome outcome = run({"--suggest", root}, below);
        EXPECT_EQ(outcome.output.substr(0, outcome.output.find('\n')),
                  "casetable --keep-going -n nn/ " +
                      std::string(root == "300/.." ? "300/../.." : ".."));
    }
}

TEST(CasetableSuggest, AddsTheLineForTheFolderAboveWhereItReadsMore)
{
    const TemporaryTree tree;
    for (const std::string day : {"2024-01-31", "2024-02-01"}) {
        for (const std::string test : {"1", "2", "3"})
            tree.file("r/" + day + "_test" + test + "/out.log");
    }
    const Outcome outcome = run(tree, {"--suggest", "r"});
    ASSERT_EQ(outcome.exitCode, 0) << outcome;
    EXPECT_EQ(outcome.output.substr(0, outcome.output.find('\n')), "casetable -n _test r");
    const std::string line = "casetable --keep-going -s r/ -n _test .\n";
    EXPECT_NE(outcome.output.find("\n\n" + line + "\nmatches 6 of 6 files, 6 cases;"),
              std::string::npos)
        << outcome;
    EXPECT_EQ(parseCsv(runInShell(tree, line).output).size(), 6u + 1);
}

TEST(CasetableSuggest, TakesTheFolderAboveWhereFilesBeginWithTheirValues)
{
    const TemporaryTree tree;
    for (const std::string file : {"300", "350", "400"})
        tree.file("nn/" + file + ".dat");
    for (const std::string day : {"2024-01-31", "2024-02-01"}) {
        for (const std::string run : {"1", "2", "3"})
            tree.file("log/" + day + "_run" + run + ".csv");
    }
    expectLineToWork(tree, {"--suggest", "nn"}, 3, 3);
    const Outcome outcome = run(tree, {"--suggest", "log"});
    const std::string line = "casetable --keep-going -s log/ -n _run .\n";
    EXPECT_NE(outcome.output.find("\n\n" + line + "\nmatches 6 of 6 files, 6 cases;"),
              std::string::npos)
        << outcome;
    EXPECT_EQ(parseCsv(runInShell(tree, line).output).size(), 6u + 1);
}

TEST(CasetableSuggest, AddsTheLineForTheFolderAboveWhereRunsAreMixedToo)
{
    const TemporaryTree tree;
    for (const std::string place : {"lab Ulm", "lab Kiel", "field_outside"}) {
        for (const std::string cell : {"01", "02"})
            tree.file("r/" + place + "/cell " + cell + "/data.csv");
    }
    const Outcome outcome = run(tree, {"--suggest", "r"});
    EXPECT_EQ(outcome.output.substr(0, outcome.output.find('\n')), "casetable -n 'cell ' r");
    EXPECT_NE(outcome.output.find("\n\ncasetable --keep-going -s r/ -n 'cell ' .\n\n"
                                  "matches 6 of 6 files, 6 cases; "),
              std::string::npos)
        << outcome;
}

TEST(CasetableSuggest, SeesTheSameFilesFromTheFolderAbove)
{
    const TemporaryTree tree;
    for (const std::string folder : {"300", "350", "400"}) {
        for (const std::string file : {"out.dat", "old/out.dat", "a/b/deep.dat", "x.tmp"})
            tree.file("we*ird [1]/" + folder + "/" + file);
        tree.file(".hidden/" + folder + "/out.dat");
    }
    const std::string root = "we*ird [1]";
    expectLineToWork(tree, {"--suggest", "--max-depth", "2", root}, 6, 3);
    expectLineToWork(tree, {"--suggest", "--exclude=/*/old/", "--exclude=*.tmp", root}, 6, 3);
    expectLineToWork(tree, {"--suggest", "--exclude=4*/a", "--exclude=400/old", root}, 10, 3);
    expectLineToWork(tree, {"--suggest", "--hidden", ".hidden"}, 3, 3);
}

TEST(CasetableSuggest, FollowsNoMoreLinksFromTheFolderAbove)
{
    const TemporaryTree tree;
    for (const std::string folder : {"a/nn/300", "a/nn/400", "500"})
        tree.file(folder + "/out.dat");
    tree.link("a/nn/500", "../../500");
    tree.link("link", "a/nn");
    expectLineToWork(tree, {"--suggest", "link"}, 2, 2);
    expectLineToWork(tree, {"--suggest", "--follow", "link"}, 3, 3);
}

TEST(CasetableSuggest, GivesNoLineForAFolderAboveThatDoesNotShowTheRoot)
{
    const TemporaryTree tree;
    for (const std::string folder : {"300", "350", "400"}) {
        tree.file("nn/" + folder + "/out.dat");
        tree.file(".nn/" + folder + "/out.dat");
    }
    const std::vector<Arguments> given = {
        {"--suggest", ".nn"}, {"--suggest", "--exclude=n*", "nn"}, {"--suggest", "--from-list=-"}};
    Setting setting = in(tree);
    tree.file("list", "300/out.dat\n350/out.dat\n400/out.dat\n");
    setting.input = tree.path("list");
    for (const Arguments& arguments : given) {
        const Outcome outcome = run(arguments, setting);
        EXPECT_EQ(outcome.exitCode, 1) << outcome;
        EXPECT_EQ(
            message(outcome.errors),
            "no marker can be suggested: no text is followed by varying values in most paths " +
                std::string(arguments.back() == "--from-list=-" ? "in the list"
                                                                : "below " + arguments.back()) +
                "; the paths differ at their beginning (300, 350, 400), where no marker can "
                "stand");
    }
}

TEST(CasetableSuggest, SaysWhatIsHidden)
{
    const TemporaryTree tree;
    tree.file("results/.T1");

    EXPECT_EQ(message(run(tree, {"--suggest", "results"}).errors),
              "no marker can be suggested: there is no file below results; "
              "1 hidden entry left out, --hidden takes it");
    EXPECT_EQ(message(run(tree, {"--suggest", "-H", "-E", ".*", "results"}).errors),
              "no marker can be suggested: there is no file below results, with --exclude");
    tree.file("list");
    EXPECT_EQ(message(run(tree, {"--suggest", "--from-list", "list"}).errors),
              "no marker can be suggested: there is no file in list");
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
    expectLineToWork(tree, {"--suggest", "."}, 2, 2);
}

} // namespace tests
} // namespace casetable
