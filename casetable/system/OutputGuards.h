#ifndef CASETABLE_SYSTEM_OUTPUTGUARDS_H
#define CASETABLE_SYSTEM_OUTPUTGUARDS_H

#include <string>

namespace casetable {

/// Throws Failure with ExitCode::OutputFailed if the file at `output` is also one that the program
/// reads, at `input`; "-" stands for standard input, which may come from a file. `role` says in the
/// message what the file is: "the list itself".
void spareInput(const std::string& output, const std::string& input, const std::string& role);

/// The path of the file at `output` relative to the folder `root`, however both are named; empty
/// where there is no such file or folder.
std::string pathBelow(const std::string& root, const std::string& output);

/// Throws Failure with ExitCode::OutputFailed if `isMatched` says that the file at `output` is in a
/// case: nobody wants a table in place of one of the files that it is about.
void spareMatchedFile(const std::string& output, bool isMatched);

} // namespace casetable

#endif
