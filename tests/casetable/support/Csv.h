#ifndef TESTS_CASETABLE_SUPPORT_CSV_H
#define TESTS_CASETABLE_SUPPORT_CSV_H

#include <string>
#include <vector>

namespace casetable {
namespace tests {

using Record = std::vector<std::string>;

/// Reads CSV as RFC 4180 defines it, but with LF at line ends, and nothing wider: a quote stands
/// only around a field or doubled within one, and CR, LF and commas only within quotes. Throws
/// std::runtime_error for anything else.
std::vector<Record> parseCsv(const std::string& bytes);

} // namespace tests
} // namespace casetable

#endif
