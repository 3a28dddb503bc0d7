#include "casetable/importing/Report.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace casetable {
namespace tests {

namespace {

using Names = std::vector<std::string>;

Names headerOf(const Names& columns, const Names& tags)
{
    Report report;
    for (const std::string& name : columns)
        report.columns.push_back({name, Column::Kind::Text});
    report.tags = tags;
    return uniqueHeader(report);
}

} // namespace

TEST(Report, HasAHeaderOfColumnsAndThenTags)
{
    EXPECT_EQ(headerOf({"case", "T"}, {"log", "data"}), Names({"case", "T", "log", "data"}));
    EXPECT_EQ(headerOf({}, {}), Names());
}

TEST(Report, MakesTheHeaderUnique)
{
    struct Row {
        Names columns, tags, header;
    };
    for (const Row& row : {Row{{"T", "T", "T"}, {}, {"T", "T(2)", "T(3)"}},
                           Row{{"case", "T"}, {"T", "case"}, {"case", "T", "T(2)", "case(2)"}},
                           Row{{"T", "T(2)", "T"}, {}, {"T", "T(2)", "T(3)"}},
                           Row{{"T", "T", "T(2)"}, {}, {"T", "T(2)", "T(2)(2)"}},
                           Row{{"", ""}, {""}, {"", "(2)", "(3)"}}})
        EXPECT_EQ(headerOf(row.columns, row.tags), row.header);
}

TEST(Report, KnowsTheColumnsOfMarkers)
{
    EXPECT_TRUE((Column{"T", Column::Kind::NumberValue}).isValue());
    EXPECT_TRUE((Column{"T", Column::Kind::StringValue}).isValue());
    EXPECT_FALSE((Column{"case", Column::Kind::Index}).isValue());
    EXPECT_FALSE((Column{"path", Column::Kind::Text}).isValue());
}

} // namespace tests
} // namespace casetable
