#include "casetable/importing/Reading.h"

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "host/AuxFileInfoInterface.h"

namespace casetable {
namespace tests {

namespace {

// What the columns of the reading are in a path, where it is matched.
std::vector<std::string> valuesIn(const std::string& path, const Reading& reading)
{
    const std::unique_ptr<CrawlerImporterParserInterface> parser = reading.makeParser();
    parser->appendRawFilePath(path);
    parser->applyMetadataPatternList(reading.patterns());
    std::vector<std::string> values;
    for (const MetadataInfo& info : parser->metadataInfoList(path))
        values.push_back(info.value);
    return values;
}

using Columns = std::vector<std::pair<std::string, MetadataPattern::ValueType>>;

Columns columnsOf(const Reading& reading)
{
    Columns columns;
    for (const MetadataPattern& pattern : reading.patterns())
        columns.emplace_back(pattern.pattern, pattern.valueType);
    return columns;
}

const auto number = MetadataPattern::NumberValue;
const auto text = MetadataPattern::StringValue;

} // namespace

TEST(Reading, ByMarkersHasThemAsColumns)
{
    const Reading reading({{"wing", text}, {"T", number}});

    EXPECT_FALSE(reading.templates());
    EXPECT_EQ(columnsOf(reading), Columns({{"wing", text}, {"T", number}}));
    EXPECT_EQ(valuesIn("wingA/T20.5x", reading), std::vector<std::string>({"A", "20.5"}));
}

TEST(Reading, ByTemplatesHasTheirColumns)
{
    const Reading reading(TemplateList({"{wing}/T{T:number}*", "{T:number}_{run:digits}"}));

    ASSERT_TRUE(reading.templates());
    EXPECT_EQ(columnsOf(reading), Columns({{"wing", text}, {"T", number}, {"run", text}}));
    EXPECT_EQ(valuesIn("A/T20.5x", reading), std::vector<std::string>({"A", "20.5", ""}));
    EXPECT_EQ(valuesIn("20_07", reading), std::vector<std::string>({"", "20", "07"}));
    EXPECT_EQ(valuesIn("A/S20", reading), std::vector<std::string>());
}

TEST(Reading, ByNothingHasNoColumns)
{
    EXPECT_TRUE(Reading().patterns().empty());
    EXPECT_FALSE(Reading().templates());
}

} // namespace tests
} // namespace casetable
