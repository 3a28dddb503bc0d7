#include "casetable/explaining/TemplateRemarks.h"

#include <cstddef>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "casetable/templates/Matcher.h"
#include "host/AuxFileInfoInterface.h"
#include "tests/casetable/support/Importing.h"

namespace casetable {
namespace tests {

namespace {

using Texts = std::vector<std::string>;

Texts remarksOn(const Texts& templates, const Texts& files)
{
    const Reading reading{TemplateList(templates)};
    const Importing importing(files, reading);
    TemplateRemarks remarks(*reading.templates());
    for (const auto& file : importing.importer.identifiedAuxFiles())
        remarks.count(file->filePath());
    return remarks.lines();
}

} // namespace

TEST(TemplateRemarks, TellOfATemplateThatReadsNoFile)
{
    EXPECT_EQ(remarksOn({"{a}.x", "{a}.[z]y", "1{a}"}, {"1.x", "2.x"}),
              Texts({"the template {a}.[z]y reads no file", "the template 1{a} reads no file"}));
    EXPECT_EQ(remarksOn({"{a}.x", "1{a}"}, {"1.x", "1.y"}), Texts());
}

TEST(TemplateRemarks, TellOfAnOptionalPartThatNoFileTakes)
{
    EXPECT_EQ(remarksOn({"{a}[_{b:digits}].x"}, {"1.x", "2.x"}),
              Texts({"no file takes the optional part [_{b:digits}]"}));
    EXPECT_EQ(remarksOn({"{a}[_{b:digits}].x"}, {"1.x", "2_3.x"}), Texts());
    EXPECT_EQ(remarksOn({"{a:digits}[_x[_y]].x"}, {"1.x", "2_x.x"}),
              Texts({"no file takes the optional part [_y]"}));
}

TEST(TemplateRemarks, TellThatAPartWhichReadsLikeASetIsNone)
{
    EXPECT_EQ(remarksOn({"{a}[0-9].x"}, {"1.x"}),
              Texts({"no file takes the optional part [0-9]; a set of bytes is written "
                     "{name,[0-9]}"}));
    EXPECT_EQ(remarksOn({"{a}[-x].x"}, {"1.x"}).at(0), "no file takes the optional part [-x]; a "
                                                       "set of bytes is written {name,[-x]}");
    for (const std::string part : {"[x]", "[-]", "[run-{b}]", "[a-*]", "[a-very-long-name]"})
        EXPECT_EQ(remarksOn({"{a}" + part + ".x"}, {"1.x"}),
                  Texts({"no file takes the optional part " + part}));
}

TEST(TemplateRemarks, TellOfFilesInWhichSomethingElseHoldsTheBeginningOfAPart)
{
    EXPECT_EQ(
        remarksOn({"{a}[_run-{b:digits}].x"}, {"1_run-2.x", "3_run-x.x", "4_run-.x", "5.x"}),
        Texts({"the optional part [_run-{b:digits}] is left out in 2 files in which {a} beside it "
               "holds its beginning, as in 3_run-x.x"}));
    EXPECT_EQ(
        remarksOn({"{a}/**[_b{b:digits}].x"}, {"1/2_b3.x", "1/c_b/d.x"}),
        Texts({"the optional part [_b{b:digits}] is left out in 1 file in which ** beside it holds "
               "its beginning, as in 1/c_b/d.x"}));
}

TEST(TemplateRemarks, SayNothingOfBeginningsThatAreNoText)
{
    EXPECT_EQ(remarksOn({"{a}[{b:digits}x].y", "{a}[]"}, {"1.y", "22x.y", "3"}), Texts());
}

TEST(TemplateRemarks, SayNothingOfPartsWhereTheEngineGivesUpOnThem)
{
    // Where a path lies takes the engine a little more memory than what the columns read. So the
    // longest path that it reads at all is one on which it gives up here.
    const std::string text = "[x[x[x[x[x[x{a,(?:x|y|xy)*}]]]]]]z{q}[_{b}]";
    const Template pathTemplate(text);
    Matcher matcher(pathTemplate);
    const auto path = [](std::size_t size) { return std::string(size, 'x') + "z1"; };
    std::size_t fits = 0;
    std::size_t fails = std::size_t{1} << 22;
    while (fails - fits > 1) {
        const std::size_t middle = fits + (fails - fits) / 2;
        try {
            matcher.match(path(middle));
            fits = middle;
        } catch (const MatchError&) {
            fails = middle;
        }
    }
    try {
        matcher.elementSpans(path(fits));
        GTEST_SKIP() << "the engine does not give up here";
    } catch (const MatchError&) {
    }

    EXPECT_EQ(remarksOn({text}, {path(fits)}), Texts());
    EXPECT_EQ(remarksOn({text}, {path(9)}).size(), 1u);
}

} // namespace tests
} // namespace casetable
