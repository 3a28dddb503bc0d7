#include "tests/casetable/support/RandomTree.h"

#include <string>
#include <vector>

namespace casetable {
namespace tests {

void makeRandomTree(const TemporaryTree& tree, std::mt19937& random, int entries,
                    bool withUnreadable)
{
    std::vector<std::string> folders = {"root"};
    tree.folder("root");
    for (int i = 0; i < entries; ++i) {
        const std::string name = (random() % 8 == 0 ? ".e" : "e") + std::to_string(i);
        const std::string path = folders[random() % folders.size()] + "/" + name;
        switch (random() % 5) {
        case 0:
            tree.link(path,
                      random() % 2 == 0 ? ".." : tree.path(folders[random() % folders.size()]));
            break;
        case 1:
        case 2:
            tree.folder(path);
            folders.push_back(path);
            break;
        default:
            tree.file(path);
        }
    }
    // From the deepest, to which there is no way otherwise.
    for (auto folder = folders.rbegin(); withUnreadable && folder != folders.rend(); ++folder) {
        if (*folder != "root" && random() % 12 == 0)
            tree.setMode(*folder, random() % 2 == 0 ? 0 : 0444);
    }
}

} // namespace tests
} // namespace casetable
