#ifndef WINDOW_MODEL_GRID_H
#define WINDOW_MODEL_GRID_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "casetable/importing/CaseTable.h"

namespace casetable {

/// The values of two columns against each other: which combinations there are, and how often.
struct Grid {
    /// A field, of a value of the one column and one of the other.
    struct Field {
        std::vector<std::uint32_t> cases; ///< In ascending order.
        std::size_t fileCount = 0;        ///< Of these cases.
    };

    std::size_t rowColumn = 0;     ///< The index of the one column among the patterns of the table,
    std::size_t columnColumn = 0;  ///< and that of the other.
    std::vector<std::string> rows; ///< The values of the one column, in the order of --sort;
    std::vector<std::string> columns; ///< those of the other.
    std::vector<Field> fields;        ///< Row by row.
    std::size_t leftOut = 0;          ///< Cases without a value in one of the columns.
    bool isTooLarge = false; ///< There are more than mostValues in a column; then all is empty.

    static constexpr std::size_t mostValues = 300;

    const Field& field(std::size_t row, std::size_t column) const
    {
        return fields[row * columns.size() + column];
    }

    /// The number of fields without a case.
    std::size_t holes() const;

    /// The most cases, or files, that a field has.
    std::size_t mostCases() const;
    std::size_t mostFiles() const;
};

/// The grid of two columns, different indices of `table.patterns`. Numbers that are equal are one
/// value, which is shown as it first stands in the order of the cases.
Grid gridOf(const CaseTable& table, std::size_t rowColumn, std::size_t columnColumn);

} // namespace casetable

#endif
