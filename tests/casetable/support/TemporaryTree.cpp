#include "tests/casetable/support/TemporaryTree.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <memory>
#include <system_error>
#include <vector>

#include <dirent.h>
#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <gtest/gtest.h>

namespace casetable {
namespace tests {

namespace {

int checked(int result, const std::string& what)
{
    if (result < 0)
        throw std::system_error(errno, std::generic_category(), what);
    return result;
}

// In memory where there is a place for it: disks make deep trees slowly.
std::string folderForTrees()
{
    const char* const inMemory = "/dev/shm";
    const bool isChosen = std::getenv("TEST_TMPDIR") != nullptr;
    return !isChosen && access(inMemory, W_OK | X_OK) == 0 ? inMemory : testing::TempDir();
}

std::set<std::string> namesIn(int folder)
{
    const std::unique_ptr<DIR, int (*)(DIR*)> listing(
        fdopendir(checked(openat(folder, ".", O_RDONLY | O_DIRECTORY), "openat")), closedir);
    std::set<std::string> names;
    while (const dirent* entry = readdir(listing.get())) {
        if (std::strcmp(entry->d_name, ".") != 0 && std::strcmp(entry->d_name, "..") != 0)
            names.insert(entry->d_name);
    }
    return names;
}

// Removes what it can of a folder and answers with a subfolder that is left, or nothing.
std::string subfolderLeft(int folder)
{
    for (const std::string& name : namesIn(folder)) {
        if (unlinkat(folder, name.c_str(), 0) != 0 &&
            unlinkat(folder, name.c_str(), AT_REMOVEDIR) != 0)
            return name;
    }
    return std::string();
}

// Goes down and up by one descriptor, since trees may be deeper than paths and descriptors reach.
void removeAll(const std::string& path)
{
    chmod(path.c_str(), 0700);
    int folder = checked(open(path.c_str(), O_RDONLY | O_DIRECTORY), path);
    std::vector<std::string> names;
    for (;;) {
        const std::string left = subfolderLeft(folder);
        if (left.empty() && names.empty())
            break;
        if (!left.empty())
            checked(fchmodat(folder, left.c_str(), 0700, 0), left);
        const int next = checked(openat(folder, left.empty() ? ".." : left.c_str(),
                                        O_RDONLY | O_DIRECTORY | (left.empty() ? 0 : O_NOFOLLOW)),
                                 left);
        close(folder);
        folder = next;
        if (!left.empty()) {
            names.push_back(left);
        } else {
            checked(unlinkat(folder, names.back().c_str(), AT_REMOVEDIR), names.back());
            names.pop_back();
        }
    }
    close(folder);
    checked(rmdir(path.c_str()), path);
}

struct stat status(const std::string& path)
{
    struct stat status = {};
    checked(stat(path.c_str(), &status), path);
    return status;
}

} // namespace

TemporaryTree::TemporaryTree() : path_(folderForTrees() + "/casetable-test-XXXXXX")
{
    if (mkdtemp(&path_[0]) == nullptr)
        checked(-1, path_);
}

TemporaryTree::TemporaryTree(const std::vector<std::string>& entries) : TemporaryTree()
{
    for (const std::string& entry : entries) {
        if (entry.back() == '/')
            folder(entry);
        else
            file(entry);
    }
}

TemporaryTree::~TemporaryTree()
{
    try {
        removeAll(path_);
    } catch (const std::system_error& failure) {
        ADD_FAILURE() << "left behind: " << path_ << ": " << failure.what();
    }
}

void TemporaryTree::folderAbove(const std::string& entry) const
{
    const std::size_t slash = entry.rfind('/');
    if (slash != std::string::npos)
        folder(entry.substr(0, slash));
}

void TemporaryTree::folder(const std::string& entry) const
{
    folderAbove(entry);
    if (mkdir(path(entry).c_str(), 0777) != 0 && errno != EEXIST)
        checked(-1, entry);
}

void TemporaryTree::file(const std::string& entry, const std::string& content) const
{
    folderAbove(entry);
    std::ofstream stream(path(entry), std::ios::binary);
    if (!(stream << content << std::flush))
        checked(-1, entry);
}

void TemporaryTree::link(const std::string& entry, const std::string& target) const
{
    folderAbove(entry);
    checked(symlink(target.c_str(), path(entry).c_str()), entry);
}

void TemporaryTree::pipe(const std::string& entry) const
{
    folderAbove(entry);
    checked(mkfifo(path(entry).c_str(), 0600), entry);
}

void TemporaryTree::socket(const std::string& entry) const
{
    folderAbove(entry);
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    path(entry).copy(address.sun_path, sizeof address.sun_path - 1);
    const int descriptor = checked(::socket(AF_UNIX, SOCK_STREAM, 0), "socket");
    const int bound = bind(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address);
    close(descriptor);
    checked(bound, entry);
}

void TemporaryTree::setMode(const std::string& entry, mode_t mode) const
{
    checked(chmod(path(entry).c_str(), mode), entry);
}

void TemporaryTree::remove(const std::string& entry) const
{
    checked(::remove(path(entry).c_str()), entry);
}

void TemporaryTree::chain(const std::string& entry, int levels, const std::string& name,
                          const std::string& file) const
{
    folder(entry);
    int folder = checked(open(path(entry).c_str(), O_RDONLY | O_DIRECTORY), entry);
    for (int level = 0; level < levels; ++level) {
        checked(mkdirat(folder, name.c_str(), 0777), name);
        const int next = checked(openat(folder, name.c_str(), O_RDONLY | O_DIRECTORY), name);
        close(folder);
        folder = next;
    }
    close(checked(openat(folder, file.c_str(), O_WRONLY | O_CREAT, 0666), file));
    close(folder);
}

void TemporaryTree::knot(const std::string& entry, int count) const
{
    for (int i = 0; i < count; ++i) {
        const std::string folder = entry + "/" + std::to_string(i);
        file(folder + "/file");
        for (int j = 0; j < count; ++j) {
            if (i != j)
                link(folder + "/" + std::to_string(j), "../" + std::to_string(j));
        }
    }
}

bool TemporaryTree::exists(const std::string& entry) const
{
    struct stat status = {};
    return lstat(path(entry).c_str(), &status) == 0;
}

bool TemporaryTree::isLink(const std::string& entry) const
{
    struct stat status = {};
    checked(lstat(path(entry).c_str(), &status), entry);
    return S_ISLNK(status.st_mode);
}

mode_t TemporaryTree::mode(const std::string& entry) const
{
    return status(path(entry)).st_mode & 07777;
}

std::string TemporaryTree::content(const std::string& entry) const
{
    std::ifstream stream(path(entry), std::ios::binary);
    if (!stream)
        checked(-1, entry);
    return std::string(std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>());
}

std::set<std::string> TemporaryTree::names(const std::string& entry) const
{
    const int folder = checked(open(path(entry).c_str(), O_RDONLY | O_DIRECTORY), entry);
    const std::set<std::string> names = namesIn(folder);
    close(folder);
    return names;
}

std::string bytesOfNames()
{
    std::string bytes;
    for (int byte = 1; byte < 256; ++byte) {
        if (byte != '/')
            bytes += static_cast<char>(byte);
    }
    return bytes;
}

} // namespace tests
} // namespace casetable
