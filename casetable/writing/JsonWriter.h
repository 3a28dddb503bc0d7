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
/// with "files" or "unmatched" in place of "cases" for the other reports. "columns" lists the
/// marker columns. Values are strings, numbers too: the text is what tells cases apart. Bytes that
/// are not UTF-8 become U+FFFD, and names that are then equal get "(2)", "(3)" ... behind them.
void writeJson(const Report& report, Output& output);

} // namespace casetable

#endif
