#ifndef TESTS_CASETABLE_SUPPORT_RANDOMTREE_H
#define TESTS_CASETABLE_SUPPORT_RANDOMTREE_H

#include <random>

#include "tests/casetable/support/TemporaryTree.h"

namespace casetable {
namespace tests {

/// Makes a folder "root" with so many entries at all depths: files, folders and links to folders,
/// some of which lead in circles; some are hidden. If `withUnreadable`, some folders cannot be
/// read.
void makeRandomTree(const TemporaryTree& tree, std::mt19937& random, int entries,
                    bool withUnreadable);

} // namespace tests
} // namespace casetable

#endif
