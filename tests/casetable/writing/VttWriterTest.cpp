#include "casetable/writing/VttWriter.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <new>
#include <random>
#include <string>
#include <vector>

#include <sys/resource.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "casetable/importing/Report.h"
#include "casetable/system/ExitCode.h"
#include "casetable/system/Output.h"
#include "tests/casetable/support/OrdinaryUser.h"
#include "tests/casetable/support/TemporaryTree.h"
#include "tests/casetable/support/Vtt.h"
#include "tests/support/Sanitizer.h"

namespace casetable {
namespace tests {

namespace {

using Texts = std::vector<std::string>;

// A report of these columns, each with its cells.
struct Given {
    Given(const std::string& name, Column::Kind kind, const Texts& cells)
        : column{name, kind}, cells(cells)
    {
    }

    Column column;
    Texts cells;
};

Report reportOf(const std::vector<Given>& given, std::size_t rowCount)
{
    Report report;
    report.rowsName = "cases";
    for (const Given& one : given)
        report.columns.push_back(one.column);
    report.rowCount = rowCount;
    report.row = [given](std::size_t index) {
        Row row;
        for (const Given& one : given)
            row.cells.push_back(one.cells.at(index));
        return row;
    };
    return report;
}

std::vector<VttColumn> writtenAndRead(const Report& report)
{
    const TemporaryTree tree;
    Output output(tree.path("table.vtt"));
    writeVtt(report, output);
    output.commit();
    return readVtt(tree.path("table.vtt"));
}

std::vector<VttColumn> writtenAndRead(const std::vector<Given>& given)
{
    return writtenAndRead(reportOf(given, given.front().cells.size()));
}

std::string digits(double value)
{
    char text[64];
    static_cast<void>(std::snprintf(text, sizeof text, "%.17g", value));
    return text;
}

const Column::Kind index = Column::Kind::Count;
const Column::Kind number = Column::Kind::NumberValue;
const Column::Kind text = Column::Kind::StringValue;

// Writes with more and more memory until it is enough.
void writeWithTooLittleMemory()
{
    std::mt19937 random(5);
    Texts cells(10000);
    for (std::string& cell : cells) {
        cell.resize(60);
        for (char& c : cell)
            c = static_cast<char>('!' + random() % 90);
    }
    const Report report = reportOf({{"M", text, cells}, {"N", text, cells}}, cells.size());
    const TemporaryTree tree;
    const auto write = [&](const std::string& file) {
        Output output(tree.path(file));
        writeVtt(report, output);
        output.commit();
    };
    inOwnProcess([&] { write("whole"); });
    const std::string whole = tree.content("whole");

    int failures = 0;
    int successes = 0;
    for (int quarters = 0; successes < 3 && quarters < 400; ++quarters) {
        inOwnProcess([&] {
            long pages = 0;
            std::ifstream("/proc/self/statm") >> pages;
            const rlim_t used = static_cast<rlim_t>(pages) * static_cast<rlim_t>(getpagesize());
            const rlimit limit = {used + (static_cast<rlim_t>(quarters) << 18), RLIM_INFINITY};
            const rlimit none = {RLIM_INFINITY, RLIM_INFINITY};
            // The toolkit's writer may use memory that it did not get. Such an end is no table,
            // too.
            static_cast<void>(std::signal(SIGSEGV, [](int) { _exit(0); }));
            setrlimit(RLIMIT_AS, &limit);
            try {
                write("table");
                setrlimit(RLIMIT_AS, &none);
            } catch (const std::bad_alloc&) {
                setrlimit(RLIMIT_AS, &none);
            } catch (const Failure& failure) {
                setrlimit(RLIMIT_AS, &none);
                EXPECT_EQ(failure.code, ExitCode::OutputFailed);
            }
        });
        if (tree.exists("table")) {
            ASSERT_TRUE(tree.content("table") == whole) << quarters;
            tree.remove("table");
            ++successes;
        } else {
            ++failures;
        }
    }
    EXPECT_EQ(successes, 3);
    EXPECT_GT(failures, 0);
}

// Ends a process in which the framework keeps its failures to itself.
[[noreturn]] void exitWithFailures()
{
    const testing::TestResult& result =
        *testing::UnitTest::GetInstance()->current_test_info()->result();
    for (int i = 0; i < result.total_part_count(); ++i)
        std::cerr << result.GetTestPartResult(i).message() << '\n';
    std::exit(result.Failed() ? 1 : 0);
}

} // namespace

TEST(VttWriter, KeepsIndicesAsIntegersNumbersAsDoublesAndTextsAsTexts)
{
    EXPECT_EQ(writtenAndRead({{"case", index, {"0", "1"}},
                              {"T", number, {"1.50", "-2e-3"}},
                              {"M", text, {"1", "2"}},
                              {"path", Column::Kind::Text, {"3", "b"}}}),
              std::vector<VttColumn>({{"case", "integers", {"0", "1"}},
                                      {"T", "doubles", {digits(1.5), digits(-2e-3)}},
                                      {"M", "texts", {"1", "2"}},
                                      {"path", "texts", {"3", "b"}}}));
}

TEST(VttWriter, HasNaNForNoValueAndForWhatIsNotFinite)
{
    EXPECT_EQ(writtenAndRead({{"T", number, {"1", "", "2", "inf", "-nan"}}}),
              std::vector<VttColumn>({{"T", "doubles", {"1", "nan", "2", "nan", "nan"}}}));
    EXPECT_EQ(writtenAndRead({{"T", number, {""}}}),
              std::vector<VttColumn>({{"T", "doubles", {"nan"}}}));
}

TEST(VttWriter, KeepsEveryBitOfADouble)
{
    EXPECT_EQ(writtenAndRead({{"T", number, {"0.1", "1e308", "4.9e-324", "-0", "+.5", "007"}}}),
              std::vector<VttColumn>({{"T",
                                       "doubles",
                                       {digits(0.1), digits(1e308), digits(4.9e-324), digits(-0.0),
                                        digits(0.5), digits(7)}}}));
}

TEST(VttWriter, KeepsEveryByteOfATextAndEmptyTexts)
{
    std::string bytes;
    for (int byte = 1; byte < 256; ++byte)
        bytes += static_cast<char>(byte);
    const Texts cells = {"",        bytes, "a\nb\r\nc", "\xff\xfe",     "<a href=\"&amp;\">", "]]>",
                         " edges ", "\t",  "\xc3",      "\xef\xbf\xbe", "\xed\xa0\x80",       ""};

    EXPECT_EQ(writtenAndRead({{"M", text, cells}}),
              std::vector<VttColumn>({{"M", "texts", cells}}));
}

TEST(VttWriter, KeepsTextsWhereverTheBlocksOfTheFileEnd)
{
    std::mt19937 random(20240811);
    Texts cells(3000);
    for (std::string& cell : cells) {
        cell.resize(random() % 120);
        for (char& c : cell)
            c = static_cast<char>(1 + random() % 255);
    }
    cells[1000] = std::string(100'000, '\xff');

    EXPECT_EQ(writtenAndRead({{"M", text, cells}, {"N", text, cells}}),
              std::vector<VttColumn>({{"M", "texts", cells}, {"N", "texts", cells}}));
}

TEST(VttWriter, WritesATableWithoutRows)
{
    EXPECT_EQ(
        writtenAndRead(reportOf({{"case", index, {}}, {"T", number, {}}, {"M", text, {}}}, 0)),
        std::vector<VttColumn>(
            {{"case", "integers", {}}, {"T", "doubles", {}}, {"M", "texts", {}}}));
}

TEST(VttWriter, WritesATableWithoutColumns)
{
    EXPECT_EQ(writtenAndRead(reportOf({}, 0)), std::vector<VttColumn>());
    EXPECT_EQ(writtenAndRead(reportOf({}, 3)), std::vector<VttColumn>());
}

TEST(VttWriter, MakesNamesPrintableAndUnique)
{
    const Texts names = {"a\nb", "a\\nb", "\xff",         "<\"&'>",   "T",     "T",
                         " ",    "\x1b",  "\xef\xbf\xbe", "\xc3\xa4", "&amp;", "]]>"};
    std::vector<Given> given;
    for (const std::string& name : names)
        given.push_back({name, text, {"x"}});

    Texts read;
    for (const VttColumn& column : writtenAndRead(given))
        read.push_back(column.name);

    EXPECT_EQ(read, Texts({"a\\nb", "a\\nb(2)", "\\xff", "\\x3c\\x22\\x26'\\x3e", "T", "T(2)", " ",
                           "\\x1b", "\\u{fffe}", "\xc3\xa4", "\\x26amp;", "]]\\x3e"}));
}

TEST(VttWriter, KeepsAnyByteInANameWellFormed)
{
    std::vector<Given> given;
    for (int byte = 1; byte < 256; ++byte)
        given.push_back({std::string(1, static_cast<char>(byte)), text, {std::to_string(byte)}});

    const std::vector<VttColumn> columns = writtenAndRead(given);

    ASSERT_EQ(columns.size(), 255u);
    for (int byte = 1; byte < 256; ++byte)
        EXPECT_EQ(columns[byte - 1].cells, Texts({std::to_string(byte)}));
}

TEST(VttWriter, WritesTheFirstFileUnderATagAndTheirNumber)
{
    EXPECT_EQ(writtenAndRead({{"log", Column::Kind::AuxPath, {"a,\"\nb\xff", ""}},
                              {"log files", Column::Kind::AuxCount, {"4", "0"}}}),
              std::vector<VttColumn>(
                  {{"log", "texts", {"a,\"\nb\xff", ""}}, {"log files", "integers", {"4", "0"}}}));
}

TEST(VttWriter, NeverLeavesOutAPartWhereMemoryRunsOut)
{
    SKIP_WHERE_SANITIZERS_NEED_ADDRESSES();
    // In this style the program is started again. Memory that other tests have freed here would
    // stand in for the memory that is refused.
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            writeWithTooLittleMemory();
            exitWithFailures();
        },
        testing::ExitedWithCode(0), "");
}

} // namespace tests
} // namespace casetable
