#ifndef CASETABLE_EXPLAINING_SUMMARY_H
#define CASETABLE_EXPLAINING_SUMMARY_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "casetable/explaining/Tally.h"
#include "casetable/system/ExitCode.h"
#include "crawler/MetadataInfoProviderInterface.h"

namespace casetable {

class Console;
struct CaseTable;
struct Missing;
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

/// A finished import, as far as its summary is about it.
struct CountedImport {
    std::size_t files;                               ///< All that took part, in a case or not.
    std::size_t hiddenLeftOut;                       ///< Hidden entries, which did not.
    const CaseTable& table;                          ///< The cases.
    const std::vector<std::string_view>& firstFiles; ///< As numberRemarks() takes them.
    const MetadataInfoProviderInterface& values; ///< Answers what was read from the first files.
    Tally tally; ///< Of the matched files if remarks are shown; of the others if the output
                 ///< does not list them, or if there are no cases.
};

/// Tells on `console` how an import of `source` went: an error if no file matched, with the likely
/// reason; otherwise, as remarks, the counts and what may not have been meant. `showsUnmatched`
/// says that the output lists the unmatched files, so that they are not pointed to.
///
/// Returns Cases if there are cases, whatever the output lists, and otherwise NoCases.
ExitCode summarize(const CountedImport& import, const Source& source, bool showsUnmatched,
                   Console& console);

/// Remarks on `console` how many combinations are missing, of how many, and how many cases take no
/// part in that.
void remarkOnMissing(const Missing& missing, Console& console);

} // namespace casetable

#endif
