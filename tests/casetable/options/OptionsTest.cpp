#include "casetable/options/Options.h"

#include <cstring>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "casetable/system/ExitCode.h"

namespace casetable {
namespace tests {

namespace {

std::optional<Options> parse(std::vector<const char*> arguments)
{
    arguments.insert(arguments.begin(), "casetable");
    return parseOptions(static_cast<int>(arguments.size()), arguments.data());
}

} // namespace

TEST(Options, HaveDefaults)
{
    const std::optional<Options> options = parse({"-n", "T", "root"});

    ASSERT_TRUE(options);
    EXPECT_EQ(options->root, "root");
    EXPECT_TRUE(options->identifiers.empty());
    EXPECT_EQ(options->format, Format::Auto);
    EXPECT_FALSE(options->output);
    EXPECT_EQ(options->rows, Rows::Cases);
    EXPECT_FALSE(options->keepGoing);
    EXPECT_FALSE(options->follow);
    EXPECT_FALSE(options->quiet);
    EXPECT_FALSE(options->list);
    EXPECT_FALSE(options->nullSeparated);
    EXPECT_FALSE(options->selection.hidden);
    EXPECT_TRUE(options->selection.excluded.empty());
    EXPECT_EQ(options->selection.maxDepth, Selection().maxDepth);
}

TEST(Options, KeepTheOrderOfMarkersAndIdentifiers)
{
    const std::optional<Options> options =
        parse({"-s", "a", "-a", "*.x=X", "--number=b", "-s", "c", "--aux", "k=v=Y", "root", "-nd"});

    ASSERT_TRUE(options);
    ASSERT_EQ(options->patterns.size(), 4u);
    const std::vector<std::string> markers = {"a", "b", "c", "d"};
    for (std::size_t k = 0; k < markers.size(); ++k) {
        EXPECT_EQ(options->patterns[k].pattern, markers[k]);
        EXPECT_EQ(options->patterns[k].valueType,
                  k % 2 == 0 ? MetadataPattern::StringValue : MetadataPattern::NumberValue);
    }
    ASSERT_EQ(options->identifiers.size(), 2u);
    EXPECT_EQ(options->identifiers[0].syntaxName, "*.x");
    EXPECT_EQ(options->identifiers[0].tag, "X");
    EXPECT_EQ(options->identifiers[1].syntaxName, "k=v");
    EXPECT_EQ(options->identifiers[1].tag, "Y");
}

TEST(Options, KnowShortAndLongNames)
{
    for (const std::vector<const char*>& arguments :
         {std::vector<const char*>{"-s", "m", "-f", "json", "-o", "file", "-L", "-q", "root"},
          std::vector<const char*>{"--string", "m", "--format", "json", "--output", "file",
                                   "--follow", "--quiet", "root"},
          std::vector<const char*>{"-qLsm", "-fjson", "--output=file", "--", "root"}}) {
        const std::optional<Options> options = parse(arguments);
        ASSERT_TRUE(options);
        EXPECT_EQ(options->patterns.at(0).pattern, "m");
        EXPECT_EQ(options->format, Format::Json);
        EXPECT_EQ(options->output, std::string("file"));
        EXPECT_TRUE(options->follow);
        EXPECT_TRUE(options->quiet);
        EXPECT_EQ(options->root, "root");
    }
}

TEST(Options, ChooseTheRows)
{
    EXPECT_EQ(parse({"-n", "T", "--files", "root"})->rows, Rows::Files);
    EXPECT_EQ(parse({"-n", "T", "--unmatched", "root"})->rows, Rows::Unmatched);
    EXPECT_TRUE(parse({"-n", "T", "--keep-going", "root"})->keepGoing);
}

TEST(Options, ChooseTheFormat)
{
    EXPECT_EQ(parse({"-n", "T", "-f", "auto", "root"})->format, Format::Auto);
    EXPECT_EQ(parse({"-n", "T", "-f", "table", "root"})->format, Format::Table);
    EXPECT_EQ(parse({"-n", "T", "-f", "csv", "root"})->format, Format::Csv);
    EXPECT_EQ(parse({"-n", "T", "-f", "tsv", "root"})->format, Format::Tsv);
    EXPECT_EQ(parse({"-n", "T", "-f", "json", "root"})->format, Format::Json);
    EXPECT_EQ(parse({"-n", "T", "-f", "vtt", "root"})->format, Format::Vtt);
}

TEST(Options, GuessTheFormatFromTheEndingOfTheOutput)
{
    struct Row {
        const char* output;
        Format format;
    };
    for (const Row& row :
         {Row{"a.csv", Format::Csv}, Row{"a.tsv", Format::Tsv}, Row{"a.json", Format::Json},
          Row{"a.vtt", Format::Vtt}, Row{"a.txt", Format::Table}, Row{"a.VtT", Format::Vtt},
          Row{"A.JSON", Format::Json}, Row{"a.csv.tsv", Format::Tsv}, Row{"b/.csv", Format::Csv},
          Row{"a", Format::Auto}, Row{"csv", Format::Auto}, Row{"a.csv/b", Format::Auto},
          Row{"a.csv.gz", Format::Auto}, Row{"a.", Format::Auto}, Row{"a.csv ", Format::Auto},
          Row{"a.c\xc3\x9fv", Format::Auto}, Row{"-", Format::Auto}}) {
        SCOPED_TRACE(row.output);
        EXPECT_EQ(parse({"-n", "T", "-o", row.output, "root"})->format, row.format);
        EXPECT_EQ(parse({"-n", "T", "-o", row.output, "-f", "auto", "root"})->format, row.format);
        EXPECT_EQ(parse({"-n", "T", "-f", "json", "-o", row.output, "root"})->format, Format::Json);
    }
}

TEST(Options, TakeAPathToExplainWithAndWithoutRoot)
{
    EXPECT_FALSE(parse({"-n", "T", "root"})->explain);
    EXPECT_EQ(parse({"-n", "T", "--explain", "a/T1"})->explain, std::string("a/T1"));
    EXPECT_EQ(parse({"-n", "T", "--explain=a/T1", "root"})->explain, std::string("a/T1"));
    EXPECT_EQ(parse({"--explain", "-x", "-n", "T"})->explain, std::string("-x"));
    EXPECT_EQ(parse({"--explain", "--explain=", "-n", "T"})->explain, std::string("--explain="));
}

TEST(Options, LeaveTheRootOffThePathToExplain)
{
    struct Row {
        const char* root;
        const char* path;
        const char* explained;
    };
    for (const Row& row :
         {Row{"a/b", "a/b/T1", "T1"}, Row{"a/b/", "a/b/T1", "T1"}, Row{"/", "/a/T1", "a/T1"},
          Row{".", "./T1", "T1"}, Row{"a", "a/a/T1", "a/T1"}, Row{"a", "ab/T1", "ab/T1"},
          Row{"a", "b/a/T1", "b/a/T1"}, Row{"a", "a", "a"}, Row{"a", "a//T1", "T1"},
          Row{"\xff", "\xff/T1", "T1"}, Row{"./a//b/.", "a/b/T1", "T1"},
          Row{"a/b", "./a/./b//T1/.", "T1/."}, Row{"..", "../T1", "T1"}, Row{"//", "/./T1", "T1"},
          Row{"a", "/a/T1", "/a/T1"}, Row{"/a", "a/T1", "a/T1"}, Row{"a/b", "a/T1", "a/T1"},
          Row{"a/b", "./a/b", "./a/b"}, Row{".", "a/T1", "a/T1"}})
        EXPECT_EQ(parse({"-n", "T", row.root, "--explain", row.path})->explain,
                  std::string(row.explained))
            << row.root;
}

TEST(Options, SelectFiles)
{
    for (const std::vector<const char*>& arguments :
         {std::vector<const char*>{"-n", "T", "-E", "*.log", "-H", "-d", "7", "-E", "/a/b/",
                                   "root"},
          std::vector<const char*>{"-n", "T", "--exclude=*.log", "--hidden", "--max-depth", "3",
                                   "--exclude", "/a/b/", "--max-depth=7", "root"},
          std::vector<const char*>{"-HnT", "-E*.log", "-qHE/a/b/", "-d07", "root"}}) {
        SCOPED_TRACE(testing::PrintToString(arguments));
        const std::optional<Options> options = parse(arguments);
        ASSERT_TRUE(options);
        ASSERT_EQ(options->selection.excluded.size(), 2u);
        EXPECT_EQ(options->selection.excluded[0].text(), "*.log");
        EXPECT_EQ(options->selection.excluded[1].text(), "/a/b/");
        EXPECT_TRUE(options->selection.hidden);
        EXPECT_EQ(options->selection.maxDepth, 7u);
        EXPECT_EQ(options->root, "root");
    }
    // Values may look like options.
    EXPECT_EQ(
        parse({"-n", "T", "-E", "-0", "--exclude", "--", "root"})->selection.excluded.at(1).text(),
        "--");
}

TEST(Options, TakeAListInPlaceOfTheRoot)
{
    for (const std::vector<const char*>& arguments :
         {std::vector<const char*>{"-n", "T", "--from-list", "-", "-0"},
          std::vector<const char*>{"--null", "--from-list=-", "-nT"},
          std::vector<const char*>{"-q0nT", "--from-list", "file", "--from-list", "-"}}) {
        SCOPED_TRACE(testing::PrintToString(arguments));
        const std::optional<Options> options = parse(arguments);
        ASSERT_TRUE(options);
        EXPECT_EQ(options->list, std::string("-"));
        EXPECT_TRUE(options->nullSeparated);
        EXPECT_TRUE(options->selection.hidden) << "whoever made the list has chosen";
        EXPECT_EQ(options->root, "");
    }
    EXPECT_FALSE(parse({"-n", "T", "--from-list", "-0"})->nullSeparated);
    EXPECT_EQ(parse({"-n", "T", "--", "-0"})->root, "-0");
}

TEST(Options, ThatAreWrongRaiseAFailureOfUsage)
{
    for (const std::vector<const char*>& arguments :
         {std::vector<const char*>{},
          {"root"},
          {"-n", "T"},
          {"-n", "", "root"},
          {"-n", "T", "-a", "x", "root"},
          {"-n", "T", "-f", "x", "root"},
          {"-n", "T", "--what", "root"},
          {"--explain", "T1"},
          {"-n", "T", "--explain", ""},
          {"-n", "T", "--explain", "T1", ""},
          {"-n", "T", "--explain", "T1", "--from-list", "x"},
          {"-n", "T", "root", "root"},
          {"-n", "T", "--from-list", "x", "root"},
          {"-n", "T", "--from-list", "x", ""},
          {"-n", "T", "--from-list", "x", "-L"},
          {"-n", "T", "-0", "root"},
          {"-n", "T", "-E", "", "root"},
          {"-n", "T", "-d", "0", "root"}}) {
        try {
            parse(arguments);
            ADD_FAILURE() << testing::PrintToString(arguments);
        } catch (const Failure& failure) {
            EXPECT_EQ(failure.code, ExitCode::WrongUsage);
            EXPECT_STRNE(failure.what(), "");
        }
    }
}

TEST(Options, RefuseAnythingButLettersBehindFlagsInOneArgument)
{
    for (const char* const argument :
         {"-q--X", "-q5", "-q-", "-q-files", "-q-version", "-q-output=", "-qL-", "-L=x", "-h5",
          "-q!", "-q ", "-q\n", "-05", "-0.5", "-H=", "-0-", "-L\xc3\xa4"}) {
        SCOPED_TRACE(argument);
        for (const std::vector<const char*>& arguments :
             {std::vector<const char*>{"-n", "T", argument},
              std::vector<const char*>{"-nT", argument, "root"}}) {
            try {
                parse(arguments);
                ADD_FAILURE() << testing::PrintToString(arguments);
            } catch (const Failure& failure) {
                EXPECT_EQ(failure.code, ExitCode::WrongUsage);
                EXPECT_NE(std::string(failure.what()).find(argument), std::string::npos);
            }
        }
    }
    // Values may look like that.
    EXPECT_EQ(parse({"-n", "-q5", "--", "-q5"})->root, "-q5");
    EXPECT_EQ(parse({"-qn-5", "root"})->patterns.at(0).pattern, "-5");
}

TEST(Options, TakeAnyNextArgumentAsTheValue)
{
    for (const char* const value : {"-q5=x", "-L!=x", "-qL-=x"}) {
        SCOPED_TRACE(value);
        for (const char* const option : {"-s", "-n", "--string", "--number", "-qs", "-Lqn"})
            EXPECT_EQ(parse({option, value, "root"})->patterns.at(0).pattern, value) << option;
        for (const char* const option : {"-a", "--aux", "-qa"})
            EXPECT_EQ(parse({"-nT", option, value, "root"})->identifiers.size(), 1u) << option;
        for (const char* const option : {"-o", "--output", "-Lo"})
            EXPECT_EQ(parse({"-nT", option, value, "root"})->output, std::string(value)) << option;
        for (const char* const option : {"-f", "--format", "-qf"}) {
            try {
                parse({"-nT", option, value, "root"});
                ADD_FAILURE() << option;
            } catch (const Failure& failure) {
                EXPECT_EQ(failure.what(),
                          "--format '" + std::string(value) +
                              "': unknown format; choose auto, table, csv, tsv, json or vtt");
            }
        }
    }
}

TEST(Options, RefuseAnEmptyValueAlsoBehindAValueThatLooksLikeAnOption)
{
    // The letters behind the first are the marker; it takes no further argument.
    for (const char* const marker : {"-nn", "-sao", "-qnf", "-nLs"}) {
        for (const char* const option :
             {"--string=", "--number=", "--aux=", "--format=", "--output="}) {
            SCOPED_TRACE(std::string(marker) + " " + option);
            try {
                parse({marker, option, "csv"});
                ADD_FAILURE();
            } catch (const Failure& failure) {
                EXPECT_EQ(failure.what(),
                          std::string(option, std::strlen(option) - 1) + ": the value is empty");
            }
        }
    }
}

} // namespace tests
} // namespace casetable
