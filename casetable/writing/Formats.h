#ifndef CASETABLE_WRITING_FORMATS_H
#define CASETABLE_WRITING_FORMATS_H

#include <string>
#include <string_view>
#include <vector>

namespace casetable {

class Output;
struct Report;

/// A format in which reports are written.
struct Format {
    const char* name;                 ///< As --format takes it.
    std::vector<const char*> endings; ///< Of names of its files, in lower case, as ".csv".

    /// Writes a report; the caller commits the output. Null for a database, which takes a whole
    /// import, by writeDatabase().
    void (*write)(const Report&, Output&);

    /// Whether it is a database, which can only go to a file.
    bool isDatabase() const { return write == nullptr; }
};

/// All formats, each with a name and endings of its own. They last as long as the program.
const std::vector<Format>& formats();

/// The format that --format calls `name`; null if there is none.
const Format* formatNamed(std::string_view name);

/// The format for which the ending of the path `file` stands, in large or small letters; null if it
/// stands for none.
const Format* formatOfEnding(const std::string& file);

/// The format if none is asked for: the table for people if `output` is a terminal, otherwise CSV.
const Format& formatFor(const Output& output);

} // namespace casetable

#endif
