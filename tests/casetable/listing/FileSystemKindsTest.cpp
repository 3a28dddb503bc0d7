#include "casetable/listing/FileSystem.h"

#include <set>
#include <string>

#include <dirent.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "tests/casetable/support/TemporaryTree.h"

namespace {

bool kindsAreHidden = false;

} // namespace

// Stands in front of the system's, to act as a file system that does not tell the kind of entries.
extern "C" ssize_t getdents64(int folder, void* buffer, size_t length) noexcept
{
    const ssize_t size = syscall(SYS_getdents64, folder, buffer, length);
    for (ssize_t offset = 0; kindsAreHidden && offset < size;) {
        auto* const entry = reinterpret_cast<dirent64*>(static_cast<char*>(buffer) + offset);
        entry->d_type = DT_UNKNOWN;
        offset += entry->d_reclen;
    }
    return size;
}

namespace casetable {
namespace tests {

namespace {

class FileSystemKinds : public testing::Test {
protected:
    FileSystemKinds()
    {
        tree_.file("root/file");
        tree_.file("root/folder/file");
        tree_.link("root/broken", "missing");
        tree_.link("root/link to file", "file");
        tree_.link("root/link to folder", "folder");
        tree_.link("root/link to root", ".");
        tree_.pipe("root/pipe");
        tree_.socket("root/socket");
        kindsAreHidden = true;
    }

    ~FileSystemKinds() override { kindsAreHidden = false; }

    // The entries of a folder, with a separator behind folders.
    std::set<std::string> listed() const
    {
        std::set<std::string> names;
        for (const auto& entry :
             fileSystemRoot(fileSystem_, tree_.path("root"))->entries(std::string())) {
            EXPECT_NE(entry->isFile(), entry->isDirectory());
            names.insert(entry->fileName() + (entry->isDirectory() ? "/" : ""));
        }
        return names;
    }

    const TemporaryTree tree_;
    mutable FileSystem fileSystem_;
};

} // namespace

TEST_F(FileSystemKinds, AreAskedForWhereTheListingDoesNotTell)
{
    EXPECT_EQ(listed(), (std::set<std::string>{"file", "folder/", "link to file"}));
}

TEST_F(FileSystemKinds, AreAskedForOfTheLinkItselfAndOfItsTarget)
{
    fileSystem_.followLinks = true;

    EXPECT_EQ(listed(),
              (std::set<std::string>{"file", "folder/", "link to file", "link to folder/"}));
}

} // namespace tests
} // namespace casetable
