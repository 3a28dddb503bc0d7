#include <algorithm>
#include <chrono>
#include <csignal>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <sched.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "casetable/system/Descriptor.h"
#include "tests/casetable/support/Injection.h"
#include "tests/casetable/support/OrdinaryUser.h"
#include "tests/casetable/support/Program.h"
#include "tests/casetable/support/TemporaryTree.h"
#include "tests/support/Sanitizer.h"

namespace casetable {
namespace tests {

namespace {

using Names = std::set<std::string>;

const std::vector<std::string> formats = {"csv", "tsv", "json", "table"};

// Ends in failure where the program writes more than its buffer holds, so that some of the output
// is out already.
class CasetableOutputFaults : public testing::Test {
protected:
    CasetableOutputFaults()
    {
        for (int i = 0; i < files; ++i)
            tree_.file("results/T1/" + std::string(200, 'x') + std::to_string(i));
        tree_.file("out", "earlier");
        tree_.setMode("out", 0640);
    }

    static Arguments writing(const std::string& format, const std::string& file)
    {
        return {"-n", "T", "--files", "-f", format, "-o", file, "results"};
    }

    void expectEarlierFileAlone() const
    {
        EXPECT_EQ(tree_.content("out"), "earlier");
        EXPECT_EQ(tree_.mode("out"), 0640u);
        EXPECT_EQ(tree_.names("."), Names({"out", "results"}));
    }

    void expectFailure(const Outcome& outcome, const std::string& text) const
    {
        EXPECT_EQ(outcome.exitCode, 4) << outcome.errors;
        EXPECT_EQ(message(outcome.errors), text);
    }

