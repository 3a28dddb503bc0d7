#include "casetable/listing/Progress.h"

#include <gtest/gtest.h>

namespace casetable {
namespace tests {

TEST(Progress, TellsFoldersFilesAndTheFolderLastEntered)
{
    Progress progress;
    progress.enterFolder("root");
    progress.enterFolder("root/a");
    progress.enterFolder(QString::fromUtf8("root/\xc3\xa4"));

    EXPECT_EQ(progress.text(1234), "3 folders, 1234 files: root/\xc3\xa4");
}

TEST(Progress, CountsAFolderAgainThatIsEnteredAgain)
{
    Progress progress;
    progress.enterFolder("root");
    progress.enterFolder("root");

    EXPECT_EQ(progress.text(0), "2 folders, 0 files: root");
}

} // namespace tests
} // namespace casetable
