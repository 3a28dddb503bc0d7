#include "casetable/importing/Sorting.h"

#include <algorithm>
#include <numeric>
#include <string>
#include <string_view>
#include <utility>

#include "casetable/importing/CellOrder.h"

namespace casetable {

namespace {

using Texts = std::vector<std::string>;
using Indices = std::vector<std::size_t>;

// The cells of the columns of the keys, row by row for each key.
std::vector<Texts> cellsOf(const Report& report, const std::vector<SortKey>& keys)
{
    std::vector<Texts> cells(keys.size());
    for (Texts& texts : cells)
        texts.reserve(report.rowCount);
    for (std::size_t index = 0; index < report.rowCount; ++index) {
        const Row row = report.row(index);
        for (std::size_t k = 0; k < keys.size(); ++k)
            cells[k].push_back(row.cells[keys[k].column]);
    }
    return cells;
}

// The place of each row by one key, from 0; rows that are equal share one.
Indices placesBy(const SortKey& key, const Column& column, const Texts& cells)
{
    CellRanks ranks = rankCells(column, {cells.begin(), cells.end()});
    const std::size_t count = ranks.firsts.size();
    for (std::size_t& rank : ranks.ofCells) {
        if (rank == CellRanks::none)
            rank = count;
        else if (key.isDescending)
            rank = count - 1 - rank;
    }
    return std::move(ranks.ofCells);
}

// Sorts `order`, which holds indices of rows, by the places of these. Rows of one place stay in
// their order.
void sortByPlace(Indices& order, const Indices& places)
{
    // Places are dense, so counting their rows tells where each begins.
    Indices begins(places.size() + 2);
    for (const std::size_t place : places)
        ++begins[place + 1];
    std::partial_sum(begins.begin(), begins.end(), begins.begin());
    Indices sortedOrder(order.size());
    for (const std::size_t row : order)
        sortedOrder[begins[places[row]]++] = row;
    order.swap(sortedOrder);
}

} // namespace

Report sorted(Report report, const std::vector<SortKey>& keys)
{
    if (keys.empty())
        return report;
    std::vector<Texts> cells = cellsOf(report, keys);
    Indices order(report.rowCount);
    std::iota(order.begin(), order.end(), std::size_t{0});
    // The last key first: each sort keeps what those before it did among equals.
    for (std::size_t k = keys.size(); k > 0; --k) {
        sortByPlace(order, placesBy(keys[k - 1], report.columns[keys[k - 1].column], cells[k - 1]));
        cells.pop_back();
    }
    report.row = [row = std::move(report.row), order = std::move(order)](std::size_t index) {
        return row(order[index]);
    };
    return report;
}

} // namespace casetable
