#include "casetable/importing/Missing.h"

#include <algorithm>
#include <random>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "casetable/importing/CaseTable.h"
#include "casetable/system/ExitCode.h"

namespace casetable {
namespace tests {

namespace {

using Texts = std::vector<std::string>;
using Rows = std::vector<Texts>;

// Columns named in upper case are of numbers.
CaseTable tableOf(const Texts& names, const Rows& rows)
{
    CaseTable table;
    for (const std::string& name : names)
        table.patterns.emplace_back(name, name[0] <= 'Z' ? MetadataPattern::NumberValue
                                                         : MetadataPattern::StringValue);
    for (const Texts& row : rows)
        table.cells.insert(table.cells.end(), row.begin(), row.end());
    table.fileCounts.assign(rows.size(), 1);
    return table;
}

Rows rowsOf(const Report& report)
{
    Rows rows;
    for (std::size_t i = 0; i < report.rowCount; ++i)
        rows.push_back(report.row(i).cells);
    return rows;
}

std::string failureOf(const CaseTable& table, const std::vector<std::size_t>& columns)
{
    try {
        findMissing(table, columns);
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.code, ExitCode::ImportFailed);
        return failure.what();
    }
    ADD_FAILURE() << "no failure";
    return "";
}

// A table of 3 by `count` values, of each of the latter with one of the former, and so twice as
// many missing.
CaseTable diagonal(std::size_t count)
{
    Rows rows;
    for (std::size_t i = 0; i < count; ++i)
        rows.push_back({std::to_string(i % 3), std::to_string(i)});
    return tableOf({"a", "b"}, rows);
}

void addCase(CaseTable& table, const Texts& cells)
{
    table.cells.insert(table.cells.end(), cells.begin(), cells.end());
    table.fileCounts.push_back(1);
}

} // namespace

TEST(Missing, IsEachCombinationThatNoCaseHasSortedByTheColumns)
{
    const CaseTable table =
        tableOf({"p", "T"}, {{"run10", "10"}, {"run10", "9"}, {"run2", "10"}, {"run1", "-1"}});

    const Missing missing = findMissing(table, {0, 1});
    const Report& report = missing.report;

    EXPECT_EQ(report.rowsName, "missing");
    EXPECT_EQ(missing.combinations, 9u);
    EXPECT_EQ(
        rowsOf(report),
        Rows({{"run1", "9"}, {"run1", "10"}, {"run2", "-1"}, {"run2", "9"}, {"run10", "-1"}}));
    EXPECT_EQ(
        rowsOf(findMissing(table, {1, 0}).report),
        Rows({{"-1", "run2"}, {"-1", "run10"}, {"9", "run1"}, {"9", "run2"}, {"10", "run1"}}));
}

TEST(Missing, TakesNumbersThatAreEqualAsTheFirstOfThem)
{
    const CaseTable table =
        tableOf({"A", "B"}, {{"5.0", "1"}, {"5", "2"}, {"+5", "1"}, {"6", "2.0"}, {"05", "3"}});

    EXPECT_EQ(rowsOf(findMissing(table, {0, 1}).report), Rows({{"6", "1"}, {"6", "3"}}));
}

TEST(Missing, TakesTextsThatReadAsEqualNumbersAsDifferent)
{
    const CaseTable table = tableOf({"a", "b"}, {{"5", "x"}, {"05", "y"}});

    EXPECT_EQ(rowsOf(findMissing(table, {0, 1}).report), Rows({{"05", "x"}, {"5", "y"}}));
}

TEST(Missing, LeavesOutCasesWithoutAValueWithAllOfTheirValues)
{
    const CaseTable table = tableOf(
        {"A", "b", "c"},
        {{"7", "", "x"}, {"5", "x", ""}, {"", "z", "x"}, {"5.0", "y", "x"}, {"nan", "w", "x"}});

    EXPECT_EQ(rowsOf(findMissing(table, {0, 1}).report), Rows());
    EXPECT_EQ(findMissing(table, {0, 1}).combinations, 2u);
    EXPECT_EQ(findMissing(table, {0, 1}).casesLeftOut, 3u);
    EXPECT_EQ(rowsOf(findMissing(table, {1, 2}).report), Rows());
    EXPECT_EQ(
        rowsOf(
            findMissing(tableOf({"A", "b"}, {{"5", ""}, {"5.0", "x"}, {"6", "y"}}), {0, 1}).report),
        Rows({{"5.0", "y"}, {"6", "x"}}))
        << "the first is that of a case that takes part";
}

TEST(Missing, IsNothingWithoutCasesOrWithoutAnyThatIsComplete)
{
    for (const Rows& rows : {Rows(), Rows({{"1", "x"}}), Rows({{"1", ""}, {"", "x"}})}) {
        const Missing missing = findMissing(tableOf({"A", "b"}, rows), {0, 1});
        const Report& report = missing.report;
        EXPECT_EQ(report.rowCount, 0u);
        EXPECT_EQ(report.columns.size(), 2u);
    }
}

TEST(Missing, NamesItsColumnsAsTheTableOfCasesDoes)
{
    const CaseTable table =
        tableOf({"T", "case", "T", "T(2)", "files"}, {{"1", "2", "3", "4", "5"}});

    const Missing missing = findMissing(table, {2, 1, 0, 4, 3});
    const Report& report = missing.report;

    EXPECT_EQ(uniqueHeader(report.columns), Texts({"T(2)", "case(2)", "T", "files(2)", "T(2)(2)"}));
    EXPECT_TRUE(report.columns[0].isValue());
    EXPECT_TRUE(report.columns[0].isNumber());
    EXPECT_FALSE(report.columns[1].isNumber());
}

TEST(Missing, ListsAHundredThousandAtMost)
{
    CaseTable table = diagonal(50'001);
    addCase(table, {"1", "0"});
    const std::string message =
        "--missing: more than 100000 combinations are missing; most values have 'b' with 50001, "
        "'a' with 3";
    EXPECT_EQ(failureOf(table, {0, 1}), message) << "100001";
    EXPECT_EQ(failureOf(table, {1, 0}), message);

    addCase(table, {"2", "0"});
    EXPECT_EQ(findMissing(table, {0, 1}).report.rowCount, 100'000u);
}

TEST(Missing, CountsCombinationsThatNoNumberHolds)
{
    // 4 to the power of 32 is nothing in 64 bits, as are all powers above it.
    Texts names;
    Rows rows(4);
    std::vector<std::size_t> columns;
    for (std::size_t j = 0; j < 40; ++j) {
        names.push_back("c" + std::to_string(j));
        columns.push_back(j);
        for (std::size_t i = 0; i < rows.size(); ++i)
            rows[i].push_back(std::to_string(i));
    }
    const CaseTable table = tableOf(names, rows);

    columns.resize(32);
    EXPECT_EQ(failureOf(table, columns),
              "--missing: more than 100000 combinations are missing; most values have 'c0' with 4, "
              "'c1' with 4, 'c2' with 4");
    columns.resize(8);
    EXPECT_EQ(findMissing(table, columns).report.rowCount, 65536u - 4);
}

TEST(Missing, IsWhatIsLeftOfAllCombinations)
{
    std::mt19937 random(11);
    for (int round = 0; round < 500; ++round) {
        Rows rows(random() % 30);
        for (Texts& row : rows) {
            for (int j = 0; j < 3; ++j)
                row.push_back(random() % 9 == 0 ? "" : std::to_string(random() % 4));
        }
        // A restatement for texts of one digit, whose order is that of bytes.
        std::vector<std::set<std::string>> values(3);
        std::set<Texts> present;
        for (const Texts& row : rows) {
            if (std::count(row.begin(), row.end(), "") > 0)
                continue;
            present.insert(row);
            for (std::size_t j = 0; j < 3; ++j)
                values[j].insert(row[j]);
        }
        Rows expected;
        for (const std::string& a : values[0]) {
            for (const std::string& b : values[1]) {
                for (const std::string& c : values[2]) {
                    if (present.count({a, b, c}) == 0)
                        expected.push_back({a, b, c});
                }
            }
        }

        const CaseTable table = tableOf({"a", "B", "c"}, rows);
        const Missing missing = findMissing(table, {0, 1, 2});
        const Report& report = missing.report;

        ASSERT_EQ(rowsOf(report), expected);
        ASSERT_EQ(missing.combinations, values[0].size() * values[1].size() * values[2].size());
    }
}

} // namespace tests
} // namespace casetable
