#ifndef TESTS_CASETABLE_SUPPORT_INJECTION_H
#define TESTS_CASETABLE_SUPPORT_INJECTION_H

#include <string>

#include "tests/casetable/support/Program.h"
#include "tests/support/Sanitizer.h"

namespace casetable {
namespace tests {

class TemporaryTree;

/// Has a tracer make `systemCall` of casetable fail, fall short or bring a signal, as the tracer's
/// own `fault` says. `options` are further ones of the tracer.
Setting withInjection(const TemporaryTree& tree, const std::string& systemCall,
                      const std::string& fault, const Arguments& options = {});

/// True when there is such a tracer and it may trace.
bool canInject(const TemporaryTree& tree);

} // namespace tests
} // namespace casetable

#define SKIP_UNLESS_FAULTS_CAN_BE_INJECTED(tree)                                                   \
    SKIP_WHERE_SANITIZERS_WRITE();                                                                 \
    if (!casetable::tests::canInject(tree))                                                        \
    GTEST_SKIP() << "no strace, or not permitted"

#endif
