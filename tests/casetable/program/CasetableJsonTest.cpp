#include <algorithm>
#include <string>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "tests/casetable/support/Program.h"
#include "tests/casetable/support/TemporaryTree.h"

namespace casetable {
namespace tests {

namespace {

using Json = nlohmann::ordered_json;

Json runJson(const TemporaryTree& tree, Arguments arguments)
{
    arguments.insert(arguments.end(), {"--format", "json", "results"});
    const Outcome outcome = run(tree, arguments);
    EXPECT_EQ(outcome.errors, "");
    return Json::parse(outcome.output);
}

} // namespace

TEST(CasetableJson, HoldsTheColumnsAndTheCases)
{
    const TemporaryTree tree({"results/T1/P_x/file", "results/T1/P_x/more", "results/T2/P_y/file"});

    EXPECT_EQ(runJson(tree, {"-n", "T", "-s", "P_"}), Json::parse(R"({
        "columns": [{"name": "T", "type": "number"}, {"name": "P_", "type": "string"}],
        "cases": [{"case": 0, "files": 2, "values": {"T": 1, "P_": "x"}},
                  {"case": 1, "files": 1, "values": {"T": 2, "P_": "y"}}]})"));
}

TEST(CasetableJson, HoldsALineForEachRow)
{
    const TemporaryTree tree({"results/T1/a", "results/T1/b\nc", "results/T2/\n"});

    for (const std::string rows : {"", "--files"}) {
        Arguments arguments = {"-n", "T", "-f", "json", "results"};
        if (!rows.empty())
            arguments.push_back(rows);
        const std::string output = run(tree, arguments).output;
        const Json json = Json::parse(output);
        const std::size_t count = json[rows.empty() ? "cases" : "files"].size();
        EXPECT_EQ(count, rows.empty() ? 2u : 3u);
        EXPECT_EQ(std::count(output.begin(), output.end(), '\n'), static_cast<int>(count) + 3)
            << output;
    }
}

TEST(CasetableJson, IsAscii)
{
    const TemporaryTree tree({"results/T1/\xc3\xa4 \xe2\x82\xac \xf0\x9f\x98\x80 \x7f\x1b \xff"});

    const std::string output = run(tree, {"-n", "T", "--files", "-f", "json", "results"}).output;

    EXPECT_TRUE(std::all_of(output.begin(), output.end(), [](char c) {
        return c == '\n' || (c >= ' ' && c <= '\x7f');
    })) << output;
    EXPECT_EQ(Json::parse(output)["files"][0]["path"],
              "T1/\xc3\xa4 \xe2\x82\xac \xf0\x9f\x98\x80 \x7f\x1b \xef\xbf\xbd");
}

TEST(CasetableJson, KeepsTextsWhateverTheyHold)
{
    const TemporaryTree tree;
    const std::string text = "quote\" \n\r\t\b\f\x01\x7f <script> {}[],: \xe2\x80\xa8\xe2\x80\xae";
    tree.file("results/T_" + text + "/back\\slash " + text);

    const Json json = runJson(tree, {"-s", "T_", "--files"});

    EXPECT_EQ(json["files"][0]["values"]["T_"], text);
    EXPECT_EQ(json["files"][0]["path"], "T_" + text + "/back\\slash " + text);
}

TEST(CasetableJson, ReplacesBytesThatAreNotUtf8)
{
    const TemporaryTree tree({"results/M\xfe_a\xff z/file"});

    const Json json = runJson(tree, {"-s", "M\xfe_"});

    EXPECT_EQ(json["columns"][0]["name"], "M\xef\xbf\xbd_");
    EXPECT_EQ(json["cases"][0]["values"]["M\xef\xbf\xbd_"], "a\xef\xbf\xbd z");
}

TEST(CasetableJson, KeepsEveryValueWhereNamesDifferOnlyInBytesThatAreNotUtf8)
{
    const TemporaryTree tree({"results/\xfe_one/\xff_two/file"});

    const Json json = runJson(tree, {"-s", "\xfe_", "-s", "\xff_"});

    ASSERT_EQ(json["cases"].size(), 1u);
    EXPECT_EQ(json["cases"][0]["values"].size(), 2u) << json;
}

TEST(CasetableJson, KeepsTheFilesOfTagsThatDifferOnlyInBytesThatAreNotUtf8)
{
    const TemporaryTree tree({"results/T1/a.log", "results/T1/b.dat"});

    const Json json = runJson(tree, {"-n", "T", "-a", "*.log=\xfe", "-a", "*.dat=\xff"});

    EXPECT_EQ(json["cases"][0]["aux"],
              Json({{"\xef\xbf\xbd", {"T1/a.log"}}, {"\xef\xbf\xbd(2)", {"T1/b.dat"}}}));
}

TEST(CasetableJson, NamesColumnsOfOneMarkerApartWithAndWithoutCases)
{
    const TemporaryTree tree({"results/T1/T2.dat"});

    const Json found = runJson(tree, {"-n", "T", "-n", "T"});
    const Outcome nothing = run(tree, {"-n", "T", "-n", "T", "-n", "Q", "-f", "json", "results"});

    EXPECT_EQ(found["cases"][0]["values"], Json({{"T", 1}, {"T(2)", 2}}));
    EXPECT_EQ(nothing.exitCode, 1) << nothing;
    EXPECT_EQ(Json::parse(nothing.output)["columns"][1]["name"], "T(2)") << nothing;
}

TEST(CasetableJson, IsAnObjectWithoutRowsWhenThereAreNoCases)
{
    const TemporaryTree tree({"results/"});

    const Outcome outcome = run(tree, {"-n", "T", "-f", "json", "results"});

    EXPECT_EQ(outcome.exitCode, 1) << outcome;
    EXPECT_EQ(Json::parse(outcome.output),
              Json::parse(R"({"columns": [{"name": "T", "type": "number"}], "cases": []})"));
}

TEST(CasetableJson, ListsFilesAndUnmatchedFilesInPlaceOfCases)
{
    const TemporaryTree tree({"results/T1/file", "results/other"});

    EXPECT_EQ(runJson(tree, {"-n", "T", "--files"}), Json::parse(R"({
        "columns": [{"name": "T", "type": "number"}],
        "files": [{"path": "T1/file", "case": 0, "values": {"T": 1}}]})"));
    EXPECT_EQ(runJson(tree, {"-n", "T", "--unmatched"})["unmatched"], Json::parse(R"(
        [{"path": "other", "marker": "T", "reason": "not found"}])"));
}

TEST(CasetableJson, HoldsNumbersOfNumberColumnsAloneAndNullForNoValue)
{
    const TemporaryTree tree({"results/T0012/P_0012/a", "results/T5D+1/P_/a"});

    const Json cases = runJson(tree, {"-n", "T", "-s", "P_"})["cases"];

    EXPECT_EQ(cases[0]["values"], Json({{"T", 12}, {"P_", "0012"}}));
    EXPECT_EQ(cases[1]["values"], Json({{"T", nullptr}, {"P_", nullptr}}));
}

TEST(CasetableJsonLines, HoldAnObjectForEachRow)
{
    const TemporaryTree tree(
        {"results/T1.50/P_x/a.log", "results/T1.50/P_x/b.log", "results/T2/P_/c"});

    EXPECT_EQ(
        run(tree, {"-n", "T", "-s", "P_", "-a", "*.log=log", "-f", "jsonl", "results"}),
        prints(
            R"({"case":0,"T":1.50,"P_":"x","log":["T1.50/P_x/a.log","T1.50/P_x/b.log"],"files":2})"
            "\n"
            R"({"case":1,"T":2,"P_":null,"log":[],"files":1})"
            "\n"));
    EXPECT_EQ(run(tree, {"-n", "T", "--files", "--exclude", "*.log", "-f", "jsonl", "results"}),
              prints("{\"path\":\"T2/P_/c\",\"case\":0,\"T\":2}\n"));
}

TEST(CasetableJsonLines, NameColumnsApart)
{
    const TemporaryTree tree({"results/case1/files2/\xfe_3/\xff_4/x"});

    EXPECT_EQ(run(tree, {"-n", "case", "-n", "files", "-n", "\xfe_", "-n", "\xff_", "-f", "jsonl",
                         "results"}),
              prints("{\"case\":0,\"case(2)\":1,\"files(2)\":2,\"\\ufffd_\":3,\"\\ufffd_(2)\":4,"
                     "\"files\":1}\n"));
}

TEST(CasetableJsonLines, AreNoneWithoutRows)
{
    const TemporaryTree tree({"results/"});

    EXPECT_EQ(run(tree, {"-n", "T", "-o", "out.jsonl", "results"}),
              fails(1, "no file matched: there is no file below results"));
    EXPECT_EQ(tree.content("out.jsonl"), "");
}

} // namespace tests
} // namespace casetable
