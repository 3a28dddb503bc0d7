#include "casetable/importing/Missing.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <utility>

#include "casetable/importing/CaseTable.h"
#include "casetable/importing/CellOrder.h"
#include "casetable/system/ExitCode.h"

namespace casetable {

namespace {

using Indices = std::vector<std::size_t>;
using Cells = std::vector<std::string_view>;

// How many columns the message about too many combinations names.
const std::size_t namedColumns = 3;

std::vector<Column> columnsOf(const CaseTable& table, const Indices& columns)
{
    const std::vector<Column> all = caseColumns(table.patterns, {});
    const std::vector<std::string> header = uniqueHeader(all);
    std::vector<Column> chosen;
    for (const std::size_t column : columns) // The first of all is "case".
        chosen.push_back({header[column + 1], all[column + 1].kind});
    return chosen;
}

std::vector<CellRanks> rankColumns(const std::vector<Column>& columns,
                                   const std::vector<Cells>& cells)
{
    std::vector<CellRanks> ranks;
    for (std::size_t k = 0; k < columns.size(); ++k)
        ranks.push_back(rankCells(columns[k], cells[k]));
    return ranks;
}

bool isComplete(const std::vector<CellRanks>& ranks, std::size_t caseIndex)
{
    return std::all_of(ranks.begin(), ranks.end(), [caseIndex](const CellRanks& column) {
        return column.ofCells[caseIndex] != CellRanks::none;
    });
}

// The ranks of the cells of the columns, but for those of cases that lack a value in one of them.
std::vector<CellRanks> rankCompleteCases(const CaseTable& table, const std::vector<Column>& columns,
                                         const Indices& indices)
{
    std::vector<Cells> cells(columns.size());
    for (std::size_t k = 0; k < columns.size(); ++k) {
        cells[k].reserve(table.caseCount());
        for (std::size_t i = 0; i < table.caseCount(); ++i)
            cells[k].push_back(table.cell(i, indices[k]));
    }
    std::vector<CellRanks> ranks = rankColumns(columns, cells);
    bool lacksSome = false;
    for (std::size_t i = 0; i < table.caseCount(); ++i) {
        if (isComplete(ranks, i))
            continue;
        lacksSome = true;
        for (Cells& column : cells)
            column[i] = {};
    }
    return lacksSome ? rankColumns(columns, cells) : std::move(ranks);
}

[[noreturn]] void failTooMany(const std::vector<Column>& columns,
                              const std::vector<CellRanks>& ranks)
{
    Indices order;
    for (std::size_t k = 0; k < columns.size(); ++k)
        order.push_back(k);
    std::stable_sort(order.begin(), order.end(), [&ranks](std::size_t a, std::size_t b) {
        return ranks[a].firsts.size() > ranks[b].firsts.size();
    });
    order.resize(std::min(order.size(), namedColumns));
    std::string names;
    for (const std::size_t k : order)
        names += (names.empty() ? "'" : ", '") + columns[k].name + "' with " +
                 std::to_string(ranks[k].firsts.size());
    throw Failure(ExitCode::ImportFailed, "--missing: more than " + std::to_string(mostMissing) +
                                              " combinations are missing; most values have " +
                                              names);
}

// The number of combinations of the values, if no more than `most`; otherwise more than `most`.
std::size_t countCombinations(const std::vector<CellRanks>& ranks, std::size_t most)
{
    std::size_t product = 1;
    for (const CellRanks& column : ranks) {
        const std::size_t count = column.firsts.size();
        if (count > 0 && product > most / count)
            return most + 1;
        product *= count;
    }
    return product;
}

// The numbers of the combinations that no case has. A combination is numbered by its ranks, as by
// the digits of a number, so that the numbers are in the order of the combinations.
Indices missingNumbers(const std::vector<CellRanks>& ranks, std::size_t caseCount,
                       std::size_t combinations)
{
    std::vector<bool> isThere(combinations);
    for (std::size_t i = 0; i < caseCount; ++i) {
        if (!isComplete(ranks, i))
            continue;
        std::size_t number = 0;
        for (const CellRanks& column : ranks)
            number = number * column.firsts.size() + column.ofCells[i];
        isThere[number] = true;
    }
    Indices missing;
    for (std::size_t number = 0; number < combinations; ++number) {
        if (!isThere[number])
            missing.push_back(number);
    }
    return missing;
}

} // namespace

Missing findMissing(const CaseTable& table, const std::vector<std::size_t>& columns)
{
    Missing found;
    Report& report = found.report;
    report.rowsName = "missing";
    report.columns = columnsOf(table, columns);
    const std::vector<CellRanks> ranks = rankCompleteCases(table, report.columns, columns);
    // Each case has one combination at most, so with more than these too many are missing.
    const std::size_t most = table.caseCount() + mostMissing;
    found.combinations = countCombinations(ranks, most);
    if (found.combinations > most)
        failTooMany(report.columns, ranks);
    for (std::size_t i = 0; i < table.caseCount(); ++i)
        found.casesLeftOut += isComplete(ranks, i) ? 0 : 1;
    Indices missing = missingNumbers(ranks, table.caseCount(), found.combinations);
    if (missing.size() > mostMissing)
        failTooMany(report.columns, ranks);

    std::vector<Indices> firsts; // The case that shows each value of each column.
    firsts.reserve(ranks.size());
    for (const CellRanks& column : ranks)
        firsts.push_back(column.firsts);
    report.rowCount = missing.size();
    report.row = [&table, columns, firsts = std::move(firsts),
                  missing = std::move(missing)](std::size_t index) {
        Row row;
        row.cells.resize(columns.size());
        std::size_t number = missing[index];
        for (std::size_t k = columns.size(); k > 0; --k) {
            const Indices& values = firsts[k - 1];
            row.cells[k - 1] = table.cell(values[number % values.size()], columns[k - 1]);
            number /= values.size();
        }
        return row;
    };
    return found;
}

} // namespace casetable
