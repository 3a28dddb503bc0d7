#include "casetable/writing/JsonWriter.h"

#include <cmath>
#include <cstddef>
#include <limits>
#include <string>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "crawler/private/PathReading.h"

namespace casetable {
namespace tests {

namespace {

// Calls `use` with every text of these bytes up to a length.
template <class Use>
void forEachText(const std::string& bytes, std::size_t length, const Use& use,
                 const std::string& begin = "")
{
    use(begin);
    if (length == 0)
        return;
    for (const char byte : bytes)
        forEachText(bytes, length - 1, use, begin + byte);
}

} // namespace

TEST(JsonNumber, HasTheDigitsOfTheText)
{
    struct Row {
        const char* text;
        const char* number;
    };
    for (const Row& row :
         {Row{"5", "5"}, Row{".5", "0.5"}, Row{"+5", "5"}, Row{"007", "7"}, Row{"1.e3", "1.0e3"},
          Row{"-.5", "-0.5"}, Row{"-007.50", "-7.50"}, Row{"0", "0"}, Row{"000", "0"},
          Row{"-0", "-0"}, Row{"0.80", "0.80"}, Row{"00.1", "0.1"}, Row{"+.5E+07", "0.5E+07"},
          Row{"5.", "5.0"}, Row{"12345678901234567890.12345", "12345678901234567890.12345"}})
        EXPECT_EQ(jsonNumber(row.text), row.number) << row.text;
}

TEST(JsonNumber, IsNullForWhatIsNotFinite)
{
    for (const char* text : {"inf", "-inf", "infinity", "nan", "-NAN", "1e999", ""})
        EXPECT_EQ(jsonNumber(text), "null") << text;
}

TEST(JsonNumber, IsTheSameNumberForEveryShortTextThatIsOne)
{
    std::size_t numbers = 0;
    forEachText("+-.0127eE", 6, [&numbers](const std::string& text) {
        double value = 0;
        if (!reading::convertsToNumber(text, value) || !std::isfinite(value))
            return;
        ++numbers;
        const nlohmann::json read = nlohmann::json::parse(jsonNumber(text), nullptr, false);
        ASSERT_TRUE(read.is_number()) << text << " became " << jsonNumber(text);
        ASSERT_EQ(read.get<double>(), value) << text << " became " << jsonNumber(text);
    });
    EXPECT_GT(numbers, 10000u);
}

} // namespace tests
} // namespace casetable
