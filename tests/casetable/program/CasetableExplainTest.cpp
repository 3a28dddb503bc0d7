#include <string>

#include <gtest/gtest.h>

#include "tests/casetable/support/Program.h"
#include "tests/casetable/support/TemporaryTree.h"

namespace casetable {
namespace tests {

namespace {

const std::string matched = "a/T1/x\n"
                            "  ^~  -n T: '1', up to the /\n"
                            "matched\n";

} // namespace

TEST(CasetableExplain, ShowsAPathThatIsMatched)
{
    const TemporaryTree tree;

    EXPECT_EQ(run(tree, {"-n", "T", "--explain", "a/T1/x"}), prints(matched));
}

TEST(CasetableExplain, ShowsAPathThatIsNotMatched)
{
    const TemporaryTree tree;

    EXPECT_EQ(
        run(tree, {"-s", "_P", "--explain", "run_P5.dat"}),
        ends(1, "run_P5.dat\n"
                "   ^^  -s _P: no value\n"
                "not matched: only '5' stands behind -s _P, as the extension '.dat' is left off\n"
                "  One character at the end of a segment is not taken as a value; a segment ends\n"
                "  at the next marker or with the path. A number may be one digit:\n"
                "  -n _P\n"));
}

TEST(CasetableExplain, TakesACompletedPathAndWalksNothing)
{
    const TemporaryTree tree;

    for (const Arguments& arguments :
         {Arguments{"-n", "T", "--explain", "no root/a/T1/x", "no root"},
          Arguments{"-n", "T", "--explain", "no root/a/T1/x", "no root/"},
          Arguments{"-n", "T", "--explain", "a/T1/x", "no root"}}) {
        EXPECT_EQ(run(tree, arguments), prints(matched));
    }
}

TEST(CasetableExplain, SaysWhatAnImportLeavesOut)
{
    const TemporaryTree tree;
    const auto explained = [&tree](const std::string& path, Arguments options) {
        options.insert(options.end(), {"-n", "T", "--explain", path});
        const Outcome outcome = run(tree, options);
        const std::string line = "an import does not look at it: ";
        const std::size_t begin = outcome.output.find(line);
        EXPECT_EQ(outcome.exitCode, begin == std::string::npos ? 0 : 1) << outcome;
        return begin == std::string::npos ? "" : outcome.output.substr(begin + line.size());
    };

    EXPECT_EQ(explained("a/.b/T1/x", {}), ".b is hidden; --hidden takes it\n");
    EXPECT_EQ(explained("a/.b/T1/x", {"--hidden"}), "");
    EXPECT_EQ(explained("./a/T1/x", {}), "");
    EXPECT_EQ(explained("a//T1/x", {}), "a component of the path is empty\n");
    EXPECT_EQ(explained("a/T1/", {}), "a path that ends in / names a folder\n");
    EXPECT_EQ(explained("a/T1/x", {"-E", "T*/"}), "--exclude leaves T1 out\n");
    EXPECT_EQ(explained("a/T1/x", {"-E", "a/*/x"}), "--exclude leaves x out\n");
    EXPECT_EQ(explained("a/T1/./x", {"-E", "/a/T1/x"}), "--exclude leaves x out\n");
    EXPECT_EQ(explained("a/T1/x", {"-d", "2"}), "--max-depth leaves T1 out\n");
    EXPECT_EQ(explained("a/T1/x", {"-d", "3", "-E", "x"}), "--exclude leaves x out\n");
    EXPECT_EQ(explained("a/T1/x", {"-d", "3", "-E", "x/", "-E", "T1/a"}), "");
    EXPECT_EQ(explained("../a/T1/x", {"--hidden"}), "the path climbs out by \"..\"\n");
    EXPECT_EQ(explained("/a/T1/x", {}), "the path is absolute; name it as it stands below ROOT\n");
    EXPECT_EQ(explained("/a/T1/x", {"/b"}),
              "the path is absolute; name it as it stands below ROOT\n");
    EXPECT_EQ(explained("/a/T1/x", {"/a"}), "");
}

TEST(CasetableExplain, GoesToAFile)
{
    const TemporaryTree tree;

    EXPECT_EQ(run(tree, {"-n", "T", "--explain", "a/T1/x", "-o", "out.json"}), prints(""));
    EXPECT_EQ(tree.content("out.json"), matched);
    EXPECT_EQ(run(tree, {"-n", "T", "--explain", "T1", "-o", "missing/out"}).exitCode, 4);
}

TEST(CasetableExplain, AgreesWithAnImportOfThePath)
{
    for (const std::string path : {"T1/P55/x", "T1/P5", "T1/P5/", "P5/T1", "Tx/P55", "T1P5.dat"}) {
        const TemporaryTree tree({"results/" + path + (path.back() == '/' ? "x" : "")});
        const std::string file = path + (path.back() == '/' ? "x" : "");

        EXPECT_EQ(run(tree, {"-n", "T", "-s", "P", "--explain", file}).exitCode,
                  run(tree, {"-n", "T", "-s", "P", "results"}).exitCode)
            << path;
    }
}

} // namespace tests
} // namespace casetable
