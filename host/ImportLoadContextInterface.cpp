#include "host/ImportLoadContextInterface.h"

ImportLoadContextInterface::~ImportLoadContextInterface() = default;
