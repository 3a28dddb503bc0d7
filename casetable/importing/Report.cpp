#include "casetable/importing/Report.h"

#include <map>
#include <set>
#include <utility>

#include <vtkTable.h>
#include <vtkVariant.h>

#include "casetable/explaining/Unmatched.h"
#include "casetable/importing/Import.h"
#include "crawler/private/UniqueName.h"
#include "host/AuxFileInfoInterface.h"

namespace casetable {

namespace {

void addValueColumns(const std::vector<MetadataPattern>& patterns, std::vector<Column>& columns)
{
    for (const MetadataPattern& pattern : patterns)
        columns.push_back({pattern.pattern, pattern.valueType == MetadataPattern::NumberValue
                                                ? Column::Kind::NumberValue
                                                : Column::Kind::StringValue});
}

void addValues(const Import& import, std::size_t caseIndex, std::vector<std::string>& cells)
{
    vtkTable& table = import.table();
    for (vtkIdType j = 0; j < table.GetNumberOfColumns(); ++j)
        cells.push_back(table.GetValue(static_cast<vtkIdType>(caseIndex), j).ToString());
}

std::map<std::string, std::string> tagsByPath(const Import& import,
                                              const std::vector<std::string>& tags)
{
    std::map<std::string, std::string> tagOf;
    if (import.auxFiles()) {
        for (std::size_t index = 0; index < import.auxFiles()->indexCount(); ++index) {
            for (const std::string& tag : tags) {
                for (const std::string& path : import.auxFiles()->filePaths(index, tag))
                    tagOf[path] = tag;
            }
        }
    }
    return tagOf;
}

} // namespace

Report caseReport(const Import& import, const std::vector<MetadataPattern>& patterns,
                  const std::vector<std::string>& tags)
{
    Report report;
    report.rowsName = "cases";
    report.columns.push_back({"case", Column::Kind::Index});
    addValueColumns(patterns, report.columns);
    report.tags = tags;
    report.rowCount = static_cast<std::size_t>(import.table().GetNumberOfRows());
    report.row = [&import, tags](std::size_t index) {
        Row row;
        row.cells.push_back(std::to_string(index));
        addValues(import, index, row.cells);
        for (const std::string& tag : tags) {
            const bool hasFiles = import.auxFiles() && index < import.auxFiles()->indexCount();
            row.filesPerTag.push_back(hasFiles ? import.auxFiles()->filePaths(index, tag)
                                               : std::vector<std::string>());
        }
        return row;
    };
    return report;
}

Report fileReport(const Import& import, const std::vector<MetadataPattern>& patterns,
                  const std::vector<std::string>& tags)
{
    Report report;
    report.rowsName = "files";
    report.columns.push_back({"path", Column::Kind::Text});
    report.columns.push_back({"case", Column::Kind::Index});
    addValueColumns(patterns, report.columns);
    if (!tags.empty())
        report.columns.push_back({"tag", Column::Kind::Text});

    const auto files = import.importer().identifiedAuxFiles();
    report.rowCount = files.size();
    report.row = [&import, files, tagOf = tagsByPath(import, tags),
                  hasTags = !tags.empty()](std::size_t index) {
        const AuxFileInfoInterface& file = *files[index];
        Row row;
        row.cells.push_back(file.filePath());
        row.cells.push_back(std::to_string(file.caseIndex()));
        addValues(import, file.caseIndex(), row.cells);
        if (hasTags) {
            const auto tag = tagOf.find(file.filePath());
            row.cells.push_back(tag == tagOf.end() ? std::string() : tag->second);
        }
        return row;
    };
    return report;
}

Report unmatchedReport(const Import& import, const std::vector<MetadataPattern>& patterns)
{
    Report report;
    report.rowsName = "unmatched";
    report.columns = {{"path", Column::Kind::Text},
                      {"marker", Column::Kind::Text},
                      {"reason", Column::Kind::Text}};
    const std::vector<UnmatchedFile> files = unmatchedFiles(import.importer(), patterns);
    report.rowCount = files.size();
    report.row = [files, &patterns](std::size_t index) {
        const UnmatchedFile& file = files[index];
        Row row;
        row.cells = {file.path, patterns[file.metadataIndex].pattern,
                     file.markerFound ? "no value" : "not found"};
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
