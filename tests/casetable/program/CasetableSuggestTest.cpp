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
    EXPECT_NE(suggested.output.find("\nreads " + std::to_string(files) + " of "), std::string::npos)
        << suggested;
    EXPECT_NE(suggested.output.find(" files, " + std::to_string(cases) + " cases"),
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
    for (const std::string folder : {"Mach0.80/AoA-2", "Mach0.80/AoA2", "Mach0.85/AoA-2"}) {
        tree.file("results/" + folder + "/flow.vtu");
        tree.file("results/" + folder + "/solver.log");
    }
    tree.file("results/README");

    const Outcome outcome = run(tree, {"--suggest", "results"});

    EXPECT_EQ(outcome.exitCode, 0) << outcome;
    EXPECT_EQ(outcome.output, "casetable -t 'Mach{Mach:number}/AoA{AoA:number}/*' results\n"
                              "\n"
                              "column  type    values  sample\n"
                              "Mach    number       2  0.80, 0.85\n"
                              "AoA     number       2  -2, 2\n"
                              "\n"
                              "reads 6 of 7 files, 3 cases; not README\n");
    expectLineToWork(tree, {"--suggest", "results"}, 6, 3);
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
              "casetable --keep-going --follow -t 'link/T{T:digits}/flow.vtu' results");
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

TEST(CasetableSuggest, SaysWhyThereIsNoTemplate)
{
    const TemporaryTree tree;
    tree.folder("empty");
    tree.file("plain/a.dat");

    EXPECT_EQ(run(tree, {"--suggest", "empty", "-o", "line"}),
              fails(1, "no template can be suggested: there is no file below empty"));
    EXPECT_EQ(run(tree, {"--suggest", "plain", "-o", "line"}),
              fails(1, "no template can be suggested: no part varies in a regular way in the names "
                       "of 1 file; --explain tells how a template or marker of yours reads one"));
    EXPECT_FALSE(tree.exists("line"));
}

TEST(CasetableSuggest, GivesATemplateForEachKindOfFilesWithTheirNumber)
{
    const TemporaryTree tree;
    for (const char* run : {"1", "2", "3", "4", "5", "6"}) {
        tree.file(std::string("results/raw/SRR10") + run + "_1.fastq.gz");
        tree.file(std::string("results/raw/SRR10") + run + "_2.fastq.gz");
        tree.file(std::string("results/aligned/SRR10") + run + ".sorted.bam");
    }

    const Outcome outcome = run(tree, {"--suggest", "results"});

    EXPECT_NE(outcome.output.find("\n12 files: raw/SRR{SRR:digits}_{name:digits}.fastq.gz\n"
                                  "6 files: aligned/SRR{SRR:digits}.sorted.bam\n"
                                  "\n"
                                  "reads 18 of 18 files, 18 cases\n"),
              std::string::npos)
        << outcome;
    expectLineToWork(tree, {"--suggest", "results"}, 18, 18);
}

TEST(CasetableSuggest, ReadsValuesInAnyPlaceOfThePaths)
{
    const TemporaryTree tree;
    for (const std::string day : {"2024-01-31", "2024-02-01", "2024-02-02"}) {
        for (const std::string test : {"1", "2", "3"})
            tree.file("r/" + day + "/test" + test + "_hot.log");
    }
    expectLineToWork(tree, {"--suggest", "r"}, 9, 9);
}

TEST(CasetableSuggest, SeesNoOtherFilesThanTheTableWill)
{
    const TemporaryTree tree;
    for (const std::string folder : {"300", "350", "400"}) {
        for (const std::string file : {"out.dat", "old/out.dat", "x.tmp"})
            tree.file("we*ird [1]/T" + folder + "/" + file);
        tree.file(".hidden/T" + folder + "/out.dat");
    }
    const std::string root = "we*ird [1]";
    expectLineToWork(tree, {"--suggest", "--max-depth", "2", "--exclude=*.tmp", root}, 3, 3);
    expectLineToWork(tree, {"--suggest", "--exclude=/*/old/", "--exclude=*.tmp", root}, 3, 3);
    expectLineToWork(tree, {"--suggest", "--hidden", ".hidden"}, 3, 3);
}

TEST(CasetableSuggest, SaysWhatIsHidden)
{
    const TemporaryTree tree;
    tree.file("results/.T1");

    EXPECT_EQ(message(run(tree, {"--suggest", "results"}).errors),
              "no template can be suggested: there is no file below results; "
              "1 hidden entry left out, --hidden takes it");
    EXPECT_EQ(message(run(tree, {"--suggest", "-H", "-E", ".*", "results"}).errors),
              "no template can be suggested: there is no file below results, with --exclude");
    tree.file("list");
    EXPECT_EQ(message(run(tree, {"--suggest", "--from-list", "list"}).errors),
              "no template can be suggested: there is no file in list");
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
        {"--string", {"-s", "T"}},         {"--number", {"-n", "T"}},
        {"--template", {"-t", "{T}"}},     {"--aux", {"-a", "*=x"}},
        {"--format", {"--format", "csv"}}, {"--files", {"--files"}},
        {"--unmatched", {"--unmatched"}}};
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
    EXPECT_EQ(run(tree, {"--suggest", "."}).exitCode, 1);
}

} // namespace tests
} // namespace casetable
