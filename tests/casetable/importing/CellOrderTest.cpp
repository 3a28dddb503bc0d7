#include "casetable/importing/CellOrder.h"

#include <algorithm>
#include <cstdlib>
#include <random>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "casetable/importing/Report.h"

namespace casetable {
namespace tests {

namespace {

using Texts = std::vector<std::string>;
using Indices = std::vector<std::size_t>;

const auto none = CellRanks::none;
const Column texts{"P", Column::Kind::StringValue};
const Column numbers{"T", Column::Kind::NumberValue};

CellRanks rank(const Column& column, const Texts& cells)
{
    return rankCells(column, {cells.begin(), cells.end()});
}

// A restatement: the pieces of a text, each a byte and, where that is '0', a number without zeros
// in front.
std::vector<std::pair<int, std::string>> pieces(const std::string& text)
{
    std::vector<std::pair<int, std::string>> found;
    bool isInNumber = false;
    for (const char c : text) {
        const bool isDigit = std::string("0123456789").find(c) != std::string::npos;
        if (!isDigit || !isInNumber)
            found.emplace_back(isDigit ? '0' : static_cast<unsigned char>(c), "");
        if (isDigit && !(c == '0' && found.back().second.empty()))
            found.back().second += c;
        isInNumber = isDigit;
    }
    return found;
}

bool plainlyBefore(const std::string& a, const std::string& b)
{
    const auto left = pieces(a);
    const auto right = pieces(b);
    for (std::size_t i = 0; i < std::min(left.size(), right.size()); ++i) {
        if (left[i].first != right[i].first)
            return left[i].first < right[i].first;
        if (left[i].second.size() != right[i].second.size())
            return left[i].second.size() < right[i].second.size();
        if (left[i].second != right[i].second)
            return left[i].second < right[i].second;
    }
    if (left.size() != right.size())
        return left.size() < right.size();
    return a < b;
}

class RandomCells {
public:
    std::string text()
    {
        static const std::string bytes("00129ab/:-\xff\0", 12);
        std::string text;
        for (std::size_t k = below(7); k > 0; --k)
            text += bytes[below(bytes.size())];
        // Around 255 digits and twice as many, where the key takes a byte more.
        if (below(4) == 0)
            text.insert(below(text.size() + 1), 253 + below(4) + 255 * below(2), '7');
        return text;
    }

    // Often equal to others, and often written differently.
    std::string number()
    {
        static const Texts numbers = {"5",   "5.0", "+5",   "05",  "-5",   "0",  "-0", ".5",
                                      "1e1", "10",  "1e-3", "NaN", "1e30", "-2", "",   "inf"};
        // Others are so close to each other that it counts how they are rounded.
        return below(2) == 0 ? numbers[below(numbers.size())]
                             : "0.1000000000000000" + std::to_string(50 + below(40)) +
                                   (below(2) == 0 ? "" : "e+" + std::to_string(below(30)));
    }

