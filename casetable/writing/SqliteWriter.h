#ifndef CASETABLE_WRITING_SQLITEWRITER_H
#define CASETABLE_WRITING_SQLITEWRITER_H

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "casetable/importing/FileRows.h"
#include "casetable/importing/Report.h"

namespace casetable {

class Output;

/// What a database holds.
struct Database {
    Report cases;                    ///< As caseReport() makes it.
    std::optional<Report> unmatched; ///< The files in no case, if they are wanted.

    /// The files of the cases, in byte order of path.
    FileRows files;

    /// What the run was: names and values.
    std::vector<std::pair<std::string, std::string>> about;
};

/// Looks, before there is anything to write, whether a database of cases with these columns, those
/// of Database::cases, can be written to the output. Throws Failure with ExitCode::OutputFailed,
/// the path and the reason if
/// - the output is not a file that is replaced: SQLite goes back and forth in its file,
/// - there are more columns than SQLite takes, or
/// - a journal of SQLite stands beside an earlier file: who opens the new one would have changes
///   put into it that were meant for the earlier one.
void checkDatabase(const std::vector<Column>& caseColumns, const Output& output);

/// Writes one SQLite database; the caller commits the output. Calls checkDatabase() first.
///
///     cases("case" INTEGER PRIMARY KEY, NAME REAL or TEXT, ..., files INTEGER)
///
///     files(path TEXT PRIMARY KEY, "case" INTEGER REFERENCES cases) WITHOUT ROWID
///
///     aux("case" INTEGER REFERENCES cases, tag TEXT, path TEXT REFERENCES files)
///
///     unmatched(path TEXT, NAME TEXT, reason TEXT)
///
///     about(key TEXT PRIMARY KEY, value TEXT)
///
/// "aux" is there if there are tags, and "unmatched" if it is wanted.
///
/// "files" has an index by case. A number is REAL and no value NULL, as is a number that is not
/// finite. A text is TEXT if it is UTF-8, and otherwise a BLOB of its bytes. In names, bytes that
/// are not UTF-8 become U+FFFD; those that are then equal, or differ only in letters' case, get
/// "(2)", "(3)" ... behind them, but "case" and "files" keep their names.
///
/// Throws what checkDatabase() and Report::row throw, Failure with ExitCode::OutputFailed, the path
/// and the reason when it cannot be written, and Interrupted when a signal came in.
void writeDatabase(const Database& database, Output& output);

} // namespace casetable

#endif
