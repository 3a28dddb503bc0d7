#include "casetable/CsvWriter.h"

#include <string>
#include <utility>
#include <vector>

#include "casetable/Output.h"
#include "casetable/Report.h"

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

std::string record(const std::vector<std::string>& texts)
{
    std::string joined;
    for (const std::string& text : texts) {
        if (&text != &texts.front())
            joined += ',';
        joined += field(text);
    }
    return joined;
}

} // namespace

void writeCsv(const Report& report, Output& output)
{
    const std::string lineEnd = "\r\n";
    output.write(record(uniqueHeader(report)) + lineEnd);
    for (std::size_t index = 0; index < report.rowCount; ++index) {
        Row row = report.row(index);
        std::vector<std::string> cells = std::move(row.cells);
        for (const std::vector<std::string>& files : row.filesPerTag)
            cells.push_back(record(files));
        output.write(record(cells) + lineEnd);
    }
}

} // namespace casetable
