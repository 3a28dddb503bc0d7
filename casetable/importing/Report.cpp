#include "casetable/importing/Report.h"

#include <map>
#include <set>
#include <utility>

#include "casetable/importing/CaseTable.h"
#include "crawler/private/UniqueName.h"

namespace casetable {

namespace {

void addValueColumns(const CaseTable& table, std::vector<Column>& columns)
{
    for (const MetadataPattern& pattern : table.patterns)
        columns.push_back({pattern.pattern, pattern.valueType == MetadataPattern::NumberValue
                                                ? Column::Kind::NumberValue
                                                : Column::Kind::StringValue});
}

std::map<std::string, std::string> tagsByPath(const CaseTable& table)
{
    std::map<std::string, std::string> tagOf;
    for (std::size_t caseIndex = 0; caseIndex < table.caseCount; ++caseIndex) {
        for (std::size_t tag = 0; tag < table.tags.size(); ++tag) {
            for (const std::string& path : table.auxFilesOf(caseIndex, tag))
                tagOf[path] = table.tags[tag];
        }
    }
    return tagOf;
}

} // namespace

Report caseReport(const CaseTable& table)
{
    Report report;
    report.rowsName = "cases";
    report.columns.push_back({"case", Column::Kind::Index});
    addValueColumns(table, report.columns);
    report.tags = table.tags;
    report.rowCount = table.caseCount;
    report.row = [&table](std::size_t index) {
        Row row;
        row.cells.push_back(std::to_string(index));
        table.appendCells(index, row.cells);
        for (std::size_t tag = 0; tag < table.tags.size(); ++tag)
            row.filesPerTag.push_back(table.auxFilesOf(index, tag));
        return row;
    };
    return report;
}

Report fileReport(const CaseTable& table,
                  std::vector<boost::shared_ptr<AuxFileInfoInterface>> files)
{
    Report report;
    report.rowsName = "files";
    report.columns.push_back({"path", Column::Kind::Text});
    report.columns.push_back({"case", Column::Kind::Index});
    addValueColumns(table, report.columns);
    if (!table.tags.empty())
        report.columns.push_back({"tag", Column::Kind::Text});

    report.rowCount = files.size();
    report.row = [&table, files = std::move(files), tagOf = tagsByPath(table)](std::size_t index) {
        const AuxFileInfoInterface& file = *files[index];
        Row row;
        row.cells.push_back(file.filePath());
        row.cells.push_back(std::to_string(file.caseIndex()));
        table.appendCells(file.caseIndex(), row.cells);
        if (!table.tags.empty()) {
            const auto tag = tagOf.find(file.filePath());
            row.cells.push_back(tag == tagOf.end() ? std::string() : tag->second);
        }
        return row;
    };
    return report;
}

std::vector<std::string> uniqueNames(std::vector<std::string> names)
{
    std::set<std::string> taken;
    for (std::string& name : names) {
        name = uniqueName(name,
                          [&taken](const std::string& other) { return taken.count(other) != 0; });
        taken.insert(name);
    }
    return names;
}

std::vector<std::string> uniqueHeader(const Report& report)
{
    std::vector<std::string> names;
    for (const Column& column : report.columns)
        names.push_back(column.name);
    names.insert(names.end(), report.tags.begin(), report.tags.end());
    return uniqueNames(std::move(names));
}

} // namespace casetable
