#ifndef CASETABLE_WRITING_SQLITEFILE_H
#define CASETABLE_WRITING_SQLITEFILE_H

#include <cstddef>
#include <memory>
#include <string>

struct sqlite3;
struct sqlite3_stmt;

namespace casetable {

class Output;

/// A new SQLite database, written in one transaction into the temporary file of an output. Used by
/// one thread of the program alone.
///
/// All but the destructor throw Failure with ExitCode::OutputFailed, the path of the output and the
/// reason when something fails, and Interrupted when a signal came in.
class SqliteFile {
public:
    /// Begins the transaction. The output must replace a file, and outlive this object.
    explicit SqliteFile(Output& output);

    /// Closes the file, which is of no use unless commit() was called.
    ~SqliteFile();
    SqliteFile(const SqliteFile&) = delete;
    SqliteFile& operator=(const SqliteFile&) = delete;

    /// Runs a statement that gives no rows.
    void run(const std::string& sql) const;

    /// Ends the transaction. To be called last, and once.
    void commit() const;

    /// The number of columns that SQLite takes in one table.
    static std::size_t mostColumns();

private:
    friend class SqliteInsertion;
    void check(int result) const;
    int systemError(int result) const;

    const Output& output_;
    sqlite3* database_ = nullptr;
};

/// A statement that puts rows into a table, one after another. Throws as SqliteFile does, which
/// must outlive it.
class SqliteInsertion {
public:
    /// For a table that has so many columns.
    SqliteInsertion(const SqliteFile& file, const std::string& table, std::size_t columnCount);
    ~SqliteInsertion();
    SqliteInsertion(const SqliteInsertion&) = delete;
    SqliteInsertion& operator=(const SqliteInsertion&) = delete;

    /// Adds a cell to the row: NULL.
    void addNull();
    /// The same with a number, which is finite.
    void addNumber(double number);
    /// The same with a number of things.
    void addCount(std::size_t count);
    /// The same with TEXT, or with a BLOB of the same bytes if these are not UTF-8. They must last
    /// until insert().
    void addText(const std::string& text);

    /// Inserts the row, which must be complete, and begins the next.
    void insert();

private:
    const SqliteFile& file_;
    sqlite3_stmt* statement_ = nullptr;
    int cells_ = 0; // That the row has so far.
};

} // namespace casetable

#endif
