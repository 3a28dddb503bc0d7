#ifndef CASETABLE_SYSTEM_OUTPUT_H
#define CASETABLE_SYSTEM_OUTPUT_H

#include <optional>
#include <string>
#include <string_view>

#include "casetable/system/Descriptor.h"

namespace casetable {

/// Where the output of a run goes: standard output, or a file.
///
/// A file is written under a temporary name in its folder, and commit() renames it. So until then
/// an earlier file stays as it was, and without commit() nothing is left behind. A program that is
/// killed leaves its temporary file, which the next output to the same file removes when it begins
/// its own; never one that another output, of any process, is being written to. The new file gets
/// the mode of an earlier one, and its owner if the user may set it. Links are followed. What is
/// not a regular file, such as a device or a pipe, is written to directly; so is an inherited
/// descriptor that is named by /dev/stdout, /dev/stderr, /dev/fd/N or /proc/self/fd/N.
///
/// The constructor, write(), temporaryFile() and commit() throw Failure with
/// ExitCode::OutputFailed, the path and the reason when the system refuses; write() and commit()
/// throw Interrupted when a signal came in. Used by one thread at a time.
class Output {
public:
    /// Checks that the file at `path` can be written, without touching it. The path must not be
    /// empty; without one, the output goes to standard output.
    explicit Output(std::optional<std::string> path);

    /// Removes the temporary file, unless commit() was called.
    ~Output();
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;

    /// Whether the output goes to a terminal.
    bool isTerminal() const;

    /// Whether the output goes to a terminal, and the user wants colours there.
    bool showsColours() const;

    /// The path of the file that commit() puts in place, with links followed; empty where the
    /// output goes to what is written to directly.
    std::string replacedFile() const;

    /// Makes the temporary file, empty, for a caller that fills it by its path instead of by
    /// write(), and returns the path. replacedFile() must not be empty. By commit() the caller has
    /// closed it.
    std::string temporaryFile();

    /// Throws Failure with ExitCode::OutputFailed, the path and `reason`.
    [[noreturn]] void fail(const std::string& reason) const;

    /// Appends `bytes`, which may be kept in memory for a while.
    void write(std::string_view bytes);

    /// Writes what is still in memory, and puts the file in its place. To be called last, and once.
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
    Descriptor opened_;     // Nothing for standard output, which is not ours to close.
    Descriptor lock_;       // Keeps the temporary file locked when `opened_` is closed.
    std::string buffer_;
};

} // namespace casetable

#endif
