#include <string>

#include <gtest/gtest.h>

#include "tests/casetable/support/Program.h"
#include "tests/casetable/support/TemporaryTree.h"

namespace casetable {
namespace tests {

TEST(CasetableExitCode, IsZeroForATableWithCases)
{
    const TemporaryTree tree({"results/T1/file"});

    EXPECT_EQ(run(tree, {"-n", "T", "results"}), prints("case,T,files\n0,1,1\n"));
}

TEST(CasetableExitCode, IsOneWhenNoFileMatchedWithALineOnEachFailedMarker)
{
    const TemporaryTree tree({"results/a", "results/b", "results/T1/c", "results/T1/Px",
                              "results/T1/Py", "results/T2/Pz"});

    EXPECT_EQ(
        run(tree, {"-n", "T", "-n", "P", "results"}),
        ends(1, "case,T,P,files\n",
             "no file matched: marker 'P' failed for 4 files, 'T' failed for 2 files; 'P' has no "
             "value in T1/Px, and --explain tells why; --unmatched lists them"));
}

TEST(CasetableExitCode, IsOneWithTheLikelyReasonWhereThereIsOne)
{
    const TemporaryTree tree({"results/a/T1"});

    EXPECT_EQ(
        run(tree, {"-n", "t", "results"}),
        ends(1, "case,t,files\n",
             "no file matched: marker 't' failed for 1 file; 't' is written with other letters, "
             "large or small, in a/T1; --unmatched lists them"));
    EXPECT_EQ(
        run(tree, {"-s", "results", "--unmatched", "results"}),
        ends(1, "path,marker,reason\na/T1,results,not found\n",
             "no file matched: marker 'results' failed for 1 file; 'results' stands in results, "
             "but only the paths below it are read"));
}

TEST(CasetableExitCode, IsOneAlsoWithAuxiliaryFilesAskedFor)
{
    const TemporaryTree tree({"results/a"});

    EXPECT_EQ(run(tree, {"-n", "T", "-a", "*.log=log", "results"}),
              ends(1, "case,T,log,log files,files\n",
                   "no file matched: marker 'T' failed for 1 file; --unmatched lists them"));
}

TEST(CasetableExitCode, OneIsExplainedInOneLineWhateverTheMarkerAndQuietOrNot)
{
    const TemporaryTree tree({"results/a"});

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

    EXPECT_EQ(run(tree, {"-n", "T", "missing"}),
              fails(3, "missing: The specified directory does not exist."));
    EXPECT_EQ(run(tree, {"-n", "T", "a\nb"}),
              fails(3, "a\\nb: The specified directory does not exist."));
    EXPECT_EQ(run(tree, {"-n", "T", "--keep-going", "missing/deeper/"}),
              fails(3, "missing/deeper/: The specified directory does not exist."));
    EXPECT_EQ(run(tree, {"-n", "T", "broken"}),
              fails(3, "broken: The specified directory does not exist."));
}

TEST(CasetableExitCode, IsThreeForARootThatIsAFile)
{
    const TemporaryTree tree({"file"});
    tree.pipe("pipe");

    for (const char* root : {"file", "pipe"}) {
        EXPECT_EQ(run(tree, {"-n", "T", root}), fails(3, std::string(root) + ": Not a directory"));
        EXPECT_EQ(run(tree, {"-n", "T", "--keep-going", root}),
                  fails(3, std::string(root) + ": Not a directory"));
    }
}

TEST(CasetableExitCode, IsThreeForAnIdentifierThatSelectsNothing)
{
    const TemporaryTree tree({"results/T1/a.log"});

    for (const std::string syntax : {"*.LOG", "*", "***", "", "none", "[", "a.log*x"}) {
        const bool isAsterisks = syntax == "*" || syntax == "***";
        EXPECT_EQ(
            run(tree, {"-n", "T", "-a", "*.log=log", "-a", syntax + "=tag", "results"}),
            fails(3, "--aux '" + syntax + "=tag': Invalid pattern. " +
                         (isAsterisks ? "Asterisks alone select nothing; '*?' selects every file."
                                      : "It selects none of the matched files.")));
    }
    EXPECT_EQ(run(tree, {"-n", "T", "-a", "*?=all", "results"}),
              prints("case,T,all,all files,files\n0,1,T1/a.log,1,1\n"));
}

TEST(CasetableExitCode, IsThreeForMarkersThatOverlapAndNamesThePath)
{
    const TemporaryTree tree({"results/T1/.xy5", "results/T1/other"});

    EXPECT_EQ(run(tree, {"-s", ".xy", "-n", "y", "-H", "results"}),
              fails(3, "T1/.xy5: the markers overlap: invalid string position"));
}

TEST(CasetableExitCode, IsFourForOutputThatNobodyReads)
{
    const TemporaryTree tree({"results/T1/file"});

    for (const char* format : {"csv", "json", "table"})
        EXPECT_EQ(run({"-n", "T", "-f", format, "results"}, withOutput(tree, Stream::NoReader)),
                  fails(4, "standard output: Broken pipe"));
}

TEST(CasetableExitCode, IsFourForAFullDisk)
{
    const TemporaryTree tree({"results/T1/file"});

    EXPECT_EQ(run({"-n", "T", "results"}, withOutput(tree, Stream::FullDisk)),
              fails(4, "standard output: No space left on device"));
}

TEST(CasetableExitCode, IsFourForClosedOutput)
{
    const TemporaryTree tree({"results/T1/file"});

    EXPECT_EQ(run({"-n", "T", "results"}, withOutput(tree, Stream::Closed)),
              fails(4, "standard output: Bad file descriptor"));
}

TEST(CasetableExitCode, IsFourWithOneLineThoughNoFileMatchedEither)
{
    const TemporaryTree tree({"results/T1/file"});

    EXPECT_EQ(run({"-n", "none", "results"}, withOutput(tree, Stream::FullDisk)),
              fails(4, "standard output: No space left on device"));
}

TEST(CasetableExitCode, DoesNotDependOnWhetherMessagesCanBeWritten)
{
    const TemporaryTree tree({"results/T1/file"});
    for (const Stream stream : {Stream::NoReader, Stream::FullDisk, Stream::Closed}) {
        const Setting setting = withErrors(tree, stream);
        EXPECT_EQ(run({"-n", "T", "results"}, setting).exitCode, 0);
        EXPECT_EQ(run({"-n", "none", "results"}, setting).exitCode, 1);
        EXPECT_EQ(run({"results"}, setting).exitCode, 2);
        EXPECT_EQ(run({"-n", "T", "missing"}, setting).exitCode, 3);
    }
}

TEST(CasetableErrors, AreOneLineWhateverThePath)
{
    const TemporaryTree tree({"results/T1/file", "a\nb"});

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

    EXPECT_EQ(run({"-n", "T", "\x1b]0;title\a"}, withErrors(tree, Stream::Terminal)),
              fails(3, "\\x1b]0;title\\x07: The specified directory does not exist."));
}

} // namespace tests
} // namespace casetable
