#ifndef TESTS_CASETABLE_SUPPORT_DATABASE_H
#define TESTS_CASETABLE_SUPPORT_DATABASE_H

#include <string>
#include <vector>

namespace casetable {
namespace tests {

using DatabaseRow = std::vector<std::string>;

/// What SQLite itself answers when it is asked in the database at `path`, which it may not change.
/// Each cell tells its type: NULL, 5, 5.0, 'five' with the bytes as they stand, or x'ff'. Throws
/// std::runtime_error when SQLite complains.
std::vector<DatabaseRow> ask(const std::string& path, const std::string& sql);

/// What SQLite finds wrong in the database, also a row that refers to none; "ok" for nothing.
std::string faultsOf(const std::string& path);

} // namespace tests
} // namespace casetable

#endif
