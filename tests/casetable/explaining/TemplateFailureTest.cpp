#include "casetable/explaining/TemplateFailure.h"

#include <cstddef>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/casetable/support/Importing.h"

namespace casetable {
namespace tests {

namespace {

using Texts = std::vector<std::string>;

// The template that came furthest, and why it does not fit.
Texts failureOf(const Texts& templates, const std::string& path)
{
    const TemplateList list(templates);
    const TemplateFailure failure = TemplateFailures(list).furthest(path);
    return {failure.pathTemplate->text(), failureReason(failure, path)};
}

std::string reasonOf(const std::string& text, const std::string& path)
{
    return failureOf({text}, path)[1];
}

std::string summaryOf(const Texts& templates, const Texts& files)
{
    const Reading reading{TemplateList(templates)};
    UnfittedFiles unfitted(*reading.templates());
    for (const std::string& path : unmatchedPaths(Importing(files, reading).importer))
        unfitted.count(path);
    return unfitted.summary();
}

// The engine gives up on that path.
const std::string endless = "{a,z(.|..)*[bc]}.x";
const std::string longPath = "z" + std::string(100, 'a');

} // namespace

TEST(TemplateFailures, NameTheElementThatFailedAndWhatFitsBeforeIt)
{
    struct Row {
        std::string text;
        std::string path;
        std::string reason;
    };
    for (const Row& row : {
             Row{"wing{a}/x", "tail1/x", "'wing' does not fit the beginning of the path"},
             Row{"{a:digits}/x", "x1/x", "'{a:digits}' does not fit the beginning of the path"},
             Row{"{a}/T{b:number}/x", "1/P5/x", "'T' does not fit behind '1/'"},
             Row{"{a}/T{b:number}/x", "1/Tx/x", "'{b:number}' does not fit behind '1/T'"},
             Row{"{a}/{b}", "1/", "'{b}' does not fit behind '1/'"},
             Row{"*{a:digits}.x", "ab12.y", "'.x' does not fit behind 'ab12'"},
             Row{"{a:digits}[_{b:digits}].x", "1_2.y", "'.x' does not fit behind '1_2'"},
             Row{"{a}", "1/2", "the path goes on behind '1', where the template ends"},
             Row{"{a:digits}[x]", "12xx", "the path goes on behind '12x', where the template ends"},
             Row{"{a}", "/", "'{a}' does not fit the beginning of the path"},
             Row{"{a:digits}/{a}", "12/13", "'{a}' does not fit behind '12/'"},
             Row{"\xff{a:digits}\n/x",
                 "\xff"
                 "1\n/y",
                 "'x' does not fit behind '\xff"
                 "1\n/'"},
         })
        EXPECT_EQ(reasonOf(row.text, row.path), row.reason) << row.text;
}

TEST(TemplateFailures, AreOfTheTemplateThatCameFurthestInThePath)
{
    const std::string path = "ab/cd/ef";
    EXPECT_EQ(failureOf({"x{a}", "ab/{a}x", "ab/cd/{a}/x", "a{a}"}, path),
              Texts({"ab/cd/{a}/x", "'/' does not fit behind 'ab/cd/ef'"}));
    EXPECT_EQ(failureOf({"x{a}", "y{a}"}, path)[0], "x{a}") << "the first of those that are equal";
}

TEST(TemplateFailures, SayWhereTheEngineGivesUp)
{
    EXPECT_THROW(failureOf({endless}, longPath), MatchError);
}

TEST(UnmatchedByTemplates, IsARowForEachFileWithTheTemplateThatCameFurthest)
{
    const Reading reading{TemplateList({"a{x:digits}.dat", "b{y}/z"})};
    const Texts paths = {"", "a\n", "a1.txt", "b1/y"};

    const Report report = unmatchedReport(
        {paths.size(), [&paths](std::size_t index) { return FileRow{paths[index]}; }}, reading);

    EXPECT_EQ(report.rowsName, "unmatched");
    EXPECT_EQ(uniqueHeader(report.columns), Texts({"path", "template", "reason"}));
    std::vector<Texts> rows;
    for (std::size_t index = 0; index < report.rowCount; ++index)
        rows.push_back(report.row(index).cells);
    EXPECT_EQ(rows, std::vector<Texts>(
                        {{"", "a{x:digits}.dat", "'a' does not fit the beginning of the path"},
                         {"a\n", "a{x:digits}.dat", "'{x:digits}' does not fit behind 'a'"},
                         {"a1.txt", "a{x:digits}.dat", "'.dat' does not fit behind 'a1'"},
                         {"b1/y", "b{y}/z", "'z' does not fit behind 'b1/'"}}));
}

TEST(UnmatchedByTemplates, AreSummarizedByTheFileThatATemplateFitsFurthest)
{
    EXPECT_EQ(summaryOf({"{a}.x"}, {"1.x", "2.x"}), "");
    EXPECT_EQ(summaryOf({"T{a}/x"}, {"T1/x", "S"}),
              "the template does not fit 1 file, as S: 'T' does not fit the beginning of the path");
    EXPECT_EQ(summaryOf({"T{a}/x"}, {"S", "T1/y", "T1/x"}),
              "the template does not fit 2 files, as T1/y: 'x' does not fit behind 'T1/'");
    EXPECT_EQ(summaryOf({"S{a}/x", "T{a}/x"}, {"S", "T1/y"}),
              "no template fits 2 files, as T1/y: 'x' does not fit behind 'T1/'");
}

TEST(UnmatchedByTemplates, AreSummarizedWithoutAReasonWhereTheEngineGivesUpOnIt)
{
    EXPECT_EQ(summaryOf({endless}, {longPath}), "the template does not fit 1 file");
    EXPECT_EQ(summaryOf({endless}, {longPath, "y"}),
              "the template does not fit 2 files, as y: '{a,z(.|..)*[bc]}' does not fit the "
              "beginning of the path");
}

} // namespace tests
} // namespace casetable
