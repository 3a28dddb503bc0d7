#include "casetable/options/ColumnNames.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "casetable/options/Options.h"
#include "casetable/system/ExitCode.h"

namespace casetable {
namespace tests {

namespace {

using Texts = std::vector<std::string>;
using Indices = std::vector<std::size_t>;

Options parse(const Texts& arguments)
{
    std::vector<const char*> texts = {"casetable"};
    for (const std::string& argument : arguments)
        texts.push_back(argument.c_str());
    return *parseOptions(static_cast<int>(texts.size()), texts.data());
}

// The keys, each as the index of its column, behind "-" if it is descending.
Texts keysOf(const Texts& arguments)
{
    Texts keys;
    for (const SortKey& key : parse(arguments).sortKeys)
        keys.push_back((key.isDescending ? "-" : "") + std::to_string(key.column));
    return keys;
}

std::string refusal(const Texts& arguments)
{
    try {
        parse(arguments);
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.code, ExitCode::WrongUsage);
        return failure.what();
    }
    ADD_FAILURE() << testing::PrintToString(arguments);
    return "";
}

} // namespace

TEST(ColumnNames, AreThoseOfTheHeader)
{
    struct Row {
        Texts arguments;
        Texts keys;
    };
    const Texts cases = {"-n", "T", "-s", "P", "root", "--sort"}; // case, T, P, files
    const auto with = [](Texts texts, const Texts& more) {
        texts.insert(texts.end(), more.begin(), more.end());
        return texts;
    };
    for (const Row& row : std::vector<Row>{
             {with(cases, {"T"}), {"1"}},
             {with(cases, {"-T"}), {"-1"}},
             {with(cases, {"P,-T,case,-files"}), {"2", "-1", "0", "-3"}},
             {with(cases, {"P", "--sort=-T", "--sort", "case,files"}), {"2", "-1", "0", "3"}},
             {with(cases, {"T,T,-T"}), {"1", "1", "-1"}},
             // Twice the same marker, and markers that are called as the program's own columns.
             {{"-n", "T", "-n", "T", "root", "--sort", "T(2),T"}, {"2", "1"}},
             {{"-n", "case", "-n", "files", "root", "--sort", "files,files(2),case(2),case"},
              {"3", "2", "1", "0"}},
             // Of files, and of tags.
             {with(cases, {"path,case,-P", "--files"}), {"0", "1", "-3"}},
             {with(cases, {"tag", "--files", "-a", "*.x=X"}), {"4"}},
             {with(cases, {"X files,-X,files", "-a", "*.x=X", "-a", "*.y=X"}), {"4", "-3", "5"}},
             {{"-t", "{run}_{step:digits}", "root", "--sort", "step,-run"}, {"2", "-1"}},
             // Of what is missing.
             {with(cases, {"-T", "--missing", "P,T"}), {"-1"}}}) {
        SCOPED_TRACE(testing::PrintToString(row.arguments));
        EXPECT_EQ(keysOf(row.arguments), row.keys);
    }
}

TEST(ColumnNames, MayHoldCommasAndBeginWithADash)
{
    struct Row {
        Texts markers;
        std::string sort;
        Texts keys;
    };
    for (const Row& row : std::vector<Row>{{{"a,b", "a", "b"}, "a,b", {"1"}},
                                           {{"a,b", "a", "b"}, "-a,b", {"-1"}},
                                           {{"a,b", "a", "b"}, "b,a", {"3", "2"}},
                                           {{"a,b", "a", "b"}, "a,-b", {"2", "-3"}},
                                           {{"a,-b", "a", "b"}, "a,-b", {"1"}},
                                           {{"-a", "a"}, "-a", {"1"}},
                                           {{"-a", "a"}, "--a", {"-1"}},
                                           {{"-a", "a"}, "a,-a", {"2", "1"}},
                                           {{"-a,b", "a,b"}, "-a,b", {"1"}},
                                           {{"-"}, "-", {"1"}},
                                           {{"-"}, "--", {"-1"}},
                                           {{","}, ",", {"1"}},
                                           {{"\xff\n"}, "-\xff\n", {"-1"}}}) {
        Texts arguments = {"root", "--sort", row.sort};
        for (const std::string& marker : row.markers)
            arguments.insert(arguments.end(), {"-s", marker});
        EXPECT_EQ(keysOf(arguments), row.keys) << testing::PrintToString(arguments);
    }
}

TEST(ColumnNames, OfWhatIsMissingAreThoseOfValues)
{
    const auto columns = [](Texts arguments) {
        arguments.insert(arguments.end(),
                         {"-n", "T", "-s", "P,Q", "-n", "case", "-n", "T", "root"});
        const Options options = parse(arguments);
        EXPECT_EQ(options.rows, casetable::Rows::Missing);
        return options.missingColumns;
    };
    EXPECT_EQ(columns({"--missing", "T,case(2)"}), Indices({0, 2}));
    EXPECT_EQ(columns({"--missing", "case(2),T(2),T"}), Indices({2, 3, 0}));
    EXPECT_EQ(columns({"--missing=P,Q", "--missing", "T"}), Indices({1, 0}));
}

TEST(ColumnNames, ThatAreNotThereAreRefusedInTheseWords)
{
    struct Row {
        Texts arguments;
        std::string message;
    };
    const std::string noSuch = ": there is no such column; choose ";
    for (const Row& row : std::vector<Row>{
             {{"--sort", "t"}, "--sort 't'" + noSuch + "'case', 'T', 'P' or 'files'"},
             {{"--sort", "T,-x,y"}, "--sort '-x'" + noSuch + "'case', 'T', 'P' or 'files'"},
             {{"--sort", ""}, "--sort ''" + noSuch + "'case', 'T', 'P' or 'files'"},
             {{"--sort", "T,"}, "--sort ''" + noSuch + "'case', 'T', 'P' or 'files'"},
             {{"--sort", "-"}, "--sort '-'" + noSuch + "'case', 'T', 'P' or 'files'"},
             {{"--sort", "--T"}, "--sort '--T'" + noSuch + "'case', 'T', 'P' or 'files'"},
             {{"--sort", "path"}, "--sort 'path'" + noSuch + "'case', 'T', 'P' or 'files'"},
             {{"--sort", "files", "--files"},
              "--sort 'files'" + noSuch + "'path', 'case', 'T' or 'P'"},
             {{"--sort", "x", "--files", "-a", "*.x=X"},
              "--sort 'x'" + noSuch + "'path', 'case', 'T', 'P' or 'tag'"},
             {{"--sort", "x", "-a", "*.x=X"},
              "--sort 'x'" + noSuch + "'case', 'T', 'P', 'X', 'X files' or 'files'"},
             {{"--sort", "case", "--missing", "P,T"}, "--sort 'case'" + noSuch + "'P' or 'T'"},
             {{"--missing", "T,x"}, "--missing 'x'" + noSuch + "'T' or 'P'"},
             {{"--missing", "case,T"}, "--missing 'case'" + noSuch + "'T' or 'P'"},
             {{"--missing", "-T,P"}, "--missing '-T'" + noSuch + "'T' or 'P'"},
             {{"--missing", ""}, "--missing ''" + noSuch + "'T' or 'P'"},
             {{"--missing", "T"}, "--missing 'T': expected two columns or more"},
             {{"--missing", "T,P,T"}, "--missing 'T': the column is given twice"},
             {{"--missing", "P", "--missing", "P"}, "--missing 'P': the column is given twice"},
             {{"--missing"}, "--missing: its COLUMNS is missing"},
             {{"--sort"}, "--sort: its COLUMNS is missing"},
             {{"--missing="}, "--missing: the value is empty"},
             {{"--sort="}, "--sort: the value is empty"},
             {{"--sort", "x", "--unmatched"}, "--unmatched and --sort exclude each other"},
             {{"--missing", "x", "--unmatched"}, "--unmatched and --missing exclude each other"},
             {{"--missing", "x", "--files"}, "--files and --missing exclude each other"},
             {{"--missing", "x", "-a", "*.x=X"}, "--aux and --missing exclude each other"},
             {{"--missing", "x", "--explain", "T1"}, "--explain and --missing exclude each other"},
             {{"--sort", "x", "--explain", "T1"}, "--explain and --sort exclude each other"}}) {
        Texts arguments = {"-n", "T", "-s", "P", "root"};
        arguments.insert(arguments.end(), row.arguments.begin(), row.arguments.end());
        EXPECT_EQ(refusal(arguments), row.message);
    }
    EXPECT_EQ(refusal({"--suggest", "root", "--sort", "x"}),
              "--suggest and --sort exclude each other");
    EXPECT_EQ(refusal({"--suggest", "root", "--missing", "x"}),
              "--suggest and --missing exclude each other");
}

} // namespace tests
} // namespace casetable
