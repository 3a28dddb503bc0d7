#include <csignal>
#include <set>
#include <string>
#include <vector>

#include <sched.h>
#include <sys/mount.h>
#include <sys/resource.h>

#include <gtest/gtest.h>

#include "tests/casetable/support/Database.h"
#include "tests/casetable/support/Injection.h"
#include "tests/casetable/support/OrdinaryUser.h"
#include "tests/casetable/support/Program.h"
#include "tests/casetable/support/TemporaryTree.h"
#include "tests/support/Sanitizer.h"

namespace casetable {
namespace tests {

namespace {

using Names = std::set<std::string>;

// Begins with an earlier database, and writes one that SQLite's cache does not hold, so that some
// of it is out before the end.
class CasetableSqliteFaults : public testing::Test {
protected:
    CasetableSqliteFaults()
    {
        std::string paths;
        for (int i = 0; i < files; ++i)
            paths += "T1/" + std::string(1000, 'x') + std::to_string(i) + "\n";
        tree_.file("list", paths);
        tree_.file("short", "T1/earlier\n");
        EXPECT_EQ(run(tree_, {"-n", "T", "--from-list", "short", "-o", "out.db"}), prints(""));
        tree_.setMode("out.db", 0640);
        earlier_ = tree_.content("out.db");
    }

    static Arguments writing(const std::string& file)
    {
        return {"-n", "T", "--from-list", "list", "-o", file};
    }

    void expectEarlierDatabaseAlone() const
    {
        EXPECT_EQ(tree_.content("out.db"), earlier_);
        EXPECT_EQ(tree_.mode("out.db"), 0640u);
        EXPECT_EQ(tree_.names("."), Names({"list", "out.db", "short"}));
    }

    static const int files = 5000;
    const TemporaryTree tree_;
    std::string earlier_;
};

} // namespace

TEST_F(CasetableSqliteFaults, LeaveTheEarlierDatabaseOnADiskThatFillsUp)
{
    const std::string refused = "no mount is permitted";
    inOwnProcess([this, &refused] {
        // The mount is seen by this process and the program alone, and goes with them.
        tree_.folder("disk");
        if (unshare(CLONE_NEWNS) != 0 ||
            mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
            mount("none", tree_.path("disk").c_str(), "tmpfs", 0, "size=4m") != 0) {
            tree_.file(refused);
            return;
        }
        tree_.file("disk/out.db", earlier_);

        EXPECT_EQ(run(tree_, writing("disk/out.db")),
                  fails(4, "disk/out.db: No space left on device"));
        EXPECT_EQ(run(tree_, writing("disk/new.db")),
                  fails(4, "disk/new.db: No space left on device"));

        EXPECT_EQ(tree_.content("disk/out.db"), earlier_);
        EXPECT_EQ(tree_.names("disk"), Names({"out.db"}));
        EXPECT_EQ(umount(tree_.path("disk").c_str()), 0);
    });
    if (tree_.exists(refused))
        GTEST_SKIP() << refused;
}

TEST_F(CasetableSqliteFaults, LeaveTheEarlierDatabaseWhereFilesMayNotGrowSoLarge)
{
    SKIP_WHERE_SANITIZERS_WRITE();
    for (const rlim_t bytes : {rlim_t{0}, rlim_t{1}, rlim_t{8192}, rlim_t{1'000'000}}) {
        SCOPED_TRACE(bytes);
        Setting setting = in(tree_);
        setting.prepare = [bytes] {
            const rlimit limit = {bytes, bytes};
            setrlimit(RLIMIT_FSIZE, &limit);
        };
        EXPECT_EQ(run(writing("out.db"), setting), fails(4, "out.db: File too large"));
        expectEarlierDatabaseAlone();
    }
}

TEST_F(CasetableSqliteFaults, OfAnyStepLeaveTheEarlierDatabaseAndNoOther)
{
    SKIP_UNLESS_FAULTS_CAN_BE_INJECTED(tree_);
    struct Fault {
        std::string systemCall;
        std::string fault;
        std::string text;
    };
    for (const Fault& fault : {Fault{"fchmod", "error=EPERM", "Operation not permitted"},
                               Fault{"pwrite64", "error=ENOSPC:when=1", "No space left on device"},
                               Fault{"pwrite64", "error=EIO:when=2", "Input/output error"},
                               Fault{"pwrite64", "error=EDQUOT:when=700", "Disk quota exceeded"},
                               Fault{"pread64", "error=EIO:when=50", "Input/output error"},
                               Fault{"fsync", "error=EIO", "Input/output error"},
                               Fault{"rename", "error=EACCES", "Permission denied"}}) {
        SCOPED_TRACE(fault.systemCall + " " + fault.fault);
        EXPECT_EQ(run(writing("out.db"), withInjection(tree_, fault.systemCall, fault.fault)),
                  fails(4, "out.db: " + fault.text));
        expectEarlierDatabaseAlone();
    }
}

TEST_F(CasetableSqliteFaults, OfAnInterruptAtAnyStepLeaveTheEarlierDatabaseAndNoOther)
{
    SKIP_UNLESS_FAULTS_CAN_BE_INJECTED(tree_);
    for (const std::string step : {"fchmod:when=1", "pwrite64:when=1", "pwrite64:when=500",
                                   "pread64:when=50", "fsync:when=1"}) {
        for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
            SCOPED_TRACE(step + ", signal " + std::to_string(signal));
            const std::size_t colon = step.find(':');
            EXPECT_EQ(run(writing("out.db"),
                          withInjection(tree_, step.substr(0, colon),
                                        "signal=" + std::to_string(signal) + step.substr(colon))),
                      ends(128 + signal, ""));
            expectEarlierDatabaseAlone();
        }
    }
}

TEST_F(CasetableSqliteFaults, AreNotToldForAWriteThatASignalCutsShort)
{
    SKIP_UNLESS_FAULTS_CAN_BE_INJECTED(tree_);
    EXPECT_EQ(run(writing("out.db"), withInjection(tree_, "pwrite64", "error=EINTR:when=1..9")),
              prints(""));
    EXPECT_EQ(faultsOf(tree_.path("out.db")), "ok");
}

TEST_F(CasetableSqliteFaults, AreToldForAFolderThatMayNotBeWritten)
{
    SKIP_UNLESS_ORDINARY_USER_IS_POSSIBLE();
    tree_.setMode(".", 0555);
    const Setting setting = withOrdinaryUser(tree_);
    EXPECT_EQ(run(writing("out.db"), setting), fails(4, "out.db: Permission denied"));
    EXPECT_EQ(run(writing("new.db"), setting), fails(4, "new.db: Permission denied"));
    expectEarlierDatabaseAlone();
}

TEST_F(CasetableSqliteFaults, AreToldWhereNobodyMayReadTheNewFile)
{
    SKIP_UNLESS_ORDINARY_USER_IS_POSSIBLE();
    tree_.setMode("out.db", 0200);
    EXPECT_EQ(run(writing("out.db"), withOrdinaryUser(tree_)),
              fails(4, "out.db: Permission denied"));
    tree_.setMode("out.db", 0640);
    expectEarlierDatabaseAlone();
}

} // namespace tests
} // namespace casetable
