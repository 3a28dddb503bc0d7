#ifndef CASETABLE_IMPORTING_REPORT_H
#define CASETABLE_IMPORTING_REPORT_H

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include <boost/shared_ptr.hpp>

#include "host/AuxFileInfoInterface.h"

namespace casetable {

struct CaseTable;

/// One column of the output.
struct Column {
    enum class Kind {
        Index,       ///< A count from 0, such as the case index.
        Text,        ///< Something else, such as the path of a file.
        StringValue, ///< A text that was read from a path.
        NumberValue  ///< A number that was read from a path, as it stands there.
    };

    std::string name; ///< Of a value, the marker or the template's name for it.
    Kind kind;

    /// Whether the column holds values that were read from paths.
    bool isValue() const { return kind == Kind::StringValue || kind == Kind::NumberValue; }
};

/// One row of the output. All texts are bytes, which need not be UTF-8.
struct Row {
    std::vector<std::string> cells;                    ///< One for each column.
    std::vector<std::vector<std::string>> filesPerTag; ///< A list of paths for each tag.
};

/// What is written, whatever the format. What it was made from must outlive it.
struct Report {
    std::string rowsName; ///< What the rows stand for: "cases", "files" or "unmatched".
    std::vector<Column> columns;
    std::vector<std::string> tags; ///< Further columns, of files; as in CaseTable.
    std::size_t rowCount = 0;
    std::function<Row(std::size_t)> row; ///< Makes the row at an index below rowCount; may throw.
};

/// A report with a row for each case: its index, its values, and its auxiliary files per tag.
Report caseReport(const CaseTable& table);

/// A report with a row for each of `files`, which must be matched, in their order: the path, the
/// index of its case, the values of the case, and, if there are tags, the tag under which the file
/// was collected, empty if under none.
Report fileReport(const CaseTable& table,
                  std::vector<boost::shared_ptr<AuxFileInfoInterface>> files);

/// `names`, made unique as those of the module's case table are: with "(2)", "(3)" ... behind each
/// that stands further ahead already.
std::vector<std::string> uniqueNames(std::vector<std::string> names);

/// The names of all columns and then all tags, made unique by uniqueNames().
std::vector<std::string> uniqueHeader(const Report& report);

} // namespace casetable

#endif
