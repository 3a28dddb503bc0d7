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
        Text,        ///< A text about the row.
        StringValue, ///< The value of a text marker.
        NumberValue  ///< The value of a number marker, as text.
    };

    std::string name; ///< The marker, for a value.
    Kind kind;

    bool isValue() const { return kind == Kind::StringValue || kind == Kind::NumberValue; }
};

/// One row of the output, all texts as bytes.
struct Row {
    std::vector<std::string> cells;                    ///< One for each column.
    std::vector<std::vector<std::string>> filesPerTag; ///< One list of paths for each tag.
};

/// What is written, whatever the format. Refers to the table that it was made from.
struct Report {
    std::string rowsName; ///< What the rows are: "cases", "files" or "unmatched".
    std::vector<Column> columns;
    std::vector<std::string> tags; ///< In the order of the user's identifiers, each once.
    std::size_t rowCount = 0;
    std::function<Row(std::size_t)> row; ///< The row of an index below rowCount.
};

/// A row for each case: its index, its values, and its auxiliary files per tag.
Report caseReport(const CaseTable& table);

/// A row for each of `files`, which are matched, in their order: the path, its case, the values of
/// the case, and, where there are tags, the tag under which the file was collected.
Report fileReport(const CaseTable& table,
                  std::vector<boost::shared_ptr<AuxFileInfoInterface>> files);

/// `names` with "(2)", "(3)" ... behind those that are taken, as the case table names its columns.
std::vector<std::string> uniqueNames(std::vector<std::string> names);

/// The names of all columns and then all tags, made unique.
std::vector<std::string> uniqueHeader(const Report& report);

} // namespace casetable

#endif
