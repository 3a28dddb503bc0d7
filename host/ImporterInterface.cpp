#include "host/ImporterInterface.h"

ImporterInterface::ImporterInterface() = default;

ImporterInterface::~ImporterInterface() = default;
