#include "host/AuxFileCollectionInterface.h"

AuxFileCollectionInterface::AuxFileCollectionInterface() = default;

AuxFileCollectionInterface::~AuxFileCollectionInterface() = default;
