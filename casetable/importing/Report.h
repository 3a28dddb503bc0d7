#ifndef CASETABLE_IMPORTING_REPORT_H
#define CASETABLE_IMPORTING_REPORT_H

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "casetable/importing/FileRows.h"
#include "crawler/MetadataPattern.h"

namespace casetable {

struct CaseTable;

/// One column of the output.
struct Column {
    enum class Kind {
        Count,       ///< A whole number from 0, such as the index of a case.
        Text,        ///< Something else, such as the path of a file.
        StringValue, ///< A text that was read from a path.
        NumberValue, ///< A number that was read from a path, as it stands there.
        AuxPath,     ///< The path of the first file under a tag, and behind it
        AuxCount     ///< the number of files under that tag.
    };

    std::string name; ///< Of a value, the marker or the template's name for it.
    Kind kind;

    /// Whether the column holds values that were read from paths.
    bool isValue() const { return kind == Kind::StringValue || kind == Kind::NumberValue; }

    /// Whether the column tells of the files under a tag, which Row::filesPerTag lists.
    bool isAux() const { return kind == Kind::AuxPath || kind == Kind::AuxCount; }

    /// Whether what the column holds is numbers.
    bool isNumber() const
    {
        return kind == Kind::Count || kind == Kind::NumberValue || kind == Kind::AuxCount;
    }
};

/// What a cell holds.
enum class Content { Nothing, Number, Text };

/// What `cell` holds, a cell of `column`. A number may be one, such as "inf", that a format cannot
/// hold.
Content contentOf(const Column& column, std::string_view cell);

/// One row of the output. All texts are bytes, which need not be UTF-8.
struct Row {
    std::vector<std::string> cells;                    ///< One for each column.
    std::vector<std::vector<std::string>> filesPerTag; ///< A list of paths for each tag.
};

/// What is written, whatever the format. What it was made from must outlive it.
struct Report {
    std::string rowsName; ///< What the rows stand for: "cases", "files", "unmatched" or "missing".
    std::vector<Column> columns;
    std::size_t rowCount = 0;
    std::function<Row(std::size_t)> row; ///< Makes the row at an index below rowCount; may throw.
};

/// The columns of caseReport(): "case", the values, the files under each tag, and "files".
std::vector<Column> caseColumns(const std::vector<MetadataPattern>& patterns,
                                const std::vector<std::string>& tags);

/// The columns of fileReport(): "path", "case", the values, and, if there are tags, "tag".
std::vector<Column> fileColumns(const std::vector<MetadataPattern>& patterns,
                                const std::vector<std::string>& tags);

/// A report with a row for each case: its index, its values, its auxiliary files per tag, and the
/// number of all its files.
Report caseReport(const CaseTable& table);

/// A report with a row for each of `files`, which must be matched, in their order: the path, the
/// index of its case, the values of the case, and, if there are tags, the tag under which the file
/// was collected, empty if under none.
Report fileReport(const CaseTable& table, FileRows files);

/// `names`, made unique as those of the module's case table are: with "(2)", "(3)" ... behind each
/// that stands further ahead already.
std::vector<std::string> uniqueNames(std::vector<std::string> names);

/// The names of the columns, made unique as by uniqueNames(), but that the program's own columns
/// keep their names whatever stands before them. No value is called "case", "path" or "files", also
/// where there is no such column, so that it has one name in all reports.
std::vector<std::string> uniqueHeader(const std::vector<Column>& columns);

} // namespace casetable

#endif
