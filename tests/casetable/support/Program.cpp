#include "tests/casetable/support/Program.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <system_error>
#include <thread>

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "tests/casetable/support/OrdinaryUser.h"
#include "tests/casetable/support/TemporaryTree.h"

namespace casetable {
namespace tests {

namespace {

using Clock = std::chrono::steady_clock;

// Only a safety net: far more than any test takes, under sanitizers too.
const std::chrono::seconds patience(180);

// A status line ends in no line feed; what erases it stands behind it.
std::string withoutStatus(const std::string& errors)
{
    const std::string eraseLine = "\r\x1b[K";
    std::string kept;
    std::size_t begin = 0;
    for (std::size_t end = 0; end < errors.size(); begin = end + eraseLine.size()) {
        end = std::min(errors.find(eraseLine, begin), errors.size());
        const std::string piece = errors.substr(begin, end - begin);
        if (begin == 0 || end == errors.size() || piece.find('\n') != std::string::npos)
            kept += piece;
    }
    return kept;
}

int checked(int result, const char* what)
{
    if (result < 0)
        throw std::system_error(errno, std::generic_category(), what);
    return result;
}

// The ends of one stream: the test's, and the program's.
struct Ends {
    int reading = -1;
    int writing = -1;
};

void closeOne(int& descriptor)
{
    if (descriptor >= 0)
        close(descriptor);
    descriptor = -1;
}

Ends openTerminal(unsigned short columns)
{
    Ends ends;
    ends.reading = checked(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC), "posix_openpt");
    checked(grantpt(ends.reading), "grantpt");
    checked(unlockpt(ends.reading), "unlockpt");
    ends.writing = checked(open(ptsname(ends.reading), O_RDWR | O_NOCTTY | O_CLOEXEC), "ptsname");
    termios settings = {};
    checked(tcgetattr(ends.writing, &settings), "tcgetattr");
    cfmakeraw(&settings);
    checked(tcsetattr(ends.writing, TCSANOW, &settings), "tcsetattr");
    winsize size = {};
    size.ws_row = 24;
    size.ws_col = columns;
    checked(ioctl(ends.writing, TIOCSWINSZ, &size), "TIOCSWINSZ");
    return ends;
}

Ends openPipe()
{
    std::array<int, 2> ends = {};
    checked(pipe2(ends.data(), O_CLOEXEC), "pipe2");
    return {ends[0], ends[1]};
}

Ends openStream(Stream stream, unsigned short columns)
{
    switch (stream) {
    case Stream::Terminal:
        return openTerminal(columns);
    case Stream::FullDisk:
        return {-1, checked(open("/dev/full", O_WRONLY | O_CLOEXEC), "/dev/full")};
    case Stream::Closed:
        return {};
    default:
        break;
    }
    Ends ends = openPipe();
    if (stream == Stream::NoReader)
        closeOne(ends.reading);
    if (stream == Stream::SmallPipe)
        checked(fcntl(ends.writing, F_SETPIPE_SZ, 1), "F_SETPIPE_SZ");
    return ends;
}

// What a sanitizer finds must not look like an exit code of the program.
void tellSanitizersApart()
{
    for (const char* name : {"ASAN_OPTIONS", "UBSAN_OPTIONS", "TSAN_OPTIONS", "LSAN_OPTIONS"}) {
        const char* present = std::getenv(name);
        const std::string options = present != nullptr ? present : "";
        if (options.find("exitcode=") == std::string::npos)
            setenv(name, (options + (options.empty() ? "" : ":") + "exitcode=99").c_str(), 1);
    }
}

std::vector<char*> pointers(Arguments& texts)
{
    std::vector<char*> pointers;
    for (std::string& text : texts)
        pointers.push_back(&text[0]);
    pointers.push_back(nullptr);
    return pointers;
}

void useStream(int descriptor, int number)
{
    if (descriptor < 0)
        close(number);
    else
        dup2(descriptor, number);
}

[[noreturn]] void becomeProgram(const Setting& setting, const std::vector<char*>& arguments,
                                int output, int errors)
{
    const int failed = 98;
    if (!setting.folder.empty() && chdir(setting.folder.c_str()) != 0)
        _exit(failed);
    if (setting.ordinaryUser && !becomeOrdinaryUser())
        _exit(failed);
    const char* const input = setting.input.empty() ? "/dev/null" : setting.input.c_str();
    useStream(open(input, O_RDONLY), STDIN_FILENO);
    useStream(output, STDOUT_FILENO);
    useStream(errors, STDERR_FILENO);
    useDefaultInterrupts();
    setenv("TERM", "xterm", 1);
    if (setting.colours)
        unsetenv("NO_COLOR");
    else
        setenv("NO_COLOR", "1", 1);
    if (setting.prepare)
        setting.prepare();
    execvp(arguments[0], arguments.data());
    _exit(failed);
}

} // namespace

bool operator==(const Outcome& a, const Outcome& b)
{
    return a.exitCode == b.exitCode && a.signal == b.signal && a.output == b.output &&
           a.errors == b.errors;
}

std::ostream& operator<<(std::ostream& stream, const Outcome& outcome)
{
    if (!outcome.arguments.empty())
        stream << "casetable " << testing::PrintToString(outcome.arguments) << "\n";
    return stream << "exit code " << outcome.exitCode << ", signal " << outcome.signal
                  << "\noutput: " << testing::PrintToString(outcome.output)
                  << "\nerrors: " << testing::PrintToString(outcome.errors);
}

Outcome ends(int exitCode, const std::string& output, const std::string& message)
{
    Outcome outcome;
    outcome.exitCode = exitCode;
    outcome.output = output;
    outcome.errors = message.empty() ? "" : "casetable: " + message + "\n";
    return outcome;
}

Outcome prints(const std::string& output, const std::string& message)
{
    return ends(0, output, message);
}

Outcome fails(int exitCode, const std::string& message)
{
    return ends(exitCode, "", message);
}

Program::Program(const Arguments& arguments, const Setting& setting)
{
    outcome_.arguments = arguments;
    tellSanitizersApart();
    Arguments all = setting.program;
    all.push_back(CASETABLE_PROGRAM);
    all.insert(all.end(), arguments.begin(), arguments.end());
    const std::vector<char*> argv = pointers(all);

    Ends output = openStream(setting.output, setting.terminalColumns);
    Ends errors = openStream(setting.errors, setting.terminalColumns);
    id_ = checked(fork(), "fork");
    if (id_ == 0)
        becomeProgram(setting, argv, output.writing, errors.writing);
    closeOne(output.writing);
    closeOne(errors.writing);
    output_ = output.reading;
    errors_ = errors.reading;
}

Program::~Program()
{
    closeOne(output_);
    closeOne(errors_);
    if (id_ > 0) {
        kill(id_, SIGKILL);
        waitpid(id_, nullptr, 0);
    }
}

void Program::send(int signal) const
{
    checked(kill(id_, signal), "kill");
}

// Answers false when nothing came in time, or nothing more can come.
bool Program::readSome(int timeout, bool outputToo)
{
    std::array<pollfd, 2> streams = {};
    streams[0] = {errors_, POLLIN, 0};
    streams[1] = {outputToo ? output_ : -1, POLLIN, 0};
    if ((streams[0].fd < 0 && streams[1].fd < 0) || poll(streams.data(), 2, timeout) <= 0)
        return false;
    for (const pollfd& stream : streams) {
        if (stream.fd < 0 || stream.revents == 0)
            continue;
        std::array<char, 65536> buffer;
        const ssize_t count = read(stream.fd, buffer.data(), buffer.size());
        const bool isErrors = stream.fd == errors_;
        if (count > 0)
            (isErrors ? outcome_.errors : outcome_.output)
                .append(buffer.data(), static_cast<std::size_t>(count));
        else // The end; a terminal says so by an error.
            closeOne(isErrors ? errors_ : output_);
    }
    return true;
}

void Program::waitForErrors(const std::function<bool(const std::string&)>& reached)
{
    const auto deadline = Clock::now() + patience;
    while (!reached(outcome_.errors) && errors_ >= 0 && Clock::now() < deadline)
        readSome(1000, false);
    EXPECT_TRUE(reached(outcome_.errors)) << outcome_;
}

void Program::waitForWalk()
{
    waitForErrors(
        [](const std::string& errors) { return errors.find(" folders, ") != std::string::npos; });
}

std::string Program::errorsFor(int milliseconds)
{
    const auto deadline = Clock::now() + std::chrono::milliseconds(milliseconds);
    for (auto left = deadline - Clock::now(); left.count() > 0; left = deadline - Clock::now()) {
        const auto step = std::chrono::duration_cast<std::chrono::milliseconds>(left);
        if (!readSome(static_cast<int>(step.count()) + 1, false) && errors_ < 0)
            break;
    }
    return outcome_.errors;
}

void Program::waitUntilOutputIsFull() const
{
    const auto deadline = Clock::now() + patience;
    const int capacity = checked(fcntl(output_, F_GETPIPE_SZ), "F_GETPIPE_SZ");
    int held = 0;
    while (held < capacity && Clock::now() < deadline) {
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
        checked(ioctl(output_, FIONREAD, &held), "FIONREAD");
    }
    EXPECT_EQ(held, capacity);
}

bool Program::waitUntilIn(long systemCall) const
{
    const auto deadline = Clock::now() + patience;
    const std::string file = "/proc/" + std::to_string(id_) + "/syscall";
    const std::string wanted = std::to_string(systemCall) + " ";
    std::string last;
    for (int same = 0; same < 20;) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
        std::string now;
        if (!std::getline(std::ifstream(file), now) || Clock::now() > deadline)
            return false;
        same = now == last && now.compare(0, wanted.size(), wanted) == 0 ? same + 1 : 0;
        last = now;
    }
    return true;
}

