#ifndef CASETABLE_WRITING_VTTWRITER_H
#define CASETABLE_WRITING_VTTWRITER_H

namespace casetable {

class Output;
struct Report;

/// Writes the report as an XML table of the visualisation toolkit, by the toolkit's own writer:
/// indices as integers, a number column in which every cell converts to a number as doubles, every
/// other column as strings of exactly the bytes that they hold. A tag's files are a CSV record, as
/// in writeCsv(). Names are made printable, with `"`, `&`, `<` and `>` escaped as well, and then
/// unique.
///
/// Holds the whole table in memory. Throws Failure with ExitCode::OutputFailed when the toolkit's
/// writer fails.
void writeVtt(const Report& report, Output& output);

} // namespace casetable

#endif
