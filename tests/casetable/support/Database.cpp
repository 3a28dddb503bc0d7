#include "tests/casetable/support/Database.h"

#include <cstddef>
#include <cstdio>
#include <memory>
#include <stdexcept>

#include <sqlite3.h>

namespace casetable {
namespace tests {

namespace {

struct Close {
    void operator()(sqlite3* database) const { sqlite3_close(database); }
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
    void operator()(char* text) const { sqlite3_free(text); }
};

std::string bytesOf(sqlite3_stmt* statement, int column)
{
    const auto* const bytes = static_cast<const char*>(sqlite3_column_blob(statement, column));
    const int size = sqlite3_column_bytes(statement, column);
    return size == 0 ? std::string() : std::string(bytes, static_cast<std::size_t>(size));
}

std::string cell(sqlite3_stmt* statement, int column)
{
    std::string text;
    char digits[3];
    switch (sqlite3_column_type(statement, column)) {
    case SQLITE_NULL:
        return "NULL";
    case SQLITE_INTEGER:
        return std::to_string(sqlite3_column_int64(statement, column));
    case SQLITE_FLOAT: {
        const std::unique_ptr<char, Close> shown(
            sqlite3_mprintf("%!.15g", sqlite3_column_double(statement, column)));
        return shown.get();
    }
    case SQLITE_TEXT:
        return "'" + bytesOf(statement, column) + "'";
    default:
        for (const char c : bytesOf(statement, column)) {
            const auto byte = static_cast<unsigned>(static_cast<unsigned char>(c));
            static_cast<void>(std::snprintf(digits, sizeof digits, "%02x", byte));
            text += digits;
        }
        return "x'" + text + "'";
    }
}

} // namespace

std::vector<DatabaseRow> ask(const std::string& path, const std::string& sql)
{
    sqlite3* opened = nullptr;
    int result = sqlite3_open_v2(path.c_str(), &opened, SQLITE_OPEN_READONLY, nullptr);
    const std::unique_ptr<sqlite3, Close> database(opened);
    sqlite3_stmt* prepared = nullptr;
    if (result == SQLITE_OK)
        result = sqlite3_prepare_v2(opened, sql.c_str(), -1, &prepared, nullptr);
    const std::unique_ptr<sqlite3_stmt, Close> statement(prepared);
    std::vector<DatabaseRow> rows;
    while (prepared != nullptr && (result = sqlite3_step(prepared)) == SQLITE_ROW) {
        rows.emplace_back();
        for (int column = 0; column < sqlite3_column_count(prepared); ++column)
            rows.back().push_back(cell(prepared, column));
    }
    if (result != SQLITE_DONE)
        throw std::runtime_error(sql + ": " + sqlite3_errmsg(opened));
    return rows;
}

std::string faultsOf(const std::string& path)
{
    std::string faults;
    for (const std::string sql : {"PRAGMA integrity_check", "PRAGMA foreign_key_check"}) {
        for (const DatabaseRow& row : ask(path, sql)) {
            for (const std::string& text : row)
                faults += (faults.empty() ? "" : " ") + text;
        }
    }
    return faults == "'ok'" ? "ok" : faults;
}

} // namespace tests
} // namespace casetable
