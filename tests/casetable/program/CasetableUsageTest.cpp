#include <algorithm>
#include <set>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include "tests/casetable/support/Program.h"
#include "tests/casetable/support/TemporaryTree.h"

namespace casetable {
namespace tests {

namespace {

// Wrong usage is one line that names the culprit, and nothing else happens.
void expectWrongUsage(const Arguments& arguments, const std::string& culprit)
{
    SCOPED_TRACE(testing::PrintToString(arguments));
    const TemporaryTree tree;
    tree.file("results/T1/file");

    const Outcome outcome = run(tree, arguments);

    EXPECT_EQ(outcome.exitCode, 2) << outcome;
    EXPECT_EQ(outcome.output, "");
    EXPECT_NE(message(outcome.errors).find(culprit), std::string::npos) << outcome;
    EXPECT_EQ(tree.names("."), std::set<std::string>({"results"}));
}

} // namespace

TEST(CasetableUsage, RefusesAnEmptyMarker)
{
    expectWrongUsage({"-s", "", "results"}, "--string");
    expectWrongUsage({"-n", "", "results"}, "--number");
    expectWrongUsage({"--string", "", "results"}, "--string");
    expectWrongUsage({"--string=", "results"}, "--string");
    expectWrongUsage({"--number=", "results"}, "--number");
    expectWrongUsage({"-n", "T", "results", "--string="}, "--string");
}

TEST(CasetableUsage, RefusesATagThatIsEmptyOrHoldsControlCharacters)
{
    expectWrongUsage({"-n", "T", "-a", "*.log=", "results"}, "--aux '*.log='");
    expectWrongUsage({"-n", "T", "--aux=*.log=", "results"}, "--aux '*.log='");
    expectWrongUsage({"-n", "T", "-a", "=", "results"}, "--aux '='");
    expectWrongUsage({"-n", "T", "-a", "*.log=a\nb", "results"}, "--aux '*.log=a\\nb'");
    expectWrongUsage({"-n", "T", "-a", "*.log=\x1b[31m", "results"}, "--aux '*.log=\\x1b[31m'");
    expectWrongUsage({"-n", "T", "-a", "*.log=a\x7f", "results"}, "--aux '*.log=a\\x7f'");
}

TEST(CasetableUsage, RefusesAnAuxWithoutEqualsSign)
{
    expectWrongUsage({"-n", "T", "-a", "*.log", "results"}, "--aux '*.log'");
    expectWrongUsage({"-n", "T", "--aux", "", "results"}, "--aux");
    expectWrongUsage({"-n", "T", "--aux=", "results"}, "--aux");
}

TEST(CasetableUsage, RefusesAnUnknownFormat)
{
    expectWrongUsage({"-n", "T", "-f", "xml", "results"}, "--format 'xml'");
    expectWrongUsage({"-n", "T", "--format=CSV", "results"}, "--format 'CSV'");
    expectWrongUsage({"-n", "T", "-f", "", "results"}, "--format");
    expectWrongUsage({"-n", "T", "--format=", "results"}, "--format");
    expectWrongUsage({"-n", "T", "-f", "a\nb", "results"}, "--format 'a\\nb'");
}

TEST(CasetableUsage, RefusesAnUnknownOption)
{
    expectWrongUsage({"-n", "T", "--colour", "results"}, "--colour");
    expectWrongUsage({"-n", "T", "-x", "results"}, "-x");
    expectWrongUsage({"-n", "T", "--a\nb", "results"}, "--a\\nb");
    expectWrongUsage({"-n", "T", "--strings=a", "results"}, "--strings");
}

TEST(CasetableUsage, RefusesAnOptionWithoutItsValue)
{
    expectWrongUsage({"results", "-n"}, "--number");
    expectWrongUsage({"results", "-s"}, "--string");
    expectWrongUsage({"results", "-t"}, "--template");
    expectWrongUsage({"-n", "T", "results", "--output"}, "--output");
    expectWrongUsage({"-n", "T", "results", "-f"}, "--format");
    expectWrongUsage({"-n", "T", "results", "-a"}, "--aux");
    expectWrongUsage({"-n", "T", "--from-list"}, "--from-list");
    expectWrongUsage({"-n", "T", "results", "-E"}, "--exclude");
    expectWrongUsage({"-n", "T", "results", "-d"}, "--max-depth");
}

TEST(CasetableUsage, RefusesAnEmptyOrUnusableGlob)
{
    expectWrongUsage({"-n", "T", "-E", "", "results"}, "--exclude '': a component is empty");
    expectWrongUsage({"-n", "T", "--exclude=", "results"}, "--exclude: the value is empty");
    expectWrongUsage({"-n", "T", "-E", "a//b", "results"}, "--exclude 'a//b'");
    expectWrongUsage({"-n", "T", "-E", "a\n\\", "results"}, "--exclude 'a\\n\\'");
    expectWrongUsage({"-n", "T", "-E", ".", "results"}, "--exclude '.'");
}

TEST(CasetableUsage, RefusesADepthThatIsNoWholeNumberFromOne)
{
    for (const char* const depth :
         {"0", "-1", "+1", "1.0", "1x", " 1", "x", "00", "", "99999999999999999999999999"}) {
        expectWrongUsage({"-n", "T", "-d", depth, "results"},
                         std::string("--max-depth '") + depth + "'");
    }
    expectWrongUsage({"-n", "T", "--max-depth=", "results"}, "--max-depth: the value is empty");
}

TEST(CasetableUsage, RefusesAnEmptyOutput)
{
    expectWrongUsage({"-n", "T", "--output=", "results"}, "--output");
    expectWrongUsage({"-n", "T", "-o", "", "results"}, "--output");
}

TEST(CasetableUsage, RefusesAnythingButOneRoot)
{
    expectWrongUsage({"-n", "T"}, "ROOT, the folder to import, is missing; --help");
    expectWrongUsage({}, "ROOT, the folder to import, is missing; --help");
    expectWrongUsage({"-n", "T", "results", "results2"},
                     "more than one ROOT: 'results' and 'results2'; blanks");
    expectWrongUsage({"-n", "T", "results", "a\nb"}, "a\\nb");
    expectWrongUsage({"-n", "T", "results", "--", "-x"}, "-x");
}

TEST(CasetableUsage, RefusesALongNameWithOneDash)
{
    expectWrongUsage({"-suggest", "results"}, "-suggest: it takes two dashes, as in --suggest");
    expectWrongUsage({"-n", "T", "-files", "results"}, "-files: it takes two dashes");
    expectWrongUsage({"-string=T", "results"}, "-string=T: it takes two dashes");

    const TemporaryTree tree;
    tree.file("results/-files1/uggest2");
    EXPECT_EQ(run(tree, {"-n", "-files", "-nuggest", "results"}).output,
              "case,-files,uggest,files\n0,1,2,1\n");
}

TEST(CasetableUsage, RefusesAFlagWithAValue)
{
    expectWrongUsage({"-n", "T", "--quiet=0", "results"}, "--quiet: takes no value");
    expectWrongUsage({"-n", "T", "--files=", "results"}, "--files: takes no value");
    expectWrongUsage({"--suggest=true", "results"}, "--suggest: takes no value");
    expectWrongUsage({"--help=0"}, "--help: takes no value");

    const TemporaryTree tree;
    tree.file("results/--quiet=1");
    EXPECT_EQ(run(tree, {"-n", "--quiet=", "results"}).output, "case,--quiet=,files\n0,1,1\n");
}

TEST(CasetableUsage, RefusesAnEmptyRoot)
{
    expectWrongUsage({"-n", "T", ""}, "ROOT");
}

TEST(CasetableUsage, RefusesAnEmptyPathToExplain)
{
    expectWrongUsage({"-n", "T", "--explain", ""}, "--explain");
    expectWrongUsage({"-n", "T", "--explain="}, "--explain");
    expectWrongUsage({"-n", "T", "--explain", "results/", "results"}, "--explain");
    expectWrongUsage({"-n", "T", "--explain"}, "--explain");
    expectWrongUsage({"-n", "T", "--explain", "T1", ""}, "ROOT");
}

TEST(CasetableUsage, RefusesToRunWithoutMarkersAndTemplates)
{
    expectWrongUsage({"--explain", "T1"}, "marker");
    expectWrongUsage({"results"}, "--string");
    expectWrongUsage({"results"}, "--number");
    expectWrongUsage({"results"}, "--template");
    expectWrongUsage({"-a", "*.log=log", "results"}, "marker");
}

TEST(CasetableUsage, RefusesOptionsThatExcludeEachOther)
{
    expectWrongUsage({"-n", "T", "--files", "--unmatched", "results"}, "--files and --unmatched");
    expectWrongUsage({"-n", "T", "--unmatched", "-a", "*.log=log", "results"},
                     "--aux and --unmatched");
    expectWrongUsage({"-n", "T", "--explain", "T1", "-a", "*.log=log"}, "--explain and --aux");
    expectWrongUsage({"-n", "T", "--explain", "T1", "--files"}, "--explain and --files");
    expectWrongUsage({"-n", "T", "--explain", "T1", "--unmatched"}, "--explain and --unmatched");
    expectWrongUsage({"-n", "T", "--explain", "T1", "-f", "auto"}, "--explain and --format");
    expectWrongUsage({"-n", "T", "--from-list", "list", "results"},
                     "ROOT and --from-list exclude each other");
    expectWrongUsage({"-n", "T", "--from-list", "list", ""},
                     "ROOT and --from-list exclude each other");
    expectWrongUsage({"-n", "T", "--from-list", "-", "-L"},
                     "--follow and --from-list exclude each other");
    expectWrongUsage({"-n", "T", "--from-list", "-", "--keep-going"},
                     "--keep-going and --from-list exclude each other");
}

TEST(CasetableUsage, RefusesAListWithoutNameAndNullsWithoutList)
{
    expectWrongUsage({"-n", "T", "--from-list", ""}, "--from-list: the file name is empty");
    expectWrongUsage({"-n", "T", "--from-list="}, "--from-list: the value is empty");
    expectWrongUsage({"-n", "T", "-0", "results"}, "--null: there is no --from-list");
    expectWrongUsage({"-n", "T", "--null", "results"}, "--null: there is no --from-list");
}

TEST(CasetableUsage, LeavesAnEarlierOutputAsItWas)
{
    const TemporaryTree tree;
    tree.file("results/T1/file");
    tree.file("out", "earlier");

    EXPECT_EQ(run(tree, {"-n", "T", "-f", "xml", "-o", "out", "results"}).exitCode, 2);

    EXPECT_EQ(tree.content("out"), "earlier");
}

TEST(CasetableHelp, FitsAScreenAndListsOptionsExitCodesAndExamples)
{
    for (const char* option : {"-h", "--help"}) {
        const Outcome outcome = run({option}, {});
        EXPECT_EQ(outcome.exitCode, 0) << outcome;
        EXPECT_EQ(outcome.errors, "");
        for (const char* text : {"casetable [OPTIONS] ROOT",
                                 "-s,--string MARKER",
                                 "-n,--number MARKER",
                                 "-t,--template TEMPLATE\n",
                                 "-a,--aux SYNTAX=TAG",
                                 "-f,--format FORMAT",
                                 "-o,--output FILE",
                                 "--files",
                                 "--from-list FILE",
                                 "-0,--null",
                                 "-E,--exclude GLOB",
                                 "-H,--hidden",
                                 "-d,--max-depth N",
                                 "--unmatched",
                                 "--missing COLUMNS",
                                 "--sort COLUMNS",
                                 "--explain PATH",
                                 "--suggest",
                                 "--keep-going",
                                 "-L,--follow",
                                 "-q,--quiet",
                                 "--help",
                                 "--version",
                                 "auto",
                                 "table",
                                 "csv",
                                 "tsv",
                                 "json",
                                 "vtt",
                                 "Exit codes",
                                 "Examples"})
            EXPECT_NE(outcome.output.find(text), std::string::npos) << text << outcome;
        const std::string codes = outcome.output.substr(outcome.output.find("Exit codes"));
        for (const char* code : {"  0  ", "1  no file matched", "2  wrong usage", "3  the walk",
                                 "4  the output", "130  interrupted"})
            EXPECT_NE(codes.find(code), std::string::npos) << code << outcome;
        EXPECT_LE(std::count(outcome.output.begin(), outcome.output.end(), '\n'), 40) << outcome;
        std::istringstream lines(outcome.output);
        for (std::string line; std::getline(lines, line);)
            EXPECT_LE(line.size(), 80u) << line;
    }
}

TEST(CasetableHelp, ComesWithoutRootAndMarkers)
{
    EXPECT_EQ(run({"--version"}, {}).output, "casetable " CASETABLE_VERSION "\n");
    EXPECT_EQ(run({"--version"}, {}).exitCode, 0);
    for (const Arguments& arguments : {Arguments{"-n", "T", "--help"},
                                       {"--help", "--what"},
                                       {"-qhL", "--what"},
                                       {"-hx"},
                                       {"-h", "a", "b"}})
        EXPECT_EQ(run(arguments, {}).output, run({"--help"}, {}).output);
    EXPECT_EQ(run({"--help", "--version"}, {}).output, run({"--version"}, {}).output);
}

TEST(CasetableHelp, ThatCannotBeWrittenIsAnError)
{
    for (const Stream stream : {Stream::FullDisk, Stream::NoReader, Stream::Closed}) {
        for (const char* option : {"--help", "--version"}) {
            Setting setting;
            setting.output = stream;
            const Outcome outcome = run({option}, setting);
            EXPECT_EQ(outcome.exitCode, 4) << outcome;
            message(outcome.errors);
        }
    }
}

} // namespace tests
} // namespace casetable
