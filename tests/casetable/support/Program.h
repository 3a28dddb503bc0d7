#ifndef TESTS_CASETABLE_SUPPORT_PROGRAM_H
#define TESTS_CASETABLE_SUPPORT_PROGRAM_H

#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include <sys/types.h>

namespace casetable {
namespace tests {

class TemporaryTree;

using Arguments = std::vector<std::string>;

enum class Stream {
    Pipe,
    SmallPipe, ///< Holds a page.
    Terminal,  ///< That passes all bytes on as they are.
    NoReader,  ///< A pipe whose other end is closed.
    FullDisk,
    Closed
};

/// What the program finds when it starts.
struct Setting {
    std::string folder; ///< The working directory; the test's own when empty.
    std::string input;  ///< A file to read standard input from; nothing comes when empty.
    Stream output = Stream::Pipe;
    Stream errors = Stream::Pipe;
    unsigned short terminalColumns = 80;
    bool ordinaryUser = false;
    bool colours = false; ///< The terminal knows colours, and the user has nothing against them.
    std::function<void()> prepare; ///< Called last in the child, before the program starts.
    Arguments program = {};        ///< A program to start casetable with, such as a tracer.
};

struct Outcome {
    int exitCode = -1; ///< -1 when a signal ended the program.
    int signal = 0;
    std::string output;
    std::string errors;
};

std::ostream& operator<<(std::ostream& stream, const Outcome& outcome);

/// A running casetable. Whatever waits for it gives up after a generous time and fails the test.
class Program {
public:
    Program(const Arguments& arguments, const Setting& setting);
    ~Program();
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    void send(int signal) const;

    /// Reads standard error until `reached` holds for what came so far.
    void waitForErrors(const std::function<bool(const std::string&)>& reached);

    /// Reads standard error for a while, to see that nothing comes.
    std::string errorsFor(int milliseconds);

    /// Waits, reading nothing, until the program has filled its output pipe and can write no more.
    void waitUntilOutputIsFull() const;

    /// Waits until the program rests in a system call. False when the system does not tell.
    bool waitUntilIn(long systemCall) const;

    /// Reads everything and waits for the end.
    Outcome finish();

private:
    bool readSome(int timeout, bool outputToo);

    pid_t id_ = -1;
    int output_ = -1;
    int errors_ = -1;
    Outcome outcome_;
};

Outcome run(const Arguments& arguments, const Setting& setting);

/// Runs in `tree`, with pipes.
Outcome run(const TemporaryTree& tree, const Arguments& arguments);

Setting in(const TemporaryTree& tree);

/// A terminal for others than the program's own streams.
class Terminal {
public:
    Terminal();
    ~Terminal();
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    const std::string& path() const { return path_; }

    /// What was written to it.
    std::string text() const;

private:
    int master_ = -1;
    int slave_ = -1;
    std::string path_;
};

/// The message of one error line, without "casetable: " and the line end; fails the test when
/// `errors` is anything but one such line.
std::string message(const std::string& errors);

} // namespace tests
} // namespace casetable

#endif
