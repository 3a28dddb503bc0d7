#include "casetable/distributing/Distributed.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <optional>
#include <random>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "casetable/listing/Listing.h"
#include "casetable/running/Ending.h"
#include "casetable/running/Run.h"
#include "casetable/system/Console.h"
#include "casetable/system/Output.h"
#include "tests/casetable/support/TemporaryTree.h"
#include "tests/casetable/support/ThreadProcesses.h"

namespace casetable {
namespace tests {

namespace {

using Arguments = std::vector<std::string>;

// What came of a run, and what it has written.
struct Outcome {
    std::optional<int> aborted;
    int status = 0;
    std::string output;
    std::string errors;
};

std::optional<Options> optionsOf(const TemporaryTree& tree, const Arguments& arguments)
{
    const std::string output = tree.path("output");
    std::vector<const char*> argv = {"casetable-mpi", "-q", "-o", output.c_str()};
    for (const std::string& argument : arguments)
        argv.push_back(argument.c_str());
    return parseOptions(static_cast<int>(argv.size()), argv.data(), Program::CasetableMpi);
}

// What comes of `act`, which returns a status.
template <class Act> Outcome outcomeOf(const TemporaryTree& tree, const Act& act)
{
    Outcome outcome;
    tree.file("output", "as before");
    testing::internal::CaptureStderr();
    act(outcome);
    outcome.errors = testing::internal::GetCapturedStderr();
    outcome.output = tree.content("output");
    tree.remove("output");
    return outcome;
}

// Makes a run of so many processes that sends at most so many bytes at once.
Outcome runOf(std::size_t processes, std::size_t mostBytes, const TemporaryTree& tree,
              const Arguments& arguments)
{
    return outcomeOf(tree, [&](Outcome& outcome) {
        outcome.aborted = runAsProcesses(processes, [&](Processes& each) {
            Console console;
            DistributedLimits limits;
            limits.mostBytes = mostBytes;
            const int status =
                runDistributed([&] { return optionsOf(tree, arguments); }, each, console, limits);
            if (each.number() == 0)
                outcome.status = status;
        });
    });
}

// Makes the run in the way of a single process.
Outcome plainRun(const TemporaryTree& tree, const Arguments& arguments)
{
    return outcomeOf(tree, [&](Outcome& outcome) {
        const Options options = *optionsOf(tree, arguments);
        Console console;
        console.beQuiet();
        const auto run = [&] {
            Output output(options.output);
            Listing listing(options.source, console);
            ImportedFiles files =
                importFiles(options, keptFiles(options, *options.format), false, listing);
            return finishImport(options, std::move(files), listing.root(), listing.hiddenLeftOut(),
                                output, console);
        };
        const int status = endingOf(run, console).status;
        if (status > 1)
            outcome.aborted = status;
        else
            outcome.status = status;
    });
}

std::string randomPath(std::mt19937& random)
{
    std::string path;
    for (auto depth = random() % 4; depth > 0; --depth)
        path += "T" + std::to_string(random() % 4) + (random() % 5 == 0 ? ".x/" : "/");
    return path + (random() % 4 == 0 ? "none" : "P") + std::to_string(random() % 200) + "_.dat";
}

void makeRandomTree(const TemporaryTree& tree, std::mt19937& random)
{
    tree.folder("root");
    for (auto count = random() % 120; count > 0; --count)
        tree.file("root/" + std::string(random() % 20 == 0 ? "." : "") + randomPath(random));
}

Arguments randomArguments(std::mt19937& random)
{
    Arguments arguments = {"-n", "P", "-j", std::to_string(1 + random() % 3)};
    if (random() % 2 == 0)
        arguments.insert(arguments.begin(), {"-n", "T"});
    const std::vector<Arguments> rows = {
        {}, {"--files"}, {"--unmatched"}, {"--aux", "*1_.dat=one", "--aux", "*_.dat=all"}};
    const std::vector<Arguments> others = {{}, {"-H"}, {"-d", "2"}, {"-E", "T1*"}, {"-f", "json"}};
    for (const auto& choices : {rows, others}) {
        const Arguments& chosen = choices[random() % choices.size()];
        arguments.insert(arguments.end(), chosen.begin(), chosen.end());
    }
    return arguments;
}

void expectSame(const Outcome& seen, const Outcome& expected, const std::string& what)
{
    EXPECT_EQ(seen.aborted, expected.aborted) << what;
    EXPECT_EQ(seen.status, expected.status) << what;
    EXPECT_EQ(seen.output, expected.output) << what;
    EXPECT_EQ(seen.errors, expected.errors) << what;
}

} // namespace

TEST(Distributed, GivesWhatOneProcessGivesForAnyNumber)
{
    std::mt19937 random(5);
    for (int i = 0; i < 60; ++i) {
        const TemporaryTree tree;
        makeRandomTree(tree, random);
        Arguments arguments = randomArguments(random);
        arguments.push_back(tree.path("root"));

        const Outcome expected = plainRun(tree, arguments);

        for (const std::size_t processes : {1, 2, 5})
            expectSame(runOf(processes, 1 + random() % 2000, tree, arguments), expected,
                       testing::PrintToString(arguments));
    }
}

TEST(Distributed, GivesOfAListWhatOneProcessGivesForAnyNumber)
{
    std::mt19937 random(6);
    for (int i = 0; i < 60; ++i) {
        const TemporaryTree tree;
        std::set<std::string> paths;
        for (auto count = random() % 120; count > 0; --count)
            paths.insert(randomPath(random));
        std::string text;
        for (const std::string& path : paths) {
            for (auto times = random() % 7 == 0 ? 2 : 1; times > 0; --times)
                text += path + '\n';
        }
        tree.file("list", text.substr(0, text.size() - random() % 2));
        Arguments arguments = randomArguments(random);
        arguments.insert(arguments.end(), {"--from-list", tree.path("list")});

        const Outcome expected = plainRun(tree, arguments);

        for (const std::size_t processes : {1, 2, 5})
            expectSame(runOf(processes, 1 + random() % 2000, tree, arguments), expected,
                       testing::PrintToString(arguments));
    }
}

TEST(Distributed, NamesTheFirstLineThatIsRefusedForAnyNumberOfProcesses)
{
    const TemporaryTree tree;
    std::string text;
    for (int i = 1000; i < 2000; ++i)
        text += "P" + std::to_string(i) + "\n";
    const std::string list = tree.path("list");
    struct Case {
        std::string end;
        std::string message;
    };
    const std::vector<Case> cases = {
        {"P1500/x\n", ": line 1001: P1500/x: it stands before the path in front of it"},
        {"Q\nQ!\nQ!-\nQ/x\n", ": line 1004: Q/x: line 1001 names Q as a file; list files only"},
        {"/Q\n", ": line 1001: /Q: the path is absolute"}};
    for (const Case& each : cases) {
        tree.file("list", text + each.end);
        for (const std::size_t processes : {1, 2, 5}) {
            const Outcome outcome = runOf(processes, 100, tree, {"-n", "P", "--from-list", list});

            EXPECT_EQ(outcome.aborted, 3);
            EXPECT_EQ(outcome.output, "as before");
            EXPECT_EQ(outcome.errors.find("casetable: " + list), 0U) << outcome.errors;
            EXPECT_NE(outcome.errors.find(each.message), std::string::npos) << outcome.errors;
        }
    }
}

TEST(Distributed, TakesAListInAnyOrderThatIsSaidToHaveNoPathTwice)
{
    const TemporaryTree tree;
    tree.file("list", "P3\nP1\nP2\n");
    const Arguments arguments = {"-n", "P", "--from-list", tree.path("list")};
    EXPECT_EQ(runOf(2, 100, tree, arguments).aborted, 3);

    Arguments trusting = arguments;
    trusting.emplace_back("--no-duplicates");

    EXPECT_EQ(runOf(2, 100, tree, trusting).output, "case,P,files\n0,1,1\n1,2,1\n2,3,1\n");
}

TEST(Distributed, EndsAllWhereOneCannotGoOn)
{
    const TemporaryTree tree({"root/P1"});
    const Outcome outcome = runOf(3, 100, tree, {"-n", "P", tree.path("missing")});

    EXPECT_EQ(outcome.aborted, 3);
    EXPECT_EQ(outcome.output, "as before");
    EXPECT_EQ(outcome.errors.find("casetable: " + tree.path("missing")), 0U) << outcome.errors;
    EXPECT_NE(outcome.errors.find(" (on machine"), std::string::npos) << outcome.errors;
}

TEST(Distributed, TellsNowAndThenHowFarAllHaveCome)
{
    const TemporaryTree tree({"root/a/P1", "root/b/P2", "root/c/P3"});
    const std::string root = tree.path("root");
    const std::string output = tree.path("output");
    const auto errorsWith = [&](const std::vector<const char*>& argv) {
        testing::internal::CaptureStderr();
        runAsProcesses(2, [&](Processes& each) {
            Console console;
            DistributedLimits limits;
            limits.progressInterval = std::chrono::milliseconds(0);
            runDistributed(
                [&argv] {
                    return parseOptions(static_cast<int>(argv.size()), argv.data(),
                                        Program::CasetableMpi);
                },
                each, console, limits);
        });
        return testing::internal::GetCapturedStderr();
    };

    const std::string told =
        errorsWith({"casetable-mpi", "-n", "P", "-o", output.c_str(), root.c_str()});

    EXPECT_NE(told.find(" pieces: " + root + "\n"), std::string::npos) << told;
    EXPECT_EQ(errorsWith({"casetable-mpi", "-q", "-n", "P", "-o", output.c_str(), root.c_str()}),
              "");
}

TEST(Distributed, FailsWhereProcessesDoNotSeeTheSame)
{
    const TemporaryTree tree({"0/a/P1", "0/b/P2", "1/a/P1", "1/c/P2"});
    testing::internal::CaptureStderr();
    const std::optional<int> aborted = runAsProcesses(2, [&tree](Processes& each) {
        Console console;
        const std::string root = tree.path(std::to_string(each.number()));
        const std::vector<const char*> argv = {"casetable-mpi", "-n", "P", root.c_str()};
        runDistributed(
            [&argv] {
                return parseOptions(static_cast<int>(argv.size()), argv.data(),
                                    Program::CasetableMpi);
            },
            each, console);
    });

    EXPECT_EQ(aborted, 3);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "casetable: " + tree.path("0") +
                  ": it does not look the same on machine1 as on machine0; all processes must see "
                  "the same files\n");
}

TEST(Distributed, FailsWhereProcessesWereNotGivenTheSame)
{
    const TemporaryTree tree({"root/P1", "output"});
    tree.file("templates0", "P{n}\n");
    tree.file("templates1", "# Of another machine.\nP{m}\n");
    tree.file("templates2", "# A remark.\n\nP{n}\n");
    const auto outcomeWith = [&tree](const std::string& file, const std::string& jobs) {
        return outcomeOf(tree, [&](Outcome& outcome) {
            outcome.aborted = runAsProcesses(2, [&](Processes& each) {
                const bool isFirst = each.number() == 0;
                Console console;
                runDistributed(
                    [&] {
                        return optionsOf(tree,
                                         {"-t", '@' + tree.path(isFirst ? "templates0" : file),
                                          "-j", isFirst ? "1" : jobs, tree.path("root")});
                    },
                    each, console);
            });
        });
    };

    const Outcome other = outcomeWith("templates1", "1");
    EXPECT_EQ(other.aborted, 3);
    EXPECT_EQ(other.output, "as before");
    EXPECT_EQ(other.errors, "casetable: the process on machine1 was not given the same options or "
                            "files of templates as that on machine0\n");
    const Outcome same = outcomeWith("templates2", "2");
    EXPECT_EQ(same.aborted, std::nullopt) << same.errors;
    EXPECT_EQ(same.output, "case,n,files\n0,1,1\n");
}

} // namespace tests
} // namespace casetable
