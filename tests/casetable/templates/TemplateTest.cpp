#include "casetable/templates/Template.h"

#include <cstddef>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "casetable/templates/TemplateList.h"

namespace casetable {
namespace tests {

namespace {

struct Refused {
    std::string text;
    std::size_t position;
    std::string reason; // Its beginning.
};

void expectRefused(const std::vector<Refused>& rows)
{
    for (const Refused& row : rows) {
        SCOPED_TRACE(row.text);
        try {
            const Template read(row.text);
            ADD_FAILURE() << "it was read";
        } catch (const TemplateError& error) {
            EXPECT_EQ(error.text, row.text);
            EXPECT_EQ(error.position, row.position);
            EXPECT_EQ(std::string(error.what()).substr(0, row.reason.size()), row.reason);
        }
    }
}

using Kinds = std::vector<TemplateElement::Kind>;

Kinds kindsOf(const std::string& text)
{
    const Template read(text);
    Kinds kinds;
    for (const TemplateElement& element : read.elements())
        kinds.push_back(element.kind);
    return kinds;
}

std::string columnsOf(const std::vector<TemplateColumn>& columns)
{
    std::string text;
    for (const TemplateColumn& column : columns)
        text += column.name + (column.isNumber ? "# " : " ");
    return text;
}

std::string repeated(const std::string& text, std::size_t count)
{
    std::string all;
    for (std::size_t k = 0; k < count; ++k)
        all += text;
    return all;
}

} // namespace

TEST(Template, HasItsColumnsInTheOrderInWhichTheirNamesFirstAppear)
{
    EXPECT_EQ(
        columnsOf(Template("{b}_[{a:number}][{_x9:word}]{a}/{b}{C,x}{d:number,1|2}").columns()),
        "b a# _x9 C d# ");
    EXPECT_EQ(columnsOf(Template("{a:digits}{b:digits3}{c:text}{d:path}").columns()), "a b c d ");
}

TEST(Template, TakesNamesOfAnyLength)
{
    const std::string name = repeated("long_name_", 100);
    EXPECT_EQ(columnsOf(Template("{" + name + "}_{" + name + "}").columns()), name + " ");
}

TEST(Template, KeepsItsTextAndThePlacesOfItsElements)
{
    const std::string text = "a/b\\*{n:number}[_{x}]**";
    const Template read(text);
    EXPECT_EQ(read.text(), text);
    std::vector<std::string> pieces;
    for (const TemplateElement& element : read.elements())
        pieces.push_back(text.substr(element.position, element.length));
    EXPECT_EQ(pieces, (std::vector<std::string>{"a/", "b\\*", "{n:number}", "[_{x}]", "**"}));
    EXPECT_EQ(read.elements()[1].text, "b*");
    EXPECT_EQ(read.elements()[3].elements[1].position, 17u);
}

TEST(Template, KnowsWholeFoldersWhereAComponentBegins)
{
    using Kind = TemplateElement::Kind;
    EXPECT_EQ(kindsOf("**/{a}"), (Kinds{Kind::Folders, Kind::Column}));
    EXPECT_EQ(kindsOf("x/**/{a}"), (Kinds{Kind::Text, Kind::Folders, Kind::Column}));
    EXPECT_EQ(kindsOf("**/**/{a}"), (Kinds{Kind::Folders, Kind::Folders, Kind::Column}));
    EXPECT_EQ(kindsOf("[x/]**/{a}"), (Kinds{Kind::Part, Kind::Folders, Kind::Column}));
    EXPECT_EQ(kindsOf("[[x/]]**/{a}"), (Kinds{Kind::Part, Kind::Folders, Kind::Column}));
    EXPECT_EQ(kindsOf("[**/]**/{a}"), (Kinds{Kind::Part, Kind::Folders, Kind::Column}));
    EXPECT_EQ(Template("x[**/{a}]").elements()[1].elements[0].kind, Kind::Folders);

    EXPECT_EQ(kindsOf("x**/{a}"), (Kinds{Kind::Text, Kind::AllBytes, Kind::Text, Kind::Column}));
    EXPECT_EQ(kindsOf("[x]**/{a}"), (Kinds{Kind::Part, Kind::AllBytes, Kind::Text, Kind::Column}));
    EXPECT_EQ(kindsOf("[]**/{a}"), (Kinds{Kind::Part, Kind::AllBytes, Kind::Text, Kind::Column}));
    EXPECT_EQ(kindsOf("{a,x/}**/"), (Kinds{Kind::Column, Kind::AllBytes, Kind::Text}));
    EXPECT_EQ(kindsOf("**{a}"), (Kinds{Kind::AllBytes, Kind::Column}));
}

TEST(Template, RefusesWhatClosesNothingOrIsNotClosed)
{
    expectRefused({{"{a}]", 3, "this ] closes nothing"},
                   {"[{a}]]", 5, "this ] closes nothing"},
                   {"x}{a}", 1, "this } closes nothing"},
                   {"{a}[x", 3, "this [ is not closed"},
                   {"{a}[x[y]", 3, "this [ is not closed"},
                   {"{a", 0, "this { is not closed"},
                   {"x{", 1, "this { is not closed"},
                   {"{a:word", 0, "this { is not closed"},
                   {"{a,x", 0, "this { is not closed"},
                   {"{a,x{2}", 0, "this { is not closed"},
                   {"{a,x\\}", 0, "this { is not closed"},
                   {"{a,x\\", 0, "this { is not closed"}});
}

TEST(Template, RefusesABackslashBeforeAnythingButItsOwnBytes)
{
    const std::string reason = "a backslash stands only before one of \\ * ? [ ] { }";
    expectRefused({{"a\\b{a}", 1, reason}, {"{a}\\", 3, reason}, {"{a}\\/", 3, reason}});
    EXPECT_EQ(Template("\\\\\\*\\?\\[\\]\\{\\}{a}").elements()[0].text, "\\*?[]{}");
}

TEST(Template, RefusesNamesThatAreNone)
{
    const std::string reason = "a column's name is a letter or _";
    expectRefused({{"{}", 1, reason},
                   {"{1a}", 1, reason},
                   {"{a b}", 2, reason},
                   {"{a-b}", 2, reason},
                   {"{\xc3\xa4}", 1, reason},
                   {"{a{b}}", 2, reason},
                   {"{:word}", 1, reason},
                   {"x{case}", 2, "the table has a column of that name itself"},
                   {"{path:word}", 1, "the table has a column of that name itself"},
                   {"{files,x}", 1, "the table has a column of that name itself"}});
    EXPECT_EQ(columnsOf(Template("{Case}{paths}").columns()), "Case paths ");
}

TEST(Template, RefusesUnknownTypes)
{
    expectRefused({{"{a:int}", 3, "unknown type"},
                   {"{a:}", 3, "unknown type"},
                   {"{a:Word}", 3, "unknown type"},
                   {"{a:word }", 3, "unknown type"},
                   {"{a:digits3x}", 3, "unknown type"},
                   {"{a:number3}", 3, "unknown type"},
                   {"{a:path2}", 3, "unknown type"},
                   {"{a:digits0}", 9, "a width is from 1 to 65535 bytes"},
                   {"{a:text65536}", 7, "a width is from 1 to 65535 bytes"},
                   {"{a:text99999999999999999999}", 7, "a width is from 1 to 65535 bytes"},
                   {"{a:word,x}", 3, "a column with an expression is a number or has no type"},
                   {"{a:text3,x}", 3, "a column with an expression is a number or has no type"}});
}

TEST(Template, RefusesATypeOrAnExpressionGivenAgain)
{
    const std::string reason = "a column has its type or expression where its name stands first";
    expectRefused({{"{a:word}_{a:word}", 12, reason},
                   {"{a}[{a:number}]", 7, reason},
                   {"{a,x}_{a,x}", 9, reason}});
}

TEST(Template, RefusesTextsThatReadNothingAndAsterisksWithoutMeaning)
{
    expectRefused({{"", 0, "the template has no columns"},
                   {"a/*/[b]", 0, "the template has no columns"},
                   {"{a}/***", 4, "more than two asterisks have no meaning"},
                   {"****/{a}", 0, "more than two asterisks have no meaning"}});
}

TEST(Template, RefusesWhatIsTooLargeOrTooDeep)
{
    expectRefused({{"{a}" + std::string(Template::maxSize, 'x'), Template::maxSize,
                    "the template is longer than 65536 bytes"},
                   {"{a}" + repeated("[x", 101) + repeated("]", 101), 203,
                    "parts are nested more than 100 deep"},
                   {"{a}" + repeated("*[" + std::string(60, '.') + "]", 1000), 0,
                    "the template is too large: "}});
    EXPECT_NO_THROW(Template("{a}" + repeated("[x*", 100) + repeated("]", 100)));
}

TEST(Template, TellsWhereAnExpressionIsWrong)
{
    expectRefused({{"x{a,(b}", 6, "missing closing parenthesis"},
                   {"{a,b)(c}", 4, "unmatched closing parenthesis"},
                   {"{a,*}", 3, "quantifier does not follow a repeatable item"},
                   {"{a:number,[b}", 12, "missing terminating ] for character class"},
                   {"{a,x(?#c}", 8, "missing ) after (?# comment"}});
}

TEST(Template, RefusesExpressionsThatReachBeyondThemselves)
{
    const std::string groups =
        "an expression in a template refers to no group and has no conditions";
    const std::string verbs = "an expression in a template has no verbs";
    const std::string names = "an expression in a template names no groups";
    const std::string captures = "the parentheses of an expression in a template capture nothing";
    const std::string callouts = "an expression in a template has no callouts";
    expectRefused({{"{a,(?<n>x)}", 3, names},
                   {"{a,(?'n'x)}", 3, names},
                   {"{a,y(?P<n>x)}", 4, names},
                   {"{a,(?-n)(x)}", 3, captures},
                   {"{a,(?^)(x)}", 3, captures},
                   {"{a,(*UTF)x}", 3, verbs},
                   {"{a,x(*ACCEPT)}", 4, verbs},
                   {"{a,(?x)# \\Q\n(*COMMIT)}", 12, verbs},
                   {"{a,(?#\\Q)(*F)}", 9, verbs},
                   {"{a,\\c\\(*F)}", 6, verbs},
                   {"{a,x\\Ky}", 4, "an expression in a template has no \\K"},
                   {"{a,x(?C1)y}", 9, callouts},
                   {"{a,x(?R)?}", 4, groups},
                   {"{a,x(?0)?}", 4, groups},
                   {"{a,x\\g<0>?}", 4, groups},
                   {"{a,\\11}", 3, groups},
                   {"{a,(?(R)x|y)}", 3, groups},
                   {"{a,(?(?=x)x|y)}", 3, groups},
                   {"{a,(x)\\1}", 7, "reference to non-existent subpattern"},
                   {"{a,(x)\\g{-1}}", 8, "reference to non-existent subpattern"},
                   {"{a,(?1)}", 6, "reference to non-existent subpattern"},
                   {"{a,(?&n)}", 6, "reference to non-existent subpattern"},
                   {"{a,(?P=n)}", 7, "reference to non-existent subpattern"},
                   {"{a,\\k<n>}", 6, "reference to non-existent subpattern"}});
    for (const char* const text :
         {"{a,\\(*}", "{a,[(*]+}", "{a,\\Q(*ACCEPT)\\K\\1\\E}", "{a,\\\\K}", "{a,[\\11]}",
          "{a,(?i)x}", "{a,(?<=x)y|(?<!x)z|(?=x)|(?!y)|(?>x)}", "{a,\\x{41}{2}}",
          "{a,\\}\\{[\\}]}"})
        EXPECT_NO_THROW(Template read(text)) << text;
}

TEST(TemplateList, HasTheColumnsOfAllInTheOrderInWhichTheyFirstAppear)
{
    const TemplateList list({"{b}_{a:number}", "{c}/{a:number}/{b}"});
    EXPECT_EQ(columnsOf(list.columns()), "b a# c ");
    EXPECT_EQ(list.columnIndices(0), (std::vector<std::size_t>{0, 1}));
    EXPECT_EQ(list.columnIndices(1), (std::vector<std::size_t>{2, 1, 0}));
    const std::vector<MetadataPattern> patterns = list.patterns();
    ASSERT_EQ(patterns.size(), 3u);
    EXPECT_EQ(patterns[0].pattern, "b");
    EXPECT_EQ(patterns[0].valueType, MetadataPattern::StringValue);
    EXPECT_EQ(patterns[1].pattern, "a");
    EXPECT_EQ(patterns[1].valueType, MetadataPattern::NumberValue);
}

TEST(TemplateList, RefusesAColumnThatIsANumberInOneTemplateOnly)
{
    for (const auto& row : std::vector<std::vector<std::string>>{
             {"{a:number}", "x[{b}_{a}]", "another template has this column as a number"},
             {"{a:digits}", "x[{b}_{a:number}]", "another template has this column as a text"}}) {
        try {
            const TemplateList list({row[0], row[1]});
            ADD_FAILURE() << row[1];
        } catch (const TemplateError& error) {
            EXPECT_EQ(error.text, row[1]);
            EXPECT_EQ(error.position, 7u);
            EXPECT_EQ(error.what(), row[2]);
        }
    }
}

TEST(TemplateList, RefusesTheFirstTextThatIsNoTemplate)
{
    try {
        const TemplateList list({"{a}", "{b", "{c"});
        ADD_FAILURE();
    } catch (const TemplateError& error) {
        EXPECT_EQ(error.text, "{b");
    }
}

} // namespace tests
} // namespace casetable
