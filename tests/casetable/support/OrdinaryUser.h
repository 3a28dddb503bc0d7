#ifndef TESTS_CASETABLE_SUPPORT_ORDINARYUSER_H
#define TESTS_CASETABLE_SUPPORT_ORDINARYUSER_H

#include <functional>

namespace casetable {
namespace tests {

/// Subjects this process and the programs that it runs to file permissions, which root passes over.
/// There is no way back. False when the system does not let it.
///
/// Only the right is given up, not the identity: another user could not reach a program that was
/// built below root's home.
bool becomeOrdinaryUser();

/// True when becomeOrdinaryUser() works here.
bool canBeOrdinaryUser();

/// As inOwnProcess(), as an ordinary user.
void asOrdinaryUser(const std::function<void()>& body);

/// Runs `body` in a process of its own, with the interrupts' default actions; its failed assertions
/// fail the test.
void inOwnProcess(const std::function<void()>& body);

/// Gives SIGINT, SIGTERM and SIGHUP their default actions in this process. A job in the background
/// or under nohup starts with some of them ignored.
void useDefaultInterrupts();

} // namespace tests
} // namespace casetable

#define SKIP_UNLESS_ORDINARY_USER_IS_POSSIBLE()                                                    \
    if (!casetable::tests::canBeOrdinaryUser())                                                    \
    GTEST_SKIP() << "root cannot give up its rights over files here"

#endif
