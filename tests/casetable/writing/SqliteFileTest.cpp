#include "casetable/writing/SqliteFile.h"

#include <csignal>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "casetable/system/ExitCode.h"
#include "casetable/system/Interrupt.h"
#include "casetable/system/Output.h"
#include "tests/casetable/support/Database.h"
#include "tests/casetable/support/OrdinaryUser.h"
#include "tests/casetable/support/TemporaryTree.h"

namespace casetable {
namespace tests {

namespace {

using Names = std::set<std::string>;
using Rows = std::vector<DatabaseRow>;

// Of which there is no end.
const std::string endlessStatement =
    "CREATE TABLE t AS WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n) "
    "SELECT count(*) FROM n";

} // namespace

TEST(SqliteFile, HoldsCellsOfEachType)
{
    const TemporaryTree tree;
    Output output(tree.path("file"));
    {
        const SqliteFile file(output);
        file.run("CREATE TABLE t(a, b, c, d, e)");
        SqliteInsertion insertion(file, "t", 5);
        for (int row = 0; row < 2; ++row) {
            const std::string text("\xc3\xa4\0'", 4);
            const std::string bytes("a\xff\0b", 4);
            insertion.addNull();
            insertion.addNumber(-0.5);
            insertion.addCount(7);
            insertion.addText(text);
            insertion.addText(bytes);
            insertion.insert();
        }
        file.commit();
    }
    output.commit();

    const DatabaseRow row = {"NULL", "-0.5", "7", std::string("'\xc3\xa4\0''", 6), "x'61ff0062'"};
    EXPECT_EQ(ask(tree.path("file"), "SELECT * FROM t"), Rows({row, row}));
    EXPECT_EQ(faultsOf(tree.path("file")), "ok");
    EXPECT_EQ(tree.names("."), Names({"file"}));
}

TEST(SqliteFile, LeavesNoOtherFileBesideItsOwnWhileItIsWritten)
{
    const TemporaryTree tree;
    Output output(tree.path("file"));
    const SqliteFile file(output);
    file.run("CREATE TABLE t(a)");
    // More than the cache holds, and sorted.
    file.run("INSERT INTO t WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n "
             "WHERE i < 10000) SELECT hex(randomblob(500)) FROM n");
    file.run("CREATE INDEX i ON t(a)");

    EXPECT_EQ(tree.names(".").size(), 1u);
    EXPECT_GT(tree.content(*tree.names(".").begin()).size(), 10'000'000u);
}

TEST(SqliteFile, TellsWhatSqliteComplainsOf)
{
    const TemporaryTree tree;
    Output output(tree.path("file"));
    const SqliteFile file(output);
    try {
        file.run("CREATE TABLE t(a, A)");
        ADD_FAILURE() << "no failure";
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.code, ExitCode::OutputFailed);
        EXPECT_EQ(failure.what(), tree.path("file") + ": duplicate column name: A");
    }
}

TEST(SqliteFile, StopsAStatementAtAnInterrupt)
{
    const TemporaryTree tree;
    inOwnProcess([&tree] {
        Output output(tree.path("file"));
        const SqliteFile file(output);
        catchInterrupts();
        raise(SIGTERM);
        try {
            file.run(endlessStatement);
        } catch (const Interrupted& interrupted) {
            EXPECT_EQ(interrupted.signal, SIGTERM);
        }
    });
    EXPECT_EQ(tree.names("."), Names());
}

TEST(SqliteFile, StopsBeforeARowAtAnInterrupt)
{
    const TemporaryTree tree;
    inOwnProcess([&tree] {
        Output output(tree.path("file"));
        const SqliteFile file(output);
        file.run("CREATE TABLE t(a)");
        SqliteInsertion insertion(file, "t", 1);
        catchInterrupts();
        insertion.addNull();
        insertion.insert();
        raise(SIGTERM);
        insertion.addNull();
        EXPECT_THROW(insertion.insert(), Interrupted);
    });
}

} // namespace tests
} // namespace casetable
