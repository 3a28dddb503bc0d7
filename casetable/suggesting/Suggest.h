#ifndef CASETABLE_SUGGESTING_SUGGEST_H
#define CASETABLE_SUGGESTING_SUGGEST_H

#include "casetable/system/ExitCode.h"

namespace casetable {

class Console;
class Listing;
class Output;
struct Options;

/// Has `listing` list its files, finds templates for them, runs an import by them, and writes the
/// command line to run and what that gives: a line for each column, the files that each template
/// reads, and the counts. Where nothing can be said, that is an error on `console`, and NoCases the
/// answer. Throws what Listing, Import and Output throw.
ExitCode suggest(const Options& options, Listing& listing, Output& output, Console& console);

} // namespace casetable

#endif
