#include "casetable/suggesting/MixedFiles.h"

#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "crawler/CrawlerBasicImporterParser.h"

namespace casetable {
namespace tests {

namespace {

using Paths = std::vector<std::string>;
using TwoFiles = std::pair<std::string, std::string>;

const MetadataPattern run("run", MetadataPattern::NumberValue);
const MetadataPattern temperature("_T", MetadataPattern::NumberValue);

MixedFiles mixed(const Paths& paths, const std::vector<MetadataPattern>& patterns = {run})
{
    CrawlerBasicImporterParser parser;
    for (const std::string& path : paths)
        parser.appendRawFilePath(path);
    parser.applyMetadataPatternList(patterns);
    return mixedFiles(parser);
}

TwoFiles likeNames(const Paths& paths, const std::vector<MetadataPattern>& patterns = {run})
{
    const MixedFiles found = mixed(paths, patterns);
    EXPECT_EQ(found.sameName, TwoFiles());
    return found.likeNames;
}

} // namespace

TEST(MixedFiles, HaveOneNameInDifferentFolders)
{
    const MixedFiles found = mixed({"b/run1/x", "a/run1/x", "a/run1/y", "b/run1/y"});
    EXPECT_EQ(found.sameName, TwoFiles("a/run1/x", "b/run1/x"));
    EXPECT_EQ(found.likeNames, TwoFiles());
}

TEST(MixedFiles, AreNotSaidToBeWhereFewNamesOccurTwice)
{
    EXPECT_EQ(mixed({"a/run1/x", "b/run1/x", "a/run1/y", "a/run1/z"}).sameName, TwoFiles());
}

TEST(MixedFiles, HaveNamesThatDifferInNumbers)
{
    EXPECT_EQ(likeNames({"run1/f_T300.dat", "run1/f_T350.dat", "run2/f_T300.dat"}),
              TwoFiles("run1/f_T300.dat", "run1/f_T350.dat"));
    EXPECT_EQ(likeNames({"run1/M0,75.x", "run1/M0,8.x"}), TwoFiles("run1/M0,75.x", "run1/M0,8.x"));
    EXPECT_EQ(likeNames({"run1/2024-01-30.x", "run1/2024-02-01.x"}),
              TwoFiles("run1/2024-01-30.x", "run1/2024-02-01.x"));
    EXPECT_EQ(likeNames({"run1/M0.7", "run1/M0.8"}), TwoFiles("run1/M0.7", "run1/M0.8"));
    EXPECT_EQ(likeNames({"run1/f.v1.csv", "run1/f.v2.csv"}),
              TwoFiles("run1/f.v1.csv", "run1/f.v2.csv"));
}

TEST(MixedFiles, HaveNamesThatDifferInWordsBesideAValue)
{
    const Paths paths = {"run1/steel_T300.dat", "run1/alu_T300.dat", "run1/alu_T350.dat",
                         "run1/steel_T350.dat"};
    EXPECT_EQ(likeNames(paths, {run, temperature}),
              TwoFiles("run1/alu_T300.dat", "run1/steel_T300.dat"));
    EXPECT_EQ(likeNames({"\xff_T300", "\xfe_T300"}, {temperature}),
              TwoFiles("\xfe_T300", "\xff_T300"));
}

TEST(MixedFiles, AreNotThoseThatARunConsistsOf)
{
    EXPECT_EQ(likeNames({"run1/flow.vtu", "run1/forces.dat", "run1/solver.log"}), TwoFiles());
    EXPECT_EQ(likeNames({"run1/out_pressure.csv", "run1/out_velocity.csv"}), TwoFiles());
    EXPECT_EQ(likeNames({"run1/solver2_p.csv", "run1/solver2_U.csv"}), TwoFiles());
    EXPECT_EQ(likeNames({"run1/flow_0009.vtu", "run1/flow_0010.vtu", "run1/flow_1000.vtu"}),
              TwoFiles());
    EXPECT_EQ(likeNames({"f_T300.vtu", "f_T300.log"}, {temperature}), TwoFiles());
    EXPECT_EQ(likeNames({"run1/a/f5.x", "run1/b/f6.x", "run1/mesh.h5", "run1/mesh.h6"}),
              TwoFiles());
}

TEST(MixedFiles, AreNotSaidToBeWhereFewNamesAreAlike)
{
    const Paths paths = {"run1/f1.x", "run1/f2.x", "run1/flow.vtu", "run1/forces.dat"};
    EXPECT_EQ(likeNames(paths), TwoFiles("run1/f1.x", "run1/f2.x"));
    Paths more = paths;
    more.emplace_back("run1/solver.log");
    EXPECT_EQ(likeNames(more), TwoFiles());
}

TEST(MixedFiles, AreNoneWhereEachFileIsACase)
{
    EXPECT_EQ(likeNames({"run1/x", "run2/x", "unmatched"}), TwoFiles());
}

} // namespace tests
} // namespace casetable
