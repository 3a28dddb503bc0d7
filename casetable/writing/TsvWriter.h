#ifndef CASETABLE_WRITING_TSVWRITER_H
#define CASETABLE_WRITING_TSVWRITER_H

namespace casetable {

class Output;
struct Report;

/// Writes the report as a line of names and a line for each row, each ended by a line feed, with
/// tabs between the fields. In a field, backslash, tab, line feed and carriage return are written
/// `\\`, `\t`, `\n` and `\r`; every other byte stands as it is. Throws what Output::write() and
/// Report::row throw.
void writeTsv(const Report& report, Output& output);

} // namespace casetable

#endif
