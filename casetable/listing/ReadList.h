#ifndef CASETABLE_LISTING_READLIST_H
#define CASETABLE_LISTING_READLIST_H

#include <string>

namespace casetable {

class Console;
class FileList;

/// What messages call a list that is read from `file`: "standard input" for "-", else its path.
std::string listName(const std::string& file);

/// Reads all of `file`, "-" being standard input, into `list` and finishes it. `console` shows the
/// number of paths read meanwhile, and at the end the warnings of the list.
///
/// Throws Failure with ExitCode::ImportFailed and the reason when the system or the list refuses,
/// and Interrupted when a signal comes in, also while it waits for a pipe or a terminal.
void readList(const std::string& file, FileList& list, Console& console);

} // namespace casetable

#endif
