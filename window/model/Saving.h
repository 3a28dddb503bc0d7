#ifndef WINDOW_MODEL_SAVING_H
#define WINDOW_MODEL_SAVING_H

#include <cstddef>
#include <string>
#include <vector>

#include "casetable/options/Options.h"
#include "window/model/Matching.h"
#include "window/model/Setup.h"

namespace casetable {

/// Which table of a matching is saved.
struct SavedRows {
    Rows rows = Rows::Cases;
    std::vector<std::size_t> missingColumns; ///< Of Rows::Missing: as Options has them.
};

/// The options by which casetable writes the rows to `file`: those of the setup, but for auxiliary
/// files and an order that such rows, or a database, cannot have. Throws Failure as parseOptions()
/// does.
Options savingOptions(const Setup& setup, const SavedRows& rows, const std::string& file);

/// Writes, as casetable does with these options of savingOptions(), what the matching gives, whose
/// import is there. The format is that for which the file's ending stands, CSV where it stands for
/// none. Throws what that fails with.
void saveTable(const Options& options, const Matching& matching);

/// Writes the quoted command line of the setup to `file`, its root as an absolute path. Throws
/// Failure: with ExitCode::WrongUsage where it cannot be read back, else ExitCode::OutputFailed.
void saveSetup(const Setup& setup, const std::string& file);

/// The setup that saveSetup() has written, or somebody by hand, and what it leaves out. Throws
/// Failure.
ReadSetup readSetupFile(const std::string& file);

/// Whether the name is one that setups are saved under, "*.casetable".
bool isSetupFile(const std::string& file);

/// The setup with its root and list as absolute paths.
Setup withAbsolutePaths(Setup setup);

} // namespace casetable

#endif
