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

// In ASCII, with U+FFFD in place of bytes that are not UTF-8.
std::string jsonText(const Json& json)
{
    const bool asciiOnly = true;
    return json.dump(-1, ' ', asciiOnly, Json::error_handler_t::replace);
}

// Names become keys of one object, so they must be unique also when the bytes that are not UTF-8
// have been replaced.
std::vector<std::string> uniqueKeys(const std::vector<std::string>& names)
{
    std::vector<std::string> texts;
    texts.reserve(names.size());
    for (const std::string& name : names)
        texts.push_back(Json::parse(jsonText(name)).get<std::string>());
    return uniqueNames(std::move(texts));
}

std::vector<std::string> keysOfValues(const Report& report)
{
    std::vector<std::string> names;
    for (const Column& column : report.columns) {
        if (column.isValue())
            names.push_back(column.name);
    }
    return uniqueKeys(names);
}

Json columnList(const Report& report, const std::vector<std::string>& valueKeys)
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

Json rowObject(const Report& report, const Row& row, const std::vector<std::string>& valueKeys,
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
    const std::vector<std::string> valueKeys = keysOfValues(report);
    const std::vector<std::string> tagKeys = uniqueKeys(report.tags);
    output.write("{\"columns\": " + jsonText(columnList(report, valueKeys)) + ",\n \"" +
                 report.rowsName + "\": [");
    for (std::size_t index = 0; index < report.rowCount; ++index)
        output.write((index == 0 ? "\n  " : ",\n  ") +
                     jsonText(rowObject(report, report.row(index), valueKeys, tagKeys)));
    output.write("\n ]}\n");
}

} // namespace casetable
