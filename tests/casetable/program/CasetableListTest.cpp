#include <csignal>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "tests/casetable/support/Csv.h"
#include "tests/casetable/support/OrdinaryUser.h"
#include "tests/casetable/support/Program.h"
#include "tests/casetable/support/TemporaryTree.h"
#include "tests/support/Sanitizer.h"

namespace casetable {
namespace tests {

namespace {

// Runs the program with standard input from a file that holds `list`.
Outcome runOnInput(const std::string& list, const Arguments& arguments)
{
    const TemporaryTree tree;
    tree.file("input", list);
    Setting setting = in(tree);
    setting.input = tree.path("input");
    return run(arguments, setting);
}

// Runs the program behind `lister`, a shell command in the folder `results` of the tree.
Outcome runBehind(const TemporaryTree& tree, const std::string& lister, const Arguments& arguments)
{
    Setting setting = in(tree);
    setting.program = {"sh", "-c", "(cd results && " + lister + ") | \"$@\"", "sh"};
    return run(arguments, setting);
}

// The list is refused: exit code 3, one line, no output.
void expectRefused(const std::string& list, const std::string& text, bool nullSeparated = false)
{
    SCOPED_TRACE(testing::PrintToString(list));
    Arguments arguments = {"-n", "T", "--from-list", "-"};
    if (nullSeparated)
        arguments.emplace_back("-0");
    EXPECT_EQ(runOnInput(list, arguments), fails(3, "standard input: " + text));
}

// Both ends of a named pipe stay open, so that its reader waits.
class OpenPipe {
public:
    explicit OpenPipe(const std::string& path)
        : descriptor_(::open(path.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC))
    {
    }
    ~OpenPipe() { ::close(descriptor_); }
    OpenPipe(const OpenPipe&) = delete;
    OpenPipe& operator=(const OpenPipe&) = delete;

