#ifndef CASETABLE_SUGGESTING_SUGGESTMARKERS_H
#define CASETABLE_SUGGESTING_SUGGESTMARKERS_H

#include "casetable/system/ExitCode.h"

namespace casetable {

class Console;
class Listing;
class Output;
struct Options;

/// Writes what can be suggested for the files of the options' source, which `listing` holds; or an
/// error where nothing can.
ExitCode suggestMarkers(const Options& options, Listing& listing, Output& output, Console& console);

} // namespace casetable

#endif
