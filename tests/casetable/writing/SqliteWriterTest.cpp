#include "casetable/writing/SqliteWriter.h"

#include <cstddef>
#include <cstdio>
#include <random>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "casetable/system/ExitCode.h"
#include "casetable/system/Output.h"
#include "casetable/writing/SqliteFile.h"
#include "tests/casetable/support/Database.h"
#include "tests/casetable/support/TemporaryTree.h"

namespace casetable {
namespace tests {

namespace {

using Texts = std::vector<std::string>;

// A piece of a text that is UTF-8 if all its pieces are.
struct Piece {
    std::string bytes;
    std::string inName; // What becomes of it in a name.
};

const std::vector<Piece>& pieces()
{
    static const std::string replaced = "\xef\xbf\xbd";
    static const std::vector<Piece> pieces = {{"a", "a"},
                                              {"A", "A"},
                                              {"\"", "\""},
                                              {"'", "'"},
                                              {"(2)", "(2)"},
                                              {"case", "case"},
                                              {"Files", "Files"},
                                              {"\n", "\n"},
                                              {"0012", "0012"},
                                              {"1e3", "1e3"},
                                              {"\xc3\xa4", "\xc3\xa4"},
                                              {"\xc3\x84", "\xc3\x84"},
                                              {"\xf0\x9f\x98\x80", "\xf0\x9f\x98\x80"},
                                              {"\xef\xbf\xbf", "\xef\xbf\xbf"},
                                              {"\xff", replaced},
                                              {"\xc0\x80", "?"},
                                              {"\xed\xa0\x80", "?"}};
    return pieces;
}

class RandomTexts {
public:
    // Of pieces with an index below `end`; not empty.
    Texts next(std::size_t end)
    {
        texts_ = {"", ""};
        isUtf8_ = true;
        for (std::size_t k = 1 + below(3); k > 0; --k) {
            const std::size_t chosen = below(end);
            texts_[0] += pieces()[chosen].bytes;
            texts_[1] += pieces()[chosen].inName;
            isUtf8_ = isUtf8_ && chosen < 14;
        }
        return texts_;
    }

    bool isUtf8() const { return isUtf8_; }

    std::size_t below(std::size_t end) { return generator_() % end; }

private:
    std::mt19937 generator_{20240611};
    Texts texts_;
    bool isUtf8_ = true;
};

std::string upper(std::string text)
{
    for (char& c : text) {
        if (c >= 'a' && c <= 'z')
            c = static_cast<char>(c - 'a' + 'A');
    }
    return text;
}

// The names of the columns of values as they must come out, one by one from the left.
Texts plainNames(const Texts& names)
{
    Texts found;
    for (const std::string& name : names) {
        std::string candidate = name;
        for (int number = 2;; ++number) {
            bool taken = upper(candidate) == "CASE" || upper(candidate) == "FILES";
            for (const std::string& other : found)
                taken = taken || upper(other) == upper(candidate);
            if (!taken)
                break;
            candidate = name + "(" + std::to_string(number) + ")";
        }
        found.push_back(candidate);
    }
    return found;
}

std::string hex(const std::string& bytes)
{
    std::string text;
    for (const char c : bytes) {
        char digits[3];
        static_cast<void>(std::snprintf(digits, sizeof digits, "%02x",
                                        static_cast<unsigned>(static_cast<unsigned char>(c))));
        text += digits;
    }
    return text;
}

Report casesOf(const Texts& names, const std::vector<Texts>& rows)
{
    Report report;
    report.rowsName = "cases";
    report.columns.push_back({"case", Column::Kind::Count});
    for (const std::string& name : names)
        report.columns.push_back({name, Column::Kind::StringValue});
    report.columns.push_back({"files", Column::Kind::Count});
    report.rowCount = rows.size();
    report.row = [rows](std::size_t index) {
        Row row;
        row.cells = {std::to_string(index)};
        row.cells.insert(row.cells.end(), rows[index].begin(), rows[index].end());
        row.cells.emplace_back("1");
        return row;
    };
    return report;
}

std::string written(const TemporaryTree& tree, const Database& database)
{
    Output output(tree.path("out"));
    writeDatabase(database, output);
    output.commit();
    EXPECT_EQ(faultsOf(tree.path("out")), "ok");
    return tree.path("out");
}

} // namespace

TEST(SqliteWriter, TellsRandomNamesApartAndKeepsRandomTexts)
{
    const TemporaryTree tree;
    RandomTexts random;
    for (int run = 0; run < 60; ++run) {
        Texts names;
        Texts inNames;
        Texts cells;
        DatabaseRow expected = {"0"};
        for (std::size_t j = 1 + random.below(8); j > 0; --j) {
            const Texts name = random.next(15);
            names.push_back(name[0]);
            inNames.push_back(name[1]);
            cells.push_back(random.below(8) == 0 ? "" : random.next(pieces().size())[0]);
            expected.push_back(cells.back().empty() ? "NULL"
                               : random.isUtf8()    ? "'" + cells.back() + "'"
                                                    : "x'" + hex(cells.back()) + "'");
        }
        expected.emplace_back("1");
        SCOPED_TRACE(testing::PrintToString(names));
        Database database;
        database.cases = casesOf(names, {cells});
        const std::string file = written(tree, database);

        Texts found;
        for (const DatabaseRow& row : ask(file, "SELECT name FROM pragma_table_info('cases')"))
            found.push_back(row[0].substr(1, row[0].size() - 2));
        Texts columns = plainNames(inNames);
        columns.insert(columns.begin(), "case");
        columns.emplace_back("files");
        EXPECT_EQ(found, columns);
        EXPECT_EQ(ask(file, "SELECT * FROM cases"), std::vector<DatabaseRow>({expected}));
    }
}

TEST(SqliteWriter, WritesAsMuchAsItIsGiven)
{
    const TemporaryTree tree;
    Database database;
    database.cases = casesOf({}, {});
    database.about = {{"key", std::string("a\0b", 3)}, {"empty", ""}};

    const std::string file = written(tree, database);

    EXPECT_EQ(ask(file, "SELECT * FROM about"),
              std::vector<DatabaseRow>({{"'key'", std::string("'a\0b'", 5)}, {"'empty'", "''"}}));
    EXPECT_EQ(ask(file, "SELECT name FROM sqlite_master WHERE type = 'table'"),
              std::vector<DatabaseRow>({{"'cases'"}, {"'files'"}, {"'about'"}}));
}

TEST(SqliteWriter, TakesAsManyColumnsAsSqliteDoes)
{
    const TemporaryTree tree;
    const std::size_t most = SqliteFile::mostColumns();
    ASSERT_GT(most, 100u);
    Database database;
    // Beside "case" and "files". All have the same name.
    database.cases = casesOf(Texts(most - 2, "a"), {Texts(most - 2, "x")});
    const std::string file = written(tree, database);
    EXPECT_EQ(ask(file, "SELECT \"a(" + std::to_string(most - 2) + ")\" FROM cases"),
              std::vector<DatabaseRow>({{"'x'"}}));

    const std::string before = tree.content("out");
    database.cases = casesOf(Texts(most - 1, "a"), {});
    Output output(file);
    EXPECT_THROW(writeDatabase(database, output), Failure);
    EXPECT_EQ(tree.content("out"), before);
    EXPECT_EQ(tree.names("."), std::set<std::string>({"out"}));
}

} // namespace tests
} // namespace casetable
