#include "casetable/system/OutputGuards.h"

#include <string>

#include <gtest/gtest.h>

#include "casetable/system/ExitCode.h"
#include "tests/casetable/support/TemporaryTree.h"

namespace casetable {
namespace tests {

namespace {

class OutputGuards : public testing::Test {
protected:
    OutputGuards()
    {
        tree_.link("link", "results/a/T1");
        tree_.link("linked", "results");
        tree_.link("results/outside", "../other");
    }

    // What the refusal says behind the path of the output; empty where there is none.
    template <class Guard> static std::string refusal(const std::string& output, const Guard& guard)
    {
        try {
            guard(output);
            return "";
        } catch (const Failure& failure) {
            EXPECT_EQ(failure.code, ExitCode::OutputFailed);
            const std::string message = failure.what();
            EXPECT_EQ(message.compare(0, output.size(), output), 0) << message;
            return message.substr(output.size());
        }
    }

    std::string listRefusal(const std::string& output, const std::string& list) const
    {
        return refusal(tree_.path(output),
                       [&](const std::string& path) { spareInput(path, list, "the list itself"); });
    }

    // Where a/T1 and what is outside of the root are matched.
    std::string fileRefusal(const std::string& output, const std::string& root) const
    {
        return refusal(tree_.path(output), [&](const std::string& path) {
            const std::string file = pathBelow(tree_.path(root), path);
            spareMatchedFile(path, file == "a/T1" || file == "../other");
        });
    }

    const TemporaryTree tree_{{"results/a/T1", "results/a/x", "other"}};
    const std::string isList_ = ": is the list itself, and is not replaced";
    const std::string isMatched_ = ": is one of the matched files, and is not replaced";
};

} // namespace

TEST_F(OutputGuards, SpareTheListHoweverItIsNamed)
{
    EXPECT_EQ(listRefusal("other", tree_.path("other")), isList_);
    EXPECT_EQ(listRefusal("results/../other", tree_.path("other")), isList_);
    EXPECT_EQ(listRefusal("link", tree_.path("results/a/T1")), isList_);
}

TEST_F(OutputGuards, LetEveryFileButTheListPass)
{
    EXPECT_EQ(listRefusal("new", tree_.path("other")), "");
    EXPECT_EQ(listRefusal("results/a/x", tree_.path("other")), "");
    EXPECT_EQ(listRefusal("other", tree_.path("missing")), "");
    EXPECT_EQ(listRefusal("other", "-"), "");
    EXPECT_NO_THROW(spareInput("/dev/null", "/dev/null", "the list itself"));
}

TEST_F(OutputGuards, SpareAMatchedFileHoweverItAndItsRootAreNamed)
{
    EXPECT_EQ(fileRefusal("results/a/T1", "results"), isMatched_);
    EXPECT_EQ(fileRefusal("results/./a/../a/T1", "results/"), isMatched_);
    EXPECT_EQ(fileRefusal("link", "linked"), isMatched_);
}

TEST_F(OutputGuards, LetOtherFilesPass)
{
    EXPECT_EQ(fileRefusal("results/a/x", "results"), "");
    EXPECT_EQ(fileRefusal("results/a/new", "results"), "");
    EXPECT_EQ(fileRefusal("new/new", "results"), "");
    EXPECT_EQ(fileRefusal("results/a/T1", "missing"), "");
}

} // namespace tests
} // namespace casetable
