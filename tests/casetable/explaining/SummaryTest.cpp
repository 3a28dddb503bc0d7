#include "casetable/explaining/Summary.h"

#include <string>

#include <gtest/gtest.h>

#include "casetable/listing/Source.h"

namespace casetable {
namespace tests {

TEST(Summary, NamesWhereThereIsNoFileAndWhatMayHaveLeftThemOut)
{
    Source source;
    source.root = "results";
    EXPECT_EQ(noFiles(source), "there is no file below results");

    source.selection.maxDepth = 2;
    EXPECT_EQ(noFiles(source), "there is no file below results, with --max-depth");
    source.selection.excluded.emplace_back("*.log");
    EXPECT_EQ(noFiles(source), "there is no file below results, with --exclude and --max-depth");

    Source list;
    list.list = "names";
    EXPECT_EQ(noFiles(list), "there is no file in names");
    list.list = "-";
    list.selection.excluded.emplace_back("*.log");
    EXPECT_EQ(noFiles(list), "there is no file in standard input, with --exclude");
}

TEST(Summary, TellsHowManyEntriesAreHidden)
{
    EXPECT_EQ(hiddenRemark(0), "");
    EXPECT_EQ(hiddenRemark(1), "; 1 hidden entry left out, --hidden takes it");
    EXPECT_EQ(hiddenRemark(2), "; 2 hidden entries left out, --hidden takes them");
}

} // namespace tests
} // namespace casetable