    std::size_t below(std::size_t end) { return generator_() % end; }

private:
    std::mt19937 generator_{20250311};
};

} // namespace

TEST(CellOrder, TakesTextsAsPeopleCount)
{
    const Texts ordered = {"-",
                           "/",
                           "0",
                           "00",
                           "00a",
                           "0a",
                           "01",
                           "1",
                           "1.2",
                           "1.10",
                           "9",
                           "10",
                           "10a",
                           "99999999999999999999999998",
                           "99999999999999999999999999",
                           "100000000000000000000000000",
                           ":",
                           "A2",
                           "a",
                           "a1b2",
                           "a01b10",
                           "a2",
                           "b",
                           "run02",
                           "run2",
                           "run10",
                           "run10_2",
                           "run10_10",
                           "\xc3\xa9",
                           "\xff"};
    Texts shuffled = ordered;
    std::shuffle(shuffled.begin(), shuffled.end(), std::mt19937(7));

    const CellRanks ranks = rank(texts, shuffled);

    Texts seen;
    for (const std::size_t first : ranks.firsts)
        seen.push_back(shuffled[first]);
    EXPECT_EQ(seen, ordered);
}

TEST(CellOrder, ComparesTwoTextsAsThePlainRule)
{
    RandomCells random;
    for (int round = 0; round < 50'000; ++round) {
        const std::string a = random.text();
        const std::string b = random.text();
        SCOPED_TRACE(testing::PrintToString(a) + " and " + testing::PrintToString(b));
        const CellRanks ranks = rank(texts, {'x' + a, 'x' + b});
        ASSERT_EQ(ranks.ofCells[0] < ranks.ofCells[1], plainlyBefore('x' + a, 'x' + b));
        ASSERT_EQ(ranks.ofCells[1] < ranks.ofCells[0], plainlyBefore('x' + b, 'x' + a));
    }
}

TEST(CellOrder, RanksManyTextsAsThePlainRule)
{
    RandomCells random;
    for (int round = 0; round < 300; ++round) {
        Texts cells(random.below(60));
        std::generate(cells.begin(), cells.end(), [&random] { return random.text(); });
        Texts ordered = cells;
        std::sort(ordered.begin(), ordered.end(), plainlyBefore);
        ordered.erase(std::unique(ordered.begin(), ordered.end()), ordered.end());
        ordered.erase(std::remove(ordered.begin(), ordered.end(), ""), ordered.end());

        const CellRanks ranks = rank(texts, cells);

        ASSERT_EQ(ranks.firsts.size(), ordered.size());
        ASSERT_EQ(ranks.ofCells.size(), cells.size());
        for (std::size_t i = 0; i < cells.size(); ++i) {
            const auto place = std::find(ordered.begin(), ordered.end(), cells[i]);
            ASSERT_EQ(ranks.ofCells[i], place == ordered.end()
                                            ? none
                                            : static_cast<std::size_t>(place - ordered.begin()));
        }
        for (std::size_t k = 0; k < ordered.size(); ++k) {
            ASSERT_EQ(ranks.firsts[k],
                      static_cast<std::size_t>(std::find(cells.begin(), cells.end(), ordered[k]) -
                                               cells.begin()));
        }
    }
}

TEST(CellOrder, TakesNumbersByValueAndEqualOnesAsOne)
{
    const CellRanks ranks =
        rank(numbers, {"10", "5.0", "-1", "5", "1e1", "+5", "1e30", "0", "-0", "nan", "x"});

    EXPECT_EQ(ranks.ofCells, Indices({3, 2, 0, 2, 3, 2, 4, 1, 1, none, none}));
    EXPECT_EQ(ranks.firsts, Indices({2, 7, 1, 0, 6}));
}

TEST(CellOrder, RanksRandomNumbersByTheirValue)
{
    RandomCells random;
    for (int round = 0; round < 500; ++round) {
        Texts cells(20);
        std::generate(cells.begin(), cells.end(), [&random] { return random.number(); });
        const CellRanks ranks = rank(numbers, cells);
        for (std::size_t i = 0; i < cells.size(); ++i) {
            ASSERT_EQ(ranks.ofCells[i] == none, cells[i].empty() || cells[i] == "NaN");
            for (std::size_t j = 0; j < cells.size() && ranks.ofCells[i] != none; ++j) {
                if (ranks.ofCells[j] == none)
                    continue;
                ASSERT_EQ(ranks.ofCells[i] < ranks.ofCells[j],
                          std::strtold(cells[i].c_str(), nullptr) <
                              std::strtold(cells[j].c_str(), nullptr))
                    << cells[i] << ' ' << cells[j];
            }
        }
        for (std::size_t k = 0; k < ranks.firsts.size(); ++k) {
            const auto first = std::find(ranks.ofCells.begin(), ranks.ofCells.end(), k);
            ASSERT_EQ(ranks.firsts[k], static_cast<std::size_t>(first - ranks.ofCells.begin()));
        }
    }
}

TEST(CellOrder, TakesCountsAsNumbersAndPathsAsTexts)
{
    EXPECT_EQ(rank({"case", Column::Kind::Count}, {"10", "9", "0"}).ofCells, Indices({2, 1, 0}));
    EXPECT_EQ(rank({"log files", Column::Kind::AuxCount}, {"10", "9", "0"}).ofCells,
              Indices({2, 1, 0}));
    EXPECT_EQ(rank({"path", Column::Kind::Text}, {"a10", "a9", "a09"}).ofCells, Indices({2, 1, 0}));
    EXPECT_EQ(rank({"log", Column::Kind::AuxPath}, {"a10", "", "a9"}).ofCells,
              Indices({1, none, 0}));
}

TEST(CellOrder, HasNoRanksWithoutValues)
{
    EXPECT_EQ(rank(numbers, {}).ofCells, Indices());
    EXPECT_EQ(rank(numbers, {"", ""}).ofCells, Indices({none, none}));
    EXPECT_EQ(rank(texts, {"", ""}).ofCells, Indices({none, none}));
    EXPECT_EQ(rank(texts, {"", ""}).firsts, Indices());
}

} // namespace tests
} // namespace casetable
