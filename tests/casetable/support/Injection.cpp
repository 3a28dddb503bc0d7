#include "tests/casetable/support/Injection.h"

#include "tests/casetable/support/TemporaryTree.h"

namespace casetable {
namespace tests {

Setting withInjection(const TemporaryTree& tree, const std::string& systemCall,
                      const std::string& fault, const Arguments& options)
{
    Setting setting = in(tree);
    setting.program = {"strace",
                       "-f",
                       "-qqq",
                       "-o",
                       "/dev/null",
                       "-e",
                       "trace=" + systemCall,
                       "-e",
                       "inject=" + systemCall + ":" + fault,
                       "-E",
                       "ASAN_OPTIONS=detect_leaks=0"};
    setting.program.insert(setting.program.end(), options.begin(), options.end());
    return setting;
}

bool canInject(const TemporaryTree& tree)
{
    return run({"--version"}, withInjection(tree, "rename", "error=EIO")).exitCode == 0;
}

} // namespace tests
} // namespace casetable
