#ifndef CASETABLE_WRITING_CSVWRITER_H
#define CASETABLE_WRITING_CSVWRITER_H

namespace casetable {

class Output;
struct Report;

/// Writes the report as CSV by RFC 4180, but with lines that end in LF, as the tools around CSV
/// take a CR for a byte of the last field: a header and a record for each row, every byte of a
/// field as it is. Throws what Output::write() and Report::row throw.
void writeCsv(const Report& report, Output& output);

} // namespace casetable

#endif
