#ifndef CASETABLE_SYSTEM_OUTPUTGUARDS_H
#define CASETABLE_SYSTEM_OUTPUTGUARDS_H

#include <functional>
#include <string>

namespace casetable {

/// Throws Failure with ExitCode::OutputFailed where `output`, the path of an output, is the file
/// `list` that the paths are read from; "-", standard input, is none.
void spareList(const std::string& output, const std::string& list);

/// Throws Failure with ExitCode::OutputFailed where `output` is an existing file below the folder
/// `root` for which `isMatched` answers true: nobody wants a table in place of one of the files
/// that it tells of. `isMatched` gets the path relative to the root.
void spareMatchedFile(const std::string& output, const std::string& root,
                      const std::function<bool(const std::string& path)>& isMatched);

} // namespace casetable

#endif
