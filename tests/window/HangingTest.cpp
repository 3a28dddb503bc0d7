#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include <QToolButton>

#include "tests/casetable/support/TemporaryTree.h"
#include "tests/window/OpenWindow.h"
#include "window/model/Walk.h"

namespace casetable {
namespace tests {

// Linked with openings of folders that hang where the folder is called "hanging".
TEST(Window, PutsAWalkAsideThatHangsInTheSystem)
{
    const TemporaryTree hanging({"a/T1", "hanging/T2", "z/T3"});
    const TemporaryTree other({"T4"});
    OpenWindow open;
    open.window.openFolder(hanging.path());
    EXPECT_FALSE(QTest::qWaitFor([&open] { return open.session.isIdle(); }, 300));
    ASSERT_TRUE(open.window.stop().isVisible());
    QTest::mouseClick(&open.window.stop(), Qt::LeftButton);
    EXPECT_FALSE(QTest::qWaitFor([&open] { return open.session.isIdle(); }, 300));
    open.window.openFolder(other.path());
    open.settle();
    EXPECT_TRUE(Walk::isAnyLeft());
    EXPECT_EQ(open.session.files().count(), 1U);
    // Otherwise its removal would hang too.
    std::filesystem::rename(hanging.path("hanging"), hanging.path("ended"));
}

} // namespace tests
} // namespace casetable
