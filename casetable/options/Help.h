#ifndef CASETABLE_OPTIONS_HELP_H
#define CASETABLE_OPTIONS_HELP_H

#include <string>

#include "casetable/options/OptionTable.h"

namespace casetable {

/// What --help prints: a screen of at most 80 columns, made of the table of options.
std::string help(Program program);

} // namespace casetable

#endif
