#ifndef CASETABLE_SYSTEM_OUTPUTGUARDS_H
#define CASETABLE_SYSTEM_OUTPUTGUARDS_H

#include <functional>
#include <string>

namespace casetable {

/// Throws Failure with ExitCode::OutputFailed if the file at `output` is also one that the program
/// reads, at `input`; "-" stands for standard input, which may come from a file. `role` says in the
/// message what the file is: "the list itself".
void spareInput(const std::string& output, const std::string& input, const std::string& role);

/// Throws Failure with ExitCode::OutputFailed if there is a file at `output` for which `isMatched`
/// answers true: nobody wants a table in place of one of the files that it is about. `isMatched` is
/// asked at most once, about the path relative to the folder `root`.
void spareMatchedFile(const std::string& output, const std::string& root,
                      const std::function<bool(const std::string& path)>& isMatched);

} // namespace casetable

#endif
