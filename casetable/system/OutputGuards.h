#ifndef CASETABLE_SYSTEM_OUTPUTGUARDS_H
#define CASETABLE_SYSTEM_OUTPUTGUARDS_H

#include <functional>
#include <string>

namespace casetable {

/// Throws Failure with ExitCode::OutputFailed if the file at `output` is also the list of paths
/// that is read, at `list`. "-" stands for standard input, which no output replaces.
void spareList(const std::string& output, const std::string& list);

/// Throws Failure with ExitCode::OutputFailed if there is a file at `output` for which `isMatched`
/// answers true: nobody wants a table in place of one of the files that it is about. `isMatched` is
/// asked at most once, about the path relative to the folder `root`.
void spareMatchedFile(const std::string& output, const std::string& root,
                      const std::function<bool(const std::string& path)>& isMatched);

} // namespace casetable

#endif
