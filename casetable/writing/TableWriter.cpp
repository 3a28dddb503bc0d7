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

std::vector<std::string> rowCells(const Row& row)
{
    std::vector<std::string> cells = printableCells(row.cells);
    for (const std::vector<std::string>& files : row.filesPerTag) {
        std::string joined;
        for (const std::string& file : files)
            joined += (joined.empty() ? "" : ", ") + printable(file);
        cells.push_back(joined);
    }
    return cells;
}

bool alignsRight(const Report& report, std::size_t column)
{
    return column < report.columns.size() &&
           (report.columns[column].kind == Column::Kind::Index ||
            report.columns[column].kind == Column::Kind::NumberValue);
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
        text += alignsRight(report, j) ? padding + cells[j] : cells[j] + padding;
    }
    text.erase(text.find_last_not_of(' ') + 1);
    return text;
}

} // namespace

void writeTable(const Report& report, Output& output)
{
    const std::vector<std::string> header = printableCells(uniqueHeader(report));
    std::vector<std::size_t> widths(header.size(), 0);
    widen(widths, header);
    for (std::size_t index = 0; index < report.rowCount; ++index)
        widen(widths, rowCells(report.row(index)));

    const std::string names = line(report, header, widths);
    output.write((output.showsColours() ? coloured(Colour::Bold, names) : names) + "\n");
    for (std::size_t index = 0; index < report.rowCount; ++index)
        output.write(line(report, rowCells(report.row(index)), widths) + "\n");
}

} // namespace casetable
