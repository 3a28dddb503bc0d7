#include "casetable/explaining/Unmatched.h"

#include <map>
#include <memory>
#include <optional>
#include <random>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "casetable/explaining/MarkerFailures.h"
#include "host/AuxFileInfoInterface.h"
#include "tests/casetable/support/Importing.h"
#include "tests/crawler/PlainMatching.h"

namespace casetable {
namespace tests {

namespace {

using Patterns = std::vector<MetadataPattern>;
using Reason = MarkerFailure::Reason;

// The first marker that fails by the plain rules, and whether it was found; nothing for a match.
// Throws as the matching does where a marker begins within the one before it and leaves that one no
// segment to cut a value from.
struct Failed {
    std::size_t metadataIndex;
    bool markerFound;
};

std::optional<Failed> firstFailure(const std::string& path, const Patterns& patterns)
{
    std::vector<std::size_t> positions;
    if (!plain::locate(path, patterns, positions))
        return Failed{positions.size(), false};
    plain::Record record;
    record.path = path;
    if (plain::extract(record, patterns, positions))
        return std::nullopt;
    return Failed{record.infos.size(), true};
}

// Why a marker that is found has no value.
Reason reasonWhereFound(const std::string& path, const Patterns& patterns, std::size_t k)
{
    std::vector<std::size_t> positions;
    plain::locate(path, patterns, positions);
    positions.resize(patterns.size());
    positions.push_back(path.size());
    const std::size_t begin = positions[k] + patterns[k].pattern.size();
    if (positions[k + 1] < begin)
        return Reason::NextInside;
    const std::string segment = path.substr(positions[k], positions[k + 1] - positions[k]);
    const std::string stripped = plain::withoutExtensions(segment);
    return patterns[k].valueType == MetadataPattern::StringValue &&
                   stripped.size() == patterns[k].pattern.size() + 1
               ? Reason::OneCharacter
               : Reason::NoValue;
}

// What is counted of an import of these files.
MarkerFailures failuresOf(const std::vector<std::string>& files, const Patterns& patterns)
{
    const Importing importing(files, patterns);
    MarkerFailures failures(patterns);
    for (const auto& file : importing.importer.identifiedAuxFiles())
        failures.countMatched(file->filePath());
    for (const std::string& path : unmatchedPaths(importing.importer))
        failures.countUnmatched(path);
    return failures;
}

class RandomText {
public:
    explicit RandomText(unsigned seed) : engine_(seed) {}

    std::size_t below(std::size_t end)
    {
        return std::uniform_int_distribution<std::size_t>(0, end - 1)(engine_);
    }

    // Few letters, so that markers are found, overlap and repeat.
    std::string text(std::size_t shortest, std::size_t longest)
    {
        static const std::string letters = "TTP11-+.e//\\x\xff\n";
        std::string text;
        const std::size_t length = shortest + below(longest - shortest + 1);
        while (text.size() < length)
            text += letters[below(letters.size())];
        return text;
    }

