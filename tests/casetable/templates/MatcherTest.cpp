#include "casetable/templates/Matcher.h"

#include <cstddef>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace casetable {
namespace tests {

namespace {

// The values of a path, each behind its column's name; "-" for one that is left out.
std::string read(const std::string& text, const std::string& path)
{
    const Template pathTemplate(text);
    Matcher matcher(pathTemplate);
    if (!matcher.match(path))
        return "no match";
    std::string values;
    for (std::size_t k = 0; k < pathTemplate.columns().size(); ++k) {
        const Span& span = matcher.columns()[k];
        values += (k > 0 ? " " : "") + pathTemplate.columns()[k].name + "=" +
                  (span.isLeftOut ? "-" : path.substr(span.begin, span.length));
    }
    return values;
}

struct Row {
    std::string text;
    std::string path;
    std::string values;
};

void expectRead(const std::vector<Row>& rows)
{
    for (const Row& row : rows)
        EXPECT_EQ(read(row.text, row.path), row.values)
            << testing::PrintToString(row.text) << " " << testing::PrintToString(row.path);
}

std::string shown(const std::vector<Span>& spans)
{
    std::string text;
    for (const Span& span : spans)
        text += (span.isLeftOut ? "-" : "") + std::to_string(span.begin) + "+" +
                std::to_string(span.length) + " ";
    return text;
}

} // namespace

TEST(Matcher, FitsTheWholePathByteForByte)
{
    expectRead({{"a/{x}.b", "a/y.b", "x=y"},
                {"a/{x}.b", "a/y.bc", "no match"},
                {"a/{x}.b", "za/y.b", "no match"},
                {"a/{x}.b", "a/yxb", "no match"},
                {"a/{x}.b", "a/y.b\n", "no match"},
                {"{x}", "", "no match"},
                {"a.(b|c)+^${x}", "a.(b|c)+^$1", "x=1"},
                {"\\*\\[\\?\\\\{x}", "*[?\\1", "x=1"},
                {"\xc3\xa4\x01 #\t{x}", "\xc3\xa4\x01 #\t\xff", "x=\xff"},
                {"-{x}", "-\n", "x=\n"}});
}

TEST(Matcher, ReadsEachKindOfColumn)
{
    expectRead({{"{a}_{b}", "x_y_z", "a=x b=y_z"},
                {"{a}{b}", "xyz", "a=x b=yz"},
                {"{a}", "x/y", "no match"},
                {"{a:word}{b}", "xY9_z", "a=xY9 b=_z"},
                {"{a:word}{b}", "xyz", "a=xy b=z"},
                {"{a:word}", "x_y", "no match"},
                {"{a:digits}{b}", "0123x", "a=0123 b=x"},
                {"{a:digits}", "1.5", "no match"},
                {"{a:digits4}-{b:digits2}", "2024-05", "a=2024 b=05"},
                {"{a:digits4}-{b:digits2}", "2024-5", "no match"},
                {"{a:text3}{b:word2}", "_-.x1", "a=_-. b=x1"},
                {"{a:text3}", "a/b", "no match"},
                {"{a:path}/{b}", "x/y/z", "a=x/y b=z"},
                {"{a:path}_*", "x/y_z_1", "a=x/y"}});
}

TEST(Matcher, ReadsNumbersAsFarAsTheyFit)
{
    expectRead({{"BE{n:number}", "BE-12", "n=-12"},
                {"{n:number}*", "+1.5e-3x", "n=+1.5e-3"},
                {"{n:number}*", "6.5E6.csv", "n=6.5E6"},
                {"{n:number}*", "5.", "n=5"},
                {"{n:number}*", ".5", "n=.5"},
                {"{n:number}*", "-.5e", "n=-.5"},
                {"{n:number}*", "1e+", "n=1"},
                {"{n:number}*", "1.2.3", "n=1.2"},
                {"{n:number}e5", "1e5", "n=1"},
                {"{n:number}", "5.", "no match"},
                {"{n:number}", "1d5", "no match"},
                {"{n:number}", "-", "no match"}});
}

TEST(Matcher, ReadsExpressionsAsTheySay)
{
    expectRead({{"{a,a|ab}*", "abc", "a=a"},
                {"{a,nk|n2}/{b}", "n2/x", "a=n2 b=x"},
                {"{a,[a-z]{3}}{b,[A-Z]\\d+}", "sgpC1", "a=sgp b=C1"},
                {"{a,.*}/{b}", "x/y/z", "a=x/y b=z"},
                {"x{a,}y", "xy", "a="},
                {"{a,(x)(y)}{b}{b}", "xyzz", "a=xy b=z"},
                {"{a,.}b", "\nb", "no match"},
                {"{a:number,\\d}{b}", "12", "a=1 b=2"}});
}

TEST(Matcher, KeepsAnExpressionsWaysToItself)
{
    expectRead({{"{a,(?i)x}x{b}", "Xx1", "a=X b=1"},
                {"{a,(?i)x}x{b}", "XX1", "no match"},
                {"{a,(?x)x # y}#{b}", "x#1", "a=x b=1"},
                {"{a,\\Qx.}y{b}", "x.y1", "a=x. b=1"},
                {"{a,\\Qx.}y{b}", "xzy1", "no match"},
                {"{a,x|y}z{b}", "xz1", "a=x b=1"},
                {"{a,x|y}z{b}", "x", "no match"},
                {"{a,(?s).}{b,.}", "\n\n", "no match"},
                {"{a,\\x{78}\\Q|\\E}{b}", "x|1", "a=x| b=1"}});
}

TEST(Matcher, ReadsTheSameBytesWhereANameStandsAgain)
{
    expectRead({{"{a}/{a}_{b}", "x/x_1", "a=x b=1"},
                {"{a}/{a}_{b}", "x/y_1", "no match"},
                {"{a:word}*{a}", "abab", "a=ab"},
                {"{a,}x{a}", "x", "a="},
                {"[{a}/]{b}[-{a}]", "x/y-x", "a=x b=y"},
                {"[{a}/]{b}[-{a}]", "y-x", "a=- b=y-x"},
                {"[{a}/]*{a}", "x", "no match"}});
}

TEST(Matcher, TakesAsFewBytesForWildcardsAsFit)
{
    expectRead({{"*_{a}", "x_y_z", "a=y_z"},
                {"*{a}", "xyz", "a=xyz"},
                {"?{a}", "xyz", "a=yz"},
                {"?{a}", "/z", "no match"},
                {"*/{a}", "x/y/z", "no match"},
                {"**{a:digits}", "x/12", "a=12"},
                {"**/{a}", "x", "a=x"},
                {"**/{a}", "x/y/z", "a=z"},
                {"**/{a}/**", "x/y/z", "a=x"},
                {"**/s-{a}/**", "x/s-1/s-2/z", "a=1"},
                {"x**/{a}", "xy/z/1", "a=1"},
                {"x**/{a}", "xy/z", "a=z"},
                {"**/{a}", "/x", "no match"}});
}

TEST(Matcher, TakesAnOptionalPartWhereItCan)
{
    expectRead({{"{s}/[ses-{e}/]{f}.nii", "1/ses-2/x.nii", "s=1 e=2 f=x"},
                {"{s}/[ses-{e}/]{f}.nii", "1/x.nii", "s=1 e=- f=x"},
                {"{a:word}[_{b}[_{c}]]", "1_2_3", "a=1 b=2 c=3"},
                {"{a:word}[_{b:word}[_{c}]]", "1_2", "a=1 b=2 c=-"},
                {"{a:word}[_{b:word}][_{c:word}]", "1_2", "a=1 b=2 c=-"},
                {"[0]{n:number}", "023523", "n=23523"},
                {"[0]{n:number}", "23523", "n=23523"},
                {"x[{a:digits}]{b:digits}", "x1", "a=- b=1"},
                {"[{loc}]x", "x", "loc=-"},
                {"{a}[]", "x", "a=x"}});
}

TEST(Matcher, LooksForOptionalPartsBehindAWildcard)
{
    expectRead({{"*[_r-{r:digits}].nii", "x_r-1.nii", "r=1"},
                {"*[_r-{r:digits}].nii", "x.nii", "r=-"},
                {"*[_r-{r:digits}]*.nii", "x_r-1_y.nii", "r=1"},
                {"*[_a{a:digits}][_b{b:digits}].c", "x_a1_b2.c", "a=1 b=2"},
                {"*[_a{a:digits}][_b{b:digits}].c", "x_b2.c", "a=- b=2"},
                {"*[_a{a:digits}][_b{b:digits}].c", "x_a1.c", "a=1 b=-"},
                {"*[_a{a:digits}][_b{b:digits}].c", "x.c", "a=- b=-"},
                {"*[_a{a:digits}][_b{b:digits}]*", "x_a1y_b2", "a=1 b=2"},
                {"*[_a{a:digits}][_b{b:digits}]**", "x_a1y_b2", "a=1 b=2"},
                {"**[_a{a:digits}][_b{b:digits}]*", "x_a1y_b2", "a=1 b=-"},
                {"*[_a{a:digits}]*[_b{b:digits}]*", "x_a1y_b2", "a=1 b=2"},
                {"*[_a{a:digits}][_b{b:digits}]*", "x_b2_a1", "a=1 b=-"},
                {"**[s-{s}/]*", "x/s-1/y", "s=1"},
                {"*[s-{s}/]**", "x/s-1/y", "s=-"},
                {"?[_{a}]*", "x_1", "a=1"},
                {"[*[_a{a:digits}]]*", "x_a1_", "a=1"},
                {"*[_a{a:digits}][_{a}]z", "x_a1_1z", "a=1"},
                {"*[_a{a:digits}][_{a}]z", "x_1z", "a=-"}});
}

TEST(Matcher, LooksForNoPartsBehindAColumn)
{
    expectRead({{"{x}[_a{a:digits}]*", "x_a1", "x=x a=1"},
                {"{x}[_a{a:digits}]*", "yx_a1", "x=y a=-"},
                {"**/[s-{s}/]**", "x/s-1/y", "s=-"}});
}

TEST(Matcher, GivesLeftOutColumnsTheirPlaces)
{
    const Template pathTemplate("{a}/*[_r{r:digits}][_s{s:digits}[_t{t}]].x[{z}]");
    Matcher matcher(pathTemplate);
    EXPECT_EQ(shown(matcher.columnSpans("q/y_s1.x")), "0+1 -3+0 5+1 -6+0 -8+0 ");
    EXPECT_EQ(shown(matcher.columnSpans("q/y_r7.x")), "0+1 5+1 -6+0 -6+0 -8+0 ");
    EXPECT_EQ(shown(matcher.columnSpans("q/y.x")), "0+1 -3+0 -3+0 -3+0 -5+0 ");
    EXPECT_EQ(shown(matcher.columnSpans("q/y.z")), "");
}

TEST(Matcher, TellsWhatEachElementHas)
{
    const Template pathTemplate("a/*[_{x:digits}]*?{y}");
    Matcher matcher(pathTemplate);
    // a/, *, the part, _, {x}, *, ?, {y}
    EXPECT_EQ(shown(matcher.elementSpans("a/b_1cd")), "0+2 2+1 3+2 3+1 4+1 5+0 5+1 6+1 ");
    EXPECT_EQ(shown(matcher.elementSpans("a/bcd")), "0+2 2+0 -2+0 -2+0 -2+0 2+0 2+1 3+2 ");
    EXPECT_EQ(shown(matcher.elementSpans("b")), "");
}

TEST(Matcher, FindsTheLongestBeginningThatFits)
{
    struct Expected {
        std::string path;
        std::size_t elements;
        std::size_t end;
        std::string columns;
    };
    const Template pathTemplate("wing{w}/Mach{m:number}[_{r:digits}]/*_Re{n:number}.csv");
    // wing, {w}, /, Mach, {m}, the part, /, *, _Re, {n}, .csv
    Matcher matcher(pathTemplate);
    for (const Expected& row :
         std::vector<Expected>{{"flap/x", 0, 0, "-0+0 -0+0 -0+0 -0+0 "},
                               {"wingAB", 2, 6, "4+2 -0+0 -0+0 -0+0 "},
                               {"wingAB/mach1/", 3, 7, "4+2 -0+0 -0+0 -0+0 "},
                               {"wingAB/Mach/", 4, 11, "4+2 -0+0 -0+0 -0+0 "},
                               {"wingAB/Mach0.5_x/a", 6, 14, "4+2 11+3 -0+0 -0+0 "},
                               {"wingA/Mach1_2/ab_re6.csv", 8, 24, "4+1 10+1 12+1 -0+0 "},
                               {"wingA/Mach1/a_Re6.dat", 10, 17, "4+1 10+1 -0+0 16+1 "},
                               {"wingA/Mach1/a_Re6.csv.old", 11, 21, "4+1 10+1 -0+0 16+1 "},
                               {"wingA/Mach1/a_Re6.csv", 11, 21, "4+1 10+1 -0+0 16+1 "}}) {
        const Beginning longest = matcher.longestBeginning(row.path);
        EXPECT_EQ(longest.elements, row.elements) << row.path;
        EXPECT_EQ(longest.end, row.end) << row.path;
        EXPECT_EQ(shown(longest.columns), row.columns) << row.path;
    }
}

TEST(Matcher, TellsThePathOnWhichTheEngineGivesUp)
{
    Matcher matcher(Template("{a,(x+x+)+y}{b:word}"));
    const std::string path = std::string(60, 'x') + "-y-";
    try {
        matcher.match(path);
        ADD_FAILURE() << "it did not give up";
    } catch (const MatchError& error) {
        EXPECT_EQ(error.path, path);
        EXPECT_EQ(error.reason, "match limit exceeded");
        EXPECT_EQ(error.what(), path + ": match limit exceeded");
    }
    EXPECT_TRUE(matcher.match("xxyz"));
}

TEST(Matcher, ReadsPathsOfManyFoldersWithSeveralWildcards)
{
    std::string path;
    for (int k = 0; k < 60; ++k)
        path += "f" + std::to_string(k) + "/";
    const std::string text = "**/{a}/**/{b}/**/{c}/**/{d}/";
    EXPECT_EQ(read(text + "x", path + "x"), "a=f0 b=f1 c=f2 d=f59");
    EXPECT_EQ(read(text + "x[y]", path + "z"), "no match");
}

TEST(Matcher, ReadsAThousandOptionalPartsOrRefusesThem)
{
    std::string text = "q";
    std::string path = "q";
    for (int k = 0; k < 1000; ++k) {
        const std::string number = std::to_string(k);
        text += "[_" + number + "-{k" + number + ":digits}]";
        if (k % 3 == 0)
            path += "_" + number + "-7";
    }
    const Template pathTemplate(text);
    Matcher matcher(pathTemplate);
    ASSERT_TRUE(matcher.match(path));
    for (std::size_t k = 0; k < 1000; ++k)
        ASSERT_EQ(matcher.columns()[k].isLeftOut, k % 3 != 0) << k;
    EXPECT_FALSE(matcher.match(path + "x"));
    EXPECT_THROW(Template("*" + text.substr(1)), TemplateError);
}

TEST(Matcher, LooksForKeysInTheirOrderAmongOthers)
{
    const std::string text = "*[_a-{a}]*[_b-{b}]*[_c-{c}]*[_d-{d}]*[_e-{e}]*.nii";
    EXPECT_EQ(read(text, "s_a-1_x-1_c-22_y_z_w_e-1_x.nii"), "a=1 b=- c=2 d=- e=1");
    EXPECT_EQ(read(text, "s_b-1_a-1_x-1_x-1_x-1_y_z_w.nii"), "a=1 b=- c=- d=- e=-");
    EXPECT_EQ(read(text, "s_a-1_b-2_c-3_d-4_e-5_x-1_x-2_x-3_x-4_x-5_bold.json"), "no match");
}

TEST(Matcher, ServesThreadsThatShareATemplate)
{
    const Template pathTemplate("*[_a-{a:digits}]*[_b-{b:digits}]*");
    std::vector<std::thread> threads;
    std::vector<int> wrong(4, 0);
    for (std::size_t t = 0; t < wrong.size(); ++t) {
        threads.emplace_back([&pathTemplate, &wrong, t] {
            Matcher matcher(pathTemplate);
            for (std::size_t k = 0; k < 500; ++k) {
                const std::string path = "x_a-" + std::to_string(k) + "_b-" + std::to_string(t);
                const bool fits = matcher.match(path);
                const Span b = fits ? matcher.columns()[1] : Span();
                wrong[t] += path.substr(b.begin, b.length) != std::to_string(t);
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(wrong, std::vector<int>(4, 0));
}

TEST(Matcher, FitsEscapedTextToItself)
{
    for (const std::string text : {"plain", "a[x]*?\\{y}", "{", "\\", "**/", "\n\xff"}) {
        EXPECT_EQ(read(escaped(text) + "{k}", text + "1"), "k=1") << text;
        EXPECT_EQ(read(escaped(text) + "{k}", "other1"), "no match") << text;
    }
}

} // namespace tests
} // namespace casetable
