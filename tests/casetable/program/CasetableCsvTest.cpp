#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/casetable/support/Csv.h"
#include "tests/casetable/support/Program.h"
#include "tests/casetable/support/TemporaryTree.h"

namespace casetable {
namespace tests {

TEST(CasetableCsv, EndsEveryLineWithCarriageReturnAndLineFeed)
{
    const TemporaryTree tree({"results/T1/file", "results/T2/file"});

    EXPECT_EQ(run(tree, {"-n", "T", "-f", "csv", "results"}),
              prints("case,T,files\n0,1,1\n1,2,1\n"));
}

TEST(CasetableCsv, QuotesOnlyFieldsThatNeedIt)
{
    const std::vector<std::vector<std::string>> rows = {
        {"plain", "plain"},       {"two words", "two words"},
        {" edge ", " edge "},     {"a;b'c\tz", "a;b'c\tz"},
        {"a,b", "\"a,b\""},       {"\"", "\"\"\"\""},
        {"a\"b", "\"a\"\"b\""},   {"a\nb", "\"a\nb\""},
        {"a\rb", "\"a\rb\""},     {"a\r\nb", "\"a\r\nb\""},
        {",", "\",\""},           {"=1+1", "=1+1"},
        {"\xc3\xa4", "\xc3\xa4"}, {"\xff\xfe", "\xff\xfe"},
        {"\x1b[31m", "\x1b[31m"}};
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::PrintToString(row[0]));
        const TemporaryTree tree({"results/T_" + row[0] + "/file"});

        EXPECT_EQ(run(tree, {"-s", "T_", "-f", "csv", "results"}),
                  prints("case,T_,files\n0," + row[1] + ",1\n"));
    }
}

TEST(CasetableCsv, LeavesAnEmptyValueEmpty)
{
    const TemporaryTree tree({"results/T_/file"});

    EXPECT_EQ(run(tree, {"-s", "T_", "-f", "csv", "results"}), prints("case,T_,files\n0,,1\n"));
}

TEST(CasetableCsv, QuotesTheHeaderToo)
{
    const TemporaryTree tree({"results/a,\"b\"1/file"});

    EXPECT_EQ(run(tree, {"-n", "a,\"b\"", "-f", "csv", "results"}),
              prints("case,\"a,\"\"b\"\"\",files\n0,1,1\n"));
}

TEST(CasetableCsv, KeepsEveryByteOfAName)
{
    const TemporaryTree tree;
    const std::string bytes = bytesOfNames();
    tree.file("results/T1/" + bytes);

    const Outcome outcome = run(tree, {"-n", "T", "--files", "-f", "csv", "results"});

    EXPECT_EQ(parseCsv(outcome.output),
              std::vector<Record>({{"path", "case", "T"}, {"T1/" + bytes, "0", "1"}}))
        << outcome;
}

TEST(CasetableCsv, KeepsEveryByteOfAValue)
{
    const TemporaryTree tree;
    std::string bytes = bytesOfNames();
    bytes.erase(bytes.find('\\'), 1); // It ends a value as a slash does.
    bytes.erase(bytes.find('.'), 1);  // From here on it would be an extension.
    tree.file("results/T_" + bytes + "/file");

    const Outcome outcome = run(tree, {"-s", "T_", "-f", "csv", "results"});

    EXPECT_EQ(parseCsv(outcome.output),
              std::vector<Record>({{"case", "T_", "files"}, {"0", bytes, "1"}}))
        << outcome;
}

TEST(CasetableCsv, KeepsBytesOnTheWayToAFile)
{
    const TemporaryTree tree({"results/T1/\xff\n\",\x80"});

    EXPECT_EQ(run(tree, {"-n", "T", "--files", "-o", "out.csv", "results"}), prints(""));

    EXPECT_EQ(tree.content("out.csv"), "path,case,T\n\"T1/\xff\n\"\",\x80\",0,1\n");
}

} // namespace tests
} // namespace casetable
