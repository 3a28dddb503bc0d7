#ifndef CASETABLE_EXPLAINING_UNMATCHED_H
#define CASETABLE_EXPLAINING_UNMATCHED_H

#include <cstddef>
#include <string>
#include <vector>

#include "casetable/importing/Report.h"
#include "crawler/MetadataFileCrawler.h"
#include "crawler/MetadataPattern.h"

namespace casetable {

/// A file that belongs to no case, and why.
struct UnmatchedFile {
    std::string path;
    /// The metadata index of the first marker that failed.
    std::size_t metadataIndex;
    /// False when the marker does not stand in the path behind the one before; true when it does,
    /// but no value of its kind follows.
    bool markerFound;
};

/// The paths of the importer's crawl result that belong to no case, in ascending byte order.
std::vector<std::string> unmatchedPaths(const MetadataFileCrawler& importer);

/// The files of the importer's crawl result that match not all of `patterns`, the list last applied
/// and not empty; in ascending byte order of path.
std::vector<UnmatchedFile> unmatchedFiles(const MetadataFileCrawler& importer,
                                          const std::vector<MetadataPattern>& patterns);

/// A row for each of these files: the path, the first marker that failed, and why. Refers to
/// `patterns`.
Report unmatchedReport(const MetadataFileCrawler& importer,
                       const std::vector<MetadataPattern>& patterns);

/// One line that says for how many of these files each marker was the first that failed, most
/// first.
std::string failureSummary(const MetadataFileCrawler& importer,
                           const std::vector<MetadataPattern>& patterns);

/// One line with a likely reason why the marker that most often was the first that failed did so;
/// empty where none is likely. `root` is the folder as the user named it.
std::string likelyReason(const MetadataFileCrawler& importer,
                         const std::vector<MetadataPattern>& patterns, const std::string& root);

} // namespace casetable

#endif
