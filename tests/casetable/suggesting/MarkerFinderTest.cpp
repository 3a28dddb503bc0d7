#include "casetable/suggesting/MarkerFinder.h"

#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace casetable {
namespace tests {

namespace {

const ValuePlace number = {MetadataPattern::NumberValue, 100, std::nullopt};
const ValuePlace text = {MetadataPattern::StringValue, 100, std::nullopt};

// The path, which must outlive it, is given with its values, from left to right.
Trial trial(const std::string& path, const std::vector<std::string>& values)
{
    Trial trial{path, {}, {}, {}};
    std::size_t end = 0;
    for (const std::string& value : values) {
        trial.begins.push_back(path.find(value, end));
        end = trial.begins.back() + value.size();
        trial.ends.push_back(end);
        trial.exact.push_back(false);
    }
    return trial;
}

std::vector<std::string> found(const std::vector<ValuePlace>& places,
                               const std::vector<Trial>& trials)
{
    std::vector<MetadataPattern> patterns;
    const std::optional<std::size_t> failed = MarkerFinder(places, trials).find(patterns);
    if (failed)
        return {"gives up " + std::to_string(*failed)};
    std::vector<std::string> markers;
    for (const MetadataPattern& pattern : patterns)
        markers.push_back(pattern.pattern);
    return markers;
}

using Markers = std::vector<std::string>;

} // namespace

TEST(MarkerFinder, TakesTheWordBeforeAValue)
{
    const std::string paths[] = {"a/Mach0.8_AoA2/x", "a/Mach0.9_AoA4/x"};
    EXPECT_EQ(
        found({number, number}, {trial(paths[0], {"0.8", "2"}), trial(paths[1], {"0.9", "4"})}),
        Markers({"Mach", "AoA"}));
}

TEST(MarkerFinder, TakesMoreThanTheWordWhereItIsFoundTooEarly)
{
    const std::string paths[] = {"Test_T300/x", "Test_T400/x"};
    EXPECT_EQ(found({number}, {trial(paths[0], {"300"}), trial(paths[1], {"400"})}),
              Markers({"_T"}));
}

TEST(MarkerFinder, LeavesNothingOfAText)
{
    const std::string paths[] = {"v1.0.2/mesh_fine/x", "v1.0.1/mesh_coarse/x"};
    EXPECT_EQ(found({text, text},
                    {trial(paths[0], {"1.0.2", "fine"}), trial(paths[1], {"1.0.1", "coarse"})}),
              Markers({"v", "mesh_"}));
}

TEST(MarkerFinder, GivesUpATextThatCannotBeReadWhole)
{
    const std::string paths[] = {"v1.0.2/fine/x", "v1.0.1/coarse/x"};
    EXPECT_EQ(found({text, text},
                    {trial(paths[0], {"1.0.2", "fine"}), trial(paths[1], {"1.0.1", "coarse"})}),
              Markers({"gives up 0"}));
}

TEST(MarkerFinder, GivesUpAValueThatNothingInCommonStandsBefore)
{
    const std::string paths[] = {"a300/x", "b400/x"};
    EXPECT_EQ(found({number}, {trial(paths[0], {"300"}), trial(paths[1], {"400"})}),
              Markers({"gives up 0"}));
}

} // namespace tests
} // namespace casetable
