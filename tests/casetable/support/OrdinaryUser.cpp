#include "tests/casetable/support/OrdinaryUser.h"

#include <csignal>
#include <cstdio>

#include <linux/capability.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "tests/casetable/support/TemporaryTree.h"

namespace casetable {
namespace tests {

namespace {

int exitCodeOfChild(const std::function<int()>& body)
{
    std::fflush(nullptr);
    const pid_t child = fork();
    if (child == 0) {
        useDefaultInterrupts();
        const int code = body();
        std::fflush(nullptr);
        _exit(code);
    }
    int status = 0;
    if (child < 0 || waitpid(child, &status, 0) != child || !WIFEXITED(status))
        return -1;
    return WEXITSTATUS(status);
}

} // namespace

void useDefaultInterrupts()
{
    for (const int signal : {SIGINT, SIGTERM, SIGHUP})
        std::signal(signal, SIG_DFL);
}

bool becomeOrdinaryUser()
{
    if (geteuid() != 0)
        return true;
    __user_cap_header_struct header = {_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct capabilities[2] = {};
    if (syscall(SYS_capget, &header, capabilities) != 0)
        return false;
    for (const int capability : {CAP_DAC_OVERRIDE, CAP_DAC_READ_SEARCH}) {
        if (prctl(PR_CAPBSET_DROP, capability, 0, 0, 0) != 0)
            return false;
        const __u32 others = ~(1u << capability);
        capabilities[0].effective &= others;
        capabilities[0].permitted &= others;
        capabilities[0].inheritable &= others;
    }
    return syscall(SYS_capset, &header, capabilities) == 0;
}

bool canBeOrdinaryUser()
{
    static const bool possible = [] {
        const TemporaryTree tree;
        tree.folder("closed");
        tree.setMode("closed", 0);
        return exitCodeOfChild([&tree] {
                   return becomeOrdinaryUser() && access(tree.path("closed").c_str(), R_OK) != 0
                              ? 0
                              : 1;
               }) == 0;
    }();
    return possible;
}

void inOwnProcess(const std::function<void()>& body)
{
    const int code = exitCodeOfChild([&body] {
        body();
        return testing::Test::HasFailure() ? 1 : 0;
    });
    EXPECT_EQ(code, 0) << "in a process of its own";
}

void asOrdinaryUser(const std::function<void()>& body)
{
    inOwnProcess([&body] {
        ASSERT_TRUE(becomeOrdinaryUser());
        body();
    });
}

} // namespace tests
} // namespace casetable
