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
    const TemporaryTree tree({"results/T1/P_x/file", "results/T2/P_y/file"});

    EXPECT_EQ(runJson(tree, {"-n", "T", "-s", "P_"}), Json::parse(R"({
        "columns": [{"name": "T", "type": "number"}, {"name": "P_", "type": "string"}],
        "cases": [{"case": 0, "values": {"T": "1", "P_": "x"}},
                  {"case": 1, "values": {"T": "2", "P_": "y"}}]})"));
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

    EXPECT_EQ(found["cases"][0]["values"], Json({{"T", "1"}, {"T(2)", "2"}}));
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
        "files": [{"path": "T1/file", "case": 0, "values": {"T": "1"}}]})"));
    EXPECT_EQ(runJson(tree, {"-n", "T", "--unmatched"})["unmatched"], Json::parse(R"(
        [{"path": "other", "marker": "T", "reason": "not found"}])"));
}

} // namespace tests
} // namespace casetable
