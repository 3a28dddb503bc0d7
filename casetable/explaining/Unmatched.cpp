#include "casetable/explaining/Unmatched.h"

#include <algorithm>
#include <cctype>
#include <iterator>
#include <numeric>
#include <set>
#include <string_view>
#include <utility>

#include "casetable/explaining/TemplateFailure.h"
#include "casetable/importing/Reading.h"
#include "crawler/private/PathReading.h"
#include "host/AuxFileInfoInterface.h"

namespace casetable {

const std::string otherReading = "; --suggest finds templates, and -t reads by them";

namespace {

using Reason = MarkerFailure::Reason;

// As --unmatched says it.
std::string reasonText(const MarkerFailure& failure, const std::vector<MetadataPattern>& patterns)
{
    switch (failure.reason) {
    case Reason::NotFound:
        return "not found";
    case Reason::OneCharacter:
        return "one character, which is no value here" + otherReading;
    case Reason::NextInside:
        return "'" + patterns[failure.metadataIndex + 1].pattern + "' is found inside it" +
               otherReading;
    case Reason::NoValue:
        break;
    }
    return "no value";
}

// A file that belongs to no case.
struct UnmatchedFile {
    std::string path;
    MarkerFailure failure;
};

std::vector<UnmatchedFile> unmatchedFiles(const MetadataFileCrawler& importer,
                                          const std::vector<MetadataPattern>& patterns)
{
    std::vector<UnmatchedFile> unmatched;
    for (const std::string& path : unmatchedPaths(importer))
        unmatched.push_back({path, markerFailure(path, patterns)});
    return unmatched;
}

// The ending of a path's last component; empty where it has none.
std::string_view endingOf(std::string_view path)
{
    const std::string_view name = path.substr(path.rfind('/') + 1);
    return name.substr(std::min(name.rfind('.'), name.size()));
}

// Of the files for which the marker was the first that failed, those whose example tells most:
// where others are matched, only files of their kinds; and where values are lost for want of room,
// only the files that lose them.
std::vector<UnmatchedFile> tellingFiles(const MetadataFileCrawler& importer,
                                        std::vector<UnmatchedFile> files, std::size_t metadataIndex)
{
    std::set<std::string> kinds;
    for (const auto& file : importer.identifiedAuxFiles())
        kinds.insert(std::string(endingOf(file->filePath())));
    const auto keepOnly = [&files](const auto& isKept) {
        files.erase(std::remove_if(files.begin(), files.end(),
                                   [&](const UnmatchedFile& file) { return !isKept(file); }),
                    files.end());
    };
    keepOnly([&](const UnmatchedFile& file) {
        return file.failure.metadataIndex == metadataIndex &&
               (kinds.empty() || kinds.count(std::string(endingOf(file.path))) > 0);
    });
    const auto hasLostValue = [](const UnmatchedFile& file) {
        return file.failure.reason == Reason::OneCharacter ||
               file.failure.reason == Reason::NextInside;
    };
    if (std::any_of(files.begin(), files.end(), hasLostValue))
        keepOnly(hasLostValue);
    return files;
}

// For each marker, the number of files for which it was the first that failed.
std::vector<std::size_t> failureCounts(const std::vector<UnmatchedFile>& files,
                                       std::size_t markerCount)
{
    std::vector<std::size_t> counts(markerCount, 0);
    for (const UnmatchedFile& file : files)
        ++counts[file.failure.metadataIndex];
    return counts;
}

// Whether the marker stands in the path if "a" and "A" are taken for the same. A marker of one
// letter is then found in most paths, so where it asks for a number, one must follow. The program
// stays in the "C" locale, which knows only ASCII letters.
bool standsInOtherCase(const std::string& path, const MetadataPattern& pattern)
{
    const auto isSame = [](char a, char b) {
        return std::tolower(static_cast<unsigned char>(a)) ==
               std::tolower(static_cast<unsigned char>(b));
    };
    const std::string& marker = pattern.pattern;
    for (auto from = path.begin();; ++from) {
        from = std::search(from, path.end(), marker.begin(), marker.end(), isSame);
        if (from == path.end())
            return false;
        const std::size_t end = static_cast<std::size_t>(from - path.begin()) + marker.size();
        if (pattern.valueType == MetadataPattern::StringValue || marker.size() > 1 ||
            reading::scanNumberValue(std::string_view(path), end) != reading::noValue)
            return true;
    }
}

// Why a marker that is found has no value, with the number of files of which that is true.
std::string whyNoValue(const std::vector<UnmatchedFile>& files, const UnmatchedFile& example,
                       const std::vector<MetadataPattern>& patterns)
{
    const std::string name = "'" + patterns[example.failure.metadataIndex].pattern + "'";
    const auto count =
        std::count_if(files.begin(), files.end(), [&example](const UnmatchedFile& file) {
            return file.failure.reason == example.failure.reason;
        });
    const std::string inFiles = " in " + std::to_string(count) + (count == 1 ? " file" : " files") +
                                ", as in " + example.path;
    if (example.failure.reason == Reason::OneCharacter)
        return "one character stands behind " + name + inFiles + ", which is no value there" +
               otherReading;
    if (example.failure.reason == Reason::NextInside)
        return "'" + patterns[example.failure.metadataIndex + 1].pattern + "' is found inside " +
               name + inFiles + otherReading;
    return name + " has no value in " + example.path + ", and --explain tells why";
}

} // namespace

MarkerFailure markerFailure(const std::string& path, const std::vector<MetadataPattern>& patterns)
{
    std::vector<std::size_t> positions = reading::markerPositions(path, patterns);
    if (positions.size() < patterns.size())
        return {positions.size(), Reason::NotFound};
    positions.push_back(path.size());
    const auto segment = [&](std::size_t k) {
        return std::string_view(path).substr(positions[k], positions[k + 1] - positions[k]);
    };
    std::size_t k = 0;
    while (k + 1 < patterns.size() &&
           reading::scanValue(segment(k), patterns[k]) != reading::noValue)
        ++k;
    const std::size_t markerLength = patterns[k].pattern.size();
    if (segment(k).size() < markerLength)
        return {k, Reason::NextInside};
    const bool isOne = patterns[k].valueType != MetadataPattern::NumberValue &&
                       reading::lengthWithoutExtensions(segment(k)) == markerLength + 1;
    return {k, isOne ? Reason::OneCharacter : Reason::NoValue};
}

std::vector<std::string> unmatchedPaths(const MetadataFileCrawler& importer)
{
    std::vector<std::string> all(importer.files().begin(), importer.files().end());
    std::sort(all.begin(), all.end());
    std::vector<std::string> matched;
    for (const auto& file : importer.identifiedAuxFiles())
        matched.push_back(file->filePath());

    std::vector<std::string> paths;
    std::set_difference(all.begin(), all.end(), matched.begin(), matched.end(),
                        std::back_inserter(paths));
    return paths;
}

UnmatchedRows unmatchedRows(const std::vector<MetadataPattern>& patterns)
{
    UnmatchedRows rows;
    rows.columns = {{"path", Column::Kind::Text},
                    {"marker", Column::Kind::Text},
                    {"reason", Column::Kind::Text}};
    rows.row = [&patterns](const std::string& path) {
        const MarkerFailure failure = markerFailure(path, patterns);
        Row row;
        row.cells = {path, patterns[failure.metadataIndex].pattern, reasonText(failure, patterns)};
        return row;
    };
    return rows;
}

Report unmatchedReport(const MetadataFileCrawler& importer, const Reading& reading)
{
    UnmatchedRows rows = reading.visit([](const auto& by) { return unmatchedRows(by); });
    std::vector<std::string> paths = unmatchedPaths(importer);
    Report report;
    report.rowsName = "unmatched";
    report.columns = std::move(rows.columns);
    report.rowCount = paths.size();
    report.row = [paths = std::move(paths), row = std::move(rows.row)](std::size_t index) {
        return row(paths[index]);
    };
    return report;
}

std::string failureSummary(const MetadataFileCrawler& importer,
                           const std::vector<MetadataPattern>& patterns)
{
    const std::vector<std::size_t> failures =
        failureCounts(unmatchedFiles(importer, patterns), patterns.size());
    std::vector<std::size_t> order(patterns.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::stable_sort(order.begin(), order.end(), [&failures](std::size_t a, std::size_t b) {
        return failures[a] > failures[b];
    });

    std::string summary;
    for (const std::size_t k : order) {
        if (failures[k] == 0)
            break;
        summary += (summary.empty() ? "marker '" : ", '") + patterns[k].pattern + "' failed for " +
                   std::to_string(failures[k]) + (failures[k] == 1 ? " file" : " files");
    }
    return summary;
}

std::string likelyReason(const MetadataFileCrawler& importer,
                         const std::vector<MetadataPattern>& patterns, const std::string& root)
{
    const std::vector<UnmatchedFile> files = unmatchedFiles(importer, patterns);
    const std::vector<std::size_t> failures = failureCounts(files, patterns.size());
    const auto k = static_cast<std::size_t>(std::max_element(failures.begin(), failures.end()) -
                                            failures.begin());
    const std::string& marker = patterns[k].pattern;
    const std::string name = "'" + marker + "'";
    const std::vector<UnmatchedFile> telling = tellingFiles(importer, files, k);
    for (const UnmatchedFile& file : telling) {
        if (file.failure.reason != Reason::NotFound)
            continue;
        const std::size_t position = file.path.find(marker);
        if (position != std::string::npos &&
            position == reading::markerPositions(file.path, patterns).back())
            return name + " stands in " + file.path + " only where the marker before begins";
        if (position != std::string::npos)
            return name + " stands in front of '" + patterns[k - 1].pattern + "' in " + file.path +
                   ", and markers go from left to right";
        if (standsInOtherCase(file.path, patterns[k]))
            return name + " is written with other letters, large or small, in " + file.path;
    }
    const auto withoutValue =
        std::find_if(telling.begin(), telling.end(), [](const UnmatchedFile& file) {
            return file.failure.reason != Reason::NotFound;
        });
    if (withoutValue != telling.end())
        return whyNoValue(telling, *withoutValue, patterns);
    if (importer.hasCases())
        return "";
    if ((root + '/').find(marker) != std::string::npos)
        return name + " stands in " + root + ", but only the paths below it are read";
    if (marker.find_first_of("*?[") != std::string::npos)
        return "a marker is a literal text, without wildcards";
    return "";
}

} // namespace casetable
