#include "crawler/MetadataPattern.h"

#include <utility>

MetadataPattern::MetadataPattern() : valueType(StringValue) {}

MetadataPattern::MetadataPattern(const std::string& marker, ValueType type)
    : pattern(marker), valueType(type)
{
}

MetadataPattern::MetadataPattern(const MetadataPattern& other) = default;

// The standard leaves the content of a moved-from string open; this record promises an empty one.
MetadataPattern::MetadataPattern(MetadataPattern&& other) noexcept
    : pattern(std::move(other.pattern)), valueType(other.valueType)
{
    other.pattern.clear();
}

MetadataPattern& MetadataPattern::operator=(const MetadataPattern& other) = default;

MetadataPattern& MetadataPattern::operator=(MetadataPattern&& other) noexcept
{
    if (this != &other) {
        pattern = std::move(other.pattern);
        valueType = other.valueType;
        other.pattern.clear();
    }
    return *this;
}

MetadataPattern::~MetadataPattern() = default;

MetadataInfo::MetadataInfo() = default;

MetadataInfo::MetadataInfo(const MetadataInfo& other) = default;

MetadataInfo::MetadataInfo(MetadataInfo&& other) noexcept = default;

MetadataInfo& MetadataInfo::operator=(const MetadataInfo& other) = default;

MetadataInfo& MetadataInfo::operator=(MetadataInfo&& other) noexcept = default;

MetadataInfo::~MetadataInfo() = default;
