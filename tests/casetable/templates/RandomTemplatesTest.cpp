#include <cstddef>
#include <functional>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "casetable/templates/Matcher.h"
#include "casetable/templates/Template.h"
#include "tests/casetable/templates/RandomTemplate.h"
#include "tests/casetable/templates/TemplateModel.h"

namespace casetable {
namespace tests {

namespace {

using templatemodel::Choose;
using templatemodel::Model;
using templatemodel::RandomTemplate;
using templatemodel::Values;

Choose chooser(unsigned seed)
{
    return [engine = std::mt19937(seed)](std::size_t end) mutable {
        return std::uniform_int_distribution<std::size_t>(0, end - 1)(engine);
    };
}

// What both say of the columns of a path, so that it can be compared.
std::string shown(const std::vector<TemplateColumn>& columns, const std::vector<Span>& spans)
{
    std::string text;
    for (std::size_t k = 0; k < columns.size(); ++k) {
        text += columns[k].name + " ";
        text += spans[k].isLeftOut
                    ? "left out"
                    : std::to_string(spans[k].begin) + "+" + std::to_string(spans[k].length);
        text += "; ";
    }
    return text;
}

std::string shown(const std::vector<TemplateColumn>& columns, const Values& values)
{
    std::vector<Span> spans;
    for (const TemplateColumn& column : columns) {
        const auto value = values.find(column.name);
        spans.push_back(
            value == values.end()
                ? Span{0, 0, true}
                : Span{value->second.begin, value->second.end - value->second.begin, false});
    }
    return shown(columns, spans);
}

// A path that was made for the template, mostly; it is nearly what fits.
std::string somePath(const RandomTemplate& random, const Choose& choose)
{
    switch (choose(3)) {
    case 0:
        return templatemodel::randomPath(choose);
    case 1:
        return templatemodel::changedPath(random.path(), choose);
    default:
        return random.path();
    }
}

} // namespace

TEST(RandomTemplates, FitTheSamePathsAsTheModelWithTheSameValues)
{
    const Choose choose = chooser(5);
    std::size_t fitting = 0;
    std::size_t givenUp = 0;
    for (int i = 0; i < 6000; ++i) {
        const RandomTemplate random(choose);
        Model model(random.text);
        const Template pathTemplate(random.text);
        Matcher matcher(pathTemplate);
        for (int k = 0; k < 6; ++k) {
            const std::string path = somePath(random, choose);
            SCOPED_TRACE(testing::PrintToString(random.text) + " " + testing::PrintToString(path));
            try {
                const std::optional<Values> expected = model.match(path);
                ASSERT_EQ(matcher.match(path), expected.has_value());
                if (!expected)
                    continue;
                ++fitting;
                ASSERT_EQ(shown(pathTemplate.columns(), matcher.columns()),
                          shown(pathTemplate.columns(), *expected));
            } catch (const templatemodel::TooManySteps&) {
                ++givenUp;
            } catch (const MatchError&) {
                ++givenUp;
            }
        }
    }
    EXPECT_GT(fitting, 6000u) << "hardly anything fitted";
    EXPECT_LT(givenUp, 60u);
}

TEST(RandomTemplates, GiveEachElementItsPlaceInTheOrderOfThePath)
{
    const Choose choose = chooser(6);
    for (int i = 0; i < 3000; ++i) {
        const RandomTemplate random(choose);
        const Template pathTemplate(random.text);
        Matcher matcher(pathTemplate);
        const std::string path = somePath(random, choose);
        SCOPED_TRACE(testing::PrintToString(random.text) + " " + testing::PrintToString(path));
        const bool fits = matcher.match(path);
        const std::vector<Span> spans = matcher.elementSpans(path);
        ASSERT_EQ(!spans.empty(), fits);
        if (!fits)
            continue;
        EXPECT_EQ(shown(pathTemplate.columns(), matcher.columnSpans(path)),
                  shown(pathTemplate.columns(), matcher.columns()));
        std::size_t at = 0;
        std::size_t next = 0;
        const std::function<void(const std::vector<TemplateElement>&)> follow =
            [&](const std::vector<TemplateElement>& elements) {
                for (const TemplateElement& element : elements) {
                    const Span span = spans[next++];
                    ASSERT_EQ(span.begin, at) << element.position;
                    ASSERT_TRUE(!span.isLeftOut || span.length == 0) << element.position;
                    follow(element.elements);
                    at = span.begin + span.length;
                }
            };
        follow(pathTemplate.elements());
        EXPECT_EQ(next, spans.size());
        EXPECT_EQ(at, path.size());
    }
}

TEST(RandomTemplates, FitABeginningOfAPathInAsManyElementsAsTheModel)
{
    const Choose choose = chooser(7);
    std::size_t partly = 0;
    for (int i = 0; i < 1500; ++i) {
        const RandomTemplate random(choose);
        const Template pathTemplate(random.text);
        Matcher matcher(pathTemplate);
        const std::string path = somePath(random, choose);
        SCOPED_TRACE(testing::PrintToString(random.text) + " " + testing::PrintToString(path));
        try {
            std::size_t expected = 0;
            for (const TemplateElement& element : pathTemplate.elements()) {
                Model beginning(random.text.substr(0, element.position + element.length));
                if (!beginning.match(path, true))
                    break;
                ++expected;
            }
            const Beginning longest = matcher.longestBeginning(path);
            EXPECT_EQ(longest.elements, expected);
            EXPECT_LE(longest.end, path.size());
            partly += expected > 0 && expected < pathTemplate.elements().size();
        } catch (const templatemodel::TooManySteps&) {
        }
    }
    EXPECT_GT(partly, 300u);
}

} // namespace tests
} // namespace casetable
