#include "casetable/writing/JsonWriter.h"

#include <string>
#include <utility>
#include <vector>

#include <nlohmann/json.hpp>

#include "casetable/importing/Report.h"
#include "casetable/system/Output.h"

namespace casetable {

namespace {

using Json = nlohmann::ordered_json;

std::string text(const Json& json)
{
    const bool asciiOnly = true;
    return json.dump(-1, ' ', asciiOnly, Json::error_handler_t::replace);
}

// Names become keys of one object, so they are made unique as they will be read: with the bytes
// that are not UTF-8 replaced.
std::vector<std::string> keys(const std::vector<std::string>& names)
{
    std::vector<std::string> texts;
    texts.reserve(names.size());
    for (const std::string& name : names)
        texts.push_back(Json::parse(text(name)).get<std::string>());
    return uniqueNames(std::move(texts));
}

std::vector<std::string> valueKeys(const Report& report)
{
    std::vector<std::string> names;
    for (const Column& column : report.columns) {
        if (column.isValue())
            names.push_back(column.name);
    }
    return keys(names);
}

Json columns(const Report& report, const std::vector<std::string>& valueKeys)
{
    Json columns = Json::array();
    for (const Column& column : report.columns) {
        if (column.isValue())
            columns.push_back(
                {{"name", valueKeys[columns.size()]},
                 {"type", column.kind == Column::Kind::NumberValue ? "number" : "string"}});
    }
    return columns;
}

Json object(const Report& report, const Row& row, const std::vector<std::string>& valueKeys,
            const std::vector<std::string>& tagKeys)
{
    Json object;
    for (std::size_t j = 0; j < report.columns.size(); ++j) {
        const Column& column = report.columns[j];
        if (column.isValue())
            object["values"][valueKeys[object["values"].size()]] = row.cells[j];
        else if (column.kind == Column::Kind::Index)
            object[column.name] = std::stoull(row.cells[j]);
        else
            object[column.name] = row.cells[j];
    }
    for (std::size_t j = 0; j < report.tags.size(); ++j)
        object["aux"][tagKeys[j]] = row.filesPerTag[j];
    return object;
}

} // namespace

void writeJson(const Report& report, Output& output)
{
    const std::vector<std::string> values = valueKeys(report);
    const std::vector<std::string> tags = keys(report.tags);
    output.write("{\"columns\": " + text(columns(report, values)) + ",\n \"" + report.rowsName +
                 "\": [");
    for (std::size_t index = 0; index < report.rowCount; ++index)
        output.write((index == 0 ? "\n  " : ",\n  ") +
                     text(object(report, report.row(index), values, tags)));
    output.write("\n ]}\n");
}

} // namespace casetable
