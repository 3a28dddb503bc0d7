#ifndef CASETABLE_EXPLAINING_SUMMARY_H
#define CASETABLE_EXPLAINING_SUMMARY_H

#include <cstddef>
#include <string>

#include "casetable/system/ExitCode.h"

namespace casetable {

class Console;
class Import;
class Reading;
struct Source;

/// That there is no file in the source, with the options that may have left them out.
std::string noFiles(const Source& source);

/// That so many entries were left out though the user may not expect it, to be put behind another
/// text; empty for none.
std::string hiddenRemark(std::size_t hiddenLeftOut);

/// Remarks on `console` that the file `output` was written as CSV, as its ending stands for no
/// format; says nothing where it has none.
void remarkOnEnding(const std::string& output, Console& console);

/// Tells on `console` how an import went: an error where no file matched, with the likely reason;
/// otherwise the counts and the remarks. `reading` is what the import read by. The exit code
/// depends on whether there are cases, whatever the rows of the table are; `showsUnmatched` tells
/// that they are the unmatched files.
ExitCode summarize(const Import& import, const Reading& reading, const Source& source,
                   std::size_t hiddenLeftOut, bool showsUnmatched, Console& console);

} // namespace casetable

#endif