Outcome Program::finish()
{
    auto deadline = Clock::now() + patience;
    while ((output_ >= 0 || errors_ >= 0) && Clock::now() < deadline)
        readSome(1000, true);
    int status = 0;
    while (checked(waitpid(id_, &status, WNOHANG), "waitpid") == 0) {
        if (Clock::now() > deadline) {
            ADD_FAILURE() << "the program does not end";
            kill(id_, SIGKILL);
            deadline = Clock::time_point::max();
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    id_ = -1;
    if (WIFEXITED(status))
        outcome_.exitCode = WEXITSTATUS(status);
    else
        outcome_.signal = WTERMSIG(status);
    return outcome_;
}

Outcome run(const Arguments& arguments, const Setting& setting)
{
    Outcome outcome = Program(arguments, setting).finish();
    outcome.errors = withoutStatus(outcome.errors);
    return outcome;
}

Outcome run(const TemporaryTree& tree, const Arguments& arguments)
{
    return run(arguments, in(tree));
}

Setting in(const TemporaryTree& tree)
{
    Setting setting;
    setting.folder = tree.path();
    return setting;
}

Setting withOutput(const TemporaryTree& tree, Stream output)
{
    Setting setting = in(tree);
    setting.output = output;
    return setting;
}

Setting withErrors(const TemporaryTree& tree, Stream errors)
{
    Setting setting = in(tree);
    setting.errors = errors;
    return setting;
}

Setting withOrdinaryUser(const TemporaryTree& tree)
{
    Setting setting = in(tree);
    setting.ordinaryUser = true;
    return setting;
}

Terminal::Terminal()
{
    const Ends ends = openTerminal(80);
    master_ = ends.reading;
    slave_ = ends.writing;
    path_ = ptsname(master_);
}

Terminal::~Terminal()
{
    closeOne(slave_);
    closeOne(master_);
}

std::string Terminal::text() const
{
    std::string text;
    pollfd stream = {master_, POLLIN, 0};
    while (poll(&stream, 1, 0) > 0) {
        std::array<char, 4096> buffer;
        const ssize_t count = read(master_, buffer.data(), buffer.size());
        if (count <= 0)
            break;
        text.append(buffer.data(), static_cast<std::size_t>(count));
    }
    return text;
}

std::string message(const std::string& errors)
{
    const std::string start = "casetable: ";
    const bool isOneLine = errors.compare(0, start.size(), start) == 0 &&
                           errors.find('\n') == errors.size() - 1 && errors.back() == '\n';
    EXPECT_TRUE(isOneLine) << testing::PrintToString(errors);
    return isOneLine ? errors.substr(start.size(), errors.size() - start.size() - 1) : errors;
}

} // namespace tests
} // namespace casetable
