#ifndef CASETABLE_SYSTEM_OUTPUT_H
#define CASETABLE_SYSTEM_OUTPUT_H

#include <optional>
#include <string>
#include <string_view>

#include "casetable/system/Descriptor.h"

namespace casetable {

/// Where the report goes: standard output, or a file.
///
/// A file is written under a temporary name in its folder and renamed by commit(), so until then an
/// earlier file stays as it was, and without commit() nothing is left behind. An earlier file hands
/// down its mode, and its owner as far as the user may set it. A link is followed, and what is not
/// a regular file, such as a device or a pipe, is written directly; so is an inherited descriptor
/// that is named by /dev/stdout, /dev/stderr, /dev/fd/N or /proc/self/fd/N.
///
/// Every operation throws Failure with ExitCode::OutputFailed and the path when the system refuses,
/// and Interrupted when a signal came in.
class Output {
public:
    /// Checks that `path`, which must not be empty, can be written, without touching it; none is
    /// standard output.
    explicit Output(std::optional<std::string> path);

    /// Removes the temporary file, unless commit() was called.
    ~Output();
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;

    /// True when it is written to a terminal.
    bool isTerminal() const;

    /// True when it is written to a terminal and the user wants colours there.
    bool showsColours() const;

    void write(std::string_view bytes);

    /// Writes what is left and puts the file in its place. Nothing may be written afterwards.
    void commit();

private:
    Descriptor open();
    Descriptor openTemporary();
    int descriptor() const;
    void flush();
    [[noreturn]] void fail(int error) const;

    std::string name_;      // As the user knows it.
    std::string target_;    // With links followed; empty for standard output.
    std::string temporary_; // Empty while there is none.
    Descriptor opened_;     // Standard output is not ours to close.
    std::string buffer_;
};

} // namespace casetable

#endif
