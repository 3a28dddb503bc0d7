#ifndef CASETABLE_WRITING_CSVWRITER_H
#define CASETABLE_WRITING_CSVWRITER_H

namespace casetable {

class Output;
struct Report;

/// Writes the report as CSV after RFC 4180, with a header, every byte of a field as it is.
///
/// A tag's files stand in one field as a CSV record of their own, without a line ending, so that
/// any name among them survives; plain names are simply divided by commas.
void writeCsv(const Report& report, Output& output);

} // namespace casetable

#endif
