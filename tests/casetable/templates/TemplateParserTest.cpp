#include "casetable/templates/TemplateParser.h"

#include <algorithm>
#include <cstddef>
#include <map>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "casetable/templates/Matcher.h"
#include "host/AuxFileInfoInterface.h"

namespace casetable {
namespace tests {

namespace {

using Texts = std::vector<std::string>;
using Files = std::vector<boost::shared_ptr<AuxFileInfoInterface>>;

// A parser with its paths read.
struct Parsed {
    Parsed(const Texts& templates, const Texts& paths) : list(templates), parser(list)
    {
        for (const std::string& path : paths)
            parser.appendRawFilePath(path);
        parser.applyMetadataPatternList(list.patterns());
    }

    // The values of each case, in case order.
    std::vector<Texts> cases() const
    {
        std::vector<Texts> all(parser.numDefinedCases());
        for (std::size_t row = 0; row < all.size(); ++row) {
            for (std::size_t column = 0; column < list.columns().size(); ++column)
                all[row].push_back(parser.caseMetadataSValue(row, column));
        }
        return all;
    }

    // Each path, and its case where it has one.
    Texts files() const
    {
        Texts all;
        for (const auto& file : parser.crawlerFilePathList())
            all.push_back(file->filePath() +
                          (file->isMatched() ? " " + std::to_string(file->caseIndex()) : ""));
        return all;
    }

    // The pattern position, and the place and length of the value, of each column.
    std::string infos(const std::string& path) const
    {
        std::string text;
        for (const MetadataInfo& info : parser.metadataInfoList(path)) {
            EXPECT_EQ(info.value, path.substr(info.valuePosition, info.valueLength));
            text += std::to_string(info.patternPosition) + ":" +
                    std::to_string(info.valuePosition) + "+" + std::to_string(info.valueLength) +
                    " ";
        }
        return text;
    }