    void write(const std::string& text) const
    {
        EXPECT_EQ(::write(descriptor_, text.data(), text.size()),
                  static_cast<ssize_t>(text.size()));
    }

private:
    const int descriptor_;
};

} // namespace

TEST(CasetableList, IsImportedLikeATree)
{
    const TemporaryTree tree;
    tree.file("list", "a/T1/x.log\nb/T2/x\nnone\na/T1/y");

    EXPECT_EQ(run(tree, {"-n", "T", "-a", "*.log=log", "--from-list", "list"}),
              prints("case,T,log,log files,files\n0,1,a/T1/x.log,1,2\n1,2,,0,1\n"));
    EXPECT_EQ(run(tree, {"-n", "T", "--unmatched", "--from-list", "list"}),
              prints("path,marker,reason\nnone,T,not found\n"));
}

TEST(CasetableList, NeedsNoneOfItsFiles)
{
    EXPECT_EQ(runOnInput("no/such/T1/file\n", {"-n", "T", "--from-list", "-"}),
              prints("case,T,files\n0,1,1\n"));
}

TEST(CasetableList, MayComeFromAFileOfAnyName)
{
    const TemporaryTree tree;
    for (const char* const name : {"./-", "-0", "--hidden", "a\nb", "\xff", " "}) {
        tree.file(name, "T1/x\n");
        EXPECT_EQ(run(tree, {"-n", "T", "--from-list", name}), prints("case,T,files\n0,1,1\n"))
            << name;
    }
}

TEST(CasetableList, GivesWhatTheTreeOfThatListGives)
{
    const TemporaryTree tree;
    const std::vector<std::string> names = {"\r",  "\"",   "'",    ",",  " ",    " two  ",   "-",
                                            "--",  "-n",   "\\",   "*",  "\xff", "\xc3\xa4", "a!",
                                            "a.b", "\x01", "$(x)", "%s", "...",  ".x"};
    for (std::size_t i = 0; i < names.size(); ++i) {
        tree.file("results/T" + std::to_string(10 + i % 3) + "/" + names[i] + "/" + names[i]);
        tree.file("results/" + names[i] + "/T" + std::to_string(i) + ".log");
        tree.file("results/.hidden" + names[i] + "/a/b/T3");
    }
    const std::string nulls = "find . -type f -printf '%P\\0'";
    const std::string lines = "find . -type f -printf '%P\\n' | sort -r";
    const std::vector<Arguments> selections = {
        {"-n", "T"},
        {"-n", "T", "--unmatched"},
        {"-s", "T", "-a", "*.log=log"},
        {"-n", "T", "--files"},
        {"-n", "T", "--files", "-E", "*.log"},
        {"-n", "T", "--files", "-E", "/T10", "-E", "*/T1.log"},
        {"-n", "T", "--files", "-E", "a/b/"},
        {"-n", "T", "--files", "-E", "**/a/**"},
        {"-n", "T", "--files", "-E", ".*"},
        {"-n", "T", "--files", "-d", "2"},
        {"-n", "T", "--files", "-d", "3", "-E", "[!T]*/*"},
        {"-n", "T", "--files", "-d", "1"},
    };
    for (const Arguments& selection : selections) {
        SCOPED_TRACE(testing::PrintToString(selection));
        Arguments onTree = selection;
        onTree.insert(onTree.end(), {"--hidden", "results"});
        Arguments onLines = selection;
        onLines.insert(onLines.end(), {"--from-list", "-"});
        Arguments onNulls = onLines;
        onNulls.emplace_back("-0");

        const Outcome expected = run(tree, onTree);
        for (const Outcome& outcome :
             {runBehind(tree, lines, onLines), runBehind(tree, nulls, onNulls)}) {
            EXPECT_EQ(outcome.output, expected.output);
            EXPECT_EQ(outcome.exitCode, expected.exitCode);
        }
        EXPECT_LE(expected.exitCode, 1) << expected;
    }
}

TEST(CasetableList, MayHoldLineEndsInPathsWhenDividedByNulls)
{
    const TemporaryTree tree({"results/a\nb/T1\n/\n", "results/\n"});

    const Outcome outcome =
        runBehind(tree, "find . -type f -print0", {"-n", "T", "--files", "--from-list", "-", "-0"});

    EXPECT_EQ(outcome.exitCode, 0) << outcome;
    EXPECT_EQ(parseCsv(outcome.output),
              (std::vector<Record>{{"path", "case", "T"}, {"./a\nb/T1\n/\n", "0", "1"}}));
}

TEST(CasetableList, KeepsTheDotThatFindPrintsInPathsButNotInSelections)
{
    const TemporaryTree tree({"results/T1", "results/a/T2", "results/a/b/T3", "results/c/T4"});
    const std::string lister = "find . -type f";

    EXPECT_EQ(runBehind(tree, lister, {"-n", "T", "--files", "--from-list", "-", "-d", "2"}),
              prints("path,case,T\n./T1,0,1\n./a/T2,1,2\n./c/T4,2,4\n"));
    EXPECT_EQ(
        runBehind(tree, lister, {"-n", "T", "--files", "--from-list", "-", "-E", "/a", "-E", ".*"}),
        prints("path,case,T\n./T1,0,1\n./c/T4,1,4\n"));
}

TEST(CasetableList, TakesHiddenNamesAsTheyAre)
{
    for (const char* const option : {"--quiet", "--hidden"})
        EXPECT_EQ(runOnInput(".a/.T1\n", {"-n", "T", "--from-list", "-", option}),
                  prints("case,T,files\n0,1,1\n"));
}

TEST(CasetableList, HoldsAPathOnceHoweverOftenItOccurs)
{
    EXPECT_EQ(runOnInput("T1/x\nT1/x\nT1/x", {"-n", "T", "--files", "--from-list", "-"}),
              prints("path,case,T\nT1/x,0,1\n"));
}

TEST(CasetableList, IsReadToItsEndHoweverLongItIs)
{
    std::string list;
    for (int i = 0; i < 20'000; ++i)
        list +=
            "folder/with a name/T" + std::to_string(i % 7) + "/file " + std::to_string(i) + "\n";

    const Outcome outcome = runOnInput(list, {"-n", "T", "--files", "--from-list", "-"});

    EXPECT_EQ(parseCsv(outcome.output).size(), 20'001u) << outcome.errors;
}

TEST(CasetableList, IsRefusedForAPathThatIsNotRelativeToOneFolder)
{
    expectRefused("T1\n/T2\n",
                  "line 2: /T2: the path is absolute; list files relative to one folder");
    expectRefused("T1/../T2", "line 1: T1/../T2: the path climbs out by \"..\"");
    expectRefused("T1\n..\n", "line 2: ..: the path climbs out by \"..\"");
    expectRefused("/\n", "line 1: /: the path is absolute; list files relative to one folder");
    expectRefused(std::string("a\nb\0/c\0", 7),
                  "record 2: /c: the path is absolute; list files relative to one folder", true);
}

TEST(CasetableList, IsRefusedForEmptyPathsAndComponents)
{
    expectRefused("T1\n\nT2\n", "line 2: the path is empty");
    expectRefused("a//T1\n", "line 1: a//T1: a component of the path is empty");
    expectRefused("T1/\n", "line 1: T1/: a path that ends in / names a folder; list files only");
    expectRefused(std::string("a\0\0b\0", 5), "record 2: the path is empty", true);
}

TEST(CasetableList, IsRefusedForAFileThatIsAFolderToo)
{
    expectRefused("a/T1\nb\na/T1/x\n",
                  "line 3: a/T1/x: line 1 names a/T1 as a file; list files only");
    expectRefused("a/T1/x\na/T1\n", "line 2: a/T1: line 1 names it as a folder; list files only");
    expectRefused(std::string("a\0a/b\0", 6),
                  "record 2: a/b: record 1 names a as a file; list files only", true);
}

TEST(CasetableList, IsRefusedForANullInALine)
{
    expectRefused(std::string("T1\0T2\n", 6),
                  "line 1: T1\\x00: a path holds no NUL; a list divided by NULs needs --null");
}

TEST(CasetableList, IsRefusedInOneLineWhateverThePathAndItsOwnName)
{
    expectRefused(
        "/\x1b[31m\xff\r\n",
        "line 1: /\\x1b[31m\\xff\\r: the path is absolute; list files relative to one folder");
    const TemporaryTree tree;
    tree.file("a\nb\x1b\xff", "/\n");
    EXPECT_EQ(
        run(tree, {"-n", "T", "--from-list", "a\nb\x1b\xff"}),
        fails(
            3,
            "a\\nb\\x1b\\xff: line 1: /: the path is absolute; list files relative to one folder"));
}

TEST(CasetableList, ThatIsRefusedLeavesAnEarlierOutputAsItWas)
{
    const TemporaryTree tree;
    tree.file("list", "/\n");
    tree.file("out", "earlier");

    EXPECT_EQ(run(tree, {"-n", "T", "--from-list", "list", "-o", "out"}).exitCode, 3);

    EXPECT_EQ(tree.content("out"), "earlier");
}

TEST(CasetableList, IsNotReplacedByTheOutput)
{
    const TemporaryTree tree;
    tree.file("list", "T1/x\n");
    tree.link("link", "list");

    for (const std::string name : {"list", "./list", "link"})
        EXPECT_EQ(run(tree, {"-n", "T", "--from-list", "list", "-o", name}),
                  fails(4, name + ": is the list itself, and is not replaced"));
    Setting setting = in(tree);
    setting.input = tree.path("list");
    EXPECT_EQ(run({"-n", "T", "--from-list", "-", "-o", "list"}, setting),
              fails(4, "list: is the list itself, and is not replaced"));
    EXPECT_EQ(tree.content("list"), "T1/x\n");
    EXPECT_EQ(runOnInput("T1/x\n", {"-n", "T", "--from-list", "-", "-o", "/dev/null"}), prints(""));
}

TEST(CasetableList, ThatCannotBeReadIsAnErrorWithTheReason)
{
    const TemporaryTree tree({"folder/"});
    for (const auto& [list, reason] : std::vector<std::pair<std::string, std::string>>{
             {"missing", "missing: No such file or directory"},
             {"folder", "folder: Is a directory"},
             {"missing/list", "missing/list: No such file or directory"},
             {std::string(5000, 'x'), std::string(5000, 'x') + ": File name too long"}}) {
        EXPECT_EQ(run(tree, {"-n", "T", "--from-list", list}), fails(3, reason));
    }
}

TEST(CasetableList, ThatTheUserMayNotReadIsAnError)
{
    SKIP_UNLESS_ORDINARY_USER_IS_POSSIBLE();
    const TemporaryTree tree;
    tree.file("list", "T1\n");
    tree.setMode("list", 0);

    EXPECT_EQ(run({"-n", "T", "--from-list", "list"}, withOrdinaryUser(tree)),
              fails(3, "list: Permission denied"));
}

TEST(CasetableList, OnClosedStandardInputIsAnError)
{
    Setting setting;
    setting.prepare = [] { ::close(STDIN_FILENO); };

    EXPECT_EQ(run({"-n", "T", "--from-list", "-"}, setting),
              fails(3, "standard input: Bad file descriptor"));
}

TEST(CasetableList, MayBeEmpty)
{
    EXPECT_EQ(runOnInput("", {"-n", "T", "--from-list", "-"}),
              ends(1, "case,T,files\n", "no file matched: there is no file in standard input"));
}

TEST(CasetableList, ThatTheSelectionEmptiesIsToldSo)
{
    const TemporaryTree tree;
    tree.file("list", "a/T1\n");

    EXPECT_EQ(run(tree, {"-n", "T", "--from-list", "list", "-E", "a", "-d", "1"}),
              ends(1, "case,T,files\n",
                   "no file matched: there is no file in list, with --exclude and --max-depth"));
}

TEST(CasetableList, IsSaidToHaveTheMarkersThatFailed)
{
    EXPECT_EQ(runOnInput("a\nb\n", {"-n", "T", "--from-list", "-"}),
              ends(1, "case,T,files\n",
                   "no file matched: marker 'T' failed for 2 files; --unmatched lists them"));
}

TEST(CasetableList, MayComeFromANamedPipe)
{
    const TemporaryTree tree;
    tree.pipe("pipe");
    Setting setting = in(tree);
    setting.program = {"sh", "-c", "(printf 'T1\\nT'; printf '2\\n') > pipe & \"$@\"", "sh"};

    EXPECT_EQ(run({"-n", "T", "--from-list", "pipe"}, setting),
              prints("case,T,files\n0,1,1\n1,2,1\n"));
}

TEST(CasetableList, ShowsHowManyPathsHaveComeWhileItKeepsWaiting)
{
    const TemporaryTree tree;
    tree.pipe("pipe");
    const OpenPipe pipe(tree.path("pipe"));
    pipe.write("T1\nT2\nT3");

    Program program({"-n", "T", "--from-list", "pipe"}, withErrors(tree, Stream::Terminal));
    program.waitForErrors([](const std::string& errors) {
        return errors.find("\r\x1b[K2 paths: pipe") != std::string::npos;
    });
    program.send(SIGTERM);
    const Outcome outcome = program.finish();

    EXPECT_EQ(outcome.exitCode, 128 + SIGTERM) << outcome;
    EXPECT_EQ(outcome.output, "");
    EXPECT_EQ(outcome.errors.find('\n'), std::string::npos);
    EXPECT_EQ(outcome.errors.substr(outcome.errors.size() - 4), "\r\x1b[K") << outcome;
}

TEST(CasetableList, ThatIsAFileShowsTheShareOfItsBytes)
{
    const TemporaryTree tree;
    std::string paths;
    for (int i = 0; i < 5'000'000; ++i)
        paths += "T2/b\nT1/b\n";
    tree.file("list", paths);

    Program program({"-n", "T", "-j", "1", "--from-list", "list"},
                    withErrors(tree, Stream::Terminal));
    program.waitForErrors(
        [](const std::string& errors) { return errors.find(" %: list") != std::string::npos; });
    program.send(SIGINT);
    const Outcome outcome = program.finish();

    std::size_t count = 0;
    int share = -1;
    EXPECT_EQ(std::sscanf(outcome.errors.c_str(), "\r\x1b[K%zu paths, %d %%: list", &count, &share),
              2)
        << outcome;
    EXPECT_GE(share, 0);
    EXPECT_LE(share, 100);
}

TEST(CasetableList, ThatNobodyHasBegunToWriteCanBeInterrupted)
{
    const TemporaryTree tree;
    tree.pipe("pipe");

    Program program({"-n", "T", "--from-list", "pipe"}, withErrors(tree, Stream::Terminal));
    program.waitForErrors([](const std::string& errors) {
        return errors.find("0 paths: pipe") != std::string::npos;
    });
    program.send(SIGINT);
    const Outcome outcome = program.finish();

    EXPECT_EQ(outcome.exitCode, 130) << outcome;
    EXPECT_EQ(outcome.errors.find('\n'), std::string::npos) << outcome;
}

TEST(CasetableList, ThatKeepsWaitingOnStandardInputCanBeInterrupted)
{
    const TemporaryTree tree;
    tree.pipe("pipe");
    const OpenPipe pipe(tree.path("pipe"));
    Setting setting = in(tree);
    setting.input = tree.path("pipe");

    Program program({"-n", "T", "--from-list", "-", "-o", "out"}, setting);
    if (!program.waitUntilIn(SYS_futex))
        GTEST_SKIP() << "the system does not tell where a program waits";
    program.send(SIGINT);
    EXPECT_EQ(program.finish(), ends(130, ""));
    EXPECT_FALSE(tree.exists("out"));
}

TEST(CasetableList, ThatNeverEndsCanBeInterrupted)
{
    const TemporaryTree tree;
    tree.pipe("pipe");
    for (const std::string jobs : {"1", "2", "8"}) {
        SCOPED_TRACE(jobs);
        Setting setting = withErrors(tree, Stream::Terminal);
        // The lister ends when nobody reads the pipe any more.
        setting.program = {
            "sh", "-c",
            "(i=0; while :; do i=$((i + 1)); echo T$i/$i; done) > pipe 2> /dev/null & exec \"$@\"",
            "sh"};
        Program program({"-n", "T", "-j", jobs, "--from-list", "pipe", "-o", "out"}, setting);
        program.waitForErrors([](const std::string& errors) {
            const std::size_t line = errors.rfind("\r\x1b[K");
            return line != std::string::npos && std::atoi(errors.c_str() + line + 4) > 0;
        });
        program.send(SIGINT);
        const Outcome outcome = program.finish();

        EXPECT_EQ(outcome.exitCode, 130) << outcome;
        EXPECT_EQ(tree.names("."), std::set<std::string>{"pipe"});
    }
}

TEST(CasetableList, ThatNeverEndsALineIsRefused)
{
    const TemporaryTree tree;
    Setting setting = in(tree);
    setting.program = {"sh", "-c", "tr '\\0' x < /dev/zero | \"$@\"", "sh"};

    const Outcome outcome = run({"-n", "T", "--from-list", "-"}, setting);

    EXPECT_EQ(outcome.exitCode, 3) << outcome;
    EXPECT_EQ(outcome.output, "");
    EXPECT_NE(outcome.errors.find("casetable: standard input: line 1: xxx"), std::string::npos);
    EXPECT_NE(outcome.errors.find("the path does not end within 16777216 bytes\n"),
              std::string::npos);
}

TEST(CasetableList, ThatNeverEndsIsAnErrorWhenMemoryRunsOut)
{
    SKIP_WHERE_SANITIZERS_NEED_ADDRESSES();
    const TemporaryTree tree;
    Setting setting = in(tree);
    // No two lines are the same, and each is a case.
    setting.program = {"sh", "-c", "seq -f 'a-line-of-some-length/T%.0f' 1000000000 | \"$@\"",
                       "sh"};
    setting.prepare = [] {
        const rlimit limit = {400'000'000, 400'000'000};
        setrlimit(RLIMIT_AS, &limit);
    };

    const Outcome outcome = run({"-n", "T", "--from-list", "-"}, setting);

    EXPECT_EQ(outcome.exitCode, 3) << outcome;
    EXPECT_EQ(outcome.output, "");
    EXPECT_NE(outcome.errors.find("casetable: not enough memory\n"), std::string::npos) << outcome;
}

TEST(CasetableList, OfAnotherSystemIsReadAsItStandsWithAWarningUnlessQuiet)
{
    EXPECT_EQ(runOnInput("T1/x\r\nT2/y\r\n", {"-n", "T", "-s", "/", "--from-list", "-"}),
              prints("case,T,/,files\n0,1,\"x\r\",1\n1,2,\"y\r\",1\n",
                     "warning: standard input: all lines end in CR LF, and the CR "
                     "is taken as a part of the paths"));
    EXPECT_EQ(runOnInput("T1/x\r\n", {"-q", "-n", "T", "--from-list", "-"}),
              prints("case,T,files\n0,1,1\n"));
}

TEST(CasetableList, IsCountedInTheRemarkLikeATree)
{
    const TemporaryTree tree;
    tree.file("list", ".T1\nT2\nT2\nnone\n");

    EXPECT_EQ(run({"-n", "T", "--from-list", "list"}, withErrors(tree, Stream::Terminal)),
              prints("case,T,files\n0,1,1\n1,2,1\n",
                     "cases: 2, from 2 of 3 files; --unmatched lists the others"));
}

} // namespace tests
} // namespace casetable
