#ifndef CASETABLE_SUGGESTING_SUGGESTMARKERS_H
#define CASETABLE_SUGGESTING_SUGGESTMARKERS_H

#include <cstddef>
#include <list>
#include <string>

#include "casetable/system/ExitCode.h"

namespace casetable {

class Console;
class Output;
struct Options;

/// Writes what can be suggested for `files`, the files of the options' source, or an error where
/// nothing can.
ExitCode suggestMarkers(const Options& options, const std::list<std::string>& files,
                        std::size_t hiddenLeftOut, Output& output, Console& console);

} // namespace casetable

#endif
