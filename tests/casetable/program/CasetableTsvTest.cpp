#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/casetable/support/Csv.h"
#include "tests/casetable/support/Program.h"
#include "tests/casetable/support/TemporaryTree.h"

namespace casetable {
namespace tests {

namespace {

// Reads lines of fields divided by tabs, in which a backslash and a letter stand for one character.
std::vector<Record> parseTsv(const std::string& bytes)
{
    std::vector<Record> records;
    Record record(1);
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        if (bytes[i] == '\t') {
            record.emplace_back();
        } else if (bytes[i] == '\n') {
            records.push_back(record);
            record = Record(1);
        } else if (bytes[i] == '\\') {
            const std::string escapes = "\\tnr";
            const std::size_t which = escapes.find(bytes.at(++i));
            EXPECT_NE(which, std::string::npos) << testing::PrintToString(bytes);
            record.back() += "\\\t\n\r"[which % escapes.size()];
        } else {
            EXPECT_NE(bytes[i], '\r') << testing::PrintToString(bytes);
            record.back() += bytes[i];
        }
    }
    EXPECT_EQ(record, Record(1)) << "the last line has no end";
    return records;
}

} // namespace

TEST(CasetableTsv, DividesFieldsByTabsAndEndsLinesByLineFeeds)
{
    const TemporaryTree tree({"results/wing_a/T1/file", "results/wing_/T2/file"});

    EXPECT_EQ(run(tree, {"-s", "wing_", "-n", "T", "-f", "tsv", "results"}),
              prints("case\twing_\tT\tfiles\n0\t\t2\t1\n1\ta\t1\t1\n"));
}

TEST(CasetableTsv, EscapesOnlyBackslashTabLineFeedAndCarriageReturn)
{
    const TemporaryTree tree({"results/T1/a\\b\tc\nd\re \",;'\x1b\xff"});

    EXPECT_EQ(run(tree, {"-n", "T", "--files", "-f", "tsv", "results"}),
              prints("path\tcase\tT\nT1/a\\\\b\\tc\\nd\\re \",;'\x1b\xff\t0\t1\n"));
}

TEST(CasetableTsv, EscapesTheHeaderToo)
{
    const TemporaryTree tree({"results/a\tb1/file"});

    EXPECT_EQ(run(tree, {"-n", "a\tb", "-f", "tsv", "results"}),
              prints("case\ta\\tb\tfiles\n0\t1\t1\n"));
}

TEST(CasetableTsv, KeepsEveryByteOfAName)
{
    const TemporaryTree tree;
    const std::string bytes = bytesOfNames();
    tree.file("results/T1/" + bytes);

    const Outcome outcome = run(tree, {"-n", "T", "--files", "-f", "tsv", "results"});

    EXPECT_EQ(parseTsv(outcome.output),
              std::vector<Record>({{"path", "case", "T"}, {"T1/" + bytes, "0", "1"}}))
        << outcome;
}

TEST(CasetableTsv, HoldsTheFirstFileUnderATagAndTheirNumber)
{
    const TemporaryTree tree(
        {"results/T1/a\t,\".log", "results/T1/b.log", "results/T2/c\n.log", "results/T3/none"});

    const Outcome outcome = run(tree, {"-n", "T", "-a", "*.log=log", "-f", "tsv", "results"});

    EXPECT_EQ(outcome.output, "case\tT\tlog\tlog files\tfiles\n"
                              "0\t1\tT1/a\\t,\".log\t2\t2\n"
                              "1\t2\tT2/c\\n.log\t1\t1\n"
                              "2\t3\t\t0\t1\n");
}

TEST(CasetableTsv, IsTheHeaderAloneWithoutCases)
{
    const TemporaryTree tree({"results/"});

    EXPECT_EQ(run(tree, {"-n", "T", "-s", "M", "-f", "tsv", "results"}),
              ends(1, "case\tT\tM\tfiles\n", "no file matched: there is no file below results"));
}

} // namespace tests
} // namespace casetable
