#ifndef CASETABLE_EXPLAINING_UNMATCHED_H
#define CASETABLE_EXPLAINING_UNMATCHED_H

#include <cstddef>
#include <string>
#include <vector>

#include "casetable/importing/Report.h"
#include "crawler/MetadataFileCrawler.h"
#include "crawler/MetadataPattern.h"

namespace casetable {

/// A file that belongs to no case, and the reason.
struct UnmatchedFile {
    /// Relative to the root.
    std::string path;
    /// The metadata index of the first marker that failed.
    std::size_t metadataIndex;
    /// Whether that marker was found. If so, it has no value of its kind; if not, it does not stand
    /// where it is searched for, behind the first byte of the marker before.
    bool markerFound;
};

/// The paths of the importer's crawl result that belong to no case, in ascending byte order.
std::vector<std::string> unmatchedPaths(const MetadataFileCrawler& importer);

/// The same files with the reasons. `patterns`, here and below, is the list last applied to the
/// importer, and not empty.
std::vector<UnmatchedFile> unmatchedFiles(const MetadataFileCrawler& importer,
                                          const std::vector<MetadataPattern>& patterns);

/// A report with a row for each of these files: the path, the first marker that failed, and the
/// reason. `patterns` must outlive it.
Report unmatchedReport(const MetadataFileCrawler& importer,
                       const std::vector<MetadataPattern>& patterns);

/// One line that says for how many of these files each marker was the first that failed, the
/// highest number first; empty where there are none.
std::string failureSummary(const MetadataFileCrawler& importer,
                           const std::vector<MetadataPattern>& patterns);

/// One line with a likely reason why the marker that failureSummary() names first failed; empty
/// where none is likely. `root` is the root folder as the user named it.
std::string likelyReason(const MetadataFileCrawler& importer,
                         const std::vector<MetadataPattern>& patterns, const std::string& root);

} // namespace casetable

#endif
