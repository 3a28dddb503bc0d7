#include "window/model/View.h"

#include <algorithm>
#include <cctype>
#include <numeric>
#include <string_view>
#include <utility>

#include "casetable/importing/CaseTable.h"
#include "casetable/importing/CellOrder.h"
#include "casetable/importing/Report.h"

namespace casetable {

namespace {

char lower(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

// Looks for a text in paths.
class TextSearch {
public:
    explicit TextSearch(const std::string& text)
        : text_(text), isExact_(std::any_of(text.begin(), text.end(),
                                            [](char c) { return c >= 'A' && c <= 'Z'; }))
    {
    }

    bool finds(std::string_view path) const
    {
        if (text_.empty() || isExact_)
            return path.find(text_) != std::string_view::npos;
        return std::search(path.begin(), path.end(), text_.begin(), text_.end(),
                           [](char p, char t) { return lower(p) == t; }) != path.end();
    }

private:
    const std::string& text_;
    const bool isExact_;
};

// Whether the files of a case are shown, by its index.
std::vector<bool> shownCases(const CaseTable& table, const PathFilter& filter)
{
    std::vector<bool> areShown(table.caseCount(), filter.cases.empty());
    for (const std::uint32_t index : filter.cases) {
        if (index < areShown.size())
            areShown[index] = true;
    }
    if (filter.value && filter.value->column < table.patterns.size()) {
        for (std::size_t i = 0; i < areShown.size(); ++i)
            areShown[i] = areShown[i] && table.cell(i, filter.value->column) == filter.value->text;
    }
    return areShown;
}

// The cells of a column of caseReport().
class ColumnCells {
public:
    ColumnCells(const CaseTable& table, std::size_t column)
    {
        const std::vector<Column> columns = caseColumns(table.patterns, table.tags);
        column_ = columns[column];
        cells_.reserve(table.caseCount());
        if (column_.isValue()) {
            for (std::size_t i = 0; i < table.caseCount(); ++i)
                cells_.emplace_back(table.cell(i, column - 1));
            return;
        }
        const Report report = caseReport(table);
        texts_.reserve(table.caseCount());
        for (std::size_t i = 0; i < table.caseCount(); ++i)
            texts_.push_back(report.row(i).cells[column]);
        cells_.assign(texts_.begin(), texts_.end());
    }

    CellRanks ranks() const { return rankCells(column_, cells_); }

private:
    Column column_;
    std::vector<std::string> texts_; // Where the table does not have them.
    std::vector<std::string_view> cells_;
};

} // namespace

std::vector<std::uint32_t> shownFiles(const Files& files, const Matching* matching,
                                      const PathFilter& filter,
                                      const std::atomic<bool>& isCancelled)
{
    const TextSearch search(filter.text);
    const CaseTable* const table = matching != nullptr ? matching->table() : nullptr;
    const bool needsCase = !filter.cases.empty() || filter.value;
    const std::vector<bool> areShown =
        table != nullptr && needsCase ? shownCases(*table, filter) : std::vector<bool>();
    const auto fitsCase = [&](std::size_t index) {
        if (table == nullptr)
            return true;
        const std::uint32_t ofFile = matching->caseOf[index];
        if (ofFile == Matching::none)
            return !needsCase && filter.which != PathFilter::Which::Matched;
        return filter.which != PathFilter::Which::Unmatched && (!needsCase || areShown[ofFile]);
    };
    std::vector<std::uint32_t> shown;
    std::size_t index = 0;
    for (const auto& shard : files.shards()) {
        if (isCancelled)
            break;
        for (std::size_t i = 0; i < shard->fileCount(); ++i, ++index) {
            if (fitsCase(index) && search.finds(shard->path(i)))
                shown.push_back(static_cast<std::uint32_t>(index));
        }
    }
    return shown;
}

CaseOrder orderOf(const CaseTable& table, const std::vector<SortKey>& keys)
{
    std::vector<std::uint32_t> order(table.caseCount());
    std::iota(order.begin(), order.end(), 0U);
    // From the last key to the first, as rows that are equal stay in their order.
    for (auto key = keys.rbegin(); key != keys.rend(); ++key) {
        const std::vector<std::size_t> ranks = ColumnCells(table, key->column).ranks().ofCells;
        std::stable_sort(order.begin(), order.end(), [&](std::uint32_t left, std::uint32_t right) {
            const std::size_t l = ranks[left];
            const std::size_t r = ranks[right];
            if (l == CellRanks::none || r == CellRanks::none)
                return l != CellRanks::none && r == CellRanks::none;
            return key->isDescending ? l > r : l < r;
        });
    }
    std::vector<std::uint32_t> rows(order.size());
    for (std::uint32_t row = 0; row < order.size(); ++row)
        rows[order[row]] = row;
    return {std::move(order), std::move(rows)};
}

} // namespace casetable
