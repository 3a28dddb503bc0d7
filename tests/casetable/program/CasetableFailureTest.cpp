#include <string>

#include <gtest/gtest.h>

#include "tests/casetable/support/Program.h"
#include "tests/casetable/support/TemporaryTree.h"

namespace casetable {
namespace tests {

namespace {

// The walk or the import failed: exit code 3, one line, no output.
void expectImportFails(const TemporaryTree& tree, const Arguments& arguments,
                       const std::string& text)
{
    SCOPED_TRACE(testing::PrintToString(arguments));
    const Outcome outcome = run(tree, arguments);
    EXPECT_EQ(outcome.exitCode, 3) << outcome;
    EXPECT_EQ(outcome.output, "");
    EXPECT_EQ(message(outcome.errors), text);
}

} // namespace

TEST(CasetableExitCode, IsZeroForATableWithCases)
{
    const TemporaryTree tree;
    tree.file("results/T1/file");

    const Outcome outcome = run(tree, {"-n", "T", "results"});

    EXPECT_EQ(outcome.exitCode, 0) << outcome;
    EXPECT_EQ(outcome.errors, "");
}

TEST(CasetableExitCode, IsOneWhenNoFileMatchedWithALineOnEachFailedMarker)
{
    const TemporaryTree tree;
    for (const char* file : {"a", "b", "T1/c", "T1/Px", "T1/Py", "T2/Pz"})
        tree.file(std::string("results/") + file);

    const Outcome outcome = run(tree, {"-n", "T", "-n", "P", "results"});

    EXPECT_EQ(outcome.exitCode, 1) << outcome;
    EXPECT_EQ(outcome.output, "case,T,P\r\n");
    EXPECT_EQ(message(outcome.errors),
              "no file matched: marker 'P' failed for 4 files, 'T' failed for 2 files; 'P' has no "
              "value in T1/Px, and --explain tells why; --unmatched lists them");
}

TEST(CasetableExitCode, IsOneWithTheLikelyCauseWhereThereIsOne)
{
    const TemporaryTree tree;
    tree.file("results/a/T1");

    EXPECT_EQ(message(run(tree, {"-n", "t", "results"}).errors),
              "no file matched: marker 't' failed for 1 file; 't' is written with other letters, "
              "large or small, in a/T1; --unmatched lists them");
    EXPECT_EQ(message(run(tree, {"-s", "results", "--unmatched", "results"}).errors),
              "no file matched: marker 'results' failed for 1 file; 'results' stands in results, "
              "but only the paths below it are read");
}

TEST(CasetableExitCode, IsOneAlsoWithAuxiliaryFilesAskedFor)
{
    const TemporaryTree tree;
    tree.file("results/a");

    const Outcome outcome = run(tree, {"-n", "T", "-a", "*.log=log", "results"});

    EXPECT_EQ(outcome.exitCode, 1) << outcome;
    EXPECT_EQ(outcome.output, "case,T,log\r\n");
    EXPECT_EQ(message(outcome.errors),
              "no file matched: marker 'T' failed for 1 file; --unmatched lists them");
}

TEST(CasetableExitCode, OneIsExplainedInOneLineWhateverTheMarkerAndQuietOrNot)
{
    const TemporaryTree tree;
    tree.file("results/a");

    for (const char* quiet : {"--quiet", "--files"}) {
        const Outcome outcome = run(tree, {"-n", "T\n\x1b\xff", quiet, "results"});
        EXPECT_EQ(outcome.exitCode, 1) << outcome;
        EXPECT_EQ(
            message(outcome.errors),
            "no file matched: marker 'T\\n\\x1b\\xff' failed for 1 file; --unmatched lists them");
    }
}

TEST(CasetableExitCode, IsThreeForARootThatDoesNotExist)
{
    const TemporaryTree tree;
    tree.link("broken", "nowhere");

    expectImportFails(tree, {"-n", "T", "missing"},
                      "missing: The specified directory does not exist.");
    expectImportFails(tree, {"-n", "T", "a\nb"}, "a\\nb: The specified directory does not exist.");
    expectImportFails(tree, {"-n", "T", "--keep-going", "missing/deeper/"},
                      "missing/deeper/: The specified directory does not exist.");
    expectImportFails(tree, {"-n", "T", "broken"},
                      "broken: The specified directory does not exist.");
}

TEST(CasetableExitCode, IsThreeForARootThatIsAFile)
{
    const TemporaryTree tree;
    tree.file("file");
    tree.pipe("pipe");

    for (const char* root : {"file", "pipe"}) {
        expectImportFails(tree, {"-n", "T", root}, std::string(root) + ": Not a directory");
        expectImportFails(tree, {"-n", "T", "--keep-going", root},
                          std::string(root) + ": Not a directory");
    }
}

TEST(CasetableExitCode, IsThreeForAnIdentifierThatSelectsNothing)
{
    const TemporaryTree tree;
    tree.file("results/T1/a.log");

    for (const std::string syntax : {"*.LOG", "*", "***", "", "none", "[", "a.log*x"}) {
        const bool isAsterisks = syntax == "*" || syntax == "***";
        expectImportFails(tree, {"-n", "T", "-a", "*.log=log", "-a", syntax + "=tag", "results"},
                          "--aux '" + syntax + "=tag': Invalid pattern. " +
                              (isAsterisks
                                   ? "Asterisks alone select nothing; '*?' selects every file."
                                   : "It selects none of the matched files."));
    }
    EXPECT_EQ(run(tree, {"-n", "T", "-a", "*?=all", "results"}).output,
              "case,T,all\r\n0,1,T1/a.log\r\n");
}

TEST(CasetableExitCode, IsThreeForMarkersThatOverlapAndNamesThePath)
{
    const TemporaryTree tree;
    tree.file("results/T1/.xy5");
    tree.file("results/T1/other");

    expectImportFails(tree, {"-s", ".xy", "-n", "y", "-H", "results"},
                      "T1/.xy5: the markers overlap: invalid string position");
}

TEST(CasetableExitCode, IsFourForOutputThatNobodyReads)
{
    const TemporaryTree tree;
    tree.file("results/T1/file");

    for (const char* format : {"csv", "json", "table"}) {
        Setting setting = in(tree);
        setting.output = Stream::NoReader;
        const Outcome outcome = run({"-n", "T", "-f", format, "results"}, setting);
        EXPECT_EQ(outcome.exitCode, 4) << outcome;
        EXPECT_EQ(message(outcome.errors), "standard output: Broken pipe");
    }
}

TEST(CasetableExitCode, IsFourForAFullDisk)
{
    const TemporaryTree tree;
    tree.file("results/T1/file");
    Setting setting = in(tree);
    setting.output = Stream::FullDisk;

    const Outcome outcome = run({"-n", "T", "results"}, setting);

    EXPECT_EQ(outcome.exitCode, 4) << outcome;
    EXPECT_EQ(message(outcome.errors), "standard output: No space left on device");
}

TEST(CasetableExitCode, IsFourForClosedOutput)
{
    const TemporaryTree tree;
    tree.file("results/T1/file");
    Setting setting = in(tree);
    setting.output = Stream::Closed;

    const Outcome outcome = run({"-n", "T", "results"}, setting);

    EXPECT_EQ(outcome.exitCode, 4) << outcome;
    EXPECT_EQ(message(outcome.errors), "standard output: Bad file descriptor");
}

TEST(CasetableExitCode, IsFourWithOneLineThoughNoFileMatchedEither)
{
    const TemporaryTree tree;
    tree.file("results/T1/file");
    Setting setting = in(tree);
    setting.output = Stream::FullDisk;

    const Outcome outcome = run({"-n", "none", "results"}, setting);

    EXPECT_EQ(outcome.exitCode, 4) << outcome;
    EXPECT_EQ(message(outcome.errors), "standard output: No space left on device");
}

TEST(CasetableExitCode, DoesNotDependOnWhetherMessagesCanBeWritten)
{
    const TemporaryTree tree;
    tree.file("results/T1/file");
    for (const Stream stream : {Stream::NoReader, Stream::FullDisk, Stream::Closed}) {
        Setting setting = in(tree);
        setting.errors = stream;
        EXPECT_EQ(run({"-n", "T", "results"}, setting).exitCode, 0);
        EXPECT_EQ(run({"-n", "none", "results"}, setting).exitCode, 1);
        EXPECT_EQ(run({"results"}, setting).exitCode, 2);
        EXPECT_EQ(run({"-n", "T", "missing"}, setting).exitCode, 3);
    }
}

TEST(CasetableErrors, AreOneLineWhateverThePath)
{
    const TemporaryTree tree;
    tree.file("results/T1/file");
    tree.file("a\nb");

    for (const Arguments& arguments :
         {Arguments{"-n", "T", "a\nb"}, Arguments{"-n", "T", "-o", "no\nfolder/x", "results"},
          Arguments{"-n", "T", "-o", "a\nb/x", "results"},
          Arguments{"-n", "T", "a\nb", "\nresults"},
          Arguments{"-n", "T", "-a", "\n=\xe2\x80\xae", "results"}}) {
        const Outcome outcome = run(tree, arguments);
        EXPECT_NE(message(outcome.errors).find("\\n"), std::string::npos) << outcome;
        EXPECT_GT(outcome.exitCode, 1) << outcome;
    }
}

TEST(CasetableErrors, GoToATerminalWithoutControlCharacters)
{
    const TemporaryTree tree;
    Setting setting = in(tree);
    setting.errors = Stream::Terminal;

    const Outcome outcome = run({"-n", "T", "\x1b]0;title\a"}, setting);

    EXPECT_EQ(message(outcome.errors),
              "\\x1b]0;title\\x07: The specified directory does not exist.");
}

} // namespace tests
} // namespace casetable
