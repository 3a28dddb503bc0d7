#include "casetable/Unmatched.h"

#include <algorithm>
#include <iterator>
#include <numeric>

#include "host/AuxFileInfoInterface.h"

namespace casetable {

namespace {

// A path in which a marker is not found has no metadata at all.
UnmatchedFile explain(const MetadataFileCrawler& importer,
                      const std::vector<MetadataPattern>& patterns, const std::string& path)
{
    const std::size_t found = markerPositions(path, patterns).size();
    if (found < patterns.size())
        return {path, found, false};
    return {path, importer.metadataInfoList(path).size(), true};
}

} // namespace

std::vector<std::size_t> markerPositions(const std::string& path,
                                         const std::vector<MetadataPattern>& patterns)
{
    std::vector<std::size_t> positions;
    std::size_t start = 0;
    for (const MetadataPattern& pattern : patterns) {
        const std::size_t position = path.find(pattern.pattern, start);
        if (position == std::string::npos)
            break;
        positions.push_back(position);
        start = position + 1;
    }
    return positions;
}

std::vector<UnmatchedFile> unmatchedFiles(const MetadataFileCrawler& importer,
                                          const std::vector<MetadataPattern>& patterns)
{
    std::vector<std::string> all(importer.files().begin(), importer.files().end());
    std::sort(all.begin(), all.end());
    std::vector<std::string> matched;
    for (const auto& file : importer.identifiedAuxFiles())
        matched.push_back(file->filePath());

    std::vector<std::string> paths;
    std::set_difference(all.begin(), all.end(), matched.begin(), matched.end(),
                        std::back_inserter(paths));
    std::vector<UnmatchedFile> unmatched;
    unmatched.reserve(paths.size());
    for (const std::string& path : paths)
        unmatched.push_back(explain(importer, patterns, path));
    return unmatched;
}

std::string failureSummary(const MetadataFileCrawler& importer,
                           const std::vector<MetadataPattern>& patterns)
{
    std::vector<std::size_t> failures(patterns.size(), 0);
    for (const UnmatchedFile& file : unmatchedFiles(importer, patterns))
        ++failures[file.metadataIndex];
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

} // namespace casetable
