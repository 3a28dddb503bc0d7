#ifndef CASETABLE_LISTING_READLIST_H
#define CASETABLE_LISTING_READLIST_H

#include <string>

namespace casetable {

class Console;
class FileList;

/// What a list in `file` is called in messages: "standard input" for "-".
std::string listName(const std::string& file);

/// Reads all of `file`, "-" being standard input, into `list` and finishes it. The number of paths
/// read is shown on `console` meanwhile, and the list's doubts, as warnings, in the end.
///
/// Throws Failure with ExitCode::ImportFailed when the system refuses, with its reason, or when the
/// list does; and Interrupted when a signal came in, however long the file keeps it waiting.
void readList(const std::string& file, FileList& list, Console& console);

} // namespace casetable

#endif
