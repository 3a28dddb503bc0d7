#include <cstdlib>
#include <string>

#include <gtest/gtest.h>

#include "tests/casetable/support/Program.h"
#include "tests/casetable/support/TemporaryTree.h"

namespace casetable {
namespace tests {

namespace {

// What Qt's platform keeps until the end is no leak of the program's.
class LeaksLeftToQt : public testing::Environment {
public:
    void SetUp() override { setenv("ASAN_OPTIONS", "detect_leaks=0", 1); }
};

const testing::Environment* const leaksLeftToQt =
    testing::AddGlobalTestEnvironment(new LeaksLeftToQt);

std::string messageOf(const TemporaryTree& tree, const Arguments& arguments)
{
    const Outcome outcome = run(tree, arguments);
    EXPECT_EQ(outcome.exitCode, 2);
    return message(outcome.errors);
}

} // namespace

TEST(WindowProgram, SavesItsPictureAndEnds)
{
    const TemporaryTree tree({"campaign/T1/x", "campaign/T2/x"});
    EXPECT_EQ(run(tree, {"--grab", "w.png", "-n", "T", "campaign"}), prints(""));
    EXPECT_EQ(tree.content("w.png").substr(1, 3), "PNG");
}

TEST(WindowProgram, FailsWithAWalkThatFailed)
{
    const TemporaryTree tree;
    const Outcome outcome = run(tree, {"--grab", "w.png", "-n", "T", "missing"});
    EXPECT_EQ(outcome.exitCode, 3);
    EXPECT_NE(message(outcome.errors).find("missing"), std::string::npos);
}

TEST(WindowProgram, OpensASetupByName)
{
    const TemporaryTree tree({"campaign/T1/x"});
    tree.file("c.casetable", "casetable -n T " + tree.path("campaign") + "\n");
    EXPECT_EQ(run(tree, {"--dark", "--grab=w.png", "c.casetable"}), prints(""));
    tree.file("c.casetable", "casetable -n T " + tree.path("missing") + "\n");
    const Outcome outcome = run(tree, {tree.path("c.casetable"), "--grab=w.png"});
    EXPECT_EQ(outcome.exitCode, 3);
    EXPECT_NE(message(outcome.errors).find("missing"), std::string::npos);
    tree.file("c.casetable", "casetable --nonsense\n");
    EXPECT_NE(messageOf(tree, {"--grab=w.png", "c.casetable"}).find("c.casetable: --nonsense"),
              std::string::npos);
    EXPECT_NE(messageOf(tree, {"--grab=w.png", "none.casetable"}).find("none.casetable: "),
              std::string::npos);
}

TEST(WindowProgram, OpensAFolderThatIsCalledLikeASetup)
{
    const TemporaryTree tree({"d.casetable/T1"});
    EXPECT_EQ(run(tree, {"--grab=w.png", "d.casetable"}), prints(""));
    EXPECT_EQ(run(tree, {"--grab=w.png", "-n", "T", "d.casetable"}), prints(""));
}

TEST(WindowProgram, TakesNoSetupBesideOptions)
{
    const TemporaryTree tree({"campaign/T1/x"});
    tree.file("c.casetable", "casetable -n T " + tree.path("campaign") + "\n");
    const Outcome outcome = run(tree, {"--grab=w.png", "--hidden", "c.casetable"});
    EXPECT_EQ(outcome.exitCode, 3);
    EXPECT_NE(message(outcome.errors).find("c.casetable"), std::string::npos);
}

TEST(WindowProgram, TakesNoValueOrRootForAnOptionOfItsOwn)
{
    const TemporaryTree tree({"campaign/-hx"});
    EXPECT_EQ(run(tree, {"--grab", "w.png", "-s", "-h", "campaign"}), prints(""));
    EXPECT_TRUE(tree.exists("w.png"));
    EXPECT_EQ(run(tree, {"--grab", "w.png", "-n", "T", "--", "--dark"}).exitCode, 3);
}

TEST(WindowProgram, RefusesWhatItCannotDo)
{
    const TemporaryTree tree;
    EXPECT_EQ(messageOf(tree, {"--grab"}), "--grab: its FILE.png is missing");
    EXPECT_EQ(messageOf(tree, {"-o", "x.csv", "."}),
              "--output: casetable-window has no such option; it saves by menu");
    EXPECT_EQ(messageOf(tree, {"--exclude", "a//b", "."}),
              "--exclude 'a//b': a component is empty");
    EXPECT_EQ(run(tree, {"--grab", "missing/w.png", "."}),
              fails(4, "missing/w.png: the picture cannot be written"));
}

TEST(WindowProgram, TellsItsOptionsAndItsVersion)
{
    const TemporaryTree tree;
    const Outcome help = run(tree, {"--help"});
    EXPECT_EQ(help.exitCode, 0);
    for (const std::string option : {"--string", "--template", "--from-list", "--sort", "--grab"})
        EXPECT_NE(help.output.find(option), std::string::npos) << option;
    EXPECT_EQ(help.output.find("--output"), std::string::npos);
    EXPECT_EQ(run(tree, {"--version"}).output.find("casetable-window "), 0U);
}

} // namespace tests
} // namespace casetable