    // Waits until a program writes into the folder; the name of its temporary file.
    std::string waitForTemporaryFile() const
    {
        const auto giveUp = std::chrono::steady_clock::now() + std::chrono::minutes(1);
        while (std::chrono::steady_clock::now() < giveUp) {
            for (const std::string& name : tree_.names(".")) {
                if (name.front() == '.')
                    return name;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        ADD_FAILURE() << "no temporary file";
        return "";
    }

    // Kills a program while it writes. The name of what it leaves.
    std::string abandonTemporaryFile() const
    {
        Program program(writing("csv", "out"), withInjection(tree_, "fsync", "signal=SIGKILL"));
        program.finish();
        return waitForTemporaryFile();
    }

    static const int files = 2000;
    const TemporaryTree tree_;
};

} // namespace

TEST_F(CasetableOutputFaults, AreToldInOneLineForAFullDeviceInEveryFormat)
{
    for (const std::string& format : formats) {
        SCOPED_TRACE(format);
        const Outcome outcome = run(tree_, writing(format, "/dev/full"));
        expectFailure(outcome, "/dev/full: No space left on device");
        EXPECT_EQ(outcome.output, "");

        expectFailure(run(writing(format, "-"), withOutput(tree_, Stream::FullDisk)),
                      "standard output: No space left on device");
    }
    expectEarlierFileAlone();
}

TEST_F(CasetableOutputFaults, LeaveTheEarlierFileOnADiskThatFillsUp)
{
    const std::string refused = "no mount is permitted";
    inOwnProcess([this, &refused] {
        // The mount is seen by this process and the program alone, and goes with them.
        tree_.folder("disk");
        if (unshare(CLONE_NEWNS) != 0 ||
            mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
            mount("none", tree_.path("disk").c_str(), "tmpfs", 0, "size=256k") != 0) {
            tree_.file(refused);
            return;
        }
        tree_.file("disk/out", "earlier");
        for (const std::string& format : formats) {
            SCOPED_TRACE(format);
            expectFailure(run(tree_, writing(format, "disk/out")),
                          "disk/out: No space left on device");
            EXPECT_EQ(tree_.content("disk/out"), "earlier");
            expectFailure(run(tree_, writing(format, "disk/new")),
                          "disk/new: No space left on device");
            EXPECT_EQ(tree_.names("disk"), Names({"out"}));
        }
        EXPECT_EQ(run(tree_, {"-n", "T", "-o", "disk/out", "results"}), prints(""))
            << "the space is free again";
        EXPECT_EQ(tree_.content("disk/out"), "case,T,files\n0,1,2000\n");
        EXPECT_EQ(umount(tree_.path("disk").c_str()), 0);
    });
    if (tree_.exists(refused))
        GTEST_SKIP() << refused;
}

TEST_F(CasetableOutputFaults, LeaveTheEarlierFileWhereFilesMayNotGrowSoLarge)
{
    SKIP_WHERE_SANITIZERS_WRITE();
    for (const std::string& format : formats) {
        for (const rlim_t bytes : {rlim_t{0}, rlim_t{1}, rlim_t{65536}, rlim_t{100'000}}) {
            SCOPED_TRACE(format + ", " + std::to_string(bytes));
            Setting setting = in(tree_);
            setting.prepare = [bytes] {
                const rlimit limit = {bytes, bytes};
                setrlimit(RLIMIT_FSIZE, &limit);
            };
            expectFailure(run(writing(format, "out"), setting), "out: File too large");
            expectEarlierFileAlone();
        }
    }
}

TEST_F(CasetableOutputFaults, AreToldWhenTheReaderOfAPipeGoesAwayHalfWay)
{
    tree_.pipe("pipe");
    for (const std::string& format : formats) {
        SCOPED_TRACE(format);
        const int reader = open(tree_.path("pipe").c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
        ASSERT_GE(reader, 0);
        Program program(writing(format, "pipe"), in(tree_));
        const auto giveUp = std::chrono::steady_clock::now() + std::chrono::minutes(1);
        int held = 0;
        while (held < 65536 && ioctl(reader, FIONREAD, &held) == 0 &&
               std::chrono::steady_clock::now() < giveUp)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        EXPECT_EQ(held, 65536) << "the pipe is full";
        close(reader);

        expectFailure(program.finish(), "pipe: Broken pipe");
    }
    EXPECT_EQ(tree_.names("."), Names({"out", "pipe", "results"}));
}

TEST_F(CasetableOutputFaults, OfAnyStepLeaveTheEarlierFileAndNoOther)
{
    SKIP_UNLESS_FAULTS_CAN_BE_INJECTED(tree_);
    struct Fault {
        std::string systemCall;
        std::string fault;
        std::string text;
    };
    for (const Fault& fault : {Fault{"fchmod", "error=EPERM", "Operation not permitted"},
                               Fault{"write", "error=ENOSPC:when=1", "No space left on device"},
                               Fault{"write", "error=EIO:when=2", "Input/output error"},
                               Fault{"write", "error=EDQUOT:when=5", "Disk quota exceeded"},
                               Fault{"fsync", "error=EIO", "Input/output error"},
                               Fault{"rename", "error=EACCES", "Permission denied"}}) {
        SCOPED_TRACE(fault.systemCall + " " + fault.fault);
        const Outcome outcome =
            run(writing("csv", "out"), withInjection(tree_, fault.systemCall, fault.fault));
        expectFailure(outcome, "out: " + fault.text);
        expectEarlierFileAlone();
    }
}

TEST_F(CasetableOutputFaults, OfLocksLetTheOutputPassAndRemoveNothing)
{
    SKIP_UNLESS_FAULTS_CAN_BE_INJECTED(tree_);
    const Outcome whole = run(tree_, writing("csv", "-"));
    const std::string abandoned = abandonTemporaryFile();

    EXPECT_EQ(run(writing("csv", "out"), withInjection(tree_, "flock", "error=ENOLCK")),
              prints(""));

    EXPECT_EQ(tree_.content("out"), whole.output);
    EXPECT_EQ(tree_.names("."), Names({abandoned, "out", "results"}));
    EXPECT_EQ(run(tree_, writing("csv", "out")), prints(""));
    EXPECT_EQ(tree_.names("."), Names({"out", "results"}));
}

TEST_F(CasetableOutputFaults, DoNotComeOfAnotherRunThatIsAboutToRemoveTheTemporaryFile)
{
    SKIP_UNLESS_FAULTS_CAN_BE_INJECTED(tree_);
    const Outcome whole = run(tree_, writing("csv", "-"));
    // So that there is time to lock the file first, as a run does that takes it for abandoned.
    Program program(writing("csv", "out"), withInjection(tree_, "flock", "delay_enter=1000000"));
    const std::string taken = waitForTemporaryFile();
    const Descriptor other(open(tree_.path(taken).c_str(), O_WRONLY | O_CLOEXEC));
    ASSERT_EQ(flock(other.number(), LOCK_EX | LOCK_NB), 0);

    EXPECT_EQ(program.finish(), prints(""));

    EXPECT_EQ(tree_.content("out"), whole.output);
    EXPECT_EQ(tree_.content(taken), "");
    EXPECT_EQ(tree_.names("."), Names({taken, "out", "results"}));
}

TEST_F(CasetableOutputFaults, OfTheCloseLeaveTheEarlierFileAndNoOther)
{
    SKIP_UNLESS_FAULTS_CAN_BE_INJECTED(tree_);
    // Which close of the main thread is the one behind the write.
    Setting counting = in(tree_);
    counting.program = {"strace", "-qqq", "-o", "trace", "-e", "trace=close,fsync"};
    ASSERT_EQ(run(writing("csv", "new"), counting).exitCode, 0);
    std::istringstream trace(tree_.content("trace"));
    int closes = 1;
    for (std::string line; std::getline(trace, line) && line.compare(0, 5, "fsync") != 0;)
        closes += line.compare(0, 5, "close") == 0 ? 1 : 0;
    ASSERT_FALSE(trace.eof()) << tree_.content("trace");
    tree_.remove("new");
    tree_.remove("trace");

    for (const std::string error : {"EIO", "EDQUOT"}) {
        const Outcome outcome = run(
            writing("csv", "out"),
            withInjection(tree_, "close", "error=" + error + ":when=" + std::to_string(closes)));
        expectFailure(outcome, "out: " + std::string(error == "EIO" ? "Input/output error"
                                                                    : "Disk quota exceeded"));
        expectEarlierFileAlone();
    }
}

TEST_F(CasetableOutputFaults, OfTheCloseAreToldForADeviceToo)
{
    SKIP_UNLESS_FAULTS_CAN_BE_INJECTED(tree_);
    const Outcome outcome =
        run(writing("csv", "/dev/null"),
            withInjection(tree_, "close", "error=EIO", {"-P", "/dev/null", "-o", "trace"}));

    expectFailure(outcome, "/dev/null: Input/output error");
    const std::string trace = tree_.content("trace");
    EXPECT_EQ(std::count(trace.begin(), trace.end(), '\n'), 1)
        << "a descriptor whose close has failed is gone; it may be another's already: " << trace;
}

TEST_F(CasetableOutputFaults, AreNotToldForAShortWrite)
{
    SKIP_UNLESS_FAULTS_CAN_BE_INJECTED(tree_);
    const std::string whole = run(tree_, writing("csv", "-")).output;

    // The system says that it took so many bytes; the injection swallows them.
    EXPECT_EQ(run(writing("csv", "-"), withInjection(tree_, "write", "retval=100:when=1")),
              prints(whole.substr(100)));
    EXPECT_EQ(run(writing("csv", "-"), withInjection(tree_, "write", "retval=7:when=1..2")),
              prints(whole.substr(14)));
}

TEST_F(CasetableOutputFaults, AreNotToldForAShortWriteOfAMessage)
{
    SKIP_UNLESS_FAULTS_CAN_BE_INJECTED(tree_);
    const std::string whole = run(tree_, {"-n", "T", "missing"}).errors;

    EXPECT_EQ(
        run({"-n", "T", "missing"}, withInjection(tree_, "write", "retval=10:when=1..2")).errors,
        whole.substr(20));
}

TEST_F(CasetableOutputFaults, OfAnInterruptAtAnyStepLeaveTheEarlierFileAndNoOther)
{
    SKIP_UNLESS_FAULTS_CAN_BE_INJECTED(tree_);
    for (const std::string step : {"fchmod", "write", "fsync"}) {
        for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
            SCOPED_TRACE(step + ", signal " + std::to_string(signal));
            EXPECT_EQ(
                run(writing("csv", "out"),
                    withInjection(tree_, step, "signal=" + std::to_string(signal) + ":when=1")),
                ends(128 + signal, ""));
            expectEarlierFileAlone();
        }
    }
}

TEST_F(CasetableOutputFaults, OfAnInterruptBetweenTwoWritesStopTheOutput)
{
    SKIP_UNLESS_FAULTS_CAN_BE_INJECTED(tree_);
    const std::string whole = run(tree_, writing("csv", "-")).output;
    const Outcome outcome =
        run(writing("csv", "-"), withInjection(tree_, "write", "signal=SIGTERM:when=2"));

    EXPECT_EQ(outcome.exitCode, 128 + SIGTERM) << outcome.errors;
    EXPECT_LT(outcome.output.size(), whole.size());
    EXPECT_EQ(whole.compare(0, outcome.output.size(), outcome.output), 0);
}

TEST_F(CasetableOutputFaults, OfAnInterruptBehindTheRenameAreTooLate)
{
    SKIP_UNLESS_FAULTS_CAN_BE_INJECTED(tree_);
    const Outcome whole = run(tree_, writing("csv", "-"));
    const Outcome outcome =
        run(writing("csv", "out"), withInjection(tree_, "rename", "signal=SIGINT"));

    EXPECT_EQ(outcome.exitCode, 0) << outcome;
    EXPECT_EQ(tree_.content("out"), whole.output);
    EXPECT_EQ(tree_.names("."), Names({"out", "results"}));
}

TEST_F(CasetableOutputFaults, AreToldForAFolderThatMayNotBeWrittenInEveryFormat)
{
    SKIP_UNLESS_ORDINARY_USER_IS_POSSIBLE();
    tree_.setMode(".", 0555);
    const Setting setting = withOrdinaryUser(tree_);
    for (const std::string& format : formats) {
        SCOPED_TRACE(format);
        expectFailure(run(writing(format, "out"), setting), "out: Permission denied");
        expectFailure(run(writing(format, "new"), setting), "new: Permission denied");
        expectEarlierFileAlone();
    }
}

} // namespace tests
} // namespace casetable
