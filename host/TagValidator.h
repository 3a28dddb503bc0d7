#ifndef HOST_TAGVALIDATOR_H
#define HOST_TAGVALIDATOR_H

#include <string>

#include "host/Export.h"
#include "host/ValidatorInterface.h"

/// Judges the tags of auxiliary files. Which tags are acceptable is the host's business: it derives
/// its own validator from this class, or defines TagValidator itself instead of including this
/// header. The module was compiled with this definition, so a definition of the host's own must
/// have the virtual base below too, and no other base with virtual functions.
class HOST_API TagValidator : public virtual ortelo::ValidatorInterface<std::string> {};

#endif
