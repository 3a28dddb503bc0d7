#ifndef CASETABLE_OUTPUT_H
#define CASETABLE_OUTPUT_H

#include <optional>
#include <string>
#include <string_view>

namespace casetable {

/// Where the report goes: standard output, or a file.
///
/// A file is written under a temporary name in its folder and renamed by commit(), so until then an
/// earlier file stays as it was, and without commit() nothing is left behind. A link is followed,
/// and what is not a regular file, such as a device or a pipe, is written directly.
///
/// Every operation throws Failure with ExitCode::OutputFailed and the path when the system refuses,
/// and Interrupted when a signal came in.
class Output {
public:
    /// Checks that `path` can be written, without touching it; none is standard output.
    explicit Output(std::optional<std::string> path);

    /// Removes the temporary file, unless commit() was called.
    ~Output();
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;

    /// True when it is written to a terminal.
    bool isTerminal() const;

    void write(std::string_view bytes);

    /// Writes what is left and puts the file in its place. Nothing may be written afterwards.
    void commit();

private:
    void open();
    void flush();
    [[noreturn]] void fail() const;

    std::string target_;    // Empty for standard output.
    std::string temporary_; // Empty while there is none.
    int descriptor_ = -1;
    std::string buffer_;
};

} // namespace casetable

#endif
