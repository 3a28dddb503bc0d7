#include <set>
#include <string>

#include <sys/resource.h>

#include <gtest/gtest.h>

#include "tests/casetable/support/Program.h"
#include "tests/casetable/support/TemporaryTree.h"
#include "tests/support/Sanitizer.h"

namespace casetable {
namespace tests {

TEST(CasetableMemory, IsAnErrorWhereThereIsTooLittle)
{
    SKIP_WHERE_SANITIZERS_NEED_ADDRESSES();
    // Some 20 KB of values and keys a file.
    const std::size_t markers = 110;
    std::string name;
    Arguments arguments = {"--output", "table.csv", "results"};
    for (std::size_t i = 0; i < markers; ++i) {
        name += "a1";
        arguments.insert(arguments.end(), {"-n", "a"});
    }
    const TemporaryTree tree;
    for (int i = 0; i < 12000; ++i)
        tree.file("results/a" + std::to_string(i) + name);
    tree.file("table.csv", "earlier");
    Setting setting = in(tree);
    setting.prepare = [] {
        const rlimit limit = {250'000'000, 250'000'000};
        setrlimit(RLIMIT_AS, &limit);
    };

    const Outcome outcome = run(arguments, setting);

    EXPECT_EQ(outcome.exitCode, 3) << outcome;
    EXPECT_EQ(outcome.output, "");
    EXPECT_NE(outcome.errors.find("casetable: not enough memory\n"), std::string::npos) << outcome;
    EXPECT_EQ(tree.content("table.csv"), "earlier");
    EXPECT_EQ(tree.names(""), (std::set<std::string>{"results", "table.csv"}));
}

} // namespace tests
} // namespace casetable
