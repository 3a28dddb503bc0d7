#include <cstdlib>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/casetable/support/OrdinaryUser.h"
#include "tests/casetable/support/Program.h"
#include "tests/casetable/support/TemporaryTree.h"

namespace casetable {
namespace tests {

namespace {

class CasetableColours : public testing::Test {
protected:
    void SetUp() override { tree_.file("results/T1/file"); }

    // On a terminal that knows colours.
    Setting terminal() const
    {
        Setting setting = withOutput(tree_, Stream::Terminal);
        setting.errors = Stream::Terminal;
        setting.colours = true;
        return setting;
    }

    const TemporaryTree tree_;
    const Arguments import_ = {"-n", "T", "-q", "results"};
    const Arguments explain_ = {"-n", "T", "--explain", "T1"};
    const Arguments failing_ = {"-n", "T", "missing"};
};

} // namespace

TEST_F(CasetableColours, MakeTheNamesOfATableBold)
{
    EXPECT_EQ(run(import_, terminal()), prints("\x1b[1mcase  T  files\x1b[0m\n   0  1      1\n"));
}

TEST_F(CasetableColours, MakeTheMarksOfAnExplanationBold)
{
    EXPECT_EQ(run(explain_, terminal()),
              prints("T1\n\x1b[1m^~\x1b[0m  -n T: '1', up to the end\nmatched\n"));
}

TEST_F(CasetableColours, MarkTheBeginningOfAnError)
{
    const Outcome outcome = run(failing_, terminal());

    EXPECT_EQ(outcome.errors.substr(0, 22), "\x1b[1;31mcasetable:\x1b[0m ") << outcome;
    EXPECT_EQ(outcome.errors.find('\x1b', 22), std::string::npos) << outcome;
    EXPECT_EQ(outcome.errors.back(), '\n');
}

TEST_F(CasetableColours, MarkTheWordWarning)
{
    SKIP_UNLESS_ORDINARY_USER_IS_POSSIBLE();
    tree_.folder("results/closed");
    tree_.setMode("results/closed", 0);
    Setting setting = terminal();
    setting.ordinaryUser = true;

    const Outcome outcome = run({"-n", "T", "--keep-going", "results"}, setting);

    EXPECT_NE(outcome.errors.find("casetable: \x1b[1;33mwarning:\x1b[0m results/closed: "
                                  "Permission denied\n"),
              std::string::npos)
        << outcome;
}

TEST_F(CasetableColours, AreNotForPipesAndFiles)
{
    Setting pipes = in(tree_);
    pipes.colours = true;

    for (const Arguments& arguments :
         {Arguments{"-n", "T", "-f", "table", "results"}, explain_, failing_}) {
        const Outcome outcome = run(arguments, pipes);
        EXPECT_EQ((outcome.output + outcome.errors).find('\x1b'), std::string::npos) << outcome;
    }
    EXPECT_EQ(run({"-n", "T", "-q", "-o", "out.txt", "results"}, terminal()), prints(""));
    EXPECT_EQ(tree_.content("out.txt"), "case  T  files\n   0  1      1\n");
    EXPECT_EQ(run({"-n", "T", "--explain", "T1", "-o", "out.txt"}, terminal()), prints(""));
    EXPECT_EQ(tree_.content("out.txt").find('\x1b'), std::string::npos);
}

TEST_F(CasetableColours, AreForEachStreamOnItsOwn)
{
    Setting setting = terminal();
    setting.errors = Stream::Pipe;
    EXPECT_EQ(run(failing_, setting).errors.find('\x1b'), std::string::npos);
    EXPECT_NE(run(import_, setting).output.find('\x1b'), std::string::npos);

    setting = terminal();
    setting.output = Stream::Pipe;
    EXPECT_NE(run(failing_, setting).errors.find('\x1b'), std::string::npos);
    EXPECT_EQ(run(import_, setting).output.find('\x1b'), std::string::npos);
}

TEST_F(CasetableColours, GoToAnOutputThatNamesATerminal)
{
    const Terminal other;
    Setting setting = in(tree_);
    setting.colours = true;

    EXPECT_EQ(run({"-n", "T", "-q", "-o", other.path(), "results"}, setting), prints(""));

    EXPECT_EQ(other.text(), "\x1b[1mcase  T  files\x1b[0m\n   0  1      1\n");
}

TEST_F(CasetableColours, AreNotForOtherFormatsOnATerminal)
{
    for (const std::string format : {"csv", "tsv", "json", "vtt"})
        EXPECT_EQ(run({"-n", "T", "-q", "-f", format, "results"}, terminal()).output.find('\x1b'),
                  std::string::npos)
            << format;
}

TEST_F(CasetableColours, AreLeftOutWhereTheUserOrTheTerminalWantsNone)
{
    struct Row {
        const char* variable;
        const char* value; // None when it is not set.
        bool colours;
    };
    for (const Row& row :
         {Row{"NO_COLOR", "1", false}, Row{"NO_COLOR", "0", false}, Row{"NO_COLOR", "", true},
          Row{"TERM", "dumb", false}, Row{"TERM", "", false}, Row{"TERM", nullptr, false},
          Row{"TERM", "dumber", true}}) {
        SCOPED_TRACE(std::string(row.variable) + "=" + (row.value == nullptr ? "?" : row.value));
        Setting setting = terminal();
        setting.prepare = [&row] {
            if (row.value == nullptr)
                unsetenv(row.variable);
            else
                setenv(row.variable, row.value, 1);
        };
        for (const Arguments& arguments : {import_, explain_, failing_}) {
            const Outcome outcome = run(arguments, setting);
            const std::string all = outcome.output + outcome.errors;
            EXPECT_EQ(all.find('\x1b') != std::string::npos, row.colours) << outcome;
        }
    }
}

} // namespace tests
} // namespace casetable
