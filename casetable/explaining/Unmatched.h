#ifndef CASETABLE_EXPLAINING_UNMATCHED_H
#define CASETABLE_EXPLAINING_UNMATCHED_H

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "casetable/importing/FileRows.h"
#include "casetable/importing/Report.h"
#include "crawler/MetadataPattern.h"

namespace casetable {

class Reading;

/// What to put behind a sentence about values that markers lose.
extern const std::string otherReading;

/// Why markers do not match a path.
struct MarkerFailure {
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

/// Why `patterns`, which are not empty, do not match `path`. They must not match it.
MarkerFailure markerFailure(const std::string& path, const std::vector<MetadataPattern>& patterns);

/// How files that belong to no case are shown, each by its path alone.
struct UnmatchedRows {
    std::vector<Column> columns;
    std::function<Row(const std::string& path)> row; ///< Used by one thread at a time; may throw.
};

/// The path, the first marker that failed, and the reason. `patterns`, which are not empty, must
/// outlive the rows.
UnmatchedRows unmatchedRows(const std::vector<MetadataPattern>& patterns);

/// A report with a row for each of `files`, which the reading does not match, as unmatchedRows() of
/// the reading makes it. The reading must outlive the report.
Report unmatchedReport(FileRows files, const Reading& reading);

} // namespace casetable

#endif
