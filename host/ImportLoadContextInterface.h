#ifndef HOST_IMPORTLOADCONTEXTINTERFACE_H
#define HOST_IMPORTLOADCONTEXTINTERFACE_H

#include <boost/shared_ptr.hpp>

#include <vtkSmartPointer.h>
#include <vtkTable.h>

#include "host/Export.h"

class AuxFileCollectionInterface;

/// Receives the result of an import. The host implements it and passes it to
/// ImporterInterface::extract.
class HOST_API ImportLoadContextInterface {
public:
    /// Takes the case table; the context shares its ownership and may keep it.
    virtual void setMetadataTable(vtkSmartPointer<vtkTable> table) = 0;

    /// Takes the auxiliary files to load; the pointer may be empty.
    virtual void setAuxFiles(const boost::shared_ptr<AuxFileCollectionInterface>& auxFiles) = 0;

    virtual ~ImportLoadContextInterface();
};

#endif
