#ifndef CASETABLE_WRITING_CSVRECORD_H
#define CASETABLE_WRITING_CSVRECORD_H

#include <string>
#include <vector>

namespace casetable {

struct Row;

/// `texts` as one CSV record after RFC 4180, without a line ending, every byte as it is; plain
/// texts are simply divided by commas.
std::string csvRecord(const std::vector<std::string>& texts);

/// The row as one text for each column and then for each tag: the files under a tag are a CSV
/// record of their own, so that any name among them survives.
std::vector<std::string> flatCells(Row row);

} // namespace casetable

#endif
