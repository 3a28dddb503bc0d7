#ifndef CASETABLE_WRITING_JSONWRITER_H
#define CASETABLE_WRITING_JSONWRITER_H

#include <string>

namespace casetable {

class Output;
struct Report;

/// Writes the report as one JSON object in ASCII, a line for each row:
///
///     {"columns": [{"name": ..., "type": "string" or "number"}, ...],
///      "cases": [{"case": 0, "files": 3, "values": {NAME: VALUE, ...},
///                 "aux": {TAG: [PATH, ...], ...}}, ...]}
///
/// "cases" is Report::rowsName. "columns" lists those that hold values; other columns stand in a
/// row by their name, as "case" does. A number is as jsonNumber() says, and no value is null. Bytes
/// that are not UTF-8 become U+FFFD, and names that are then equal get "(2)", "(3)" ... behind
/// them. Throws what Output::write() and Report::row throw.
void writeJson(const Report& report, Output& output);

/// Writes the report as JSON lines in ASCII, one object for each row and nothing else:
///
///     {"case":0,NAME:VALUE,...,TAG:[PATH,...],...,"files":3}
///
/// in the order of the columns. All else is as in writeJson().
void writeJsonLines(const Report& report, Output& output);

/// The text of a number, as std::strtod() takes it in the "C" locale, as a JSON number of the same
/// digits: without a sign "+" and zeros in front, and with a digit on both sides of a point.
/// "null" for what is not finite.
std::string jsonNumber(const std::string& text);

} // namespace casetable

#endif
