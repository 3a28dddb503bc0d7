#include "casetable/explaining/ExplainTemplate.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "casetable/templates/Matcher.h"

namespace casetable {
namespace tests {

namespace {

Explanation explained(const std::string& path, const std::vector<std::string>& templates,
                      bool inColour = false)
{
    return explain(path, TemplateList(templates), inColour);
}

} // namespace

TEST(ExplainTemplate, ShowsWhatEachColumnReadsInTheOrderOfTheColumns)
{
    const Explanation explanation = explained(
        "wingA/Mach0.80/run_Re6.5e6.vtu", {"wing{wing}/Mach{Mach:number}/*[_Re{Re:number}].vtu"});

    EXPECT_TRUE(explanation.isMatched);
    EXPECT_EQ(explanation.text, "wingA/Mach0.80/run_Re6.5e6.vtu\n"
                                "    ~  {wing}: 'A'\n"
                                "          ~~~~  {Mach:number}: '0.80'\n"
                                "                     ~~~~~  {Re:number}: '6.5e6'\n"
                                "matched by wing{wing}/Mach{Mach:number}/*[_Re{Re:number}].vtu\n");
}

TEST(ExplainTemplate, TellsTheColumnsThatAreLeftOut)
{
    EXPECT_EQ(explained("1.x", {"{a:digits}[_{b,[xy]}[_{c}]].x"}).text,
              "1.x\n"
              "~  {a:digits}: '1'\n"
              "{b,[xy]}: its part is left out\n"
              "{c}: its part is left out\n"
              "matched by {a:digits}[_{b,[xy]}[_{c}]].x\n");
}

TEST(ExplainTemplate, ShowsAValueOfNoBytes)
{
    EXPECT_EQ(explained("1.x", {"{a,(?:2)?}1.x"}).text, "1.x\n"
                                                        "  {a,(?:2)?}: ''\n"
                                                        "matched by {a,(?:2)?}1.x\n");
}

TEST(ExplainTemplate, NamesTheFirstTemplateThatFits)
{
    const std::string text = explained("1.x", {"2{a}", "{b}.x", "{c}"}).text;

    EXPECT_EQ(text, "1.x\n"
                    "~  {b}: '1'\n"
                    "matched by {b}.x\n");
}

TEST(ExplainTemplate, MarksTheElementThatFailedInTheTemplateThatCameFurthest)
{
    const Explanation explanation =
        explained("wingA/Mach/x", {"x{a}", "wing{wing}/Mach{M:number}/*"});

    EXPECT_FALSE(explanation.isMatched);
    EXPECT_EQ(explanation.text, "wingA/Mach/x\n"
                                "    ~  {wing}: 'A'\n"
                                "not matched: '{M:number}' does not fit behind 'wingA/Mach'\n"
                                "  wing{wing}/Mach{M:number}/*\n"
                                "                 ^^^^^^^^^^\n");
}

TEST(ExplainTemplate, ShowsTheWholeTemplateBehindWhichThePathGoesOn)
{
    EXPECT_EQ(explained("1/2", {"{a}"}).text,
              "1/2\n"
              "~  {a}: '1'\n"
              "not matched: the path goes on behind '1', where the template ends\n"
              "  {a}\n");
}

TEST(ExplainTemplate, MakesPathsAndTemplatesPrintable)
{
    EXPECT_EQ(explained("\x1b\n1", {"\x1b{a,\n}1"}).text, "\\x1b\\n1\n"
                                                          "    ~~  {a,\\n}: '\\n'\n"
                                                          "matched by \\x1b{a,\\n}1\n");
    EXPECT_EQ(explained("\xff", {"\xff\n{a}"}).text,
              "\\xff\n"
              "not matched: '\\xff\\n' does not fit the beginning of the path\n"
              "  \\xff\\n{a}\n"
              "  ^^^^^^\n");
}

TEST(ExplainTemplate, ColoursNothingButTheMarks)
{
    EXPECT_EQ(explained("1.y", {"{a}.x"}, true).text,
              "1.y\n"
              "\x1b[1m~~~\x1b[0m  {a}: '1.y'\n"
              "not matched: '.x' does not fit behind '1.y'\n"
              "  {a}.x\n"
              "     \x1b[1m^^\x1b[0m\n");
}

TEST(ExplainTemplate, SaysWhereTheEngineGivesUp)
{
    EXPECT_THROW(explained("z" + std::string(100, 'a'), {"{a,z(.|..)*[bc]}"}), MatchError);
}

} // namespace tests
} // namespace casetable
