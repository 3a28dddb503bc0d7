#include "casetable/listing/FileSystem.h"

#include <set>
#include <string>

#include <gtest/gtest.h>

#include "tests/casetable/support/ListingCalls.h"
#include "tests/casetable/support/TemporaryTree.h"

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
