#ifndef CRAWLER_METADATAPATTERN_H
#define CRAWLER_METADATAPATTERN_H

#include <cstddef>
#include <cstdint>
#include <string>

#include "crawler/Export.h"

/// One item of metadata to be read out of every crawled path: a marker and the kind of value that
/// follows it. The position of a pattern in the user's list is its metadata index.
///
/// A list of patterns is matched against a path in two steps.
///
/// First all markers are located, in list order. Each is taken where it occurs first; the search
/// starts one byte behind the beginning of the marker before. When one is not found, the path is
/// unmatched, and no value is read. No other occurrence is ever tried: with `T` for a number,
/// `Tx_T5` is unmatched, and so is `b2/a1` with the markers `a` and `b`.
///
/// Then the values are read, in list order, up to the first that is missing; the path is matched
/// when none is. Each is read from its segment: the path from the beginning of its marker up to the
/// beginning of the next marker, or to the end of the path.
struct CRAWLER_API MetadataPattern {
    /// How far the value after the marker extends. In a path, any number but NumberValue in a
    /// `valueType` field acts as StringValue.
    enum ValueType : std::uint32_t {
        /// Text from behind the marker up to the next `/` or `\`, and then possibly empty; or else
        /// up to the end of the segment, and then of two characters or more.
        ///
        /// Before the text is looked for, the last component of the segment loses its extensions,
        /// one after the other: each time all from its last `.` on, also from one in front, until
        /// it has no `.` or is `.` or `..`. The marker is a part of the segment, too:
        /// - Where nothing would be left of the segment, its extensions stay, and the text may be
        ///   of any length: the marker `.` reads `d` from `x.d`, and `.dat` an empty text from
        ///   `x.dat`.
        /// - Where something is left, and an extension begins within the marker, there is no value:
        ///   none for `v1.` in `v1.55`, and none for `a.b` in `x/a.bcc`. But `v1.` reads `55` from
        ///   `v1.55/x`, whose last component is `x`.
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
