#include "casetable/explaining/MarkerRemarks.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "host/AuxFileInfoInterface.h"
#include "tests/casetable/support/Importing.h"

namespace casetable {
namespace tests {

namespace {

using Texts = std::vector<std::string>;

const auto number = MetadataPattern::NumberValue;
const auto text = MetadataPattern::StringValue;

Texts remarksOn(const Texts& files, const std::vector<MetadataPattern>& patterns)
{
    const Importing importing(files, patterns);
    MarkerRemarks remarks(patterns);
    for (const auto& file : importing.importer.identifiedAuxFiles())
        remarks.count(file->filePath(), importing.importer.metadataInfoList(file->filePath()));
    return remarks.lines();
}

const std::string otherwise = "; --suggest finds templates, and -t reads by them";

} // namespace

TEST(Remarks, TellOfTextThatIsCutAtAPointInFrontOfTheNextMarker)
{
    EXPECT_EQ(remarksOn({"P10.1bar_T20.csv", "P10.2bar_T20.csv", "Pxy_T20.csv"},
                        {{"P", text}, {"_T", number}}),
              Texts({"the value of 'P' ends at a '.' in 2 files, as in P10.1bar_T20.csv, which "
                     "gives '10'" +
                     otherwise}));
}

TEST(Remarks, TellOfNumbersThatEndAtAPointOrCommaWithDigitsBehind)
{
    EXPECT_EQ(remarksOn({"Mach0,70/v1.0.2", "Mach1/v2.0"}, {{"Mach", number}, {"v", number}}),
              Texts({"the value of 'Mach' ends at a ',' in 1 file, as in Mach0,70/v1.0.2, which "
                     "gives '0'" +
                         otherwise,
                     "the value of 'v' ends at a '.' in 1 file, as in Mach0,70/v1.0.2, which gives "
                     "'1.0'" +
                         otherwise}));
    EXPECT_EQ(remarksOn({"M0p85/a", "M0p9/a", "M1/a"}, {{"M", number}}),
              Texts({"the value of 'M' ends at a 'p' in 2 files, as in M0p85/a, which gives '0'" +
                     otherwise}));
}

TEST(Remarks, TellOfSignsThatMayBeSeparatorsWhereAllNumbersHaveThem)
{
    EXPECT_EQ(remarksOn({"run-01/a", "run-02/a", "x"}, {{"run", number}}),
              Texts({"the '-' behind 'run' is taken for a sign in 2 files, as in run-01/a, which "
                     "gives '-01'" +
                     otherwise}));
    EXPECT_EQ(remarksOn({"AoA-2/a", "AoA2/a"}, {{"AoA", number}}), Texts());
    EXPECT_EQ(remarksOn({"T_-1/a", "T_-2/a"}, {{"T_", number}}), Texts());
}

TEST(Remarks, AreSilentWhereValuesEndAsUsual)
{
    EXPECT_EQ(remarksOn({"wingA.b/Mach0.80/run_7_x.vtu.gz", "wingAB/Mach1./run_8,a.b"},
                        {{"wing", text}, {"Mach", number}, {"run_", text}}),
              Texts());
    EXPECT_EQ(remarksOn({"T1.csv", "T2-3", "T4"}, {{"T", number}}), Texts());
    EXPECT_EQ(remarksOn({"T1,5"}, {{"P", number}}), Texts());
}

} // namespace tests
} // namespace casetable
