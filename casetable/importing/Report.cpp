#include "casetable/importing/Report.h"

#include <set>
#include <utility>

#include "casetable/importing/CaseTable.h"
#include "crawler/private/UniqueName.h"

namespace casetable {

namespace {

void addValueColumns(const std::vector<MetadataPattern>& patterns, std::vector<Column>& columns)
{
    for (const MetadataPattern& pattern : patterns)
        columns.push_back({pattern.pattern, pattern.valueType == MetadataPattern::NumberValue
                                                ? Column::Kind::NumberValue
                                                : Column::Kind::StringValue});
}

// Whether the column's name is the program's, so that there is no other of that name beside it.
bool isOwn(const Column& column)
{
    return !column.isValue() && !column.isAux();
}

// Makes `name` one that is not taken yet, and takes it.
void take(std::string& name, std::set<std::string>& taken)
{
    name = uniqueName(name, [&taken](const std::string& other) { return taken.count(other) != 0; });
    taken.insert(name);
}

} // namespace

Content contentOf(const Column& column, std::string_view cell)
{
    if (cell.empty())
        return Content::Nothing;
    return column.isNumber() ? Content::Number : Content::Text;
}

std::vector<Column> caseColumns(const std::vector<MetadataPattern>& patterns,
                                const std::vector<std::string>& tags)
{
    std::vector<Column> columns = {{"case", Column::Kind::Count}};
    addValueColumns(patterns, columns);
    for (const std::string& tag : tags) {
        columns.push_back({tag, Column::Kind::AuxPath});
        columns.push_back({tag + " files", Column::Kind::AuxCount});
    }
    columns.push_back({"files", Column::Kind::Count});
    return columns;
}

std::vector<Column> fileColumns(const std::vector<MetadataPattern>& patterns,
                                const std::vector<std::string>& tags)
{
    std::vector<Column> columns = {{"path", Column::Kind::Text}, {"case", Column::Kind::Count}};
    addValueColumns(patterns, columns);
    if (!tags.empty())
        columns.push_back({"tag", Column::Kind::Text});
    return columns;
}

Report caseReport(const CaseTable& table)
{
    Report report;
    report.rowsName = "cases";
    report.columns = caseColumns(table.patterns, table.tags);
    report.rowCount = table.caseCount();
    report.row = [&table, columnCount = report.columns.size()](std::size_t index) {
        Row row;
        row.cells.reserve(columnCount);
        row.cells.push_back(std::to_string(index));
        table.appendCells(index, row.cells);
        for (std::size_t tag = 0; tag < table.tags.size(); ++tag) {
            std::vector<std::string> files = table.auxFilesOf(index, tag);
            row.cells.push_back(files.empty() ? std::string() : files.front());
            row.cells.push_back(std::to_string(files.size()));
            row.filesPerTag.push_back(std::move(files));
        }
        row.cells.push_back(std::to_string(table.fileCounts[index]));
        return row;
    };
    return report;
}

Report fileReport(const CaseTable& table, FileRows files)
{
    Report report;
    report.rowsName = "files";
    report.columns = fileColumns(table.patterns, table.tags);
    report.rowCount = files.count;
    report.row = [&table, files = std::move(files),
                  columnCount = report.columns.size()](std::size_t index) {
        const FileRow file = files.file(index);
        Row row;
        row.cells.reserve(columnCount);
        row.cells.emplace_back(file.path);
        row.cells.push_back(std::to_string(file.caseIndex));
        table.appendCells(file.caseIndex, row.cells);
        if (!table.tags.empty())
            row.cells.emplace_back(file.tag);
        return row;
    };
    return report;
}

std::vector<std::string> uniqueNames(std::vector<std::string> names)
{
    std::set<std::string> taken;
    for (std::string& name : names)
        take(name, taken);
    return names;
}

std::vector<std::string> uniqueHeader(const std::vector<Column>& columns)
{
    std::set<std::string> taken = {"case", "path", "files"};
    for (const Column& column : columns) {
        if (isOwn(column))
            taken.insert(column.name);
    }
    std::vector<std::string> names;
    for (const Column& column : columns) {
        names.push_back(column.name);
        if (!isOwn(column))
            take(names.back(), taken);
    }
    return names;
}

} // namespace casetable
