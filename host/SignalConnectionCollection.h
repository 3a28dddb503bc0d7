#ifndef HOST_SIGNALCONNECTIONCOLLECTION_H
#define HOST_SIGNALCONNECTIONCOLLECTION_H

#include "host/Export.h"

/// Stand-in for the host's collection of signal connections. The module only constructs one and
/// destroys it.
class HOST_API SignalConnectionCollection {};

#endif
