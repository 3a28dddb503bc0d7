#include "casetable/writing/TsvWriter.h"

#include <string>
#include <vector>

#include "casetable/importing/Report.h"
#include "casetable/system/Output.h"

namespace casetable {

namespace {

void appendField(const std::string& text, std::string& line)
{
    for (const char c : text) {
        switch (c) {
        case '\\':
            line += "\\\\";
            break;
        case '\t':
            line += "\\t";
            break;
        case '\n':
            line += "\\n";
            break;
        case '\r':
            line += "\\r";
            break;
        default:
            line += c;
        }
    }
}

std::string lineOf(const std::vector<std::string>& texts)
{
    std::string line;
    for (const std::string& text : texts) {
        if (&text != &texts.front())
            line += '\t';
        appendField(text, line);
    }
    line += '\n';
    return line;
}

} // namespace

void writeTsv(const Report& report, Output& output)
{
    output.write(lineOf(uniqueHeader(report.columns)));
    for (std::size_t index = 0; index < report.rowCount; ++index)
        output.write(lineOf(report.row(index).cells));
}

} // namespace casetable
