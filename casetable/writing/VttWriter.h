#ifndef CASETABLE_WRITING_VTTWRITER_H
#define CASETABLE_WRITING_VTTWRITER_H

namespace casetable {

class Output;
struct Report;

/// Writes the report as an XML table of VTK, by VTK's own writer. Indices are integers. Number
/// values are doubles if every cell of their column converts to a number. Every other column is of
/// strings, with the bytes as they are; that of a tag holds CSV records of files, as in writeCsv().
/// Names are made printable, with `"`, `&`, `<` and `>` escaped too, and then unique.
///
/// Holds the whole table in memory. Throws Failure with ExitCode::OutputFailed when VTK's writer
/// fails, and what Output::write() and Report::row throw.
void writeVtt(const Report& report, Output& output);

} // namespace casetable

#endif
