#include "casetable/importing/Report.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "casetable/importing/CaseTable.h"

namespace casetable {
namespace tests {

namespace {

using Names = std::vector<std::string>;
using Kind = Column::Kind;

const std::vector<MetadataPattern> patterns = {{"T", MetadataPattern::NumberValue},
                                               {"P", MetadataPattern::StringValue}};

CaseTable tableOfTwo()
{
    CaseTable table;
    table.patterns = patterns;
    table.cells = {"1", "a", "", "b"};
    table.fileCounts = {3, 1};
    return table;
}

} // namespace

TEST(Report, HasARowForEachCaseWithItsValuesAndTheNumberOfItsFiles)
{
    const CaseTable table = tableOfTwo();

    const Report report = caseReport(table);

    EXPECT_EQ(uniqueHeader(report.columns), Names({"case", "T", "P", "files"}));
    ASSERT_EQ(report.rowCount, 2u);
    EXPECT_EQ(report.row(0).cells, Names({"0", "1", "a", "3"}));
    EXPECT_EQ(report.row(1).cells, Names({"1", "", "b", "1"}));
}

TEST(Report, HasTwoColumnsForTheFilesUnderATag)
{
    EXPECT_EQ(uniqueHeader(caseColumns(patterns, {"log", "data"})),
              Names({"case", "T", "P", "log", "log files", "data", "data files", "files"}));
    EXPECT_EQ(uniqueHeader(fileColumns(patterns, {"log", "data"})),
              Names({"path", "case", "T", "P", "tag"}));
}

TEST(Report, MakesTheHeaderUniqueAndKeepsTheNamesOfItsOwnColumns)
{
    const Kind own = Kind::Count;
    const Kind value = Kind::StringValue;
    struct Row {
        std::vector<Column> columns;
        Names header;
    };
    for (const Row& row :
         {Row{{}, {}}, Row{{{"T", value}, {"T", value}, {"T", value}}, {"T", "T(2)", "T(3)"}},
          Row{{{"T", value}, {"T(2)", value}, {"T", value}}, {"T", "T(2)", "T(3)"}},
          Row{{{"T", value}, {"T", value}, {"T(2)", value}}, {"T", "T(2)", "T(2)(2)"}},
          Row{{{"", value}, {"", value}}, {"", "(2)"}},
          Row{{{"T", value}, {"T", Kind::AuxPath}, {"T files", Kind::AuxCount}},
              {"T", "T(2)", "T files"}},
          Row{{{"case", own}, {"files", value}, {"case", value}, {"files", own}},
              {"case", "files(2)", "case(2)", "files"}}})
        EXPECT_EQ(uniqueHeader(row.columns), row.header);
}

TEST(Report, KnowsTheColumnsOfValues)
{
    EXPECT_TRUE((Column{"T", Kind::NumberValue}).isValue());
    EXPECT_TRUE((Column{"T", Kind::StringValue}).isValue());
    EXPECT_FALSE((Column{"case", Kind::Count}).isValue());
    EXPECT_FALSE((Column{"path", Kind::Text}).isValue());
    EXPECT_FALSE((Column{"log", Kind::AuxPath}).isValue());
}

TEST(Report, TellsWhatACellHolds)
{
    EXPECT_EQ(contentOf({"T", Kind::NumberValue}, "1"), Content::Number);
    EXPECT_EQ(contentOf({"T", Kind::NumberValue}, ""), Content::Nothing);
    EXPECT_EQ(contentOf({"P", Kind::StringValue}, "1"), Content::Text);
    EXPECT_EQ(contentOf({"P", Kind::StringValue}, "NULL"), Content::Text);
    EXPECT_EQ(contentOf({"P", Kind::StringValue}, ""), Content::Nothing);
    EXPECT_EQ(contentOf({"case", Kind::Count}, "0"), Content::Number);
    EXPECT_EQ(contentOf({"log files", Kind::AuxCount}, "0"), Content::Number);
    EXPECT_EQ(contentOf({"tag", Kind::Text}, "log"), Content::Text);
    EXPECT_EQ(contentOf({"tag", Kind::Text}, ""), Content::Nothing);
    EXPECT_EQ(contentOf({"log", Kind::AuxPath}, ""), Content::Nothing);
}

} // namespace tests
} // namespace casetable
