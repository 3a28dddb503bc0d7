#ifndef HOST_IMPORTERINTERFACE_H
#define HOST_IMPORTERINTERFACE_H

#include "host/Export.h"

class ImportLoadContextInterface;

/// An importer, as the host's importer framework drives it.
class HOST_API ImporterInterface {
public:
    ImporterInterface();

    /// Builds the importer's result and gives it to `context`, which is not kept after the call.
    virtual void extract(ImportLoadContextInterface& context) = 0;

    virtual ~ImporterInterface();
};

#endif
