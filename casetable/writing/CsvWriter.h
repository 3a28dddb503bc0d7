#ifndef CASETABLE_WRITING_CSVWRITER_H
#define CASETABLE_WRITING_CSVWRITER_H

namespace casetable {

class Output;
struct Report;

/// Writes the report as CSV by RFC 4180: a header and a record for each row, every byte of a field
/// as it is. The files under a tag stand in one field, which is a CSV record of its own, without a
/// line end, so that they can be told apart whatever their paths hold. Throws what Output::write()
/// and Report::row throw.
void writeCsv(const Report& report, Output& output);

} // namespace casetable

#endif
