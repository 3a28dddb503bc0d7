#include "casetable/writing/SqliteFile.h"

#include <cerrno>
#include <climits>
#include <cstring>
#include <new>
#include <system_error>

#include <sqlite3.h>

#include <utf8.h>

#include "casetable/system/Interrupt.h"
#include "casetable/system/Output.h"

namespace casetable {

namespace {

// So many steps of SQLite's machine take some milliseconds.
const int stepsBetweenLooks = 100000;

// Files as SQLite is to see them: without locks, as no other program knows of the file that is
// written, and by paths as they stand, as SQLite itself makes them whole and then takes no more
// than 512 bytes.
class PlainFiles : public sqlite3_vfs {
public:
    PlainFiles() : sqlite3_vfs()
    {
        // With its locks between threads, a whole run takes one part in twenty longer.
        sqlite3_config(SQLITE_CONFIG_SINGLETHREAD);
        sqlite3_vfs& files = *this;
        files = *sqlite3_vfs_find("unix-none");
        zName = "casetable";
        mxPathname = PATH_MAX;
        xFullPathname = copyPath;
        sqlite3_vfs_register(this, 0);
    }

private:
    static int copyPath(sqlite3_vfs* /*files*/, const char* path, int size, char* copy)
    {
        const std::size_t bytes = std::strlen(path) + 1;
        if (bytes > static_cast<std::size_t>(size))
            return SQLITE_CANTOPEN;
        std::memcpy(copy, path, bytes);
        return SQLITE_OK;
    }
};

// Opens what SQLite calls `path`. After a failure too, `database` is to be closed.
int open(const std::string& path, sqlite3*& database)
{
    static const PlainFiles files;
    return sqlite3_open_v2(path.c_str(), &database, SQLITE_OPEN_READWRITE, files.zName);
}

// The path to a file, which SQLite could else take for more than a path, if it begins with "file:".
std::string plainPath(const std::string& path)
{
    return path.front() == '/' ? path : "./" + path;
}

} // namespace

SqliteFile::SqliteFile(Output& output) : output_(output)
{
    const int result = open(plainPath(output.temporaryFile()), database_);
    try {
        check(result);
        sqlite3_progress_handler(
            database_, stepsBetweenLooks, [](void*) { return isInterrupted() ? 1 : 0; }, nullptr);
        // If anything fails, the output throws the file away, and otherwise sees to it that all is
        // on the disk. Larger pages than SQLite's own are written faster.
        run("PRAGMA page_size=8192; PRAGMA locking_mode=EXCLUSIVE; PRAGMA journal_mode=OFF; "
            "PRAGMA synchronous=OFF; PRAGMA temp_store=MEMORY; PRAGMA secure_delete=OFF; BEGIN");
    } catch (...) {
        sqlite3_close(database_);
        throw;
    }
}

SqliteFile::~SqliteFile()
{
    sqlite3_close(database_);
}

void SqliteFile::run(const std::string& sql) const
{
    check(sqlite3_exec(database_, sql.c_str(), nullptr, nullptr, nullptr));
}

void SqliteFile::commit() const
{
    run("COMMIT");
}

std::size_t SqliteFile::mostColumns()
{
    sqlite3* database = nullptr;
    if (open(":memory:", database) != SQLITE_OK) {
        sqlite3_close(database);
        throw std::bad_alloc();
    }
    const int most = sqlite3_limit(database, SQLITE_LIMIT_COLUMN, -1);
    sqlite3_close(database);
    return static_cast<std::size_t>(most);
}

// Throws if the result of a call is a failure.
void SqliteFile::check(int result) const
{
    if (result == SQLITE_OK)
        return;
    throwIfInterrupted();
    if (result == SQLITE_NOMEM)
        throw std::bad_alloc();
    const int error = systemError(result);
    output_.fail(error != 0 ? std::generic_category().message(error) : sqlite3_errmsg(database_));
}

// The error of the system behind a failure; 0 if there is none.
int SqliteFile::systemError(int result) const
{
    if (result == SQLITE_FULL)
        return ENOSPC;
    if (result == SQLITE_CANTOPEN)
        return sqlite3_system_errno(database_);
    // What cannot be read is not always called so: a disk that fails makes a malformed database.
    int error = 0;
    sqlite3_file_control(database_, "main", SQLITE_FCNTL_LAST_ERRNO, &error);
    return error;
}

SqliteInsertion::SqliteInsertion(const SqliteFile& file, const std::string& table,
                                 std::size_t columnCount)
    : file_(file)
{
    std::string sql = "INSERT INTO " + table + " VALUES (?";
    for (std::size_t j = 1; j < columnCount; ++j)
        sql += ", ?";
    sql += ')';
    file_.check(sqlite3_prepare_v2(file_.database_, sql.c_str(), -1, &statement_, nullptr));
}

SqliteInsertion::~SqliteInsertion()
{
    sqlite3_finalize(statement_);
}

void SqliteInsertion::addNull()
{
    file_.check(sqlite3_bind_null(statement_, ++cells_));
}

void SqliteInsertion::addNumber(double number)
{
    file_.check(sqlite3_bind_double(statement_, ++cells_, number));
}

void SqliteInsertion::addCount(std::size_t count)
{
    file_.check(sqlite3_bind_int64(statement_, ++cells_, static_cast<sqlite3_int64>(count)));
}

void SqliteInsertion::addText(const std::string& text)
{
    ++cells_;
    file_.check(
        utf8::is_valid(text.begin(), text.end())
            ? sqlite3_bind_text64(statement_, cells_, text.data(), text.size(), SQLITE_STATIC,
                                  SQLITE_UTF8)
            : sqlite3_bind_blob64(statement_, cells_, text.data(), text.size(), SQLITE_STATIC));
}

void SqliteInsertion::insert()
{
    throwIfInterrupted();
    sqlite3_step(statement_);
    file_.check(sqlite3_reset(statement_)); // It gives the result of the step.
    cells_ = 0;
}

} // namespace casetable
