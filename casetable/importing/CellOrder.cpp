#include "casetable/importing/CellOrder.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <system_error>
#include <unordered_map>
#include <utility>

#include "casetable/importing/Decimal.h"
#include "casetable/importing/Report.h"
#include "crawler/private/PathReading.h"

namespace casetable {

namespace {

using Cells = std::vector<std::string_view>;

// The different texts of the cells that hold a value, in the order in which they are met.
struct DifferentTexts {
    std::vector<std::size_t> ofCells; // The index of each cell's text, or CellRanks::none.
    std::vector<std::size_t> firsts;  // For each text, the first cell in which it stands.
};

// A text with what it is sorted by.
template <class Key> struct Keyed {
    Key key;
    std::size_t text;
};

// NaN where there is no number.
double numberIn(std::string_view text)
{
    double number = 0;
    // What this reads to its end converts to the same number, several times as fast.
    const std::from_chars_result read =
        std::from_chars(text.data(), text.data() + text.size(), number);
    if (read.ec == std::errc() && read.ptr == text.data() + text.size())
        return number;
    return reading::convertsToNumber(std::string(text), number)
               ? number
               : std::numeric_limits<double>::quiet_NaN();
}

DifferentTexts differentTexts(const Column& column, const Cells& cells)
{
    DifferentTexts texts;
    texts.ofCells.reserve(cells.size());
    std::unordered_map<std::string_view, std::size_t> indices;
    indices.reserve(cells.size());
    for (std::size_t i = 0; i < cells.size(); ++i) {
        if (contentOf(column, cells[i]) == Content::Nothing) {
            texts.ofCells.push_back(CellRanks::none);
            continue;
        }
        const auto text = indices.emplace(cells[i], texts.firsts.size());
        if (text.second)
            texts.firsts.push_back(i);
        texts.ofCells.push_back(text.first->second);
    }
    return texts;
}

// The ranks of the cells of `texts`, of which those without a key are left out.
template <class Key, class IsBefore>
CellRanks rankKeys(const DifferentTexts& texts, std::vector<Keyed<Key>> keyed,
                   const IsBefore& isBefore)
{
    // Stable, so that of equal numbers the one that is met first comes first.
    std::stable_sort(keyed.begin(), keyed.end(), isBefore);
    CellRanks ranks;
    std::vector<std::size_t> rankOfTexts(texts.firsts.size(), CellRanks::none);
    for (std::size_t k = 0; k < keyed.size(); ++k) {
        if (k == 0 || isBefore(keyed[k - 1], keyed[k]))
            ranks.firsts.push_back(texts.firsts[keyed[k].text]);
        rankOfTexts[keyed[k].text] = ranks.firsts.size() - 1;
    }
    ranks.ofCells.reserve(texts.ofCells.size());
    for (const std::size_t text : texts.ofCells)
        ranks.ofCells.push_back(text == CellRanks::none ? text : rankOfTexts[text]);
    return ranks;
}

CellRanks rankNumbers(const DifferentTexts& texts, const Cells& cells)
{
    std::vector<Keyed<double>> keyed;
    for (std::size_t k = 0; k < texts.firsts.size(); ++k) {
        const double number = numberIn(cells[texts.firsts[k]]);
        if (!std::isnan(number))
            keyed.push_back({number, k});
    }
    return rankKeys(texts, std::move(keyed), [&](const auto& a, const auto& b) {
        if (a.key != b.key || std::isinf(a.key))
            return a.key < b.key;
        return Decimal(cells[texts.firsts[a.text]]) < Decimal(cells[texts.firsts[b.text]]);
    });
}

CellRanks rankNaturally(const DifferentTexts& texts, const Cells& cells)
{
    std::string keys; // One behind the other.
    std::vector<std::size_t> ends;
    for (const std::size_t first : texts.firsts) {
        appendNaturalKey(cells[first], keys);
        ends.push_back(keys.size());
    }
    std::vector<Keyed<std::string_view>> keyed;
    std::size_t begin = 0;
    for (std::size_t k = 0; k < ends.size(); ++k) {
        keyed.push_back({std::string_view(keys).substr(begin, ends[k] - begin), k});
        begin = ends[k];
    }
    return rankKeys(texts, std::move(keyed), [&](const auto& a, const auto& b) {
        const int order = a.key.compare(b.key);
        return order != 0 ? order < 0 : cells[texts.firsts[a.text]] < cells[texts.firsts[b.text]];
    });
}

} // namespace

void appendNaturalKey(std::string_view text, std::string& key)
{
    std::size_t i = 0;
    while (i < text.size()) {
        if (!reading::isDigit(text[i])) {
            key += text[i++];
            continue;
        }
        const std::size_t end = reading::skipDigits(text, i);
        while (i < end && text[i] == '0')
            ++i;
        // A zero, as no other byte is a digit's here, and then the number of the digits: a number
        // with fewer is less. A byte for each 255 of them and one for the rest keep that order.
        const std::string_view digits = text.substr(i, end - i);
        key += '0';
        key.append(digits.size() / 255, '\xff');
        key += static_cast<char>(digits.size() % 255);
        key += digits;
        i = end;
    }
}

CellRanks rankCells(const Column& column, const std::vector<std::string_view>& cells)
{
    const DifferentTexts texts = differentTexts(column, cells);
    return column.isNumber() ? rankNumbers(texts, cells) : rankNaturally(texts, cells);
}

} // namespace casetable
