#include "host/AuxFileInfoInterface.h"

AuxFileInfoInterface::AuxFileInfoInterface() = default;

AuxFileInfoInterface::~AuxFileInfoInterface() = default;