    const TemplateList list;
    TemplateParser parser;
};

} // namespace

TEST(TemplateParser, NumbersCasesByFirstAppearanceInPathOrder)
{
    const Parsed parsed({"{d}/T{t:number}.dat"}, {"b/T1.dat", "a/T2.dat", "b/T1.txt", "b/T10.dat",
                                                  "\xff/T1.dat", "B/T1.dat"});
    EXPECT_EQ(parsed.cases(),
              (std::vector<Texts>{{"B", "1"}, {"a", "2"}, {"b", "1"}, {"b", "10"}, {"\xff", "1"}}));
    EXPECT_EQ(parsed.files(), (Texts{"B/T1.dat 0", "a/T2.dat 1", "b/T1.dat 2", "b/T1.txt",
                                     "b/T10.dat 3", "\xff/T1.dat 4"}));
}

TEST(TemplateParser, GathersFilesOfEqualTextsInOneCase)
{
    const Parsed parsed({"*_{n:number}.*"}, {"a_5.x", "b_5.0.x", "c_5.y", "d_5.0.y", "e_5.z"});
    EXPECT_EQ(parsed.files(), (Texts{"a_5.x 0", "b_5.0.x 1", "c_5.y 0", "d_5.0.y 1", "e_5.z 0"}));
}

TEST(TemplateParser, TellsApartValuesThatAreTheSameInARow)
{
    const Parsed parsed({"{a:word}-{b:word}[-{c}]"}, {"1-23", "12-3", "1-2-3"});
    EXPECT_EQ(parsed.cases(),
              (std::vector<Texts>{{"1", "2", "3"}, {"1", "23", ""}, {"12", "3", ""}}));
}

TEST(TemplateParser, ReadsEachPathByTheFirstTemplateThatFits)
{
    const Parsed parsed({"a{x:digits}", "{y}-{x:digits}", "{y}"}, {"a1", "a-1", "b", "b-2"});
    EXPECT_EQ(parsed.cases(), (std::vector<Texts>{{"1", "a"}, {"1", ""}, {"", "b"}, {"2", "b"}}));
}

TEST(TemplateParser, HasOneCaseOfFilesWhoseValueIsEmpty)
{
    const Parsed parsed({"[_{a:word}].*"}, {"_1.x", ".x", ".y"});
    EXPECT_EQ(parsed.cases(), (std::vector<Texts>{{""}, {"1"}}));
    EXPECT_EQ(parsed.files(), (Texts{".x 0", ".y 0", "_1.x 1"}));
}

TEST(TemplateParser, TellsWhereValuesStandColumnByColumn)
{
    const Parsed parsed({"{b}/x[_{a:digits}]-{c}", "{c}={b}[{d:digits}]*"},
                        {"bb/x_1-c", "bb/x-c", "cc=b", "no"});
    EXPECT_EQ(parsed.infos("bb/x_1-c"), "0:0+2 2:5+1 6:7+1 0:0+0 ");
    EXPECT_EQ(parsed.infos("bb/x-c"), "0:0+2 2:4+0 2:5+1 0:0+0 ");
    EXPECT_EQ(parsed.infos("cc=b"), "2:3+1 0:0+0 0:0+2 4:4+0 ");
    EXPECT_EQ(parsed.infos("no"), "");
    EXPECT_EQ(parsed.infos("unknown"), "");
}

TEST(TemplateParser, TellsNothingOfPathsBeforeTheColumnsAreApplied)
{
    Parsed parsed({"{a}"}, {"x"});
    parsed.parser.appendRawFilePath("x");
    parsed.parser.appendRawFilePath("y");
    EXPECT_EQ(parsed.infos("x"), "");
    EXPECT_EQ(parsed.files(), (Texts{"x", "y"}));
    EXPECT_EQ(parsed.cases(), (std::vector<Texts>{{"x"}}));
    parsed.parser.applyMetadataPatternList(parsed.list.patterns());
    EXPECT_EQ(parsed.files(), (Texts{"x 0", "y 1"}));
    EXPECT_EQ(parsed.infos("x"), "0:0+1 ");
}

TEST(TemplateParser, PutsAFreshRecordInPlaceOfAnOldOne)
{
    Parsed parsed({"{a}"}, {"x", "y", "z"});
    const Files old = parsed.parser.crawlerFilePathList();
    parsed.parser.appendRawFilePath("y");
    const Files fresh = parsed.parser.crawlerFilePathList();
    ASSERT_EQ(fresh.size(), 3u);
    EXPECT_EQ(fresh[0], old[0]);
    EXPECT_NE(fresh[1], old[1]);
    EXPECT_EQ(fresh[2], old[2]);
    EXPECT_TRUE(old[1]->isMatched());
    EXPECT_FALSE(fresh[1]->isMatched());
}

TEST(TemplateParser, KeepsCasesWhenPathsAreCleared)
{
    Parsed parsed({"{a}"}, {"x", "y"});
    parsed.parser.clearFilePaths();
    EXPECT_EQ(parsed.cases(), (std::vector<Texts>{{"x"}, {"y"}}));
    EXPECT_TRUE(parsed.files().empty());
    EXPECT_EQ(parsed.infos("x"), "");
    parsed.parser.applyMetadataPatternList(parsed.list.patterns());
    EXPECT_EQ(parsed.parser.numDefinedCases(), 0u);
}

TEST(TemplateParser, IsClearedByAnEmptyListButForFlagsAndCaseIndices)
{
    Parsed parsed({"{a}"}, {"x", "y"});
    parsed.parser.applyMetadataPatternList({});
    EXPECT_EQ(parsed.parser.numDefinedCases(), 0u);
    EXPECT_EQ(parsed.infos("y"), "");
    EXPECT_EQ(parsed.files(), (Texts{"x 0", "y 1"}));
}

TEST(TemplateParser, RefusesPatternsThatAreNotItsColumnsAndChangesNothing)
{
    using List = std::vector<MetadataPattern>;
    const MetadataPattern a("a", MetadataPattern::StringValue);
    const MetadataPattern b("b", MetadataPattern::NumberValue);
    Parsed parsed({"{a}_{b:number}"}, {"x_1", "y_2"});
    for (const List& patterns :
         {List{a}, List{b, a}, List{a, b, b}, List{a, {"b", MetadataPattern::StringValue}},
          List{{"c", MetadataPattern::StringValue}, b}})
        EXPECT_THROW(parsed.parser.applyMetadataPatternList(patterns), std::invalid_argument);
    EXPECT_EQ(parsed.files(), (Texts{"x_1 0", "y_2 1"}));
    EXPECT_EQ(parsed.infos("x_1"), "0:0+1 1:2+1 ");
    EXPECT_NO_THROW(parsed.parser.applyMetadataPatternList(List{a, b}));
}

TEST(TemplateParser, NamesTheLeastPathOnWhichTheEngineGivesUp)
{
    const std::string hard = std::string(60, 'x') + "-y-";
    const TemplateList list({"z{a}", "{a,(x+x+)+y}{b:word}"});
    TemplateParser parser(list);
    for (const std::string& path :
         {"y" + hard, "x" + hard, "xx" + hard, std::string("a"), std::string("zz")})
        parser.appendRawFilePath(path);
    try {
        parser.applyMetadataPatternList(list.patterns());
        ADD_FAILURE() << "it did not give up";
    } catch (const MatchError& error) {
        EXPECT_EQ(error.path, "x" + hard);
    }
    for (const auto& file : parser.crawlerFilePathList())
        EXPECT_FALSE(file->isMatched()) << file->filePath();
}

TEST(TemplateParser, LeavesRecordsThatOutliveIt)
{
    auto parsed = std::make_unique<Parsed>(Texts{"{a}.txt"}, Texts{"x.txt", "y.png"});
    const Files files = parsed->parser.crawlerFilePathList();
    parsed.reset();
    ASSERT_EQ(files.size(), 2u);
    EXPECT_EQ(files[0]->filePath(), "x.txt");
    EXPECT_TRUE(files[0]->isMatched());
    EXPECT_EQ(files[0]->caseIndex(), 0u);
    EXPECT_EQ(files[0]->label(), "");
    EXPECT_EQ(files[0]->type(), auxFileType("x.txt"));
    files[1]->setCaseIndex(7);
    EXPECT_EQ(files[1]->caseIndex(), 7u);
}

TEST(TemplateParser, ReadsNothingWithoutATemplate)
{
    const Parsed parsed({}, {"x"});
    EXPECT_EQ(parsed.files(), (Texts{"x"}));
    EXPECT_TRUE(parsed.cases().empty());
}

// Lists of paths in any order, some of them twice, against maps that are filled by the same
// matchers.
TEST(TemplateParser, GivesTheSameCasesAsAPlainRestatement)
{
    const Texts templates = {"{a}/x[_{b:digits}]*", "{b:digits}[/{c:word}]", "**/{c}_{a}"};
    const std::string bytes = "ab12_/x";
    std::mt19937 engine(8);
    const auto below = [&engine](std::size_t end) {
        return std::uniform_int_distribution<std::size_t>(0, end - 1)(engine);
    };
    std::size_t matched = 0;
    for (int run = 0; run < 300; ++run) {
        Texts paths;
        for (std::size_t n = below(40); n > 0; --n) {
            std::string path;
            for (std::size_t k = 1 + below(5); k > 0; --k)
                path += bytes[below(bytes.size())];
            paths.push_back(path);
        }
        const Parsed parsed(templates, paths);

        std::map<std::string, Texts> values; // Of the matched, by path.
        for (const std::string& path : paths) {
            for (const std::string& text : templates) {
                const Template read(text);
                Matcher matcher(read);
                if (!matcher.match(path))
                    continue;
                std::map<std::string, std::string> byName;
                for (std::size_t k = 0; k < read.columns().size(); ++k)
                    byName[read.columns()[k].name] =
                        path.substr(matcher.columns()[k].begin, matcher.columns()[k].length);
                values[path] = {byName["a"], byName["b"], byName["c"]};
                break;
            }
        }
        std::sort(paths.begin(), paths.end());
        paths.erase(std::unique(paths.begin(), paths.end()), paths.end());
        std::vector<Texts> cases;
        Texts files;
        for (const std::string& path : paths) {
            const auto read = values.find(path);
            files.push_back(path);
            if (read == values.end())
                continue;
            ++matched;
            const auto known = std::find(cases.begin(), cases.end(), read->second);
            files.back() += " " + std::to_string(known - cases.begin());
            if (known == cases.end())
                cases.push_back(read->second);
        }
        ASSERT_EQ(parsed.files(), files);
        ASSERT_EQ(parsed.cases(), cases);
    }
    EXPECT_GT(matched, 500u);
}

} // namespace tests
} // namespace casetable
