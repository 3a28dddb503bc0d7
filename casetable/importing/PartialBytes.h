#ifndef CASETABLE_IMPORTING_PARTIALBYTES_H
#define CASETABLE_IMPORTING_PARTIALBYTES_H

#include <cstddef>

#include "casetable/importing/Partial.h"

namespace casetable {

class ByteReader;
class ByteWriter;

/// Writes all that `partial` holds; readPartial() gives it again, in this process or another.
void writePartial(ByteWriter& writer, const Partial& partial);

/// Reads what writePartial() wrote of an import with so many columns and identifiers. Throws
/// BrokenBytes where the bytes cannot be that.
Partial readPartial(ByteReader& reader, std::size_t columns, std::size_t identifiers);

} // namespace casetable

#endif
