#include "casetable/writing/JsonWriter.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include <nlohmann/json.hpp>

#include "casetable/importing/Report.h"
#include "casetable/system/Output.h"
#include "crawler/private/PathReading.h"

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

// The names of those columns of the report for which `isListed` holds.
template <class Question>
std::vector<std::string> namesOf(const Report& report, const Question& isListed)
{
    std::vector<std::string> names;
    for (const Column& column : report.columns) {
        if (isListed(column))
            names.push_back(column.name);
    }
    return names;
}

// The names as keys, each with its colon, as they stand in the text of an object.
std::vector<std::string> keyTexts(const std::vector<std::string>& names)
{
    std::vector<std::string> texts;
    for (const std::string& key : uniqueKeys(names))
        texts.push_back(jsonText(key) + ':');
    return texts;
}

std::string columnList(const Report& report)
{
    const std::vector<std::string> keys =
        uniqueKeys(namesOf(report, std::mem_fn(&Column::isValue)));
    Json columns = Json::array();
    for (const Column& column : report.columns) {
        if (column.isValue())
            columns.push_back({{"name", keys[columns.size()]},
                               {"type", column.isNumber() ? "number" : "string"}});
    }
    return jsonText(columns);
}

std::string valueText(const Column& column, const std::string& cell)
{
    switch (contentOf(column, cell)) {
    case Content::Number:
        return column.isValue() ? jsonNumber(cell) : cell;
    case Content::Text:
        return jsonText(cell);
    case Content::Nothing:
        break;
    }
    return "null";
}

void append(std::string& members, const std::string& key, const std::string& value)
{
    members += (members.empty() ? "" : ",") + key + value;
}

// Makes the objects of rows in which values and files under tags are objects of their own.
class NestedRows {
public:
    explicit NestedRows(const Report& report)
        : report_(report),
          keys_(keyTexts(namesOf(
              report, [](const Column& column) { return !column.isValue() && !column.isAux(); }))),
          valueKeys_(keyTexts(namesOf(report, std::mem_fn(&Column::isValue)))),
          tagKeys_(keyTexts(namesOf(
              report, [](const Column& column) { return column.kind == Column::Kind::AuxPath; })))
    {
    }

    std::string object(const Row& row) const
    {
        std::string own;
        std::string values;
        std::size_t ownCount = 0;
        std::size_t valueCount = 0;
        for (std::size_t j = 0; j < row.cells.size(); ++j) {
            const Column& column = report_.columns[j];
            const std::string text = column.isAux() ? "" : valueText(column, row.cells[j]);
            if (column.isValue())
                append(values, valueKeys_[valueCount++], text);
            else if (!column.isAux())
                append(own, keys_[ownCount++], text);
        }
        std::string aux;
        for (std::size_t j = 0; j < row.filesPerTag.size(); ++j)
            append(aux, tagKeys_[j], jsonText(row.filesPerTag[j]));
        if (!values.empty())
            append(own, "\"values\":", '{' + values + '}');
        if (!aux.empty())
            append(own, "\"aux\":", '{' + aux + '}');
        return '{' + own + '}';
    }

private:
    const Report& report_;
    const std::vector<std::string> keys_;
    const std::vector<std::string> valueKeys_;
    const std::vector<std::string> tagKeys_;
};

} // namespace

void writeJson(const Report& report, Output& output)
{
    const NestedRows rows(report);
    output.write("{\"columns\": " + columnList(report) + ",\n \"" + report.rowsName + "\": [");
    for (std::size_t index = 0; index < report.rowCount; ++index)
        output.write((index == 0 ? "\n  " : ",\n  ") + rows.object(report.row(index)));
    output.write("\n ]}\n");
}

void writeJsonLines(const Report& report, Output& output)
{
    const std::vector<std::string> keys = keyTexts(uniqueHeader(report.columns));
    for (std::size_t index = 0; index < report.rowCount; ++index) {
        const Row row = report.row(index);
        std::string members;
        std::size_t tag = 0;
        for (std::size_t j = 0; j < row.cells.size(); ++j) {
            const Column& column = report.columns[j];
            if (column.kind == Column::Kind::AuxPath)
                append(members, keys[j], jsonText(row.filesPerTag[tag++]));
            else if (column.kind != Column::Kind::AuxCount)
                append(members, keys[j], valueText(column, row.cells[j]));
        }
        output.write('{' + members + "}\n");
    }
}

std::string jsonNumber(const std::string& text)
{
    double value = 0;
    if (!reading::convertsToNumber(text, value) || !std::isfinite(value))
        return "null";
    auto next = text.begin();
    std::string number = *next == '-' ? "-" : "";
    if (*next == '-' || *next == '+')
        ++next;
    // Takes the digits that come next, or else one zero.
    const auto takeDigits = [&] {
        const auto begin = next;
        next = std::find_if_not(next, text.end(), reading::isDigit);
        number += begin == next ? "0" : std::string(begin, next);
    };
    while (next != text.end() && *next == '0' && next + 1 != text.end() &&
           reading::isDigit(next[1]))
        ++next;
    takeDigits();
    if (next != text.end() && *next == '.') {
        number += *next++;
        takeDigits();
    }
    return number.append(next, text.end());
}

} // namespace casetable
