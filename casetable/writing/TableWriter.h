#ifndef CASETABLE_WRITING_TABLEWRITER_H
#define CASETABLE_WRITING_TABLEWRITER_H

namespace casetable {

class Output;
struct Report;

/// Writes the report for people: columns aligned by two spaces, numbers to the right, every text
/// made printable so that no file name can drive the terminal; the names bold where colours are
/// shown.
void writeTable(const Report& report, Output& output);

} // namespace casetable

#endif
