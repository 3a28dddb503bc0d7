#include "casetable/explaining/Unmatched.h"

#include <algorithm>
#include <cctype>
#include <iterator>
#include <numeric>
#include <set>
#include <string_view>
#include <utility>

#include "crawler/private/PathReading.h"
#include "host/AuxFileInfoInterface.h"

namespace casetable {

const std::string otherReading = "; --suggest finds templates, and -t reads by them";

namespace {

using Reason = UnmatchedFile::Reason;

// The importer reads no value from a path in which a marker is not found, and does not tell which
// marker that was.
UnmatchedFile unmatchedFile(const MetadataFileCrawler& importer,
                            const std::vector<MetadataPattern>& patterns, const std::string& path)
{
    const std::vector<std::size_t> positions = reading::markerPositions(path, patterns);
    if (positions.size() < patterns.size())
        return {path, positions.size(), Reason::NotFound};
    const std::size_t k = importer.metadataInfoList(path).size();
    const std::size_t markerEnd = positions[k] + patterns[k].pattern.size();
    const bool isLast = k + 1 == patterns.size();
    const std::size_t end = isLast ? path.size() : positions[k + 1];
    if (end < markerEnd)
        return {path, k, Reason::NextInside};
    const std::string_view segment =
        std::string_view(path).substr(positions[k], end - positions[k]);
    const bool isOne = patterns[k].valueType != MetadataPattern::NumberValue &&
                       reading::lengthWithoutExtensions(segment) == patterns[k].pattern.size() + 1;
    return {path, k, isOne ? Reason::OneCharacter : Reason::NoValue};
}

// As --unmatched says it.
std::string reasonText(const UnmatchedFile& file, const std::vector<MetadataPattern>& patterns)
{
    switch (file.reason) {
    case Reason::NotFound:
        return "not found";
    case Reason::OneCharacter:
        return "one character, which is no value here" + otherReading;
    case Reason::NextInside:
        return "'" + patterns[file.metadataIndex + 1].pattern + "' is found inside it" +
               otherReading;
    case Reason::NoValue:
        break;
    }
    return "no value";
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
        return file.metadataIndex == metadataIndex &&
               (kinds.empty() || kinds.count(std::string(endingOf(file.path))) > 0);
    });
    const auto hasLostValue = [](const UnmatchedFile& file) {
        return file.reason == Reason::OneCharacter || file.reason == Reason::NextInside;
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
        ++counts[file.metadataIndex];
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
    const std::string name = "'" + patterns[example.metadataIndex].pattern + "'";
    const auto count =
        std::count_if(files.begin(), files.end(), [&example](const UnmatchedFile& file) {
            return file.reason == example.reason;
        });
    const std::string inFiles = " in " + std::to_string(count) + (count == 1 ? " file" : " files") +
                                ", as in " + example.path;
    if (example.reason == Reason::OneCharacter)
        return "one character stands behind " + name + inFiles + ", which is no value there" +
               otherReading;
    if (example.reason == Reason::NextInside)
        return "'" + patterns[example.metadataIndex + 1].pattern + "' is found inside " + name +
               inFiles + otherReading;
    return name + " has no value in " + example.path + ", and --explain tells why";
}

} // namespace

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

std::vector<UnmatchedFile> unmatchedFiles(const MetadataFileCrawler& importer,
                                          const std::vector<MetadataPattern>& patterns)
{
    std::vector<UnmatchedFile> unmatched;
    for (const std::string& path : unmatchedPaths(importer))
        unmatched.push_back(unmatchedFile(importer, patterns, path));
    return unmatched;
}

Report unmatchedReport(const MetadataFileCrawler& importer,
                       const std::vector<MetadataPattern>& patterns)
{
    Report report;
    report.rowsName = "unmatched";
    report.columns = {{"path", Column::Kind::Text},
                      {"marker", Column::Kind::Text},
                      {"reason", Column::Kind::Text}};
    std::vector<UnmatchedFile> files = unmatchedFiles(importer, patterns);
    report.rowCount = files.size();
    report.row = [files = std::move(files), &patterns](std::size_t index) {
        const UnmatchedFile& file = files[index];
        Row row;
        row.cells = {file.path, patterns[file.metadataIndex].pattern, reasonText(file, patterns)};
        return row;
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
        if (file.reason != Reason::NotFound)
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
        std::find_if(telling.begin(), telling.end(),
                     [](const UnmatchedFile& file) { return file.reason != Reason::NotFound; });
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
