#ifndef CASETABLE_WRITING_CSVRECORD_H
#define CASETABLE_WRITING_CSVRECORD_H

#include <string>
#include <vector>

namespace casetable {

/// `texts` as one CSV record by RFC 4180, without a line end. Every byte stands as it is; a text is
/// quoted only if it needs it.
std::string csvRecord(const std::vector<std::string>& texts);

} // namespace casetable

#endif
