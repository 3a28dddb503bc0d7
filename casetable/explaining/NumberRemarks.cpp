#include "casetable/explaining/NumberRemarks.h"

#include <cstddef>
#include <unordered_map>
#include <utility>

#include "casetable/importing/CaseTable.h"
#include "casetable/importing/Decimal.h"

namespace casetable {

namespace {

using Texts = std::vector<std::string>;
using Paths = std::vector<std::string_view>;

bool isNumberColumn(const CaseTable& table, std::size_t column)
{
    return table.patterns[column].valueType == MetadataPattern::NumberValue;
}

void remarkOnCellsWithoutNumber(const CaseTable& table, std::size_t column, const Paths& files,
                                const MetadataInfoProviderInterface& values, Texts& lines)
{
    std::size_t count = 0;
    std::string example;
    for (std::size_t row = 0; row < table.caseCount(); ++row) {
        if (!table.cell(row, column).empty())
            continue;
        const std::string file(files[row]);
        const std::string value = values.metadataInfoList(file)[column].value;
        if (!value.empty() && ++count == 1)
            example = file + ", which gives '" + value + "'";
    }
    if (count > 0)
        lines.push_back(std::to_string(count) + (count == 1 ? " cell" : " cells") + " of '" +
                        table.patterns[column].pattern + (count == 1 ? "' is" : "' are") +
                        " no number, as in " + example);
}

// Whether the case has a value in each number column. Others say nothing of how numbers are
// written.
bool hasAllNumbers(const CaseTable& table, std::size_t row)
{
    for (std::size_t column = 0; column < table.patterns.size(); ++column) {
        if (isNumberColumn(table, column) && table.cell(row, column).empty())
            return false;
    }
    return true;
}

// A text that is the same for cases whose texts and numbers are equal.
std::string keyOf(const CaseTable& table, std::size_t row)
{
    std::string key;
    for (std::size_t column = 0; column < table.patterns.size(); ++column) {
        const std::string& cell = table.cell(row, column);
        const std::string part = isNumberColumn(table, column) ? Decimal(cell).key() : cell;
        key += std::to_string(part.size()) + ':' + part;
    }
    return key;
}

// Whether numbers of the column are written in more than one way. Where none are, no cases need to
// be compared, which would take memory for each.
bool hasEqualNumbersWrittenDifferently(const CaseTable& table, std::size_t column)
{
    std::unordered_map<std::string, const std::string*> firstOf;
    for (std::size_t row = 0; row < table.caseCount(); ++row) {
        const std::string& cell = table.cell(row, column);
        if (cell.empty())
            continue;
        const auto found = firstOf.emplace(Decimal(cell).key(), &cell).first;
        if (*found->second != cell)
            return true;
    }
    return false;
}

void remarkOnEqualCases(const CaseTable& table, const Paths& files, Texts& lines)
{
    std::size_t count = 0;
    std::pair<std::size_t, std::size_t> example;
    std::unordered_map<std::string, std::size_t> firstOf;
    for (std::size_t row = 0; row < table.caseCount(); ++row) {
        if (!hasAllNumbers(table, row))
            continue;
        const auto [found, isNew] = firstOf.emplace(keyOf(table, row), row);
        if (!isNew && ++count == 1)
            example = {found->second, row};
    }
    if (count == 0)
        return;
    std::size_t column = 0;
    while (table.cell(example.first, column) == table.cell(example.second, column))
        ++column;
    lines.push_back(std::to_string(count) + (count == 1 ? " case differs" : " cases differ") +
                    " from another only in how numbers are written, as '" +
                    table.patterns[column].pattern + "' in " + std::string(files[example.first]) +
                    ", which gives '" + table.cell(example.first, column) + "', and in " +
                    std::string(files[example.second]) + ", which gives '" +
                    table.cell(example.second, column) + "'");
}

} // namespace

std::vector<std::string> numberRemarks(const CaseTable& table,
                                       const std::vector<std::string_view>& firstFiles,
                                       const MetadataInfoProviderInterface& values)
{
    Texts lines;
    bool mayHaveEqualCases = false;
    for (std::size_t column = 0; column < table.patterns.size(); ++column) {
        if (!isNumberColumn(table, column))
            continue;
        remarkOnCellsWithoutNumber(table, column, firstFiles, values, lines);
        if (!mayHaveEqualCases)
            mayHaveEqualCases = hasEqualNumbersWrittenDifferently(table, column);
    }
    if (mayHaveEqualCases)
        remarkOnEqualCases(table, firstFiles, lines);
    return lines;
}

} // namespace casetable
