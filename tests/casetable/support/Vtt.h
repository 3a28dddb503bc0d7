#ifndef TESTS_CASETABLE_SUPPORT_VTT_H
#define TESTS_CASETABLE_SUPPORT_VTT_H

#include <ostream>
#include <string>
#include <vector>

namespace casetable {
namespace tests {

/// A column as the toolkit's own reader of XML tables gives it.
struct VttColumn {
    std::string name;
    std::string type; ///< "integers", "doubles", "texts" or what the toolkit calls it.
    std::vector<std::string> cells; ///< Doubles with as many digits as tell all of them apart.
};

bool operator==(const VttColumn& a, const VttColumn& b);
std::ostream& operator<<(std::ostream& stream, const VttColumn& column);

/// Throws std::runtime_error when the reader complains about the file.
std::vector<VttColumn> readVtt(const std::string& path);

} // namespace tests
} // namespace casetable

#endif
