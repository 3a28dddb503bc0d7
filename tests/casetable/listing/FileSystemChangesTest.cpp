#include "casetable/listing/FileSystem.h"

#include <cstdio>
#include <functional>
#include <list>
#include <string>
#include <utility>
#include <vector>

#include <QObject>
#include <QString>

#include <gtest/gtest.h>

#include "crawler/FolderCrawler.h"
#include "tests/casetable/support/OrdinaryUser.h"
#include "tests/casetable/support/TemporaryTree.h"

namespace casetable {
namespace tests {

namespace {

using Files = std::list<std::string>;
using Texts = std::vector<std::string>;

/// Changes the tree when the walk has entered a folder and is about to list it. By then it has
/// passed the test of being readable.
class Meddler : public QObject {
    Q_OBJECT

public:
    Meddler(std::string folder, std::function<void()> change)
        : folder_(std::move(folder)), change_(std::move(change))
    {
    }

    bool hasMeddled() const { return meddled_; }

public Q_SLOTS:
    void enter(const QString& directory)
    {
        if (directory.toStdString() == folder_) {
            change_();
            meddled_ = true;
        }
    }

private:
    const std::string folder_;
    const std::function<void()> change_;
    bool meddled_ = false;
};

struct Walked {
    Files files;
    std::string error;
    Texts warnings;
};

// Walks the folder "root" of `tree`; when the walk is about to list `at`, `change` is made.
Walked walkWhile(const TemporaryTree& tree, bool keepGoing, const std::string& at,
                 const std::function<void()>& change)
{
    Walked walked;
    FileSystem fileSystem;
    fileSystem.leaveOutUnreadable = keepGoing;
    fileSystem.warn = [&walked](const std::string& text) { walked.warnings.push_back(text); };
    FolderCrawler crawler(fileSystemRoot(fileSystem, tree.path("root")));
    Meddler meddler(tree.path(at), change);
    QObject::connect(&crawler, SIGNAL(processingDirectory(QString)), &meddler, SLOT(enter(QString)),
                     Qt::DirectConnection);
    crawler.run();
    EXPECT_TRUE(meddler.hasMeddled());
    walked.files = crawler.result().files;
    walked.error = crawler.result().errorString.toStdString();
    return walked;
}

class FileSystemChanges : public testing::Test {
protected:
    FileSystemChanges()
    {
        for (const char* file : {"root/a", "root/b/file", "root/c/file", "root/d"})
            tree_.file(file);
    }

    std::function<void()> removing(const std::string& folder) const
    {
        return [this, folder] {
            tree_.remove(folder + "/file");
            tree_.remove(folder);
        };
    }

    std::function<void()> closing(const std::string& folder) const
    {
        return [this, folder] { tree_.setMode(folder, 0); };
    }

