#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "tests/casetable/support/Csv.h"
#include "tests/casetable/support/Program.h"
#include "tests/casetable/support/TemporaryTree.h"

namespace casetable {
namespace tests {

namespace {

using Json = nlohmann::json;

void makeRuns(const TemporaryTree& tree)
{
    for (const char* file : {"T1/run.dat", "T1/a.log", "T1/b.log", "T2/run.dat", "T3/c.log"})
        tree.file(std::string("results/") + file);
}

} // namespace

TEST(CasetableAux, GivesEachCaseItsFirstFilePerTagAndTheirNumberInCsv)
{
    const TemporaryTree tree;
    makeRuns(tree);

    EXPECT_EQ(run(tree, {"-n", "T", "-a", "*.log=log", "--aux=run.dat=data", "results"}),
              prints("case,T,log,log files,data,data files,files\n"
                     "0,1,T1/a.log,2,T1/run.dat,1,3\n"
                     "1,2,,0,T2/run.dat,1,1\n"
                     "2,3,T3/c.log,1,,0,1\n"));
}

TEST(CasetableAux, GivesEachCaseItsFirstFilePerTagAndTheirNumberInATable)
{
    const TemporaryTree tree;
    makeRuns(tree);

    EXPECT_EQ(run(tree, {"-n", "T", "-a", "*.log=log", "-f", "table", "results"}),
              prints("case  T  log       log files  files\n"
                     "   0  1  T1/a.log          2      3\n"
                     "   1  2  -                 0      1\n"
                     "   2  3  T3/c.log          1      1\n"));
}

TEST(CasetableAux, GivesEachCaseItsFilesPerTagInJson)
{
    const TemporaryTree tree;
    makeRuns(tree);

    const Outcome outcome =
        run(tree, {"-n", "T", "-a", "*.log=log", "-a", "run.dat=data", "-f", "json", "results"});

    const Json cases = Json::parse(outcome.output)["cases"];
    EXPECT_EQ(cases[0]["aux"],
              Json::parse(R"({"log": ["T1/a.log", "T1/b.log"], "data": ["T1/run.dat"]})"));
    EXPECT_EQ(cases[1]["aux"], Json::parse(R"({"log": [], "data": ["T2/run.dat"]})"));
    EXPECT_EQ(cases[2]["aux"], Json::parse(R"({"log": ["T3/c.log"], "data": []})"));
}

TEST(CasetableAux, AreListedWithTheirTagsAsFilesWhateverTheirNames)
{
    const TemporaryTree tree;
    const std::set<std::string> names = {"T1/ .log",    "T1/\".log", "T1/,.log",  "T1/,,\",\".log",
                                         "T1/\r\n.log", "T1/a.log",  "T1/b c.log"};
    for (const std::string& name : names)
        tree.file("results/" + name);

    std::set<std::string> found;
    for (const Record& record :
         parseCsv(run(tree, {"-n", "T", "-a", "*.log=log", "--files", "results"}).output)) {
        if (record.back() == "log")
            found.insert(record.front());
    }

    EXPECT_EQ(found, names);
}

TEST(CasetableAux, FilesEachFileUnderTheFirstTagThatSelectsIt)
{
    const TemporaryTree tree;
    makeRuns(tree);

    EXPECT_EQ(run(tree, {"-n", "T", "-a", "a.log=first", "-a", "*.log=second", "results"}),
              prints("case,T,first,first files,second,second files,files\n"
                     "0,1,T1/a.log,1,T1/b.log,1,3\n"
                     "1,2,,0,,0,1\n"
                     "2,3,,0,T3/c.log,1,1\n"));
}

TEST(CasetableAux, CollectsSeveralSyntaxesUnderOneTag)
{
    const TemporaryTree tree;
    makeRuns(tree);

    EXPECT_EQ(run(tree, {"-n", "T", "-a", "*.dat=all", "-a", "*.log=all", "results"}),
              prints("case,T,all,all files,files\n"
                     "0,1,T1/run.dat,3,3\n"
                     "1,2,T2/run.dat,1,1\n"
                     "2,3,T3/c.log,1,1\n"));
}

TEST(CasetableAux, DividesSyntaxAndTagAtTheLastEqualsSign)
{
    const TemporaryTree tree({"results/T1/key=value.log"});

    EXPECT_EQ(run(tree, {"-n", "T", "-a", "key=*.log=log", "results"}),
              prints("case,T,log,log files,files\n0,1,T1/key=value.log,1,1\n"));
}

TEST(CasetableAux, NamesTagsApartFromColumns)
{
    const TemporaryTree tree({"results/T1/a.log"});

    EXPECT_EQ(run(tree, {"-n", "T", "-a", "*.log=T", "results"}),
              prints("case,T,T(2),T files,files\n0,1,T1/a.log,1,1\n"));
}

TEST(CasetableAux, LeavesOutFilesOfNoCase)
{
    const TemporaryTree tree;
    makeRuns(tree);
    tree.file("results/none.log");

    const Outcome outcome = run(tree, {"-n", "T", "-a", "*.log=log", "results"});

    EXPECT_EQ(outcome.output.find("none.log"), std::string::npos) << outcome;
}

TEST(CasetableAux, AreEmptyForAllCasesBehindTheLastThatHasSome)
{
    const TemporaryTree tree;
    std::string expected = "case,T,log,log files,files\n";
    for (int i = 0; i < 3000; ++i) {
        const std::string number = std::to_string(1000 + i);
        const std::string file = "T" + number + (i == 0 ? "/a.log" : "/file");
        tree.file("results/" + file);
        expected += std::to_string(i) + "," + number + "," + (i == 0 ? file + ",1" : ",0") + ",1\n";
    }

    EXPECT_EQ(run(tree, {"-n", "T", "-a", "*.log=log", "results"}), prints(expected));
}

TEST(CasetableAux, TellsTheTagOfEachFileInAListOfFiles)
{
    const TemporaryTree tree;
    makeRuns(tree);

    EXPECT_EQ(run(tree, {"-n", "T", "-a", "*.log=log", "--files", "results"}),
              prints("path,case,T,tag\n"
                     "T1/a.log,0,1,log\n"
                     "T1/b.log,0,1,log\n"
                     "T1/run.dat,0,1,\n"
                     "T2/run.dat,1,2,\n"
                     "T3/c.log,2,3,log\n"));
    EXPECT_EQ(
        Json::parse(run(tree, {"-n", "T", "-a", "*.log=log", "--files", "-f", "json", "results"})
                        .output)["files"][0]["tag"],
        "log");
}

TEST(CasetableAux, SelectsNamesWithBytesThatAreNotUtf8)
{
    const TemporaryTree tree({"results/T1/a\xff.log"});

    EXPECT_EQ(run(tree, {"-n", "T", "-a", "*.log=log", "results"}),
              prints("case,T,log,log files,files\n0,1,T1/a\xff.log,1,1\n"));
}

} // namespace tests
} // namespace casetable
