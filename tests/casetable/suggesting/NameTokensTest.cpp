#include "casetable/suggesting/NameTokens.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/crawler/PlainMatching.h"

namespace casetable {
namespace tests {

namespace {

using Names = std::vector<std::string>;

// The tokens of the last of `names`, with their kinds; the others tell what is a sign.
std::string tokens(const Names& names)
{
    Signs signs;
    for (const std::string& name : names)
        signs.look(name);
    std::string text;
    for (const Token& token : tokensOf(names.back(), signs)) {
        text += text.empty() ? "" : " ";
        text += token.kind == Token::Kind::Word        ? 'w'
                : token.kind == Token::Kind::Separator ? 's'
                : token.kind == Token::Kind::Number    ? 'n'
                                                       : 'N';
        text += ':' + std::string(token.in(names.back()));
    }
    return text;
}

std::string stem(const std::string& name)
{
    return name.substr(0, beginOfExtensions(name, tokensOf(name, Signs())));
}

} // namespace

TEST(NameTokens, AreNotLookedForInNamesThatNoFileHas)
{
    const std::string longest = "a" + std::string(longestName - 1, '1');
    EXPECT_EQ(tokens({longest}).substr(0, 6), "w:a n:");
    EXPECT_EQ(tokens({longest + "1"}), "s:" + longest + "1");
}

TEST(NameTokens, AreWordsSeparatorsAndNumbers)
{
    EXPECT_EQ(tokens({"run_0007_Re6.5e6.dat"}), "w:run s:_ n:0007 s:_ w:Re n:6.5e6 s:. w:dat");
    EXPECT_EQ(tokens({"T300.dat"}), "w:T n:300 s:. w:dat");
    EXPECT_EQ(tokens({""}), "");
    EXPECT_EQ(tokens({"\xce\xb1=5"}), "w:\xce\xb1 s:= n:5");
}

TEST(NameTokens, DivideWordsBeforeCapitals)
{
    EXPECT_EQ(tokens({"wingA"}), "w:wing w:A");
    EXPECT_EQ(tokens({"WINGa"}), "w:WINGa");
    EXPECT_EQ(tokens({"kEpsilon"}), "w:kEpsilon");
    EXPECT_EQ(tokens({"kOmegaSST"}), "w:kOmega w:SST");
}

TEST(NameTokens, TakeADashForASignWhereOtherNamesHaveNone)
{
    EXPECT_EQ(tokens({"run-0007"}), "w:run s:- n:0007");
    EXPECT_EQ(tokens({"run7", "run-0007"}), "w:run s:- n:0007");
    EXPECT_EQ(tokens({"AoA-2.5"}), "w:Ao w:A s:- n:2.5");
    EXPECT_EQ(tokens({"AoA2.5", "AoA-2.5"}), "w:Ao w:A n:-2.5");
    EXPECT_EQ(tokens({"AoA+2.5", "AoA-2.5"}), "w:Ao w:A n:-2.5");
    EXPECT_EQ(tokens({"a=-2"}), "w:a s:= n:-2");
    EXPECT_EQ(tokens({"-2"}), "n:-2");
}

TEST(NameTokens, KeepDatesTimesAndVersionsTogether)
{
    EXPECT_EQ(tokens({"log_2024-01-31_Re5"}), "w:log s:_ N:2024-01-31 s:_ w:Re n:5");
    EXPECT_EQ(tokens({"2024_01_31"}), "N:2024_01_31");
    EXPECT_EQ(tokens({"20240131T123000"}), "N:20240131T123000");
    EXPECT_EQ(tokens({"2024-01-31T12:30:00"}), "N:2024-01-31T12:30:00");
    EXPECT_EQ(tokens({"v1.2.3"}), "w:v N:1.2.3");
    EXPECT_EQ(tokens({"300_5"}), "n:300 s:_ n:5");
}

TEST(NameTokens, KeepDecimalCommasInTheirNumbers)
{
    EXPECT_EQ(tokens({"M0,75_A2"}), "w:M N:0,75 s:_ w:A n:2");
    EXPECT_EQ(tokens({"x=1,y=2"}), "w:x s:= n:1 s:, w:y s:= n:2");
}

TEST(NameTokens, CoverAnyNameWithoutAGap)
{
    plain::Random random(7);
    for (int round = 0; round < 20000; ++round) {
        const std::string name = plain::randomText(random, "aZT01_-+.=:e \xff\n", 12);
        Signs signs;
        signs.look(name);
        const std::vector<Token> tokens = tokensOf(name, signs);
        std::size_t end = 0;
        for (const Token& token : tokens) {
            ASSERT_EQ(token.begin, end) << name;
            ASSERT_LT(token.begin, token.end) << name;
            end = token.end;
            std::string value;
            if (token.kind == Token::Kind::Number) {
                ASSERT_TRUE(plain::number(name.substr(token.begin), value)) << name;
                ASSERT_EQ(value, token.in(name)) << name;
            }
        }
        ASSERT_EQ(end, name.size());
        ASSERT_LE(beginOfExtensions(name, tokens), name.size());
    }
}

TEST(NameTokens, EndBeforeTheExtensionsOfAFile)
{
    EXPECT_EQ(stem("a.tar.gz"), "a");
    EXPECT_EQ(stem("flow.0001.vtu"), "flow.0001");
    EXPECT_EQ(stem("Mach0.80"), "Mach0.80");
    EXPECT_EQ(stem("Re6.5e6.dat"), "Re6.5e6");
    EXPECT_EQ(stem(".hidden"), ".hidden");
    EXPECT_EQ(stem("mesh.h5"), "mesh");
}

} // namespace tests
} // namespace casetable
