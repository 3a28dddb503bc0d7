#ifndef CASETABLE_SYSTEM_OUTPUTGUARDS_H
#define CASETABLE_SYSTEM_OUTPUTGUARDS_H

#include <string>

namespace casetable {

/// Throws Failure with ExitCode::OutputFailed if the file at `output` is also the list of paths
/// that is read, at `list`. "-" stands for standard input, which no output replaces.
void spareList(const std::string& output, const std::string& list);

/// The path of the file at `output` relative to the folder `root`, however both are named; empty
/// where there is no such file or folder.
std::string pathBelow(const std::string& root, const std::string& output);

/// Throws Failure with ExitCode::OutputFailed if `isMatched` says that the file at `output` is in a
/// case: nobody wants a table in place of one of the files that it is about.
void spareMatchedFile(const std::string& output, bool isMatched);

} // namespace casetable

#endif
