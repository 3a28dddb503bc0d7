#ifndef CASETABLE_IMPORTING_PARTIALBYTES_H
#define CASETABLE_IMPORTING_PARTIALBYTES_H

#include <cstddef>

#include "casetable/importing/Partial.h"

namespace casetable {

class ByteReader;
class ByteWriter;

/// Writes all that `partial` holds, for mergePartial() in this process or another.
void writePartial(ByteWriter& writer, const Partial& partial);

/// Reads what writePartial() wrote of an import with so many columns and identifiers, and merges it
/// into `all`, as Partial::merge() would. Throws BrokenBytes where the bytes cannot be that; then
/// `all` has some of it.
void mergePartial(ByteReader& reader, std::size_t columns, std::size_t identifiers, Partial& all);

} // namespace casetable

#endif
