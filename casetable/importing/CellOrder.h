#ifndef CASETABLE_IMPORTING_CELLORDER_H
#define CASETABLE_IMPORTING_CELLORDER_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace casetable {

struct Column;

/// Appends to `key` the bytes by which `text` compares with other texts in natural order, as people
/// count: runs of ASCII digits, however long, compare as the whole numbers that they are, so that
/// "run2" comes before "run10", and all else byte by byte. Texts that differ only in zeros in front
/// of numbers have the same key.
void appendNaturalKey(std::string_view text, std::string& key);

/// The order of the cells of one column: numbers by their value, with all digits, texts in natural
/// order, and where their keys are the same, by bytes. So only texts that are the same are equal.
struct CellRanks {
    /// Stands for the rank of a cell without a value, or with a number such as "nan" that has no
    /// place among others.
    static constexpr auto none = static_cast<std::size_t>(-1);

    std::vector<std::size_t> ofCells; ///< The rank of each cell, from 0. Equal cells share one.
    std::vector<std::size_t> firsts;  ///< For each rank, the index of the first cell that has it.
};

/// The ranks of `cells`, which are the cells of `column`, one for each row.
CellRanks rankCells(const Column& column, const std::vector<std::string_view>& cells);

} // namespace casetable

#endif
