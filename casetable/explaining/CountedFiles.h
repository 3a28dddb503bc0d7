#ifndef CASETABLE_EXPLAINING_COUNTEDFILES_H
#define CASETABLE_EXPLAINING_COUNTEDFILES_H

#include <cstddef>
#include <string>
#include <utility>

#include "casetable/system/Bytes.h"

namespace casetable {

/// A number of files that have something in common, and one of them to be named: that with the
/// least path by bytes, so that the order in which they are counted does not matter.
struct CountedFiles {
    std::size_t count = 0;
    std::string example; ///< Empty where there are none.

    /// Counts one file more; returns whether it is the example now.
    bool add(const std::string& path)
    {
        const bool isLeast = count == 0 || path < example;
        if (isLeast)
            example = path;
        ++count;
        return isLeast;
    }

    /// Counts also the files of `other`, which must be other ones; returns whether the example is
    /// one of them now.
    bool merge(CountedFiles&& other)
    {
        const bool isLeast = other.count > 0 && (count == 0 || other.example < example);
        if (isLeast)
            example = std::move(other.example);
        count += other.count;
        return isLeast;
    }

    void write(ByteWriter& writer) const
    {
        writer.number(count);
        writer.text(example);
    }

    /// Takes in place of these files those that were written. Throws BrokenBytes.
    void read(ByteReader& reader)
    {
        count = reader.number();
        example = reader.text();
    }
};

} // namespace casetable

#endif
