#ifndef WINDOW_MODEL_SAVING_H
#define WINDOW_MODEL_SAVING_H

#include <string>

#include "window/model/Matching.h"
#include "window/model/Setup.h"

namespace casetable {

/// Writes the table of a matching, whose import is there, to `file`, in the format for which its
/// ending stands, CSV where it stands for none, as casetable does with the setup and --output.
/// Throws what that fails with.
void saveTable(const Setup& setup, const Matching& matching, const std::string& file);

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
