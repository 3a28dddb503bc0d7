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

/// What came of a run. A test states it whole, so that nothing is printed unseen:
///
///     EXPECT_EQ(run(tree, {"-n", "T", "results"}), prints("case,T,files\n0,1,1\n"));
struct Outcome {
    int exitCode = -1; ///< -1 when a signal ended the program.
    int signal = 0;
    std::string output;
    std::string errors;
    Arguments arguments; ///< Those that the program was given, for messages only.
};

/// Compares all but the arguments.
bool operator==(const Outcome& a, const Outcome& b);
std::ostream& operator<<(std::ostream& stream, const Outcome& outcome);

/// The end with this exit code, this output and one line of errors: `message` behind "casetable: ".
/// No line when it is empty.
Outcome ends(int exitCode, const std::string& output, const std::string& message = "");

/// The same with exit code 0.
Outcome prints(const std::string& output, const std::string& message = "");

/// The same without output.
Outcome fails(int exitCode, const std::string& message);

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

    /// The same until a status line tells on the terminal that the walk is under way, by when the
    /// program catches signals.
    void waitForWalk();

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

/// Runs it to its end. On a terminal, its errors are what stays there: without the status lines,
/// which it shows when it takes long, as on a busy machine.
Outcome run(const Arguments& arguments, const Setting& setting);

/// Runs in `tree`, with pipes.
Outcome run(const TemporaryTree& tree, const Arguments& arguments);

Setting in(const TemporaryTree& tree);

/// The same with another stream in place of the pipe.
Setting withOutput(const TemporaryTree& tree, Stream output);
Setting withErrors(const TemporaryTree& tree, Stream errors);

/// The same for a program that file permissions bind, whoever runs the test.
Setting withOrdinaryUser(const TemporaryTree& tree);

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

/// The message of one line of errors, for tests that state only a part of it: without "casetable: "
/// and the line end. Fails the test when `errors` is anything but one such line.
std::string message(const std::string& errors);

} // namespace tests
} // namespace casetable

#endif