    const TemporaryTree tree_;
};

} // namespace

TEST_F(FileSystemChanges, AFolderRemovedBeforeItIsListedStopsTheWalk)
{
    const Walked walked = walkWhile(tree_, false, "root/b", removing("root/b"));

    EXPECT_EQ(walked.files, Files({"a"}));
    EXPECT_EQ(walked.error, tree_.path("root/b: No such file or directory"));
    EXPECT_EQ(walked.warnings, Texts());
}

TEST_F(FileSystemChanges, AFolderRemovedBeforeItIsListedIsLeftOutWhenKeptGoing)
{
    const Walked walked = walkWhile(tree_, true, "root/b", removing("root/b"));

    EXPECT_EQ(walked.files, Files({"a", "c/file", "d"}));
    EXPECT_EQ(walked.error, "");
    EXPECT_EQ(walked.warnings, Texts({tree_.path("root/b: No such file or directory")}));
}

TEST_F(FileSystemChanges, AFolderRemovedBeforeItIsReachedCannotBeRead)
{
    const Walked stopped = walkWhile(tree_, false, "root/b", removing("root/c"));

    EXPECT_EQ(stopped.files, Files({"a", "b/file"}));
    EXPECT_EQ(stopped.error, "The specified path: " + tree_.path("root/c") + " is not readable.");
}

TEST_F(FileSystemChanges, AFolderRemovedBeforeItIsReachedIsLeftOutWhenKeptGoing)
{
    const Walked walked = walkWhile(tree_, true, "root/b", removing("root/c"));

    EXPECT_EQ(walked.files, Files({"a", "b/file", "d"}));
    EXPECT_EQ(walked.error, "");
    EXPECT_EQ(walked.warnings, Texts({tree_.path("root/c: No such file or directory")}));
}

TEST_F(FileSystemChanges, AFileRemovedAfterItWasListedIsStillFound)
{
    const Walked walked = walkWhile(tree_, false, "root/b", [this] { tree_.remove("root/d"); });

    EXPECT_EQ(walked.files, Files({"a", "b/file", "c/file", "d"}));
    EXPECT_EQ(walked.error, "");
}

TEST_F(FileSystemChanges, AFolderClosedBeforeItIsListedStopsTheWalk)
{
    SKIP_UNLESS_ORDINARY_USER_IS_POSSIBLE();
    asOrdinaryUser([this] {
        const Walked walked = walkWhile(tree_, false, "root/b", closing("root/b"));

        EXPECT_EQ(walked.files, Files({"a"}));
        EXPECT_EQ(walked.error, tree_.path("root/b: Permission denied"));
    });
}

TEST_F(FileSystemChanges, AFolderClosedBeforeItIsReachedStopsTheWalk)
{
    SKIP_UNLESS_ORDINARY_USER_IS_POSSIBLE();
    asOrdinaryUser([this] {
        const Walked walked = walkWhile(tree_, false, "root/b", closing("root/c"));

        EXPECT_EQ(walked.files, Files({"a", "b/file"}));
        EXPECT_EQ(walked.error,
                  "The specified path: " + tree_.path("root/c") + " is not readable.");
    });
}

TEST_F(FileSystemChanges, AFolderClosedMeanwhileIsLeftOutWhenKeptGoing)
{
    SKIP_UNLESS_ORDINARY_USER_IS_POSSIBLE();
    asOrdinaryUser([this] {
        for (const char* at : {"root/b", "root/c"}) {
            tree_.setMode("root/c", 0755);
            const Walked walked = walkWhile(tree_, true, at, closing("root/c"));

            EXPECT_EQ(walked.files, Files({"a", "b/file", "d"})) << at;
            EXPECT_EQ(walked.error, "");
            EXPECT_EQ(walked.warnings, Texts({tree_.path("root/c: Permission denied")}));
        }
    });
}

TEST_F(FileSystemChanges, ARootThatDisappearsBetweenItsTestAndItsListingIsAnError)
{
    for (const bool keepGoing : {false, true}) {
        const Walked walked = walkWhile(tree_, keepGoing, "root", [this] {
            ASSERT_EQ(rename(tree_.path("root").c_str(), tree_.path("moved").c_str()), 0);
        });
        ASSERT_EQ(rename(tree_.path("moved").c_str(), tree_.path("root").c_str()), 0);

        EXPECT_EQ(walked.files, Files());
        EXPECT_EQ(walked.error, tree_.path("root: No such file or directory"));
        EXPECT_EQ(walked.warnings, Texts());
    }
}

TEST_F(FileSystemChanges, ARootThatIsClosedBetweenItsTestAndItsListingIsAnError)
{
    SKIP_UNLESS_ORDINARY_USER_IS_POSSIBLE();
    asOrdinaryUser([this] {
        for (const bool keepGoing : {false, true}) {
            tree_.setMode("root", 0755);
            const Walked walked = walkWhile(tree_, keepGoing, "root", closing("root"));

            EXPECT_EQ(walked.files, Files());
            EXPECT_EQ(walked.error, tree_.path("root: Permission denied"));
        }
    });
}

TEST_F(FileSystemChanges, ARootThatDisappearsAfterItsListingLeavesTheWalkWithWhatWasOpened)
{
    const Walked walked = walkWhile(tree_, false, "root/b", [this] {
        ASSERT_EQ(rename(tree_.path("root").c_str(), tree_.path("moved").c_str()), 0);
    });

    EXPECT_EQ(walked.files, Files({"a", "b/file", "c/file", "d"}));
    EXPECT_EQ(walked.error, "");
}

} // namespace tests
} // namespace casetable

#include "FileSystemChangesTest.moc"
