#include "crawler/MetadataPattern.h"

#include <cstddef>
#include <functional>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "crawler/CrawlerBasicImporterParser.h"
#include "host/AuxFileInfoInterface.h"

namespace {

// Around the length up to which a std::string keeps its text in place: a short text is copied by a
// move and has to be emptied on purpose.
const std::vector<std::string> markers = {"",
                                          "T",
                                          "_Pressure_",
                                          std::string(14, 'm'),
                                          std::string(15, 'm'),
                                          std::string(16, 'm'),
                                          std::string(101, 'm'),
                                          std::string(5000, 'm')};

MetadataInfo someInfo(const std::string& value)
{
    MetadataInfo info;
    info.patternPosition = 3;
    info.valuePosition = 5;
    info.valueLength = value.size();
    info.value = value;
    return info;
}

void expectInfo(const MetadataInfo& info, const std::string& value)
{
    EXPECT_EQ(info.patternPosition, 3u);
    EXPECT_EQ(info.valuePosition, 5u);
    EXPECT_EQ(info.valueLength, value.size());
    EXPECT_EQ(info.value, value);
}

struct Reading {
    bool matched;
    std::vector<MetadataInfo> infos;
};

Reading readPath(const std::string& path, const std::vector<MetadataPattern>& patterns)
{
    CrawlerBasicImporterParser parser;
    parser.appendRawFilePath(path);
    parser.applyMetadataPatternList(patterns);
    return {parser.crawlerFilePathList().at(0)->isMatched(), parser.metadataInfoList(path)};
}

TEST(MetadataPattern, IsAnEmptyMarkerBeforeTextByDefault)
{
    const MetadataPattern pattern;

    EXPECT_EQ(pattern.pattern, "");
    EXPECT_EQ(pattern.valueType, MetadataPattern::StringValue);
}

TEST(MetadataPattern, AcceptsAnEmptyMarkerWhichStandsWhereTheSearchStarts)
{
    const Reading reading = readPath("20/x", {MetadataPattern()});

    EXPECT_TRUE(reading.matched);
    ASSERT_EQ(reading.infos.size(), 1u);
    EXPECT_EQ(reading.infos[0].patternPosition, 0u);
    EXPECT_EQ(reading.infos[0].value, "20");
}

TEST(MetadataPattern, NumbersItsValueTypes)
{
    EXPECT_EQ(static_cast<unsigned>(MetadataPattern::StringValue), 0u);
    EXPECT_EQ(static_cast<unsigned>(MetadataPattern::NumberValue), 1u);
}

TEST(MetadataPattern, CopiesItsConstructorArguments)
{
    std::string marker = "_T";
    const MetadataPattern pattern(marker, MetadataPattern::NumberValue);
    marker = "other";

    EXPECT_EQ(pattern.pattern, "_T");
    EXPECT_EQ(pattern.valueType, MetadataPattern::NumberValue);
}

TEST(MetadataPattern, LeavesTheSourceOfACopyAsItWas)
{
    for (const std::string& marker : markers) {
        SCOPED_TRACE(marker.size());
        const MetadataPattern source(marker, MetadataPattern::NumberValue);
        const MetadataPattern constructed(source);
        MetadataPattern assigned("before", MetadataPattern::StringValue);
        assigned = source;

        for (const MetadataPattern& pattern :
             {std::cref(source), std::cref(constructed), std::cref<MetadataPattern>(assigned)}) {
            EXPECT_EQ(pattern.pattern, marker);
            EXPECT_EQ(pattern.valueType, MetadataPattern::NumberValue);
        }
    }
}

TEST(MetadataPattern, LeavesAnEmptyMarkerBehindWhenAnotherIsConstructedFromIt)
{
    for (const std::string& marker : markers) {
        SCOPED_TRACE(marker.size());
        MetadataPattern source(marker, MetadataPattern::NumberValue);
        const MetadataPattern target(std::move(source));

        EXPECT_EQ(target.pattern, marker);
        EXPECT_EQ(target.valueType, MetadataPattern::NumberValue);
        EXPECT_EQ(source.pattern, "");
        EXPECT_EQ(source.valueType, MetadataPattern::NumberValue);
    }
}

TEST(MetadataPattern, LeavesAnEmptyMarkerBehindWhenItIsMoveAssigned)
{
    for (const std::string& before : markers) {
        for (const std::string& marker : markers) {
            SCOPED_TRACE(std::to_string(before.size()) + " <- " + std::to_string(marker.size()));
            MetadataPattern source(marker, MetadataPattern::NumberValue);
            MetadataPattern target(before, MetadataPattern::StringValue);
            target = std::move(source);

            EXPECT_EQ(target.pattern, marker);
            EXPECT_EQ(target.valueType, MetadataPattern::NumberValue);
            EXPECT_EQ(source.pattern, "");
            EXPECT_EQ(source.valueType, MetadataPattern::NumberValue);
        }
    }
}

TEST(MetadataPattern, SurvivesAssignmentToItself)
{
    for (const std::string& marker : markers) {
        SCOPED_TRACE(marker.size());
        MetadataPattern pattern(marker, MetadataPattern::NumberValue);
        MetadataPattern& same = pattern;

        pattern = std::move(same);
        EXPECT_EQ(pattern.pattern, marker);
        EXPECT_EQ(pattern.valueType, MetadataPattern::NumberValue);

        pattern = same; // cppcheck-suppress accessMoved // it was itself
        EXPECT_EQ(pattern.pattern, marker);
        EXPECT_EQ(pattern.valueType, MetadataPattern::NumberValue);
    }
}

TEST(MetadataPattern, ReadsTextForEveryValueTypeButOne)
{
    for (const unsigned number : {0u, 2u, 7u, 0x80000001u, 0xffffffffu}) {
        SCOPED_TRACE(number);
        const auto type = static_cast<MetadataPattern::ValueType>(number);

        const Reading text = readPath("d/T20x.5/y", {MetadataPattern("T", type)});
        EXPECT_TRUE(text.matched);
        ASSERT_EQ(text.infos.size(), 1u);
        EXPECT_EQ(text.infos[0].value, "20x.5");

        // One character at the end is enough for a number, not for text.
        EXPECT_FALSE(readPath("d/T5", {MetadataPattern("T", type)}).matched);
    }
}

TEST(MetadataPattern, ReadsANumberForTheValueTypeOfNumbers)
{
    const Reading number =
        readPath("d/T20x.5/y", {MetadataPattern("T", static_cast<MetadataPattern::ValueType>(1))});

    EXPECT_TRUE(number.matched);
    ASSERT_EQ(number.infos.size(), 1u);
    EXPECT_EQ(number.infos[0].value, "20");
}

TEST(MetadataPattern, KeepsAnyNumberInItsValueTypeWhenCopiedAndMoved)
{
    const auto seven = static_cast<MetadataPattern::ValueType>(7);
    MetadataPattern source("T", seven);
    MetadataPattern copy(source);
    MetadataPattern target;
    target = std::move(copy);

    EXPECT_EQ(source.valueType, seven);
    EXPECT_EQ(target.valueType, seven);
}

TEST(MetadataPattern, LaysItsFieldsOutInTheOrderOfTheInterface)
{
    static_assert(std::is_standard_layout<MetadataPattern>::value, "read by the host in place");
    using Number = std::underlying_type<MetadataPattern::ValueType>::type;

    EXPECT_EQ(sizeof(Number), 4u);
    EXPECT_EQ(offsetof(MetadataPattern, pattern), 0u);
    EXPECT_EQ(offsetof(MetadataPattern, valueType), sizeof(std::string));
    EXPECT_EQ(sizeof(MetadataPattern), sizeof(std::string) + alignof(std::string));
}

TEST(MetadataInfo, IsThreeZerosAndAnEmptyValueByDefault)
{
    const MetadataInfo info;

    EXPECT_EQ(info.patternPosition, 0u);
    EXPECT_EQ(info.valuePosition, 0u);
    EXPECT_EQ(info.valueLength, 0u);
    EXPECT_EQ(info.value, "");
}

TEST(MetadataInfo, CopiesMemberByMember)
{
    for (const std::string& value : markers) {
        SCOPED_TRACE(value.size());
        const MetadataInfo source = someInfo(value);
        const MetadataInfo constructed(source);
        MetadataInfo assigned = someInfo("before");
        assigned = source;

        expectInfo(source, value);
        expectInfo(constructed, value);
        expectInfo(assigned, value);
    }
}

TEST(MetadataInfo, MovesItsValueAndCopiesItsNumbers)
{
    for (const std::string& value : markers) {
        SCOPED_TRACE(value.size());
        MetadataInfo source = someInfo(value);
        MetadataInfo constructed(std::move(source));
        expectInfo(constructed, value);
        EXPECT_EQ(source.patternPosition, 3u);
        EXPECT_EQ(source.valuePosition, 5u);
        EXPECT_EQ(source.valueLength, value.size());

        MetadataInfo assigned;
        assigned = std::move(constructed);
        expectInfo(assigned, value);
        EXPECT_EQ(constructed.patternPosition, 3u);
        EXPECT_EQ(constructed.valuePosition, 5u);
        EXPECT_EQ(constructed.valueLength, value.size());
    }
}

TEST(MetadataInfo, LaysItsFieldsOutInTheOrderOfTheInterface)
{
    static_assert(std::is_standard_layout<MetadataInfo>::value, "read by the host in place");

    EXPECT_EQ(sizeof(std::size_t), 8u);
    EXPECT_EQ(offsetof(MetadataInfo, patternPosition), 0u);
    EXPECT_EQ(offsetof(MetadataInfo, valuePosition), 8u);
    EXPECT_EQ(offsetof(MetadataInfo, valueLength), 16u);
    EXPECT_EQ(offsetof(MetadataInfo, value), 24u);
    EXPECT_EQ(sizeof(MetadataInfo), 24u + sizeof(std::string));
}

TEST(MetadataInfo, PlacesEveryValueRightBehindItsMarker)
{
    const std::string path = "run_x/case=/T-2.5/m/";
    const std::vector<MetadataPattern> patterns = {{"run_", MetadataPattern::StringValue},
                                                   {"case=", MetadataPattern::StringValue},
                                                   {"T", MetadataPattern::NumberValue},
                                                   {"/", MetadataPattern::StringValue}};
    const std::vector<std::string> values = {"x", "", "-2.5", "m"};

    const Reading reading = readPath(path, patterns);

    EXPECT_TRUE(reading.matched);
    ASSERT_EQ(reading.infos.size(), patterns.size());
    for (std::size_t i = 0; i < patterns.size(); ++i) {
        const MetadataInfo& info = reading.infos[i];
        EXPECT_EQ(info.value, values[i]);
        EXPECT_EQ(info.valueLength, values[i].size());
        EXPECT_EQ(info.valuePosition - info.patternPosition, patterns[i].pattern.size());
        EXPECT_EQ(path.substr(info.valuePosition, info.valueLength), values[i]);
    }
}

} // namespace
