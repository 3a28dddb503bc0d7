#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstddef>
#include <ostream>
#include <random>
#include <set>
#include <string>
#include <thread>

#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>

#include <gtest/gtest.h>

#include "tests/casetable/support/Program.h"
#include "tests/casetable/support/TemporaryTree.h"
#include "tests/support/Sanitizer.h"

namespace casetable {
namespace tests {

namespace {

using Clock = std::chrono::steady_clock;
using Names = std::set<std::string>;

const bool isSanitized = BUILT_WITH_ADDRESS_SANITIZER || BUILT_WITH_THREAD_SANITIZER;

// In each of four tests.
const int rounds = isSanitized ? 12 : 54;
const int files = isSanitized ? 5'000 : 25'000;

// How a run is cut short.
enum class Cut { Interrupt, Kill, Memory };

// What is read, and to which format.
struct Run {
    std::string source;
    std::string output;
    std::string jobs;
};

std::ostream& operator<<(std::ostream& stream, const Run& run)
{
    return stream << run.source << " to " << run.output << ", " << run.jobs << " jobs";
}

class CasetableKilled : public testing::TestWithParam<Run> {
protected:
    CasetableKilled()
    {
        std::string paths;
        for (int i = 0; i < files; ++i) {
            const std::string path = "T" + std::to_string(i / 5) + "/P1_" + std::to_string(i);
            paths += path + "/" + std::string(50, 'x') + "\n";
            if (i % 10 == 0)
                tree_.file("tree/" + path);
        }
        tree_.file("list", paths);
        tree_.file(GetParam().output, earlier_);
    }

    static Arguments arguments()
    {
        const auto& [source, output, jobs] = GetParam();
        Arguments arguments = {"-n", "T", "-n", "P", "--jobs", jobs, "--output", output};
        if (output == "out.csv")
            arguments.emplace_back("--files");
        if (source == "list")
            arguments.emplace_back("--from-list");
        arguments.push_back(source);
        return arguments;
    }

    // All bytes of the output, but those of a database that tell the time.
    std::string content() const
    {
        std::string text = tree_.content(GetParam().output);
        const std::string key = "time";
        const std::string form = "2000-01-01T00:00:00Z";
        for (std::size_t at = 0; (at = text.find(key, at)) != std::string::npos;) {
            at += key.size();
            if (text.compare(at + form.size() - 1, 1, "Z") == 0)
                text.replace(at, form.size(), form);
        }
        return text;
    }

    Names temporaries() const
    {
        Names names = tree_.names(".");
        for (const std::string& name :
             {std::string("list"), std::string("tree"), GetParam().output})
            names.erase(name);
        return names;
    }

    // From where the libraries hardly have room to where all has.
    Setting withRandomMemory()
    {
        const bool isOfData = random_() % 2 == 0;
        const rlim_t bytes = (isOfData ? 65'000'000 : 150'000'000) + random_() % 50'000'000;
        Setting setting = in(tree_);
        setting.prepare = [isOfData, bytes] {
            const rlimit limit = {bytes, bytes};
            setrlimit(isOfData ? RLIMIT_DATA : RLIMIT_AS, &limit);
        };
        return setting;
    }

    // Waits for a random part of the time that a whole run takes, half of the times from when it
    // has begun to write.
    void waitFor(Clock::duration whole)
    {
        const bool isWriting = random_() % 2 == 0;
        const Names before = temporaries();
        const Clock::time_point giveUp = Clock::now() + whole * 2;
        while (isWriting && temporaries() == before && Clock::now() < giveUp)
            std::this_thread::sleep_for(std::chrono::microseconds(100));
        std::this_thread::sleep_for(whole * (random_() % 1000) / (isWriting ? 6000 : 1300));
    }

    Outcome cutShort(Cut how, Clock::duration whole)
    {
        if (how == Cut::Memory)
            return run(arguments(), withRandomMemory());
        Program program(arguments(), in(tree_));
        waitFor(whole);
        const int interrupts[] = {SIGINT, SIGTERM, SIGHUP};
        program.send(how == Cut::Kill ? SIGKILL : interrupts[random_() % 3]);
        return program.finish();
    }

    const TemporaryTree tree_;
    const std::string earlier_ = "earlier";
    std::mt19937 random_{static_cast<unsigned>(rounds)};
};

} // namespace

TEST_P(CasetableKilled, AtAnyMomentLeavesTheEarlierFileOrTheWholeNewOneAndNothingForGood)
{
    ASSERT_EQ(prctl(PR_SET_CHILD_SUBREAPER, 1), 0) << "what is left behind becomes a child";
    const Clock::time_point start = Clock::now();
    ASSERT_EQ(run(arguments(), in(tree_)), prints(""));
    const Clock::duration whole = Clock::now() - start;
    const std::string complete = content();
    int cut = 0;
    for (int round = 0; round < rounds; ++round) {
        const auto how = static_cast<Cut>(round % (isSanitized ? 2 : 3));
        SCOPED_TRACE("round " + std::to_string(round));
        tree_.file(GetParam().output, earlier_);
        const Names before = temporaries();

        const Outcome outcome = cutShort(how, whole);

        const bool isEarlier = content() == earlier_;
        EXPECT_TRUE(isEarlier || content() == complete) << outcome;
        EXPECT_FALSE(isEarlier && outcome.exitCode == 0) << outcome;
        EXPECT_NE(outcome.exitCode, 99) << outcome;
        // A sanitizer looks for leaks in a process of its own.
        EXPECT_TRUE(waitpid(-1, nullptr, WNOHANG) == -1 || isSanitized) << "a process is left";
        const Names after = temporaries();
        EXPECT_TRUE(how != Cut::Interrupt || outcome.exitCode == 0 || outcome.exitCode > 128 ||
                    outcome.signal != 0)
            << outcome;
        EXPECT_TRUE(how != Cut::Interrupt ||
                    std::includes(before.begin(), before.end(), after.begin(), after.end()));
        cut += isEarlier ? 1 : 0;
    }
    EXPECT_GT(cut, 0) << "all were over before";

    EXPECT_EQ(run(arguments(), in(tree_)), prints(""));
    EXPECT_TRUE(content() == complete);
    EXPECT_EQ(temporaries(), Names());
}

INSTANTIATE_TEST_SUITE_P(OfAnyFormat, CasetableKilled,
                         testing::Values(Run{"list", "out.csv", "2"}, Run{"list", "out.db", "8"},
                                         Run{"tree", "out.csv", "8"}, Run{"tree", "out.db", "1"}),
                         [](const auto& info) {
                             const bool isDatabase = info.param.output == "out.db";
                             return (isDatabase ? "DatabaseOf" : "CsvOf") + info.param.source;
                         });

} // namespace tests
} // namespace casetable
