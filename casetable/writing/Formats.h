#ifndef CASETABLE_WRITING_FORMATS_H
#define CASETABLE_WRITING_FORMATS_H

#include <string>
#include <string_view>
#include <vector>

namespace casetable {

class Output;
struct Report;

/// A format that reports are written in.
struct Format {
    const char* name;                      ///< As --format takes it.
    std::vector<const char*> endings;      ///< Of files in it: ".csv", in lower case.
    void (*write)(const Report&, Output&); ///< The caller commits the output.
};

/// All formats, each with a name and endings of its own. They last as long as the program.
const std::vector<Format>& formats();

/// The format of that name; null where there is none.
const Format* formatNamed(std::string_view name);

/// The format that the ending of a file's name stands for, in letters of either case; null where
/// it stands for none.
const Format* formatOfEnding(const std::string& file);

/// The format where none was asked for: the table for people on a terminal, and CSV elsewhere.
const Format& formatFor(const Output& output);

} // namespace casetable

#endif
