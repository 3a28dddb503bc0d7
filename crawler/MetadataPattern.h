#ifndef CRAWLER_METADATAPATTERN_H
#define CRAWLER_METADATAPATTERN_H

#include <cstddef>
#include <cstdint>
#include <string>

#include "crawler/Export.h"

/// One item of metadata to be read out of every crawled path: a marker and the kind of value that
/// follows it. The position of a pattern in the user's list is its metadata index.
struct CRAWLER_API MetadataPattern {
    /// How far the value after the marker extends. In a path, any number but NumberValue in a
    /// `valueType` field acts as StringValue.
    enum ValueType : std::uint32_t {
        /// Text up to the next `/` or `\`, or to the end of the segment, which reaches to the next
        /// marker or the end of the path, without its extensions. A single character at the end of
        /// a segment is not taken as a value.
        StringValue = 0,
        /// A decimal number: optional sign, digits with an optional fraction, and an optional
        /// exponent introduced by `D`, `E`, `d` or `e`.
        NumberValue = 1
    };

    /// An empty marker and StringValue.
    MetadataPattern();
    /// Copies both arguments.
    MetadataPattern(const std::string& marker, ValueType type);
    /// Copies both fields.
    MetadataPattern(const MetadataPattern& other);
    /// Leaves the marker of `other` empty.
    MetadataPattern(MetadataPattern&& other) noexcept;
    /// Copies both fields.
    MetadataPattern& operator=(const MetadataPattern& other);
    /// Leaves the marker of `other` empty; assigning a pattern to itself changes nothing.
    MetadataPattern& operator=(MetadataPattern&& other) noexcept;
    ~MetadataPattern();

    /// The marker: searched for in the path byte for byte, case-sensitive, without wildcards. May
    /// be empty, and then stands wherever the search starts.
    std::string pattern;
    /// How far the value extends.
    ValueType valueType;
};

/// One item of metadata as it was found in one path. Positions are byte indices, from 0, into the
/// complete path.
struct CRAWLER_API MetadataInfo {
    /// Three times 0, and an empty value.
    MetadataInfo();
    /// Copies every field.
    MetadataInfo(const MetadataInfo& other);
    /// Takes the value of `other`, whose own is open afterwards.
    MetadataInfo(MetadataInfo&& other) noexcept;
    /// Copies every field.
    MetadataInfo& operator=(const MetadataInfo& other);
    /// Takes the value of `other`, whose own is open afterwards.
    MetadataInfo& operator=(MetadataInfo&& other) noexcept;
    ~MetadataInfo();

    /// Where the marker begins.
    std::size_t patternPosition = 0;
    /// Where the value begins: right after the marker.
    std::size_t valuePosition = 0;
    /// The value's length in bytes; equals `value.size()`.
    std::size_t valueLength = 0;
    /// The value exactly as it stands in the path; a number stays text.
    std::string value;
};

#endif
