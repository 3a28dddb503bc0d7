#ifndef CASETABLE_WRITING_CSVRECORD_H
#define CASETABLE_WRITING_CSVRECORD_H

#include <string>
#include <vector>

namespace casetable {

struct Row;

/// `texts` as one CSV record by RFC 4180, without a line end. Every byte stands as it is; a text is
/// quoted only if it needs it.
std::string csvRecord(const std::vector<std::string>& texts);

/// The row as one text for each column and then for each tag. The text of a tag is a CSV record of
/// its files, so that they can be told apart whatever their paths hold.
std::vector<std::string> flatCells(Row row);

} // namespace casetable

#endif
