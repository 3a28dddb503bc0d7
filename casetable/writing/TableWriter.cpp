#include "casetable/writing/TableWriter.h"

#include <algorithm>
#include <string>
#include <vector>

#include "casetable/importing/Report.h"
#include "casetable/system/Colour.h"
#include "casetable/system/Output.h"
#include "casetable/system/Printable.h"

namespace casetable {

namespace {

std::vector<std::string> printableCells(const std::vector<std::string>& texts)
{
    std::vector<std::string> cells;
    cells.reserve(texts.size());
    for (const std::string& text : texts)
        cells.push_back(printable(text));
    return cells;
}

// What stands for no value.
const char* const nothing = "-";

std::vector<std::string> rowCells(const Report& report, const Row& row)
{
    std::vector<std::string> cells = printableCells(row.cells);
    for (std::size_t j = 0; j < cells.size(); ++j) {
        if (contentOf(report.columns[j], row.cells[j]) == Content::Nothing)
            cells[j] = nothing;
    }
    return cells;
}

void widen(std::vector<std::size_t>& widths, const std::vector<std::string>& cells)
{
    for (std::size_t j = 0; j < cells.size(); ++j)
        widths[j] = std::max(widths[j], displayWidth(cells[j]));
}

// The cells as one line of the table, without its end.
std::string line(const Report& report, const std::vector<std::string>& cells,
                 const std::vector<std::size_t>& widths)
{
    std::string text;
    for (std::size_t j = 0; j < cells.size(); ++j) {
        const std::string padding(widths[j] - displayWidth(cells[j]), ' ');
        text += j == 0 ? "" : "  ";
        text += report.columns[j].isNumber() ? padding + cells[j] : cells[j] + padding;
    }
    text.erase(text.find_last_not_of(' ') + 1);
    return text;
}

} // namespace

void writeTable(const Report& report, Output& output)
{
    const std::vector<std::string> header = printableCells(uniqueHeader(report.columns));
    std::vector<std::size_t> widths(header.size(), 0);
    widen(widths, header);
    for (std::size_t index = 0; index < report.rowCount; ++index)
        widen(widths, rowCells(report, report.row(index)));

    const std::string names = line(report, header, widths);
    output.write((output.showsColours() ? coloured(Colour::Bold, names) : names) + "\n");
    for (std::size_t index = 0; index < report.rowCount; ++index)
        output.write(line(report, rowCells(report, report.row(index)), widths) + "\n");
}

} // namespace casetable
