#include "window/model/Naming.h"

#include <algorithm>
#include <random>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "casetable/templates/Matcher.h"
#include "casetable/templates/Template.h"
#include "tests/window/Kept.h"

namespace casetable {
namespace tests {

namespace {

using Texts = std::vector<std::string>;

const Texts campaign = {"geometry/planform.txt", "wingA/Mach0.80/AoA-2.5/run_0001_Re6.5e6/flow.vtu",
                        "wingA/Mach0.80/AoA0.0/run_0002_Re6.5e6/flow.vtu",
                        "wingA/Mach0.85/AoA2.5/run_0007_Re6.8e6/flow.vtu",
                        "wingB/Mach0.80/AoA2.5/run_0012_Re1.2E+07/flow.vtu"};

// The path with the bytes between < and > named.
NamedTemplates name(const std::string& marked, const std::string& name, const Texts& paths,
                    const Texts& templates = {})
{
    NamedBytes bytes;
    bytes.begin = marked.find('<');
    bytes.end = marked.find('>') - 1;
    bytes.path = marked;
    bytes.path.erase(bytes.path.find('<'), 1);
    bytes.path.erase(bytes.path.find('>'), 1);
    bytes.name = name;
    return nameBytes(bytes, templates, findNeighbours(filesOf(paths), bytes.path, notCancelled()));
}

std::string refusal(const std::string& marked, const std::string& column,
                    const Texts& templates = {})
{
    try {
        name(marked, column, campaign, templates);
    } catch (const NamingError& failure) {
        return failure.what();
    }
    return "no refusal";
}

// Whether the column reads just these bytes of their path.
bool readsAt(const std::string& pathTemplate, const NamedBytes& bytes, const std::string& column)
{
    const Template read(pathTemplate);
    const std::vector<Span> spans = Matcher(read).columnSpans(bytes.path);
    for (std::size_t i = 0; i < spans.size(); ++i) {
        if (read.columns()[i].name == column && !spans[i].isLeftOut)
            return spans[i].begin == bytes.begin && spans[i].begin + spans[i].length == bytes.end;
    }
    return false;
}

std::string value(const std::string& pathTemplate, const std::string& path,
                  const std::string& column)
{
    const Template read(pathTemplate);
    const std::vector<Span> spans = Matcher(read).columnSpans(path);
    for (std::size_t i = 0; i < spans.size(); ++i) {
        if (read.columns()[i].name == column && !spans[i].isLeftOut)
            return path.substr(spans[i].begin, spans[i].length);
    }
    return "not read";
}

} // namespace

TEST(NameBytes, MakesATemplateOfWhatNeighboursHaveInCommon)
{
    EXPECT_EQ(
        name("wingA/Mach<0.80>/AoA-2.5/run_0001_Re6.5e6/flow.vtu", "Mach", campaign).templates,
        Texts({"*/Mach{Mach:number}/*/*/flow.vtu"}));
    EXPECT_EQ(
        name("wing<A>/Mach0.80/AoA-2.5/run_0001_Re6.5e6/flow.vtu", "wing", campaign).templates,
        Texts({"wing{wing:word}/*/*/*/flow.vtu"}));
    EXPECT_EQ(name("wingA/Mach0.80/AoA-2.5/run_<0001>_Re6.5e6/flow.vtu", "run", campaign).templates,
              Texts({"*/*/*/run_{run:digits}_Re*/flow.vtu"}));
    EXPECT_EQ(name("wingA/Mach0.80/AoA-2.5/run_0001_Re<6.5e6>/flow.vtu", "Re", campaign).templates,
              Texts({"*/*/*/*_Re{Re:number}/flow.vtu"}));
}

TEST(NameBytes, KeepsTheColumnsThatTheTemplateHas)
{
    const Texts one =
        name("wingA/Mach<0.80>/AoA-2.5/run_0001_Re6.5e6/flow.vtu", "Mach", campaign).templates;
    const Texts two =
        name("wingA/Mach0.80/AoA<-2.5>/run_0001_Re6.5e6/flow.vtu", "AoA", campaign, one).templates;
    EXPECT_EQ(two, Texts({"*/Mach{Mach:number}/AoA{AoA:number}/*/flow.vtu"}));
    EXPECT_EQ(
        name("wingA/Mach0.80/AoA-2.5/run_0001_Re<6.5e6>/flow.vtu", "Re", campaign, two).templates,
        Texts({"*/Mach{Mach:number}/AoA{AoA:number}/*_Re{Re:number}/flow.vtu"}));
}

TEST(NameBytes, AddsATemplateWhereNoneFits)
{
    const NamedTemplates result = name("wingA/Mach<0.80>/AoA-2.5/run_0001_Re6.5e6/flow.vtu", "Mach",
                                       campaign, {"", "{other}.txt"});
    EXPECT_EQ(result.templates.size(), 3U);
    EXPECT_EQ(result.index, 2U);
    EXPECT_EQ(result.templates[1], "{other}.txt");
}

TEST(NameBytes, LeavesAloneWhatIsTypedElsewhereInTheTemplate)
{
    EXPECT_EQ(name("wingA/Mach<0.80>/AoA-2.5/run_0001_Re6.5e6/flow.vtu", "Mach", campaign,
                   {"wing{wing}/Mach*/**/flow[.{ending}]"})
                  .templates,
              Texts({"wing{wing}/Mach{Mach:number}/**/flow[.{ending}]"}));
}

TEST(NameBytes, TakesTheNarrowestTypeThatAllNeighboursFit)
{
    const std::vector<std::pair<Texts, std::string>> rows = {
        {{"a<1>_x", "a2_x"}, "a{v:number}_x"},
        {{"a<01>_x", "a12_x"}, "a{v:digits}_x"},
        {{"a<1>_x", "ab2_x"}, "a{v:word}_x"},
        {{"a<1>_x", "ab-2_x"}, "a{v}_x"},
        {{"a<1.5>_x", "a-2_x"}, "a{v:number}_x"}};
    for (const auto& [paths, expected] : rows) {
        std::string plain = paths[0];
        plain.erase(plain.find('<'), 1);
        plain.erase(plain.find('>'), 1);
        EXPECT_EQ(name(paths[0], "v", {plain, paths[1]}).templates, Texts({expected}));
    }
}

TEST(NameBytes, RenamesTheColumnWhoseBytesTheyAre)
{
    const std::vector<std::pair<std::string, std::string>> rows = {
        {"wing{w}/Mach{old}/**", "wing{w}/Mach{Mach}/**"},
        {"*/Mach{old:number}/**", "*/Mach{Mach:number}/**"},
        {"*/Mach{old,[0-9.]+}/**", "*/Mach{Mach,[0-9.]+}/**"},
        {"*/[Mach{old}]/**[/{old}_{old_2}]", "*/[Mach{Mach}]/**[/{Mach}_{old_2}]"},
        {"*/Mach{Mach}/**", "*/Mach{Mach}/**"}};
    for (const auto& [before, after] : rows)
        EXPECT_EQ(name("wingA/Mach<0.80>/AoA-2.5/run_0001_Re6.5e6/flow.vtu", "Mach", campaign,
                       {"{old}.txt", before})
                      .templates,
                  Texts({"{old}.txt", after}));
}

TEST(NameBytes, SaysWhatCannotBeNamed)
{
    const std::string path = "wingA/Mach<0.80>/AoA-2.5/run_0001_Re6.5e6/flow.vtu";
    EXPECT_EQ(refusal("wingA/Mach<>0.80/x.vtu", "Mach"),
              "nothing is selected; select the value in the path first");
    EXPECT_EQ(refusal("wing<A/Mach0>.80/x.vtu", "Mach"),
              "a value stands between two \"/\"; select part of one name");
    EXPECT_EQ(
        refusal("wingA/Mach<0.8>0/AoA-2.5/run_0001_Re6.5e6/flow.vtu", "m", {"*/Mach{Mach}/**"}),
        "this belongs to the column \"Mach\" already");
    EXPECT_EQ(refusal(path, "wing", {"wing{wing}/Mach{Mach}/**"}),
              "the template has a column \"wing\" already");
    EXPECT_EQ(refusal(path, "run", {"*/Mach{Mach}/**[/RUN{run}]"}),
              "the template has a column \"run\" already");
    EXPECT_EQ(refusal(path, "wing", {"{wing}/**"}), "the template has a column \"wing\" already");
    EXPECT_NE(refusal(path, "a b!"), "no refusal");
    for (const char* notOnlyAName : {"m:number", "m,[0-9]+", "m}{n"}) {
        for (const Texts& templates : {Texts(), Texts{"*/Mach{old}/**"}})
            EXPECT_EQ(refusal(path, notOnlyAName, templates),
                      "a column's name is a letter or _, then letters, digits and _");
    }
    EXPECT_EQ(refusal(path, "wing:number", {"wing{wing}/Mach{Mach}/**"}),
              "a column's name is a letter or _, then letters, digits and _");
    EXPECT_NE(refusal(path, "path"), "no refusal");
    EXPECT_NE(refusal(path, "wing", {"{wing}.txt"}), "no refusal");
}

// Whatever is selected: the template fits the path with exactly these bytes, columns that were
// there read what they read, and other templates stay.
TEST(NameBytes, ReadsExactlyTheBytesOfAnyPath)
{
    std::mt19937 random(13);
    const Texts parts = {"a", "b", "1",    "20", ".", "_",   "-",
                         "/", "é", "\xff", "*",  "{", "run", "["};
    int named = 0;
    for (int i = 0; i < 400; ++i) {
        std::set<std::string> paths;
        while (paths.size() < 6) {
            std::string path = "r";
            for (std::size_t n = 2 + random() % 7; n > 0; --n) {
                const std::string& part = parts[random() % parts.size()];
                path += part == "/" && path.back() == '/' ? "r" : part;
            }
            paths.insert(path.back() == '/' ? path + "x" : path);
        }
        const Texts all(paths.begin(), paths.end());
        const Files files = filesOf(all);
        Texts templates;
        std::vector<NamedBytes> done;
        for (const std::string column : {"one", "two", "three"}) {
            const std::string& path = all[random() % 2];
            NamedBytes bytes = {path, random() % path.size(), 0, column};
            bytes.end = bytes.begin + 1 + random() % (path.size() - bytes.begin);
            try {
                const NamedTemplates result =
                    nameBytes(bytes, templates, findNeighbours(files, path, notCancelled()));
                for (NamedBytes& before : done) {
                    if (result.index < templates.size() &&
                        readsAt(templates[result.index], bytes, before.name))
                        before.name = column;
                }
                for (std::size_t k = 0; k < templates.size(); ++k) {
                    EXPECT_TRUE(k == result.index || result.templates[k] == templates[k]);
                }
                templates = result.templates;
                EXPECT_EQ(value(templates[result.index], path, column),
                          path.substr(bytes.begin, bytes.end - bytes.begin))
                    << path << " by " << templates[result.index];
                for (const NamedBytes& before : done) {
                    if (before.path != path || templates.size() != 1)
                        continue;
                    EXPECT_EQ(value(templates[0], path, before.name),
                              path.substr(before.begin, before.end - before.begin));
                }
                done.push_back(bytes);
                ++named;
            } catch (const NamingError&) {
                // Some bytes cannot be named, as a test above says.
            }
        }
    }
    EXPECT_GT(named, 300);
}

TEST(Neighbours, HaveTheSameDepthAndEnding)
{
    const Neighbours neighbours = findNeighbours(
        filesOf({"a/b.x", "a/c.x", "a/c.y", "a/d/e.x", "z.x", "a/.x"}), "a/b.x", notCancelled());
    EXPECT_EQ(std::set<std::string>(neighbours.sample.begin(), neighbours.sample.end()),
              (std::set<std::string>{"a/b.x", "a/c.x"}));
    EXPECT_EQ(neighbours.agree, std::vector<bool>({true, false}));
}

TEST(Neighbours, AreSampledEvenly)
{
    Texts paths;
    for (int i = 0; i < 5000; ++i)
        paths.push_back("f" + std::to_string(i));
    const Neighbours neighbours = findNeighbours(filesOf(paths, 100), "f0", notCancelled());
    EXPECT_LE(neighbours.sample.size(), Neighbours::mostSampled + 1);
    EXPECT_GT(neighbours.sample.size(), Neighbours::mostSampled / 2);
}

} // namespace tests
} // namespace casetable
