#include "casetable/explaining/MarkerFailures.h"

#include <algorithm>
#include <iterator>
#include <numeric>
#include <utility>

#include "casetable/explaining/Unmatched.h"
#include "crawler/private/PathReading.h"

namespace casetable {

namespace {

using Patterns = std::vector<MetadataPattern>;
using Reason = MarkerFailure::Reason;

// Endings that count files or time steps may be as many as the files. Endings that stand for a
// format are few and short. As only the shortest are kept, it makes no difference in which order
// files come: an ending that is among the shortest of all is among those of every part.
const std::size_t mostKinds = 256;

std::size_t indexOf(Reason reason)
{
    return static_cast<std::size_t>(reason);
}

// The ending of a path's last component; empty where it has none.
std::string_view endingOf(std::string_view path)
{
    const auto last =
        std::find_if(path.rbegin(), path.rend(), [](char c) { return c == '.' || c == '/'; });
    if (last == path.rend() || *last == '/')
        return {};
    return path.substr(path.size() - 1 - static_cast<std::size_t>(last - path.rbegin()));
}

// With small ASCII letters. The program stays in the "C" locale, which knows no others.
std::string lowered(std::string text)
{
    for (char& c : text)
        c = static_cast<char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
    return text;
}

// Whether the marker stands in the path if "a" and "A" are taken for the same. A marker of one
// letter is then found in most paths, so where it asks for a number, one must follow.
bool standsInOtherCase(const std::string& path, const MetadataPattern& pattern)
{
    const std::string marker = lowered(pattern.pattern);
    const std::string text = lowered(path);
    for (std::size_t from = text.find(marker); from != std::string::npos;
         from = text.find(marker, from + 1)) {
        if (pattern.valueType == MetadataPattern::StringValue || marker.size() > 1 ||
            reading::scanNumberValue(std::string_view(path), from + marker.size()) !=
                reading::noValue)
            return true;
    }
    return false;
}

// How a marker stands in the path that is not found in it; empty where it does not.
std::string misplacement(const std::string& path, const Patterns& patterns,
                         std::size_t metadataIndex)
{
    const std::string& marker = patterns[metadataIndex].pattern;
    const std::string name = "'" + marker + "'";
    const std::size_t position = path.find(marker);
    if (position != std::string::npos &&
        position == reading::markerPositions(path, patterns).back())
        return name + " stands in " + path + " only where the marker before begins";
    if (position != std::string::npos)
        return name + " stands in front of '" + patterns[metadataIndex - 1].pattern + "' in " +
               path + ", and markers go from left to right";
    if (standsInOtherCase(path, patterns[metadataIndex]))
        return name + " is written with other letters, large or small, in " + path;
    return "";
}

} // namespace

bool MarkerFailures::ShorterFirst::operator()(std::string_view left, std::string_view right) const
{
    return left.size() != right.size() ? left.size() < right.size() : left < right;
}

void MarkerFailures::Failed::addMisplaced(const std::string& path)
{
    if (!misplaced || path < *misplaced)
        misplaced = path;
}

void MarkerFailures::Failed::merge(Failed&& other)
{
    for (std::size_t reason = 0; reason < byReason.size(); ++reason)
        byReason[reason].merge(std::move(other.byReason[reason]));
    if (other.misplaced)
        addMisplaced(*other.misplaced);
}

void MarkerFailures::Kind::merge(Kind&& other)
{
    isMatched = isMatched || other.isMatched;
    if (failed.empty())
        failed.swap(other.failed);
    for (std::size_t k = 0; k < other.failed.size(); ++k)
        failed[k].merge(std::move(other.failed[k]));
}

void MarkerFailures::Failed::write(ByteWriter& writer) const
{
    for (const CountedFiles& files : byReason)
        files.write(writer);
    writer.flag(misplaced.has_value());
    if (misplaced)
        writer.text(*misplaced);
}

void MarkerFailures::Failed::read(ByteReader& reader)
{
    for (CountedFiles& files : byReason)
        files.read(reader);
    if (reader.flag())
        misplaced = reader.text();
}

void MarkerFailures::Kind::write(ByteWriter& writer) const
{
    writer.flag(isMatched);
    writer.flag(!failed.empty());
    for (const Failed& each : failed)
        each.write(writer);
}

void MarkerFailures::Kind::read(ByteReader& reader, std::size_t markers)
{
    isMatched = reader.flag();
    failed.resize(reader.flag() ? markers : 0);
    for (Failed& each : failed)
        each.read(reader);
}

MarkerFailures::MarkerFailures(const Patterns& patterns) : patterns_(&patterns) {}

void MarkerFailures::countMatched(const std::string& path)
{
    kindOf(endingOf(path)).isMatched = true;
}

void MarkerFailures::countUnmatched(const std::string& path)
{
    Kind& kind = kindOf(endingOf(path));
    kind.failed.resize(patterns_->size());
    const MarkerFailure failure = markerFailure(path, *patterns_);
    Failed& failed = kind.failed[failure.metadataIndex];
    failed.byReason[indexOf(failure.reason)].add(path);
    const bool mayBeExample = !failed.misplaced || path < *failed.misplaced;
    if (failure.reason == Reason::NotFound && mayBeExample &&
        !misplacement(path, *patterns_, failure.metadataIndex).empty())
        failed.addMisplaced(path);
}

void MarkerFailures::merge(MarkerFailures&& other)
{
    for (auto& [ending, kind] : other.kinds_)
        kindOf(ending).merge(std::move(kind));
    others_.merge(std::move(other.others_));
}

void MarkerFailures::write(ByteWriter& writer) const
{
    others_.write(writer);
    writer.number(kinds_.size());
    for (const auto& [ending, kind] : kinds_) {
        writer.text(ending);
        kind.write(writer);
    }
}

void MarkerFailures::read(ByteReader& reader)
{
    others_.read(reader, patterns_->size());
    for (std::size_t left = reader.count(1); left > 0; --left) {
        const std::string_view ending = reader.text();
        Kind kind;
        kind.read(reader, patterns_->size());
        kindOf(ending).merge(std::move(kind));
    }
}

std::string MarkerFailures::summary() const
{
    const std::vector<std::size_t> failures = counts();
    std::vector<std::size_t> order(failures.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::stable_sort(order.begin(), order.end(), [&failures](std::size_t a, std::size_t b) {
        return failures[a] > failures[b];
    });

    std::string summary;
    for (const std::size_t k : order) {
        if (failures[k] == 0)
            break;
        summary += (summary.empty() ? "marker '" : ", '") + (*patterns_)[k].pattern +
                   "' failed for " + std::to_string(failures[k]) +
                   (failures[k] == 1 ? " file" : " files");
    }
    return summary;
}

std::string MarkerFailures::likelyReason(const std::string& root) const
{
    const std::vector<std::size_t> failures = counts();
    const auto k = static_cast<std::size_t>(std::max_element(failures.begin(), failures.end()) -
                                            failures.begin());
    const std::string& marker = (*patterns_)[k].pattern;
    const std::string name = "'" + marker + "'";
    const Failed telling = tellingFiles(k);

    const CountedFiles& oneCharacter = telling.byReason[indexOf(Reason::OneCharacter)];
    const CountedFiles& nextInside = telling.byReason[indexOf(Reason::NextInside)];
    const auto inFiles = [](const CountedFiles& files) {
        return " in " + std::to_string(files.count) + (files.count == 1 ? " file" : " files") +
               ", as in " + files.example;
    };
    // Where values are lost for want of room, the files that lose them tell most.
    if (oneCharacter.count > 0 &&
        (nextInside.count == 0 || oneCharacter.example < nextInside.example))
        return "one character stands behind " + name + inFiles(oneCharacter) +
               ", which is no value there" + otherReading;
    if (nextInside.count > 0)
        return "'" + (*patterns_)[k + 1].pattern + "' is found inside " + name +
               inFiles(nextInside) + otherReading;
    if (telling.misplaced)
        return misplacement(*telling.misplaced, *patterns_, k);
    const CountedFiles& noValue = telling.byReason[indexOf(Reason::NoValue)];
    if (noValue.count > 0)
        return name + " has no value in " + noValue.example + ", and --explain tells why";
    if (hasMatches())
        return "";
    if ((root + '/').find(marker) != std::string::npos)
        return name + " stands in " + root + ", but only the paths below it are read";
    if (marker.find_first_of("*?[") != std::string::npos)
        return "a marker is a literal text, without wildcards";
    return "";
}

MarkerFailures::Kind& MarkerFailures::kindOf(std::string_view ending)
{
    const auto found = kinds_.find(ending);
    if (found != kinds_.end())
        return found->second;
    if (kinds_.size() == mostKinds) {
        const auto last = std::prev(kinds_.end());
        if (!ShorterFirst()(ending, last->first))
            return others_;
        others_.merge(std::move(last->second));
        kinds_.erase(last);
    }
    return kinds_[std::string(ending)];
}

std::vector<const MarkerFailures::Kind*> MarkerFailures::allKinds() const
{
    std::vector<const Kind*> kinds = {&others_};
    for (const auto& entry : kinds_)
        kinds.push_back(&entry.second);
    return kinds;
}

// For each marker, the number of files for which it was the first that failed.
std::vector<std::size_t> MarkerFailures::counts() const
{
    std::vector<std::size_t> counts(patterns_->size(), 0);
    for (const Kind* kind : allKinds()) {
        for (std::size_t k = 0; k < kind->failed.size(); ++k) {
            for (const CountedFiles& files : kind->failed[k].byReason)
                counts[k] += files.count;
        }
    }
    return counts;
}

bool MarkerFailures::hasMatches() const
{
    const std::vector<const Kind*> kinds = allKinds();
    return std::any_of(kinds.begin(), kinds.end(),
                       [](const Kind* kind) { return kind->isMatched; });
}

// Of the files for which the marker was the first that failed, those whose example tells most:
// where others are matched, only files of their kinds.
MarkerFailures::Failed MarkerFailures::tellingFiles(std::size_t metadataIndex) const
{
    Failed telling;
    const bool ofMatchedKinds = hasMatches();
    for (const Kind* kind : allKinds()) {
        if (!kind->failed.empty() && (kind->isMatched || !ofMatchedKinds))
            telling.merge(Failed(kind->failed[metadataIndex]));
    }
    return telling;
}

} // namespace casetable
