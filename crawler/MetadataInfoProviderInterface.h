#ifndef CRAWLER_METADATAINFOPROVIDERINTERFACE_H
#define CRAWLER_METADATAINFOPROVIDERINTERFACE_H

#include <string>
#include <vector>

#include "crawler/Export.h"
#include "crawler/MetadataPattern.h"

/// Answers what metadata was read out of a path. Implementations inherit it as a virtual base.
class CRAWLER_API MetadataInfoProviderInterface {
public:
    MetadataInfoProviderInterface() = default;
    MetadataInfoProviderInterface(const MetadataInfoProviderInterface&) = default;
    MetadataInfoProviderInterface& operator=(const MetadataInfoProviderInterface&) = default;
    virtual ~MetadataInfoProviderInterface();

    /// One entry per pattern, in pattern order, as far as the patterns matched the path `name`;
    /// empty for a path that is not known.
    virtual std::vector<MetadataInfo> metadataInfoList(const std::string& name) const = 0;
};

#endif
