#include "crawler/MetadataInfoProviderInterface.h"

MetadataInfoProviderInterface::~MetadataInfoProviderInterface() = default;
