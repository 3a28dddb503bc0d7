#include "casetable/suggesting/MarkerFinder.h"

#include <algorithm>
#include <map>
#include <stdexcept>
#include <utility>

#include "casetable/suggesting/NameTokens.h"
#include "crawler/CrawlerBasicImporterParser.h"
#include "host/AuxFileInfoInterface.h"

namespace casetable {

namespace {

const std::size_t maxMarkers = 8;
// More than any difference in pleasantness of as many markers as there may be.
const std::size_t costOfAPath = 1000;

// Nearly all.
bool isMost(std::size_t part, std::size_t whole)
{
    return part * 10 >= whole * 9;
}

// Words, numbers and separators.
int kindOf(char c)
{
    return isWordByte(c) ? 0 : c >= '0' && c <= '9' ? 1 : 2;
}

// Where a word begins that ends in a number at `end`, as in "x1=", if only separators stand
// behind; `end` where there is none.
std::size_t numberedWord(std::string_view left, std::size_t end)
{
    std::size_t number = end;
    while (number > 0 && kindOf(left[number - 1]) == 1)
        --number;
    std::size_t word = number;
    while (word > 0 && isWordByte(left[word - 1]))
        --word;
    const bool follows = end < left.size() && !isWordByte(left[end]);
    return follows && number < end && word < number ? word : end;
}

} // namespace

std::size_t lastWord(std::string_view left)
{
    std::size_t begin = left.size();
    if (begin > 0 && left[begin - 1] == '/')
        --begin;
    while (begin > 0 && left[begin - 1] != '/' && !isWordByte(left[begin - 1]))
        --begin;
    while (begin > 0 && isWordByte(left[begin - 1]))
        --begin;
    return begin;
}

MarkerFinder::MarkerFinder(std::vector<ValuePlace> places, std::vector<Trial> trials)
    : places_(std::move(places)), trials_(std::move(trials))
{
}

// The text before the value of place `k` that all trials share, as far back as the value before.
std::string_view MarkerFinder::commonLeft(std::size_t k) const
{
    const auto leftOf = [k](const Trial& trial) {
        const std::size_t begin = k == 0 ? 0 : trial.ends[k - 1];
        return trial.path.substr(begin, trial.begins[k] - begin);
    };
    std::string_view common = leftOf(trials_.front());
    for (const Trial& trial : trials_) {
        const std::string_view left = leftOf(trial);
        const auto end = std::mismatch(left.rbegin(), left.rend(), common.rbegin(), common.rend());
        common.remove_prefix(static_cast<std::size_t>(common.rend() - end.second));
    }
    return common;
}

// What could be the marker of place `k`, the most pleasant first: ends of the text that stands
// before its value in all trials.
std::vector<std::string> MarkerFinder::markers(std::size_t k) const
{
    const std::string left(commonLeft(k));
    const std::size_t constant = std::min(places_[k].constant, left.size());
    const std::size_t word = left.size() - constant + lastWord(left.substr(left.size() - constant));
    std::vector<std::string> markers;
    // The separators behind a text are no part of it.
    if (places_[k].behindText && *places_[k].behindText <= constant)
        markers.push_back(left.substr(left.size() - *places_[k].behindText));
    const std::size_t numbered = numberedWord(left, word);
    if (numbered < word)
        markers.push_back(left.substr(numbered));
    markers.push_back(left.substr(word));
    for (std::size_t begin = word; begin > 0 && markers.size() < maxMarkers;) {
        const int kind = kindOf(left[begin - 1]);
        while (begin > 0 && kindOf(left[begin - 1]) == kind)
            --begin;
        // Values may share their last letters by chance.
        if (begin > 0 || constant == left.size())
            markers.push_back(left.substr(begin));
    }
    // Without its word, a marker may stand where the one before takes the word.
    std::size_t separators = word;
    while (separators < left.size() && isWordByte(left[separators]))
        ++separators;
    markers.push_back(left.substr(separators));
    markers.erase(std::remove(markers.begin(), markers.end(), std::string()), markers.end());
    return markers;
}

// In how many paths the marker of place `k` is found in its place, behind a marker of
// `lengthBefore` bytes for the place before.
std::size_t MarkerFinder::foundInPlace(std::size_t k, const std::string& marker,
                                       std::size_t lengthBefore) const
{
    std::size_t found = 0;
    for (const Trial& trial : trials_) {
        const std::size_t start = k == 0 ? 0 : trial.begins[k - 1] - lengthBefore + 1;
        const std::size_t position = trial.path.find(marker, start);
        found += position != std::string_view::npos && position + marker.size() == trial.begins[k]
                     ? 1
                     : 0;
    }
    return found;
}

// In how many paths the text of place `k`, with this marker, is read when the next marker has
// `lengthBehind` bytes.
std::size_t MarkerFinder::textsRead(std::size_t k, const std::string& marker,
                                    std::size_t lengthBehind) const
{
    struct Text {
        std::size_t paths = 0;
        std::size_t length = 0;
    };
    std::map<std::string, Text> segments;
    CrawlerBasicImporterParser parser;
    for (const Trial& trial : trials_) {
        const std::size_t begin = trial.begins[k] - marker.size();
        const std::size_t end = trial.begins[k + 1] - lengthBehind;
        if (begin >= end)
            continue;
        Text& text = segments[std::string(trial.path.substr(begin, end - begin))];
        ++text.paths;
        text.length = trial.ends[k] - trial.begins[k];
    }
    for (const auto& segment : segments)
        parser.appendRawFilePath(segment.first);
    try {
        parser.applyMetadataPatternList({{marker, MetadataPattern::StringValue}});
    } catch (const std::out_of_range&) {
        return 0;
    }
    std::size_t read = 0;
    for (const auto& file : parser.crawlerFilePathList()) {
        const Text& text = segments.at(file->filePath());
        // Where the next marker begins right behind it, an ending such as ".2" of "v1.2" is lost.
        if (file->isMatched() &&
            parser.caseMetadataSValue(file->caseIndex(), 0).size() >= text.length)
            read += text.paths;
    }
    return read;
}

// The values that are read where they should, for each marker.
std::vector<std::size_t> MarkerFinder::readWell(const std::vector<MetadataPattern>& patterns) const
{
    std::vector<std::size_t> well(patterns.size(), 0);
    for (const Trial& trial : trials_) {
        CrawlerBasicImporterParser parser;
        const std::string path(trial.path);
        parser.appendRawFilePath(path);
        try {
            parser.applyMetadataPatternList(patterns);
        } catch (const std::out_of_range&) {
            continue;
        }
        const std::vector<MetadataInfo> infos = parser.metadataInfoList(path);
        for (std::size_t k = 0; k < infos.size(); ++k) {
            const std::size_t end = infos[k].valuePosition + infos[k].valueLength;
            if (infos[k].valuePosition == trial.begins[k] &&
                (end == trial.ends[k] || (end > trial.ends[k] && !trial.exact[k])))
                ++well[k];
        }
    }
    return well;
}

// The choices for place `k`, those for the place before given; or a place that cannot be had.
std::optional<std::size_t> MarkerFinder::addChoices(std::vector<std::vector<Choice>>& choices) const
{
    const std::size_t k = choices.size();
    const std::vector<Choice> start = {Choice{"", 0, 0}};
    const std::vector<Choice>& choicesBefore = choices.empty() ? start : choices.back();
    const bool behindText = k > 0 && places_[k - 1].type == MetadataPattern::StringValue;
    const std::vector<std::string> markers = this->markers(k);
    std::vector<Choice> added;
    bool found = false;
    for (std::size_t m = 0; m < markers.size(); ++m) {
        std::optional<Choice> best;
        for (std::size_t b = 0; b < choicesBefore.size(); ++b) {
            const Choice& before = choicesBefore[b];
            std::size_t good = foundInPlace(k, markers[m], before.marker.size());
            found = found || isMost(good, trials_.size());
            if (behindText && isMost(good, trials_.size()))
                good = std::min(good, textsRead(k - 1, before.marker, markers[m].size()));
            const std::size_t cost = before.cost + (trials_.size() - good) * costOfAPath + m;
            if (isMost(good, trials_.size()) && (!best || cost < best->cost))
                best = Choice{markers[m], cost, b};
        }
        if (best)
            added.push_back(*best);
    }
    if (added.empty())
        return found ? k - 1 : k;
    choices.push_back(std::move(added));
    return std::nullopt;
}

std::optional<std::size_t> MarkerFinder::find(std::vector<MetadataPattern>& patterns) const
{
    patterns.clear();
    std::vector<std::vector<Choice>> choices;
    do {
        if (const std::optional<std::size_t> failed = addChoices(choices))
            return failed;
    } while (choices.size() < places_.size());
    const std::vector<Choice>& last = choices.back();
    const auto best = std::min_element(
        last.begin(), last.end(), [](const Choice& a, const Choice& b) { return a.cost < b.cost; });
    auto choice = static_cast<std::size_t>(best - last.begin());
    for (std::size_t k = places_.size(); k-- > 0; choice = choices[k][choice].before)
        patterns.emplace_back(choices[k][choice].marker, places_[k].type);
    std::reverse(patterns.begin(), patterns.end());

    const std::vector<std::size_t> well = readWell(patterns);
    for (std::size_t k = 0; k < places_.size(); ++k) {
        if (!isMost(well[k], trials_.size()))
            return k;
    }
    return std::nullopt;
}

} // namespace casetable
