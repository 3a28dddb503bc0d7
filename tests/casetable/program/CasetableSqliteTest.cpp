#include <set>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "tests/casetable/support/Database.h"
#include "tests/casetable/support/Program.h"
#include "tests/casetable/support/TemporaryTree.h"

namespace casetable {
namespace tests {

namespace {

using Names = std::set<std::string>;
using Rows = std::vector<DatabaseRow>;

// Imports results/ in the tree to out.db, which must come out sound and alone.
void import(const TemporaryTree& tree, Arguments arguments, const Outcome& expected = prints(""))
{
    arguments.insert(arguments.end(), {"-o", "out.db", "results"});
    EXPECT_EQ(run(tree, arguments), expected);
    EXPECT_EQ(faultsOf(tree.path("out.db")), "ok");
    for (const std::string& name : tree.names("."))
        EXPECT_TRUE(name == "out.db" || name == "results") << name;
}

Rows askOut(const TemporaryTree& tree, const std::string& sql)
{
    return ask(tree.path("out.db"), sql);
}

const std::string columnsOfCases = "SELECT name, type, pk FROM pragma_table_info('cases')";

} // namespace

TEST(CasetableSqlite, HoldsCasesTheirFilesAndWhatTheRunWas)
{
    const TemporaryTree tree({"results/wing_A/T0.80/a", "results/wing_A/T0.80/b", //
                              "results/wing_B/T.5e1/c", "results/none"});

    import(tree, {"-s", "wing_", "-n", "T"});

    EXPECT_EQ(askOut(tree, "SELECT sql FROM sqlite_master WHERE sql IS NOT NULL ORDER BY rowid"),
              Rows({{R"('CREATE TABLE cases("case" INTEGER PRIMARY KEY, "wing_" TEXT, "T" REAL, )"
                     "files INTEGER)'"},
                    {R"('CREATE TABLE files(path TEXT PRIMARY KEY, "case" INTEGER REFERENCES )"
                     "cases) WITHOUT ROWID'"},
                    {R"('CREATE INDEX files_by_case ON files("case")')"},
                    {"'CREATE TABLE about(key TEXT PRIMARY KEY, value TEXT)'"}}));
    EXPECT_EQ(askOut(tree, "SELECT * FROM cases"),
              Rows({{"0", "'A'", "0.8", "2"}, {"1", "'B'", "5.0", "1"}}));
    EXPECT_EQ(
        askOut(tree, "SELECT * FROM files"),
        Rows({{"'wing_A/T0.80/a'", "0"}, {"'wing_A/T0.80/b'", "0"}, {"'wing_B/T.5e1/c'", "1"}}));
}

TEST(CasetableSqlite, TellsWhatTheRunWas)
{
    const TemporaryTree tree({"results/it's T1/file"});

    import(tree, {"-n", "it's T", "-q"});
    EXPECT_EQ(askOut(tree, "SELECT * FROM about WHERE key != 'time'"),
              Rows({{"'program'", "'casetable'"},
                    {"'version'", "'" CASETABLE_VERSION "'"},
                    {"'command line'", R"('casetable -n 'it'\''s T' -q -o out.db results')"},
                    {"'root'", "'results'"}}));
    EXPECT_EQ(askOut(tree, "SELECT strftime('%Y-%m-%dT%H:%M:%SZ', value) = value, "
                           "julianday(value) BETWEEN julianday('now') - 1 AND julianday('now') "
                           "FROM about WHERE key = 'time'"),
              Rows({{"1", "1"}}));
}

TEST(CasetableSqlite, NamesTheListInPlaceOfARoot)
{
    const TemporaryTree tree;
    tree.file("list", "T1/file\n");
    for (const auto& [given, told] :
         {std::pair<std::string, std::string>("list", "'list'"), {"-", "'standard input'"}}) {
        Setting setting = in(tree);
        setting.input = tree.path("list");
        EXPECT_EQ(run({"-n", "T", "-o", "out.db", "--from-list", given}, setting), prints(""));
        EXPECT_EQ(askOut(tree, "SELECT value FROM about WHERE key = 'root'"), Rows({{told}}));
    }
}

TEST(CasetableSqlite, KeepsTextsThatLookLikeNumbers)
{
    const TemporaryTree tree({"results/run_0012/file", "results/run_1e3/file"});

    import(tree, {"-s", "run_"});

    EXPECT_EQ(askOut(tree, "SELECT run_ FROM cases"), Rows({{"'0012'"}, {"'1e3'"}}));
}

TEST(CasetableSqlite, HoldsNoValueAsNull)
{
    const TemporaryTree tree(
        {"results/T1/file", "results/T2-a/file", "results/T1e999/file", "results/T3/"});

    import(tree, {"-t", "T{T:number}[-{part}]/file"});
    EXPECT_EQ(askOut(tree, "SELECT T, part FROM cases"),
              Rows({{"1.0", "NULL"}, {"NULL", "NULL"}, {"2.0", "'a'"}}));
}

TEST(CasetableSqlite, HoldsANumberThatDoesNotConvertAsNull)
{
    const TemporaryTree tree({"results/T1D+07/file"});

    import(tree, {"-n", "T"});

    EXPECT_EQ(askOut(tree, "SELECT T, files FROM cases"), Rows({{"NULL", "1"}}));
}

TEST(CasetableSqlite, HoldsANumberThatIsNotFiniteAsNull)
{
    const TemporaryTree tree({"results/inf", "results/-inf", "results/nan", "results/1e308"});

    import(tree, {"-t", "{x:number,.*}"});

    EXPECT_EQ(askOut(tree, "SELECT path, x FROM files JOIN cases USING (\"case\") ORDER BY path"),
              Rows({{"'-inf'", "NULL"},
                    {"'1e308'", "1.0e+308"}, //
                    {"'inf'", "NULL"},
                    {"'nan'", "NULL"}}));
}

TEST(CasetableSqlite, HoldsWhatIsNotUtf8AsBytes)
{
    const TemporaryTree tree({"results/run_\xff_\n'x/a", "results/run_\xc3\xa4/a"});

    import(tree, {"-s", "run_", "-a", "*a=t\xfe"});

    EXPECT_EQ(askOut(tree, "SELECT run_ FROM cases"), Rows({{"'\xc3\xa4'"}, {"x'ff5f0a2778'"}}));
    EXPECT_EQ(askOut(tree, "SELECT path FROM files ORDER BY \"case\""),
              Rows({{"'run_\xc3\xa4/a'"}, {"x'72756e5fff5f0a27782f61'"}}));
    EXPECT_EQ(askOut(tree, "SELECT tag, path FROM aux ORDER BY \"case\""),
              Rows({{"x'74fe'", "'run_\xc3\xa4/a'"}, {"x'74fe'", "x'72756e5fff5f0a27782f61'"}}));
}

TEST(CasetableSqlite, NamesColumnsApartAsSqliteTakesThem)
{
    const TemporaryTree tree({"results/Case1a/case2a/a\"b3a/A\"B4a/\xff"
                              "5a/\xfe"
                              "6a/Files7a/\");--8a/\xc3\x84x9a/\xc3\xa4x0a/"
                              "file"});

    import(tree,
           {"-s", "Case", "-s", "case",  "-s", "a\"b",   "-s", "A\"B",      "-s", "\xff",
            "-s", "\xfe", "-s", "Files", "-s", "\");--", "-s", "\xc3\x84x", "-s", "\xc3\xa4x"});

    EXPECT_EQ(askOut(tree, columnsOfCases), Rows({{"'case'", "'INTEGER'", "1"},
                                                  {"'Case(2)'", "'TEXT'", "0"},
                                                  {"'case(3)'", "'TEXT'", "0"},
                                                  {"'a\"b'", "'TEXT'", "0"},
                                                  {"'A\"B(2)'", "'TEXT'", "0"},
                                                  {"'\xef\xbf\xbd'", "'TEXT'", "0"},
                                                  {"'\xef\xbf\xbd(2)'", "'TEXT'", "0"},
                                                  {"'Files(2)'", "'TEXT'", "0"},
                                                  {"'\");--'", "'TEXT'", "0"},
                                                  {"'\xc3\x84x'", "'TEXT'", "0"},
                                                  {"'\xc3\xa4x'", "'TEXT'", "0"},
                                                  {"'files'", "'INTEGER'", "0"}}));
    EXPECT_EQ(askOut(tree, "SELECT * FROM cases"),
              Rows({{"0", "'1a'", "'2a'", "'3a'", "'4a'", "'5a'", "'6a'", "'7a'", "'8a'", "'9a'",
                     "'0a'", "1"}}));
}

TEST(CasetableSqlite, ListsTheFilesUnderEachTag)
{
    const TemporaryTree tree(
        {"results/T1/a.log", "results/T1/b.log", "results/T1/c.dat", "results/T2/d"});

    import(tree, {"-n", "T", "-a", "*.log=logs", "-a", "*.dat=case"});

    EXPECT_EQ(askOut(tree, "SELECT sql FROM sqlite_master WHERE name = 'aux'"),
              Rows({{R"('CREATE TABLE aux("case" INTEGER REFERENCES cases, tag TEXT, )"
                     "path TEXT REFERENCES files)'"}}));
    EXPECT_EQ(askOut(tree, "SELECT * FROM aux"), Rows({{"0", "'logs'", "'T1/a.log'"},
                                                       {"0", "'logs'", "'T1/b.log'"},
                                                       {"0", "'case'", "'T1/c.dat'"}}));
    EXPECT_EQ(askOut(tree, "SELECT * FROM cases"), Rows({{"0", "1.0", "3"}, {"1", "2.0", "1"}}));
}

TEST(CasetableSqlite, HasATableOfUnmatchedFilesBesideTheCases)
{
    const TemporaryTree tree({"results/T1/a", "results/none", "results/x\xff"});

    import(tree, {"-n", "T", "--unmatched"});
    EXPECT_EQ(askOut(tree, "SELECT path, marker, reason FROM unmatched"),
              Rows({{"'none'", "'T'", "'not found'"}, {"x'78ff'", "'T'", "'not found'"}}));
    EXPECT_EQ(askOut(tree, "SELECT * FROM cases"), Rows({{"0", "1.0", "1"}}));
    EXPECT_EQ(askOut(tree, "SELECT * FROM files"), Rows({{"'T1/a'", "0"}}));

    import(tree, {"-t", "T{T:number}/*", "--unmatched"});
    EXPECT_EQ(askOut(tree, "SELECT path, template FROM unmatched"),
              Rows({{"'none'", "'T{T:number}/*'"}, {"x'78ff'", "'T{T:number}/*'"}}));
}

TEST(CasetableSqlite, IsTheSameWithRowsForFiles)
{
    const TemporaryTree tree({"results/T1/a", "results/T1/b", "results/T2/c"});
    const std::string tables = "SELECT name FROM sqlite_master";
    import(tree, {"-n", "T"});
    const Rows cases = askOut(tree, "SELECT * FROM cases");
    const Rows files = askOut(tree, "SELECT * FROM files");
    const Rows names = askOut(tree, tables);

    import(tree, {"-n", "T", "--files"});

    EXPECT_EQ(askOut(tree, "SELECT * FROM cases"), cases);
    EXPECT_EQ(askOut(tree, "SELECT * FROM files"), files);
    EXPECT_EQ(askOut(tree, tables), names);
}

TEST(CasetableSqlite, HasEmptyTablesWithoutCases)
{
    const TemporaryTree tree({"results/"});

    import(tree, {"-n", "T", "-a", "*.x=tag"},
           fails(1, "no file matched: there is no file below results"));

    EXPECT_EQ(askOut(tree, columnsOfCases), Rows({{"'case'", "'INTEGER'", "1"},
                                                  {"'T'", "'REAL'", "0"}, //
                                                  {"'files'", "'INTEGER'", "0"}}));
    for (const std::string table : {"cases", "files", "aux"})
        EXPECT_EQ(askOut(tree, "SELECT * FROM " + table), Rows()) << table;
}

TEST(CasetableSqlite, RefusesMoreColumnsThanSqliteTakesBeforeAnythingIsWalked)
{
    const TemporaryTree tree;
    tree.file("out.db", "earlier");
    Arguments arguments = {"-o", "out.db", "missing"};
    for (int i = 0; i < 1999; ++i) // Beside "case" and "files".
        arguments.insert(arguments.end(), {"-n", "a"});

    EXPECT_EQ(run(tree, arguments),
              fails(4, "out.db: the table of cases has 2001 columns, and SQLite takes 2000"));
    EXPECT_EQ(tree.content("out.db"), "earlier");
    EXPECT_EQ(tree.names("."), Names({"out.db"}));
}

TEST(CasetableSqlite, TakesTheRowsOfManyFiles)
{
    const TemporaryTree tree;
    std::string paths;
    for (int i = 0; i < 100'000; ++i)
        paths += "T" + std::to_string(i % 7000) + "/" + std::to_string(i) + "\n";
    tree.file("list", paths);

    EXPECT_EQ(run(tree, {"-n", "T", "--from-list", "list", "-o", "out.db"}), prints(""));

    EXPECT_EQ(faultsOf(tree.path("out.db")), "ok");
    EXPECT_EQ(askOut(tree, "SELECT count(*), sum(files), count(DISTINCT T) FROM cases"),
              Rows({{"7000", "100000", "7000"}}));
    EXPECT_EQ(askOut(tree, "SELECT count(*) FROM files JOIN cases USING (\"case\") "
                           "WHERE path NOT LIKE 'T' || CAST(T AS INTEGER) || '/%'"),
              Rows({{"0"}}));
}

TEST(CasetableSqlite, IsChosenByEitherEndingAndByName)
{
    const TemporaryTree tree({"results/T1/file"});
    for (const Arguments& arguments :
         {Arguments{"-o", "a.db"}, {"-o", "a.SQLite"}, {"-f", "sqlite", "-o", "a.csv"}}) {
        Arguments all = {"-n", "T", "results"};
        all.insert(all.end(), arguments.begin(), arguments.end());
        EXPECT_EQ(run(tree, all), prints(""));
        EXPECT_EQ(ask(tree.path(arguments.back()), "SELECT * FROM cases"),
                  Rows({{"0", "1.0", "1"}}));
    }
}

TEST(CasetableSqlite, GoesToAFileOfAnyName)
{
    const std::string deep(200, 'd');
    const TemporaryTree tree({"results/T1/file", deep + "/" + deep + "/" + deep + "/",
                              "file:x?mode=ro/", "\xff\n'%41/", ":memory:/"});
    for (const std::string& file :
         {deep + "/" + deep + "/" + deep + "/out.db", std::string("file:x?mode=ro/out.db"),
          std::string("\xff\n'%41/out.db"), std::string(":memory:/out.db"),
          std::string("-out?vfs=x#.db"), std::string("file::memory:.db")}) {
        EXPECT_EQ(run(tree, {"-n", "T", "--output=" + file, "results"}), prints(""));
        // SQLite itself is not asked by the same name, of which it may not think the same.
        tree.file("copy", tree.content(file));
        EXPECT_EQ(ask(tree.path("copy"), "SELECT * FROM cases"), Rows({{"0", "1.0", "1"}}));
    }
    EXPECT_EQ(tree.names(deep + "/" + deep + "/" + deep), Names({"out.db"}));
    EXPECT_EQ(tree.names("file:x?mode=ro"), Names({"out.db"}));
}

TEST(CasetableSqlite, ReplacesAnEarlierDatabaseAtOnceAndKeepsItsMode)
{
    const TemporaryTree tree({"results/T1/file"});
    import(tree, {"-n", "T"});
    tree.setMode("out.db", 0640);
    tree.file("results/T2/file");

    import(tree, {"-n", "T"});

    EXPECT_EQ(askOut(tree, "SELECT T FROM cases"), Rows({{"1.0"}, {"2.0"}}));
    EXPECT_EQ(tree.mode("out.db"), 0640u);
}

TEST(CasetableSqlite, FollowsALinkToAnEarlierDatabase)
{
    const TemporaryTree tree({"results/T1/file"});
    tree.file("folder/earlier", "earlier");
    tree.link("out.db", "folder/earlier");

    EXPECT_EQ(run(tree, {"-n", "T", "-o", "out.db", "results"}), prints(""));

    EXPECT_TRUE(tree.isLink("out.db"));
    EXPECT_EQ(ask(tree.path("folder/earlier"), "SELECT T FROM cases"), Rows({{"1.0"}}));
    EXPECT_EQ(tree.names("folder"), Names({"earlier"}));
}

TEST(CasetableSqlite, NeedsARegularFileBeforeAnythingIsWalked)
{
    const TemporaryTree tree;
    tree.pipe("pipe");
    tree.file("file", "earlier");
    const auto writing = [](const std::string& file) {
        return Arguments{"-n", "T", "-f", "sqlite", "-o", file, "missing"};
    };

    for (const std::string file : {"pipe", "/dev/null", "/dev/stdout", "/dev/fd/1"})
        EXPECT_EQ(run(tree, writing(file)),
                  fails(4, file + ": no regular file, which a database must be"));
    const std::string noOutput =
        "--format sqlite: there is no --output; a database cannot go to standard output";
    EXPECT_EQ(run(tree, {"-n", "T", "-f", "sqlite", "missing"}), fails(2, noOutput));
    EXPECT_EQ(run(tree, writing("-")), fails(2, noOutput));
    EXPECT_EQ(tree.names("."), Names({"file", "pipe"}));
}

TEST(CasetableSqlite, SparesAnEarlierDatabaseThatIsBeingWritten)
{
    const TemporaryTree tree({"results/T1/file"});
    tree.file("out.db", "earlier");
    tree.link("link.db", "out.db");
    for (const std::string ending : {"-journal", "-wal"}) {
        tree.file("out.db" + ending, "changes");
        const std::string reason =
            ": another program is writing it, or has broken off, as out.db" + ending + " is there";
        EXPECT_EQ(run(tree, {"-n", "T", "-o", "out.db", "missing"}), fails(4, "out.db" + reason));
        EXPECT_EQ(
            run(tree, {"-n", "T", "-o", "link.db", "missing"}),
            fails(4, "link.db: another program is writing it, or has broken off, as ./out.db" +
                         ending + " is there"));
        EXPECT_EQ(tree.content("out.db"), "earlier");
        tree.file("out.db" + ending, "");
        const int code = run(tree, {"-n", "T", "-o", "out.db", "results"}).exitCode;
        EXPECT_EQ(code, ending == "-wal" ? 4 : 0) << "an empty journal holds no changes";
        tree.remove("out.db" + ending);
        tree.file("out.db", "earlier");
    }

    EXPECT_EQ(run(tree, {"-n", "T", "-o", "out.db", "results"}), prints(""));
    EXPECT_EQ(askOut(tree, "SELECT T FROM cases"), Rows({{"1.0"}}));
}

TEST(CasetableSqlite, IsNotAskedForWhereTextIsPrinted)
{
    const TemporaryTree tree({"results/T1/file"});

    EXPECT_EQ(run(tree, {"-n", "T", "--explain", "T1/file", "-o", "out.db"}), prints(""));
    EXPECT_EQ(tree.content("out.db").substr(0, 7), "T1/file");
}

} // namespace tests
} // namespace casetable
