#include "casetable/writing/CsvRecord.h"

#include <utility>

#include "casetable/importing/Report.h"

namespace casetable {

namespace {

std::string field(const std::string& text)
{
    if (text.find_first_of(",\"\r\n") == std::string::npos)
        return text;
    std::string quoted = "\"";
    for (const char c : text) {
        if (c == '"')
            quoted += '"';
        quoted += c;
    }
    quoted += '"';
    return quoted;
}

} // namespace

std::string csvRecord(const std::vector<std::string>& texts)
{
    std::string joined;
    for (const std::string& text : texts) {
        if (&text != &texts.front())
            joined += ',';
        joined += field(text);
    }
    return joined;
}

std::vector<std::string> flatCells(Row row)
{
    std::vector<std::string> cells = std::move(row.cells);
    for (const std::vector<std::string>& files : row.filesPerTag)
        cells.push_back(csvRecord(files));
    return cells;
}

} // namespace casetable
