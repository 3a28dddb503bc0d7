#include <cerrno>
#include <string>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "tests/casetable/support/Program.h"
#include "tests/casetable/support/TemporaryTree.h"
#include "tests/support/Sanitizer.h"

namespace casetable {
namespace tests {

namespace {

// A sanitizer makes a walk several times as long.
const int entries =
    BUILT_WITH_ADDRESS_SANITIZER || BUILT_WITH_THREAD_SANITIZER ? 100'000 : 1'000'000;

// Of one length, so that the order of the numbers is that of the names.
std::string nameOf(int entry)
{
    return "T" + std::to_string(10'000'000 + entry);
}

void makeEntries(const TemporaryTree& tree, const std::string& folder)
{
    tree.folder(folder);
    const int descriptor = open(tree.path(folder).c_str(), O_RDONLY | O_DIRECTORY);
    for (int i = 0; i < entries; ++i) {
        if (mknodat(descriptor, nameOf(i).c_str(), S_IFREG | 0600, 0) != 0)
            throw std::system_error(errno, std::generic_category(), nameOf(i));
    }
    close(descriptor);
}

} // namespace

TEST(CasetableLargeFolder, IsListedWhole)
{
    const TemporaryTree tree;
    makeEntries(tree, "results/all");
    std::string expected = "path,case,T\n";
    for (int i = 0; i < entries; ++i)
        expected += "all/" + nameOf(i) + "," + std::to_string(i) + "," + nameOf(i).substr(1) + "\n";

    const Outcome outcome = run(tree, {"-n", "T", "--files", "results"});

    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.errors, "");
    EXPECT_EQ(outcome.output.size(), expected.size());
    EXPECT_TRUE(outcome.output == expected) << "too long to be shown";
}

} // namespace tests
} // namespace casetable
