#ifndef HOST_TAGVALIDATOR_H
#define HOST_TAGVALIDATOR_H

#include <string>

#include "host/Export.h"
#include "host/ValidatorInterface.h"

/// Judges the tags of auxiliary files. Which tags are acceptable is the host's business: it derives
/// its own validator from this class, or defines TagValidator itself instead of including this
/// header. Its own definition must have the virtual base below as its only base with virtual
/// functions, because the module converts to that base by the layout that this definition gives.
class HOST_API TagValidator : public virtual ortelo::ValidatorInterface<std::string> {};

#endif
