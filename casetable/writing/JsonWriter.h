#ifndef CASETABLE_WRITING_JSONWRITER_H
#define CASETABLE_WRITING_JSONWRITER_H

namespace casetable {

class Output;
struct Report;

/// Writes the report as one JSON object in ASCII, a line for each row:
///
///     {"columns": [{"name": ..., "type": "string" or "number"}, ...],
///      "cases": [{"case": 0, "values": {NAME: TEXT, ...}, "aux": {TAG: [PATH, ...], ...}}, ...]}
///
/// "cases" is Report::rowsName. "columns" lists those that hold values; other columns stand in a
/// row by their name, as "case" does. Numbers among the values are strings too, as it is their
/// texts that tell cases apart. Bytes that are not UTF-8 become U+FFFD, and names that are then
/// equal get "(2)", "(3)" ... behind them. Throws what Output::write() and Report::row throw.
void writeJson(const Report& report, Output& output);

} // namespace casetable

#endif
