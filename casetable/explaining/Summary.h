#ifndef CASETABLE_EXPLAINING_SUMMARY_H
#define CASETABLE_EXPLAINING_SUMMARY_H

#include <cstddef>
#include <string>

#include "casetable/system/ExitCode.h"

namespace casetable {

class Console;
class Import;
class Reading;
struct Report;
struct Source;

/// Half a sentence which says that the source has no files, and which of the options that leave
/// some out were given.
std::string noFiles(const Source& source);

/// A remark to append to another sentence: so many entries were left out as they are hidden, which
/// the user may not expect. Empty for none.
std::string hiddenRemark(std::size_t hiddenLeftOut);

/// Remarks on `console` that the file `output` was written as CSV because its ending stands for no
/// format. Says nothing if the file has no ending.
void remarkOnEnding(const std::string& output, Console& console);

/// Tells on `console` how an import of `source` by `reading` went: an error if no file matched,
/// with the likely reason; otherwise, as remarks, the counts and what may not have been meant.
/// `hiddenLeftOut` is the number of hidden entries that were left out. `showsUnmatched` says that
/// the output lists the unmatched files, so that they are not pointed to.
///
/// Returns Cases if there are cases, whatever the output lists, and otherwise NoCases.
ExitCode summarize(const Import& import, const Reading& reading, const Source& source,
                   std::size_t hiddenLeftOut, bool showsUnmatched, Console& console);

/// Remarks on `console` how many rows `report`, a report of missing combinations, has, and of how
/// many combinations.
void remarkOnMissing(const Report& report, Console& console);

} // namespace casetable

#endif
