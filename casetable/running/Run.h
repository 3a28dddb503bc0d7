#ifndef CASETABLE_RUNNING_RUN_H
#define CASETABLE_RUNNING_RUN_H

#include <cstddef>
#include <optional>

#include <boost/shared_ptr.hpp>

#include "casetable/explaining/Tally.h"
#include "casetable/importing/Import.h"
#include "casetable/importing/Missing.h"
#include "casetable/importing/Partial.h"
#include "casetable/options/Options.h"
#include "casetable/system/ExitCode.h"
#include "casetable/writing/Formats.h"
#include "host/FileInfoInterface.h"

namespace casetable {

class Console;
class Listing;
class Output;

/// What some files of a run came to: their cases, and what is to be said of them.
struct ImportedFiles {
    Partial partial;
    Tally tally;
};

/// The format in which a run with these options writes to the output.
const Format& formatOf(const Options& options, const Output& output);

/// The files that the output of such a run needs one by one.
KeptFiles keptFiles(const Options& options, const Format& format);

/// Lists and imports all files of `listing`, on as many threads as the options want. `options` must
/// outlive what is returned. `showsRemarks` says whether its tally is to tell more than why no file
/// is in a case. Throws what Listing::run() and importShard() throw.
ImportedFiles importFiles(const Options& options, const KeptFiles& kept, bool showsRemarks,
                          Listing& listing);

/// Writes what the options want of an import, in the format; the caller commits the output. Returns
/// what combinations are missing where that was asked for. Throws what the writers throw.
std::optional<Missing> writeImport(const Options& options, const Import& import,
                                   const Format& format, Output& output);

/// Makes the table of all files below `root`, writes and commits it, and tells on `console` how the
/// import went. `hiddenLeftOut` is the number of entries that were left out as they are hidden.
/// Throws what Import and writeImport() throw, Failure where the output would replace a file of
/// the table, and Interrupted.
ExitCode finishImport(const Options& options, ImportedFiles all,
                      const boost::shared_ptr<FileInfoInterface const>& root,
                      std::size_t hiddenLeftOut, Output& output, Console& console);

} // namespace casetable

#endif
