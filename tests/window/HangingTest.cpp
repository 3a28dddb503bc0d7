#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <QDir>
#include <QFileDialog>
#include <QKeySequence>
#include <QLabel>
#include <QTimer>
#include <QToolButton>

#include "tests/casetable/support/TemporaryTree.h"
#include "tests/window/OpenWindow.h"
#include "window/model/BackgroundJob.h"

namespace casetable {
namespace tests {

// Linked with openings of folders that hang where the folder is called "hanging".
class Hanging : public testing::Test {
protected:
    // Otherwise the removal of the tree would hang too.
    ~Hanging() override { std::filesystem::rename(tree_.path("hanging"), tree_.path("ended")); }

    // Opens the tree, and waits until the file before the hanging folder is found. It stands in no
    // folder, as the walk may help with others while it waits for one.
    void openTree()
    {
        open_.window.openFolder(tree_.path());
        ASSERT_TRUE(QTest::qWaitFor([this] { return open_.session.progress().files == 1; }, 20000));
    }

    const TemporaryTree tree_{{"T1", "hanging/T2", "z/T3"}};
    OpenWindow open_;
};

TEST_F(Hanging, LeavesAWalkThatIsStoppedWithTheFilesFoundSoFar)
{
    openTree();
    ASSERT_TRUE(open_.window.stop().isVisible());
    QTest::mouseClick(&open_.window.stop(), Qt::LeftButton);
    open_.read({"T{T:number}"});
    EXPECT_TRUE(BackgroundJob::isAnyLeft());
    EXPECT_FALSE(open_.window.stop().isVisible());
    EXPECT_EQ(open_.shownPaths(), std::vector<std::string>({"T1"}));
    EXPECT_EQ(open_.session.progress().files, 1U);
    EXPECT_EQ(open_.table().size(), 2U);
    EXPECT_TRUE(open_.session.walkEnd().isStopped);
}

TEST_F(Hanging, SaysOfATableThatItIsOfTheFilesBeforeTheStop)
{
    const TemporaryTree target;
    openTree();
    open_.session.stopWalk();
    open_.read({"T{T:number}"});
    open_.session.save(target.path("t.csv"));
    open_.settle();
    EXPECT_EQ(target.content("t.csv"), "case,T,files\n0,1,1\n");
    EXPECT_NE(open_.window.message().text().indexOf("before the stop only"), -1);
}

TEST_F(Hanging, IsNotWhereADialogForFilesBegins)
{
    QApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    openTree();
    QString begin;
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, [&begin] {
        auto* const dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
        if (dialog == nullptr || !dialog->isVisible())
            return;
        begin = dialog->directory().absolutePath();
        dialog->reject();
    });
    timer.start(10);
    for (const bool isStopped : {false, true}) {
        if (isStopped) {
            open_.session.stopWalk();
            open_.settle();
        }
        for (const char* const keys : {"Ctrl+O", "Ctrl+L", "Ctrl+Shift+O", "Ctrl+Shift+S"}) {
            begin.clear();
            QTest::keySequence(&open_.window, QKeySequence(keys));
            EXPECT_EQ(begin, QDir(QDir::homePath()).absolutePath()) << keys;
            QApplication::setActiveWindow(&open_.window);
        }
    }
}

TEST_F(Hanging, IsLeftForAnotherFolder)
{
    const TemporaryTree other({"T4"});
    openTree();
    open_.window.openFolder(other.path());
    open_.settle();
    EXPECT_TRUE(BackgroundJob::isAnyLeft());
    EXPECT_EQ(open_.shownPaths(), std::vector<std::string>({"T4"}));
}

} // namespace tests
} // namespace casetable
