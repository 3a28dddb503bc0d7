#ifndef CASETABLE_WRITING_VTTWRITER_H
#define CASETABLE_WRITING_VTTWRITER_H

namespace casetable {

class Output;
struct Report;

/// Writes the report as an XML table of VTK, by VTK's own writer. Counts are integers, and number
/// values doubles, with NaN for no value and for what is not finite. Every other column is of
/// strings, with the bytes as they are.
/// Names are made printable, with `"`, `&`, `<` and `>` escaped too, and then unique.
///
/// Holds the whole table in memory. Throws Failure with ExitCode::OutputFailed when VTK's writer
/// fails, and what Output::write() and Report::row throw.
void writeVtt(const Report& report, Output& output);

} // namespace casetable

#endif
