#include "casetable/writing/CsvRecord.h"

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

} // namespace casetable
