#include "casetable/JsonWriter.h"

#include <string>

#include <nlohmann/json.hpp>

#include "casetable/Output.h"
#include "casetable/Report.h"

namespace casetable {

namespace {

using Json = nlohmann::ordered_json;

std::string text(const Json& json)
{
    const bool asciiOnly = true;
    return json.dump(-1, ' ', asciiOnly, Json::error_handler_t::replace);
}

Json columns(const Report& report)
{
    Json columns = Json::array();
    for (const Column& column : report.columns) {
        if (column.isValue())
            columns.push_back(
                {{"name", column.name},
                 {"type", column.kind == Column::Kind::NumberValue ? "number" : "string"}});
    }
    return columns;
}

Json object(const Report& report, const Row& row)
{
    Json object;
    for (std::size_t j = 0; j < report.columns.size(); ++j) {
        const Column& column = report.columns[j];
        if (column.isValue())
            object["values"][column.name] = row.cells[j];
        else if (column.kind == Column::Kind::Index)
            object[column.name] = std::stoull(row.cells[j]);
        else
            object[column.name] = row.cells[j];
    }
    for (std::size_t j = 0; j < report.tags.size(); ++j)
        object["aux"][report.tags[j]] = row.filesPerTag[j];
    return object;
}

} // namespace

void writeJson(const Report& report, Output& output)
{
    output.write("{\"columns\": " + text(columns(report)) + ",\n \"" + report.rowsName + "\": [");
    for (std::size_t index = 0; index < report.rowCount; ++index)
        output.write((index == 0 ? "\n  " : ",\n  ") + text(object(report, report.row(index))));
    output.write("\n ]}\n");
}

} // namespace casetable
