#include "casetable/importing/Sorting.h"

#include <algorithm>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace casetable {
namespace tests {

namespace {

using Texts = std::vector<std::string>;

Report reportOf(const std::vector<Column>& columns, const std::vector<Texts>& rows)
{
    Report report;
    report.rowsName = "cases";
    report.columns = columns;
    report.rowCount = rows.size();
    report.row = [rows](std::size_t index) { return Row{rows.at(index), {{rows[index].at(0)}}}; };
    return report;
}

// The rows one behind the other, their cells joined.
Texts linesOf(const Report& report)
{
    Texts lines;
    for (std::size_t i = 0; i < report.rowCount; ++i) {
        const Row row = report.row(i);
        EXPECT_EQ(row.filesPerTag.at(0).at(0), row.cells.at(0)) << "the files of another row";
        lines.emplace_back();
        for (const std::string& cell : row.cells)
            lines.back() += (lines.back().empty() ? "" : " ") + cell;
    }
    return lines;
}

const std::vector<Column> columns = {{"case", Column::Kind::Count},
                                     {"T", Column::Kind::NumberValue},
                                     {"P", Column::Kind::StringValue}};

const std::vector<Texts> rows = {
    {"0", "10", "b"}, {"1", "5.0", "a10"}, {"2", "", "a2"}, {"3", "5", "b"}, {"4", "-1", ""}};

} // namespace

TEST(Sorting, KeepsTheRowsWithoutKeys)
{
    const Report report = sorted(reportOf(columns, rows), {});

    EXPECT_EQ(linesOf(report), Texts({"0 10 b", "1 5.0 a10", "2  a2", "3 5 b", "4 -1 "}));
}

TEST(Sorting, LeavesRowsThatAreEqualInTheirOrder)
{
    EXPECT_EQ(linesOf(sorted(reportOf(columns, rows), {{1}})),
              Texts({"4 -1 ", "1 5.0 a10", "3 5 b", "0 10 b", "2  a2"}));
    EXPECT_EQ(linesOf(sorted(reportOf(columns, rows), {{1, true}})),
              Texts({"0 10 b", "1 5.0 a10", "3 5 b", "4 -1 ", "2  a2"}));
}

TEST(Sorting, PutsNoValueLastInEitherDirection)
{
    EXPECT_EQ(linesOf(sorted(reportOf(columns, rows), {{2}})),
              Texts({"2  a2", "1 5.0 a10", "0 10 b", "3 5 b", "4 -1 "}));
    EXPECT_EQ(linesOf(sorted(reportOf(columns, rows), {{2, true}})),
              Texts({"0 10 b", "3 5 b", "1 5.0 a10", "2  a2", "4 -1 "}));
}

TEST(Sorting, GoesByTheNextKeyWhereTheFirstIsEqual)
{
    EXPECT_EQ(linesOf(sorted(reportOf(columns, rows), {{1}, {0, true}})),
              Texts({"4 -1 ", "3 5 b", "1 5.0 a10", "0 10 b", "2  a2"}));
    EXPECT_EQ(linesOf(sorted(reportOf(columns, rows), {{0, true}, {1}})),
              Texts({"4 -1 ", "3 5 b", "2  a2", "1 5.0 a10", "0 10 b"}));
}

TEST(Sorting, TakesTablesOfNoRowAndOfOne)
{
    EXPECT_EQ(linesOf(sorted(reportOf(columns, {}), {{1}, {2, true}})), Texts());
    EXPECT_EQ(linesOf(sorted(reportOf(columns, {{"0", "", ""}}), {{1}, {2, true}})),
              Texts({"0  "}));
}

TEST(Sorting, KeepsWhatElseTheReportTells)
{
    const Report report = sorted(reportOf(columns, rows), {{1}});

    EXPECT_EQ(report.rowsName, "cases");
    EXPECT_EQ(report.columns.size(), columns.size());
    EXPECT_EQ(report.rowCount, rows.size());
}

TEST(Sorting, IsThatOfAPlainComparisonOfRows)
{
    std::mt19937 random(5);
    for (int round = 0; round < 500; ++round) {
        std::vector<Texts> made(random() % 40);
        for (std::size_t i = 0; i < made.size(); ++i)
            made[i] = {std::to_string(i), random() % 4 == 0 ? "" : std::to_string(random() % 12),
                       random() % 4 == 0 ? ""
                                         : std::string(1, static_cast<char>('a' + random() % 5))};
        std::vector<SortKey> keys(1 + random() % 3);
        for (SortKey& key : keys)
            key = {random() % 3, random() % 2 == 0};

        std::vector<Texts> expected = made;
        const auto isBefore = [&keys](const Texts& a, const Texts& b) {
            for (const SortKey& key : keys) {
                const std::string& left = a[key.column];
                const std::string& right = b[key.column];
                if (left == right)
                    continue;
                if (left.empty() || right.empty())
                    return right.empty();
                const bool isLess = key.column == 2
                                        ? left < right
                                        : std::atoi(left.c_str()) < std::atoi(right.c_str());
                return isLess != key.isDescending;
            }
            return false;
        };
        std::stable_sort(expected.begin(), expected.end(), isBefore);

        ASSERT_EQ(linesOf(sorted(reportOf(columns, made), keys)),
                  linesOf(reportOf(columns, expected)));
    }
}

} // namespace tests
} // namespace casetable
