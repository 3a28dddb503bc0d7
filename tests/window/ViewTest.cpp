#include "window/model/View.h"

#include <algorithm>
#include <cctype>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "casetable/importing/Missing.h"
#include "casetable/importing/Report.h"
#include "tests/window/Kept.h"
#include "window/model/Grid.h"

namespace casetable {
namespace tests {

namespace {

using Texts = std::vector<std::string>;
using Indices = std::vector<std::uint32_t>;

std::string lowered(std::string text)
{
    for (char& c : text)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return text;
}

// Whether the filter shows a file, said plainly.
bool isShown(const Matching& matching, std::size_t file, const PathFilter& filter)
{
    const std::string path(matching.files.path(file));
    const bool hasCapital = lowered(filter.text) != filter.text;
    const std::string searched = hasCapital ? path : lowered(path);
    if (searched.find(filter.text) == std::string::npos)
        return false;
    const std::uint32_t index = matching.caseOf[file];
    const bool isMatched = index != Matching::none;
    if (filter.which == PathFilter::Which::Matched && !isMatched)
        return false;
    if (filter.which == PathFilter::Which::Unmatched && isMatched)
        return false;
    if (!filter.cases.empty() && (!isMatched || std::find(filter.cases.begin(), filter.cases.end(),
                                                          index) == filter.cases.end()))
        return false;
    return !filter.value ||
           (isMatched && matching.table()->cell(index, filter.value->column) == filter.value->text);
}

Texts somePaths(std::mt19937& random, std::size_t most)
{
    Texts paths;
    for (std::size_t n = 1 + random() % most; n > 0; --n)
        paths.push_back((random() % 2 == 0 ? "Run" : "run") + std::to_string(random() % 12) + "/T" +
                        std::to_string(random() % 4) + (random() % 3 == 0 ? "x" : "") + "/f");
    return paths;
}

} // namespace

TEST(PathFilter, ShowsWhatFitsAllOfIt)
{
    std::mt19937 random(7);
    const Texts searched = {"", "run", "Run", "1/t", "x/", "q"};
    for (int i = 0; i < 500; ++i) {
        const auto matching = matched(somePaths(random, 40), {"?un{run:number}/T{T:number}/*"});
        PathFilter filter;
        filter.text = searched[random() % searched.size()];
        filter.which = static_cast<PathFilter::Which>(random() % 3);
        if (random() % 2 == 0)
            filter.value = PathFilter::Value{random() % 2, std::to_string(random() % 4)};
        for (std::uint32_t k = 0; random() % 2 == 0 && k < matching->table()->caseCount();
             k += 1 + random() % 4)
            filter.cases.push_back(k);
        Indices expected;
        for (std::uint32_t file = 0; file < matching->files.count(); ++file) {
            if (isShown(*matching, file, filter))
                expected.push_back(file);
        }
        EXPECT_EQ(shownFiles(matching->files, matching.get(), filter, notCancelled()), expected);
    }
}

TEST(PathFilter, GoesByTheTextAloneBeforeFilesAreMatched)
{
    const Files files = filesOf({"a1", "a2", "b1"});
    PathFilter filter;
    filter.text = "1";
    filter.which = PathFilter::Which::Matched;
    EXPECT_EQ(shownFiles(files, nullptr, filter, notCancelled()), Indices({0, 2}));
}

TEST(CaseOrder, IsThatOfTheSortedReport)
{
    std::mt19937 random(8);
    for (int i = 0; i < 300; ++i) {
        const auto matching = matched(somePaths(random, 60), {"?un{run:number}/T{T:number}[x]/*"});
        const CaseTable& table = *matching->table();
        std::vector<SortKey> keys;
        for (std::size_t n = random() % 3; n > 0; --n)
            keys.push_back({random() % 4, random() % 2 == 0});
        const Report report = sorted(caseReport(table), keys);
        const CaseOrder both = orderOf(table, keys);
        const Indices& order = both.cases;
        ASSERT_EQ(order.size(), report.rowCount);
        for (std::size_t row = 0; row < order.size(); ++row) {
            EXPECT_EQ(report.row(row).cells.front(), std::to_string(order[row]));
            EXPECT_EQ(both.rows[order[row]], row);
        }
    }
}

TEST(Grid, HasAsManyHolesAsCombinationsAreMissing)
{
    std::mt19937 random(9);
    for (int i = 0; i < 200; ++i) {
        const auto matching = matched(somePaths(random, 30), {"?un{run:number}/T{T:number}[x]/*"});
        const CaseTable& table = *matching->table();
        const Grid grid = gridOf(table, 0, 1);
        const Missing missing = findMissing(table, {0, 1});
        EXPECT_EQ(grid.holes(), missing.report.rowCount);
        EXPECT_EQ(grid.fields.size(), missing.combinations);
        std::size_t files = 0;
        for (const Grid::Field& field : grid.fields)
            files += field.fileCount;
        EXPECT_EQ(files, matching->import->matchedCount());
    }
}

TEST(Grid, PutsValuesInOrderAndCasesInTheirFields)
{
    const auto matching = matched({"10_a", "10_b", "9_a", "9_a.x"}, {"{n:number}_{l}[.{e}]"});
    const Grid grid = gridOf(*matching->table(), 0, 1);
    EXPECT_EQ(grid.rows, Texts({"9", "10"}));
    EXPECT_EQ(grid.columns, Texts({"a", "b"}));
    EXPECT_EQ(grid.field(0, 0).cases.size(), 2U);
    EXPECT_EQ(grid.field(0, 1).cases.size(), 0U);
    EXPECT_EQ(grid.mostCases(), 2U);
    EXPECT_EQ(grid.holes(), 1U);
}

TEST(Grid, SaysWhenThereAreTooManyValues)
{
    Texts paths;
    for (std::size_t i = 0; i <= Grid::mostValues; ++i)
        paths.push_back(std::to_string(i) + "_a");
    const Grid grid = gridOf(*matched(paths, {"{n:number}_{l}"})->table(), 0, 1);
    EXPECT_TRUE(grid.isTooLarge);
    EXPECT_TRUE(grid.fields.empty());
}

} // namespace tests
} // namespace casetable
