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

/// Runs `body` in a process of its own as an ordinary user; its failed assertions fail the test.
void asOrdinaryUser(const std::function<void()>& body);

/// Runs `body` in a process of its own; its failed assertions fail the test.
void inOwnProcess(const std::function<void()>& body);

} // namespace tests
} // namespace casetable

#define SKIP_UNLESS_ORDINARY_USER_IS_POSSIBLE()                                                    \
    if (!casetable::tests::canBeOrdinaryUser())                                                    \
    GTEST_SKIP() << "root cannot give up its rights over files here"

#endif
