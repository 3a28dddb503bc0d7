#include "casetable/options/ColumnNames.h"

#include <algorithm>
#include <iterator>
#include <optional>

#include "casetable/importing/CaseTable.h"
#include "casetable/importing/Report.h"
#include "casetable/options/CommandLine.h"
#include "casetable/options/OptionTable.h"
#include "casetable/options/Options.h"

namespace casetable {

namespace {

using Texts = std::vector<std::string>;

// The names of the columns of values, in the order of the patterns.
Texts valueNames(const Options& options)
{
    const std::vector<Column> columns = caseColumns(options.reading.patterns(), {});
    const Texts header = uniqueHeader(columns);
    Texts names;
    for (std::size_t j = 0; j < columns.size(); ++j) {
        if (columns[j].isValue())
            names.push_back(header[j]);
    }
    return names;
}

// The names of all columns of the table.
Texts columnNames(const Options& options)
{
    if (options.rows == Rows::Missing)
        return missingValues(options);
    const std::vector<MetadataPattern>& patterns = options.reading.patterns();
    const Texts tags = tagsOf(options.identifiers);
    return uniqueHeader(options.rows == Rows::Files ? fileColumns(patterns, tags)
                                                    : caseColumns(patterns, tags));
}

std::optional<std::size_t> columnNamed(const std::string& name, const Texts& names)
{
    const auto found = std::find(names.begin(), names.end(), name);
    if (found == names.end())
        return std::nullopt;
    return static_cast<std::size_t>(std::distance(names.begin(), found));
}

std::optional<SortKey> keyNamed(const std::string& text, const Texts& names)
{
    if (const std::optional<std::size_t> column = columnNamed(text, names))
        return SortKey{*column, false};
    if (text.empty() || text.front() != '-')
        return std::nullopt;
    const std::optional<std::size_t> column = columnNamed(text.substr(1), names);
    return column ? std::optional<SortKey>({*column, true}) : std::nullopt;
}

Texts divided(const std::string& text)
{
    Texts parts(1);
    for (const char c : text) {
        if (c == ',')
            parts.emplace_back();
        else
            parts.back() += c;
    }
    return parts;
}

// A name may hold blanks and commas, so that quotes must show where it ends.
Texts quoted(Texts names)
{
    for (std::string& name : names)
        name = "'" + name + "'";
    return names;
}

// What `values` name, of the columns of these names. A value is taken whole if it can be, as names
// may hold commas.
template <class Find>
auto parseNames(OptionId option, const Texts& values, const Texts& names, const Find& find)
{
    std::vector<typename decltype(find(std::string(), names))::value_type> all;
    for (const std::string& value : values) {
        const Texts parts = find(value, names) ? Texts{value} : divided(value);
        for (const std::string& part : parts) {
            const auto found = find(part, names);
            if (!found)
                failUsage(std::string(optionOf(option).name) + " '" + part +
                          "': there is no such column; choose " + choice(quoted(names)));
            all.push_back(*found);
        }
    }
    return all;
}

} // namespace

std::vector<std::size_t> parseMissing(const std::vector<std::string>& values,
                                      const Options& options)
{
    const Texts names = valueNames(options);
    std::vector<std::size_t> columns = parseNames(OptionId::Missing, values, names, columnNamed);
    for (auto column = columns.begin(); column != columns.end(); ++column) {
        if (std::find(columns.begin(), column, *column) != column)
            failUsage("--missing '" + names[*column] + "': the column is given twice");
    }
    if (columns.size() == 1)
        failUsage("--missing '" + names[columns.front()] + "': expected two columns or more");
    return columns;
}

std::vector<SortKey> parseSort(const std::vector<std::string>& values, const Options& options)
{
    return parseNames(OptionId::Sort, values, columnNames(options), keyNamed);
}

std::vector<std::string> missingValues(const Options& options)
{
    const Texts names = valueNames(options);
    Texts values;
    for (const std::size_t column : options.missingColumns)
        values.push_back(names[column]);
    return values;
}

std::vector<std::string> sortValues(const Options& options)
{
    const Texts names = columnNames(options);
    Texts values;
    for (const SortKey& key : options.sortKeys)
        values.push_back((key.isDescending ? "-" : "") + names[key.column]);
    return values;
}

} // namespace casetable
