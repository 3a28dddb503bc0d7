#ifndef WINDOW_MODEL_COPYING_H
#define WINDOW_MODEL_COPYING_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include <QString>

#include "window/model/Files.h"
#include "window/model/Matching.h"

namespace casetable {

/// A text for the clipboard, which takes no bytes but those of a text. What would be lost there
/// stands as one word of a shell, such as $'a\377', of which every byte comes back.
struct Copy {
    QString text;
    std::size_t asWords = 0; ///< So many paths or cells stand as such a word.
};

/// The bytes of a path, which are such a word where they are not shown as they are.
Copy copyOfBytes(const std::string& bytes);

/// The paths of the files at the indices, one a line, each as copyOfBytes() has it. Throws Failure
/// where they are too large for a text.
Copy copyOfPaths(const Files& files, const std::vector<std::uint32_t>& indices);

/// The cases at the indices, with a header, as tab-separated lines, which spreadsheets take. A cell
/// that is not UTF-8 is such a word. Throws Failure where they are too large for a text.
Copy copyOfCases(const CaseTable& table, const std::vector<std::uint32_t>& indices);

} // namespace casetable

#endif
