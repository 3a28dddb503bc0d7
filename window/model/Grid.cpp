#include "window/model/Grid.h"

#include <algorithm>
#include <string_view>

#include "casetable/importing/CellOrder.h"
#include "casetable/importing/Report.h"

namespace casetable {

namespace {

CellRanks ranksOf(const CaseTable& table, std::size_t column)
{
    std::vector<std::string_view> cells;
    cells.reserve(table.caseCount());
    for (std::size_t i = 0; i < table.caseCount(); ++i)
        cells.emplace_back(table.cell(i, column));
    return rankCells(caseColumns(table.patterns, {})[column + 1], cells);
}

std::vector<std::string> valuesOf(const CaseTable& table, std::size_t column,
                                  const CellRanks& ranks)
{
    std::vector<std::string> values;
    for (const std::size_t first : ranks.firsts)
        values.push_back(table.cell(first, column));
    return values;
}

template <class Count> std::size_t most(const std::vector<Grid::Field>& fields, const Count& count)
{
    std::size_t most = 0;
    for (const Grid::Field& field : fields)
        most = std::max(most, count(field));
    return most;
}

} // namespace

std::size_t Grid::holes() const
{
    return static_cast<std::size_t>(std::count_if(
        fields.begin(), fields.end(), [](const Field& field) { return field.cases.empty(); }));
}

std::size_t Grid::mostCases() const
{
    return most(fields, [](const Field& field) { return field.cases.size(); });
}

std::size_t Grid::mostFiles() const
{
    return most(fields, [](const Field& field) { return field.fileCount; });
}

Grid gridOf(const CaseTable& table, std::size_t rowColumn, std::size_t columnColumn)
{
    Grid grid;
    grid.rowColumn = rowColumn;
    grid.columnColumn = columnColumn;
    const CellRanks rows = ranksOf(table, rowColumn);
    const CellRanks columns = ranksOf(table, columnColumn);
    if (rows.firsts.size() > Grid::mostValues || columns.firsts.size() > Grid::mostValues) {
        grid.isTooLarge = true;
        return grid;
    }
    grid.rows = valuesOf(table, rowColumn, rows);
    grid.columns = valuesOf(table, columnColumn, columns);
    grid.fields.resize(grid.rows.size() * grid.columns.size());
    for (std::size_t i = 0; i < table.caseCount(); ++i) {
        if (rows.ofCells[i] == CellRanks::none || columns.ofCells[i] == CellRanks::none) {
            ++grid.leftOut;
            continue;
        }
        Grid::Field& field =
            grid.fields[rows.ofCells[i] * grid.columns.size() + columns.ofCells[i]];
        field.cases.push_back(static_cast<std::uint32_t>(i));
        field.fileCount += table.fileCounts[i];
    }
    return grid;
}

} // namespace casetable