    Patterns patterns()
    {
        Patterns patterns;
        for (std::size_t count = 1 + below(3); patterns.size() < count;)
            patterns.emplace_back(text(1, 3), below(2) == 0 ? MetadataPattern::StringValue
                                                            : MetadataPattern::NumberValue);
        return patterns;
    }

private:
    std::mt19937 engine_;
};

} // namespace

TEST(Unmatched, AgreesWithAPlainRestatementOfTheMatching)
{
    RandomText random(20240607);
    std::map<Reason, std::size_t> counts;
    std::size_t matching = 0;
    for (int round = 0; round < 3000; ++round) {
        const Patterns patterns = random.patterns();
        std::set<std::string> files;
        while (files.size() < 8) {
            const std::string file = random.text(1, 16);
            try {
                firstFailure(file, patterns);
                files.insert(file);
            } catch (const std::out_of_range&) { // Not for an importer.
                if (random.below(100) == 0)
                    break;
            }
        }
        const Importing importing({files.begin(), files.end()}, patterns);

        std::vector<std::string> expectedPaths;
        for (const std::string& file : files) {
            if (const std::optional<Failed> failed = firstFailure(file, patterns)) {
                const Reason reason = failed->markerFound
                                          ? reasonWhereFound(file, patterns, failed->metadataIndex)
                                          : Reason::NotFound;
                expectedPaths.push_back(file);
                SCOPED_TRACE(testing::PrintToString(file));
                const MarkerFailure failure = markerFailure(file, patterns);
                ASSERT_EQ(failure.metadataIndex, failed->metadataIndex);
                ASSERT_EQ(failure.reason, reason);
                ++counts[reason];
            } else {
                ++matching;
            }
        }
        ASSERT_EQ(unmatchedPaths(importing.importer), expectedPaths) << "round " << round;
    }
    EXPECT_GT(counts[Reason::NotFound], 500u);
    EXPECT_GT(counts[Reason::NoValue], 500u);
    EXPECT_GT(counts[Reason::OneCharacter], 50u);
    EXPECT_GT(counts[Reason::NextInside], 5u);
    EXPECT_GT(matching, 500u);
}

TEST(Unmatched, IsSummedUpPerMarkerMostFirst)
{
    const Patterns patterns = {{"T", MetadataPattern::NumberValue},
                               {"P", MetadataPattern::NumberValue},
                               {"Q", MetadataPattern::NumberValue}};

    EXPECT_EQ(failuresOf({"a", "T1", "T1P", "T1x", "T1PQ"}, patterns).summary(),
              "marker 'P' failed for 3 files, 'T' failed for 1 file, 'Q' failed for 1 file");
}

TEST(Unmatched, HasALikelyReasonWhereAMarkerStandsInNoPathAsItShould)
{
    const auto number = MetadataPattern::NumberValue;
    const auto reason = [](const std::vector<std::string>& files, const Patterns& patterns) {
        return failuresOf(files, patterns).likelyReason("Runs/[a]");
    };

    EXPECT_EQ(reason({"x", "P1/T2"}, {{"T", number}, {"P", number}}), "");
    EXPECT_EQ(reason({"P1/T2", "P1/T3", "x"}, {{"T", number}, {"P", number}}),
              "'P' stands in front of 'T' in P1/T2, and markers go from left to right");
    EXPECT_EQ(reason({"T300/x"}, {{"T", number}, {"T", number}}),
              "'T' stands in T300/x only where the marker before begins");
    EXPECT_EQ(reason({"Mach1"}, {{"Mach", number}, {"M", number}}),
              "'M' stands in Mach1 only where the marker before begins");
    EXPECT_EQ(reason({"x", "MACH1"}, {{"Mach", number}}),
              "'Mach' is written with other letters, large or small, in MACH1");
    EXPECT_EQ(reason({"a-t-5", "tx/t-.5"}, {{"T-", number}}),
              "'T-' is written with other letters, large or small, in a-t-5");
    EXPECT_EQ(reason({"zelle 01"}, {{"Zelle", number}}),
              "'Zelle' is written with other letters, large or small, in zelle 01");
    EXPECT_EQ(reason({"tx"}, {{"T", MetadataPattern::StringValue}}),
              "'T' is written with other letters, large or small, in tx");
    EXPECT_EQ(reason({"y", "Tx", "Ty"}, {{"T", number}}),
              "'T' has no value in Tx, and --explain tells why");
    EXPECT_EQ(reason({"Tx", "t1"}, {{"T", number}}),
              "'T' is written with other letters, large or small, in t1");
    EXPECT_EQ(reason({"x"}, {{"Runs", number}}),
              "'Runs' stands in Runs/[a], but only the paths below it are read");
    EXPECT_EQ(reason({"x"}, {{"Runs/[a]/", number}}),
              "'Runs/[a]/' stands in Runs/[a], but only the paths below it are read");
    EXPECT_EQ(reason({"x"}, {{"T*", number}}), "a marker is a literal text, without wildcards");
    EXPECT_EQ(reason({"x"}, {{"T?_", number}}), "a marker is a literal text, without wildcards");
}

TEST(Unmatched, TakesASingleLetterForAMarkerWithOtherLettersWhereANumberFollows)
{
    const Patterns patterns = {{"t", MetadataPattern::NumberValue}};
    const auto reason = [&](const std::string& file) {
        return failuresOf({file}, patterns).likelyReason("runs");
    };

    for (const std::string file : {"a/T5", "a/T-5", "a/T+5", "a/T.5", "a/T-.5", "a/T+.5", "Tx/T5"})
        EXPECT_EQ(reason(file), "'t' is written with other letters, large or small, in " + file);
    for (const std::string file : {"a/T", "a/Tx", "a/T-", "a/T+", "a/T+-5", "a/T.", "a/T-.x"})
        EXPECT_EQ(reason(file), "") << file;
}

TEST(Unmatched, HasALikelyReasonAlsoBesideFilesThatMatch)
{
    const Patterns patterns = {{"Temp", MetadataPattern::NumberValue}};
    const auto reason = [&](const std::vector<std::string>& files) {
        return failuresOf(files, patterns).likelyReason("Temp");
    };

    EXPECT_EQ(reason({"Temp1", "a", "temp2"}),
              "'Temp' is written with other letters, large or small, in temp2");
    EXPECT_EQ(reason({"Temp1", "a"}), "");
}

TEST(Unmatched, TellsWhereMarkersLoseValuesAndInHowManyFiles)
{
    const auto number = MetadataPattern::NumberValue;
    const auto text = MetadataPattern::StringValue;
    const auto reason = [](const std::vector<std::string>& files, const Patterns& patterns) {
        return failuresOf(files, patterns).likelyReason("results");
    };
    const std::string otherwise = "; --suggest finds templates, and -t reads by them";

    EXPECT_EQ(
        reason({"wing_AB_Mach_0.85_run_2.dat"}, {{"wing_", text}, {"Mach_", number}, {"_", text}}),
        "'_' is found inside 'Mach_' in 1 file, as in wing_AB_Mach_0.85_run_2.dat" + otherwise);
    EXPECT_EQ(
        reason({"WELL_ab.cppipe", "well_A.tif", "well_B.tif", "well_CD.tif"}, {{"well_", text}}),
        "one character stands behind 'well_' in 2 files, as in well_A.tif, which is no value "
        "there" +
            otherwise);
    EXPECT_EQ(reason({"Mach1.vtu", "Mach2.vtu", "machine.c"}, {{"Mach", number}}), "");
}

TEST(Unmatched, HasNoLikelyReasonWhereNothingIsAlike)
{
    const auto number = MetadataPattern::NumberValue;
    const auto reason = [](const std::vector<std::string>& files, const Patterns& patterns) {
        return failuresOf(files, patterns).likelyReason("results");
    };

    EXPECT_EQ(reason({"x", "y"}, {{"P", number}}), "");
    EXPECT_EQ(reason({"tx", "t", "t-x"}, {{"T", number}}), "");
}

} // namespace tests
} // namespace casetable
