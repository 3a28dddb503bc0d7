#include "casetable/writing/CsvRecord.h"

namespace casetable {

namespace {

void appendField(const std::string& text, std::string& record)
{
    if (text.find_first_of(",\"\r\n") == std::string::npos) {
        record += text;
        return;
    }
    record += '"';
    for (const char c : text) {
        if (c == '"')
            record += '"';
        record += c;
    }
    record += '"';
}

} // namespace

std::string csvRecord(const std::vector<std::string>& texts)
{
    std::string record;
    for (const std::string& text : texts) {
        if (&text != &texts.front())
            record += ',';
        appendField(text, record);
    }
    return record;
}

} // namespace casetable
