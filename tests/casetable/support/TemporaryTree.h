#ifndef TESTS_CASETABLE_SUPPORT_TEMPORARYTREE_H
#define TESTS_CASETABLE_SUPPORT_TEMPORARYTREE_H

#include <set>
#include <string>
#include <vector>

#include <sys/types.h>

namespace casetable {
namespace tests {

/// A new folder for a test to work in, removed with all that is in it. Paths are relative to it;
/// the folders above a new entry are made too. Failures of the system throw std::system_error.
class TemporaryTree {
public:
    TemporaryTree();
    /// With these files, all empty. An entry that ends in "/" is a folder.
    explicit TemporaryTree(const std::vector<std::string>& entries);
    ~TemporaryTree();
    TemporaryTree(const TemporaryTree&) = delete;
    TemporaryTree& operator=(const TemporaryTree&) = delete;

    const std::string& path() const { return path_; }
    std::string path(const std::string& entry) const { return path_ + "/" + entry; }

    void folder(const std::string& entry) const;
    void file(const std::string& entry, const std::string& content = "") const;
    void link(const std::string& entry, const std::string& target) const;
    void pipe(const std::string& entry) const;
    void socket(const std::string& entry) const;
    void setMode(const std::string& entry, mode_t mode) const;
    void remove(const std::string& entry) const;

    /// A chain of `levels` folders called `name`, however long its path, and a file in the last.
    void chain(const std::string& entry, int levels, const std::string& name,
               const std::string& file) const;

    /// `count` folders of one file each, with links from each to all others, so that a walk that
    /// follows links meets every order of every choice of them.
    void knot(const std::string& entry, int count) const;

    bool exists(const std::string& entry) const;
    bool isLink(const std::string& entry) const;
    mode_t mode(const std::string& entry) const;
    std::string content(const std::string& entry) const;

    /// The names in a folder.
    std::set<std::string> names(const std::string& entry) const;

private:
    void folderAbove(const std::string& entry) const;

    std::string path_;
};

/// Every byte that a name can hold.
std::string bytesOfNames();

} // namespace tests
} // namespace casetable

#endif
