#ifndef CASETABLE_EXPLAINING_UNMATCHED_H
#define CASETABLE_EXPLAINING_UNMATCHED_H

#include <cstddef>
#include <string>
#include <vector>

#include "casetable/importing/Report.h"
#include "crawler/MetadataFileCrawler.h"
#include "crawler/MetadataPattern.h"

namespace casetable {

/// What to put behind a sentence about values that markers lose.
extern const std::string otherReading;

/// A file that belongs to no case, and the reason.
struct UnmatchedFile {
    /// Relative to the root.
    std::string path;
    /// The metadata index of the first marker that failed.
    std::size_t metadataIndex;
    enum class Reason {
        NotFound,     ///< It does not stand behind the first byte of the marker before.
        NoValue,      ///< It is found, but has no value of its kind.
        OneCharacter, ///< It is found, with a text of one character, which is no value there.
        NextInside    ///< It is found, but so is the next marker, inside it.
    };
    Reason reason;
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
