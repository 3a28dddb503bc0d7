#include <cstddef>
#include <random>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/casetable/support/Database.h"
#include "tests/casetable/support/OrdinaryUser.h"
#include "tests/casetable/support/TemporaryTree.h"
#include "tests/mpi/support/MpiRun.h"

namespace casetable {
namespace tests {

namespace {

std::string randomPath(std::mt19937& random)
{
    std::string path;
    for (auto depth = random() % 4; depth > 0; --depth)
        path += "T" + std::to_string(random() % 5) + (random() % 9 == 0 ? "\xff\n/" : "/");
    return path + (random() % 4 == 0 ? "none" : "P") + std::to_string(random() % 500) + "_.dat";
}

void makeRandomTree(const TemporaryTree& tree, std::mt19937& random)
{
    tree.folder("results");
    for (int count = 300; count > 0; --count)
        tree.file("results/" + std::string(random() % 20 == 0 ? "." : "") + randomPath(random));
    tree.link("results/link", "T1");
}

void makeRandomList(const TemporaryTree& tree, std::mt19937& random)
{
    std::set<std::string> paths;
    while (paths.size() < 2000)
        paths.insert(randomPath(random) + std::to_string(random() % 100));
    std::string text;
    for (const std::string& path : paths)
        text += path + '\0' + (random() % 50 == 0 ? path + '\0' : "");
    tree.file("list", text);
}

const std::vector<Arguments> outputs = {{},
                                        {"--files"},
                                        {"--unmatched", "-f", "tsv"},
                                        {"--aux", "*1_.dat*=one", "--aux", "*_.dat*=all"},
                                        {"--sort", "-P,files", "-f", "json"},
                                        {"--aux", "*_.dat*=all", "--files", "-f", "jsonl"},
                                        {"-f", "vtt"},
                                        {"-f", "table"},
                                        {"--missing", "T,P", "-q"}};

// That any number of processes write what one writes that needs no launcher.
void expectSame(const TemporaryTree& tree, const Arguments& source, std::size_t processes)
{
    for (const Arguments& output : outputs) {
        Arguments arguments = {"-n", "T", "-n", "P"};
        arguments.insert(arguments.end(), output.begin(), output.end());
        arguments.insert(arguments.end(), source.begin(), source.end());
        const Outcome expected = run(tree, arguments);
        const Outcome seen = runMpi(tree, processes, arguments);
        EXPECT_EQ(seen.exitCode, expected.exitCode) << seen;
        EXPECT_EQ(seen.output, expected.output) << processes;
        if (expected.exitCode == 0)
            EXPECT_EQ(seen.errors, expected.errors);
        else
            EXPECT_EQ(ownLine(seen.errors), ownLine(expected.errors));
    }
}

std::vector<DatabaseRow> contentOf(const TemporaryTree& tree, const std::string& database)
{
    std::vector<DatabaseRow> rows = ask(tree.path(database), "SELECT * FROM cases");
    for (DatabaseRow& row : ask(tree.path(database), "SELECT * FROM files"))
        rows.push_back(row);
    for (DatabaseRow& row : ask(tree.path(database), "SELECT name, sql FROM sqlite_master"))
        rows.push_back(row);
    return rows;
}

} // namespace

TEST(MpiSameBytes, ComeOfATreeForAnyNumberOfProcesses)
{
    std::mt19937 random(21);
    for (const std::size_t processes : {1, 2, 3, 4}) {
        const TemporaryTree tree;
        makeRandomTree(tree, random);
        expectSame(tree, {"-L", "results"}, processes);
    }
}

TEST(MpiSameBytes, ComeOfAListForAnyNumberOfProcesses)
{
    std::mt19937 random(22);
    for (const std::size_t processes : {1, 2, 3, 4}) {
        const TemporaryTree tree;
        makeRandomList(tree, random);
        expectSame(tree, {"-0", "--from-list", "list", "-j", "2"}, processes);
    }
}

TEST(MpiSameBytes, ComeInADatabase)
{
    std::mt19937 random(23);
    const TemporaryTree tree;
    makeRandomTree(tree, random);
    const Arguments arguments = {"-n", "P", "--aux", "*1_.dat*=one", "results", "-o"};
    const auto to = [&](const std::string& file) {
        Arguments all = arguments;
        all.push_back(file);
        return all;
    };

    EXPECT_EQ(run(tree, to("one.db")), prints(""));
    EXPECT_EQ(runMpi(tree, 3, to("three.db")), prints(""));

    EXPECT_EQ(contentOf(tree, "three.db"), contentOf(tree, "one.db"));
    EXPECT_EQ(faultsOf(tree.path("three.db")), "ok");
}

TEST(MpiSameBytes, ComeWithFewerFoldersThanProcesses)
{
    const TemporaryTree tree({"results/P1", "results/a/P2", "empty/"});
    EXPECT_EQ(runMpi(tree, 4, {"-n", "P", "results"}), prints("case,P,files\n0,1,1\n1,2,1\n"));
    const Outcome none = runMpi(tree, 4, {"-n", "P", "empty"});
    EXPECT_EQ(none.exitCode, 1);
    EXPECT_EQ(none.output, "case,P,files\n");
    EXPECT_EQ(ownLine(none.errors), "casetable: no file matched: there is no file below empty");
}

TEST(MpiSameBytes, ComeWhateverIsTheMostThatIsSentAtOnce)
{
    std::mt19937 random(24);
    const TemporaryTree tree;
    makeRandomList(tree, random);
    const Arguments arguments = {"-n", "P", "--files", "-0", "--from-list", "list"};
    const Outcome expected = run(tree, arguments);
    for (const std::string bytes : {"1000", "65537"}) {
        Setting setting = asProcesses(4, in(tree));
        setting.program.insert(setting.program.begin() + 1, "CASETABLE_MPI_BYTES=" + bytes);
        EXPECT_EQ(run(arguments, setting), expected);
    }
}

TEST(MpiSameBytes, ComeWithAllWarningsInTheirOrder)
{
    SKIP_UNLESS_ORDINARY_USER_IS_POSSIBLE();
    const TemporaryTree tree;
    // More than what a library sends before anybody receives it.
    for (int i = 0; i < 3000; ++i) {
        const std::string folder = "results/P" + std::to_string(i % 40) + "/a" +
                                   std::to_string(100'000 + i) + std::string(100, 'x');
        tree.folder(folder);
        tree.setMode(folder, 0);
    }
    tree.file("results/P1/file");
    const Arguments arguments = {"-n", "P", "--keep-going", "results"};
    const Setting setting = withOrdinaryUser(tree);

    const Outcome seen = run(arguments, asProcesses(3, setting));

    EXPECT_GT(seen.errors.size(), 300'000u);
    EXPECT_EQ(seen, run(arguments, setting));
}

} // namespace tests
} // namespace casetable
