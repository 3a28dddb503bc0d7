#ifndef CASETABLE_WRITING_TABLEWRITER_H
#define CASETABLE_WRITING_TABLEWRITER_H

namespace casetable {

class Output;
struct Report;

/// Writes the report for people: a line of names and a line for each row, in aligned columns with
/// two blanks between them, numbers to the right and "-" for no value. Every text is made
/// printable, so that no path can control the terminal. The names are bold if the output shows
/// colours. Makes every row twice, as the widths must be known first. Throws what Output::write()
/// and Report::row throw.
void writeTable(const Report& report, Output& output);

} // namespace casetable

#endif
