#include "casetable/writing/SqliteWriter.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstddef>
#include <iterator>
#include <set>

#include <sys/stat.h>

#include <utf8.h>

#include "casetable/system/Output.h"
#include "casetable/writing/SqliteFile.h"
#include "crawler/private/PathReading.h"
#include "crawler/private/UniqueName.h"

namespace casetable {

namespace {

void add(SqliteInsertion& row, const Column& column, const std::string& cell)
{
    double number = 0;
    switch (contentOf(column, cell)) {
    case Content::Number:
        if (!column.isValue())
            return row.addCount(std::stoull(cell));
        if (reading::convertsToNumber(cell, number) && std::isfinite(number))
            return row.addNumber(number);
        break;
    case Content::Text:
        return row.addText(cell);
    case Content::Nothing:
        break;
    }
    row.addNull();
}

// The name as SQLite compares it: in small letters, of which there are only those of ASCII for it
// and for the "C" locale, in which the program stays.
std::string folded(std::string name)
{
    for (char& c : name)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return name;
}

std::string quoted(const std::string& name)
{
    std::string text = "\"";
    for (const char c : name)
        text += c == '"' ? std::string("\"\"") : std::string(1, c);
    return text + '"';
}

// The columns of the table of cases, divided by commas.
std::string caseDefinitions(const std::vector<Column>& columns)
{
    std::set<std::string> taken = {"case", "files"};
    std::string text = R"("case" INTEGER PRIMARY KEY)";
    for (const Column& column : columns) {
        if (!column.isValue())
            continue;
        std::string name;
        utf8::replace_invalid(column.name.begin(), column.name.end(), std::back_inserter(name));
        name = uniqueName(
            name, [&taken](const std::string& other) { return taken.count(folded(other)) != 0; });
        taken.insert(folded(name));
        text += ", " + quoted(name) + (column.isNumber() ? " REAL" : " TEXT");
    }
    return text + ", files INTEGER";
}

void writeCases(const Report& cases, const SqliteFile& file)
{
    file.run("CREATE TABLE cases(" + caseDefinitions(cases.columns) + ')');
    std::vector<std::size_t> written;
    for (std::size_t j = 0; j < cases.columns.size(); ++j) {
        if (!cases.columns[j].isAux())
            written.push_back(j);
    }
    SqliteInsertion insertion(file, "cases", written.size());
    for (std::size_t index = 0; index < cases.rowCount; ++index) {
        const Row row = cases.row(index);
        for (const std::size_t j : written)
            add(insertion, cases.columns[j], row.cells[j]);
        insertion.insert();
    }
}

void writeFiles(const FileRows& files, const SqliteFile& file)
{
    file.run(R"(CREATE TABLE files(path TEXT PRIMARY KEY, "case" INTEGER REFERENCES cases)"
             ") WITHOUT ROWID");
    SqliteInsertion insertion(file, "files", 2);
    for (std::size_t index = 0; index < files.count; ++index) {
        const FileRow row = files.file(index);
        const std::string path(row.path); // Which stays until it is inserted.
        insertion.addText(path);
        insertion.addCount(row.caseIndex);
        insertion.insert();
    }
    file.run(R"(CREATE INDEX files_by_case ON files("case"))");
}

void writeAux(const Report& cases, const SqliteFile& file)
{
    std::vector<std::string> tags;
    for (const Column& column : cases.columns) {
        if (column.kind == Column::Kind::AuxPath)
            tags.push_back(column.name);
    }
    if (tags.empty())
        return;
    file.run(R"(CREATE TABLE aux("case" INTEGER REFERENCES cases, tag TEXT, )"
             "path TEXT REFERENCES files)");
    SqliteInsertion insertion(file, "aux", 3);
    for (std::size_t index = 0; index < cases.rowCount; ++index) {
        const Row row = cases.row(index);
        for (std::size_t tag = 0; tag < tags.size(); ++tag) {
            for (const std::string& path : row.filesPerTag[tag]) {
                insertion.addCount(index);
                insertion.addText(tags[tag]);
                insertion.addText(path);
                insertion.insert();
            }
        }
    }
}

void writeUnmatched(const Report& unmatched, const SqliteFile& file)
{
    std::string definitions;
    for (const Column& column : unmatched.columns)
        definitions += (definitions.empty() ? "" : ", ") + quoted(column.name) + " TEXT";
    file.run("CREATE TABLE unmatched(" + definitions + ')');
    SqliteInsertion insertion(file, "unmatched", unmatched.columns.size());
    for (std::size_t index = 0; index < unmatched.rowCount; ++index) {
        const Row row = unmatched.row(index);
        for (std::size_t j = 0; j < row.cells.size(); ++j)
            add(insertion, unmatched.columns[j], row.cells[j]);
        insertion.insert();
    }
}

void writeAbout(const Database& database, const SqliteFile& file)
{
    file.run("CREATE TABLE about(key TEXT PRIMARY KEY, value TEXT)");
    SqliteInsertion insertion(file, "about", 2);
    for (const auto& [key, value] : database.about) {
        insertion.addText(key);
        insertion.addText(value);
        insertion.insert();
    }
}

} // namespace

void checkDatabase(const std::vector<Column>& caseColumns, const Output& output)
{
    const std::string file = output.replacedFile();
    if (file.empty())
        output.fail("no regular file, which a database must be");
    for (const char* const ending : {"-journal", "-wal"}) {
        struct stat status = {};
        // An empty journal holds nothing, while a write-ahead log is in use as long as it is there.
        if (::stat((file + ending).c_str(), &status) == 0 &&
            (status.st_size > 0 || std::string(ending) == "-wal"))
            output.fail("another program is writing it, or has broken off, as " + file + ending +
                        " is there");
    }
    const auto count = static_cast<std::size_t>(
        std::count_if(caseColumns.begin(), caseColumns.end(),
                      [](const Column& column) { return !column.isAux(); }));
    if (count > SqliteFile::mostColumns())
        output.fail("the table of cases has " + std::to_string(count) +
                    " columns, and SQLite takes " + std::to_string(SqliteFile::mostColumns()));
}

void writeDatabase(const Database& database, Output& output)
{
    checkDatabase(database.cases.columns, output);
    const SqliteFile file(output);
    writeCases(database.cases, file);
    writeFiles(database.files, file);
    writeAux(database.cases, file);
    if (database.unmatched)
        writeUnmatched(*database.unmatched, file);
    writeAbout(database, file);
    file.commit();
}

} // namespace casetable
