#include "casetable/system/Output.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstddef>
#include <cstdlib>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include "casetable/system/Colour.h"
#include "casetable/system/ExitCode.h"
#include "casetable/system/Interrupt.h"
#include "casetable/system/TemporaryFile.h"

namespace casetable {

namespace {

const std::size_t bufferBytes = 65536;
const int mostLinks = 40;         // As many as the system follows.
const std::size_t mostDigits = 4; // Of a descriptor; so many fit into an int.

std::string folderOf(const std::string& path)
{
    const std::size_t slash = path.rfind('/');
    if (slash == std::string::npos)
        return ".";
    return slash == 0 ? "/" : path.substr(0, slash);
}

// The path that a link leads to, whether that exists or not; any other path is returned as it is.
std::string resolved(std::string path)
{
    char target[PATH_MAX];
    for (int links = 0; links < mostLinks; ++links) {
        const ssize_t size = ::readlink(path.c_str(), target, sizeof target);
        if (size <= 0)
            break;
        const std::string next(target, static_cast<std::size_t>(size));
        path = next.front() == '/' ? next : folderOf(path) + "/" + next;
    }
    return path;
}

// The descriptor that a path such as /dev/stdout stands for, or -1. It is written to directly: the
// file behind it may also get the output of other programs, which would be lost if it were
// replaced.
int inheritedDescriptor(const std::string& path)
{
    if (path == "/dev/stdout")
        return STDOUT_FILENO;
    if (path == "/dev/stderr")
        return STDERR_FILENO;
    for (const std::string folder : {"/dev/fd/", "/proc/self/fd/"}) {
        const std::string name = path.substr(std::min(folder.size(), path.size()));
        if (path.compare(0, folder.size(), folder) == 0 && !name.empty() &&
            name.size() <= mostDigits && name.find_first_not_of("0123456789") == std::string::npos)
            return std::stoi(name);
    }
    return -1;
}

bool isRegular(const struct stat& status)
{
    return S_ISREG(status.st_mode);
}

// Repeats a system call that signals cut short, unless one of them interrupts the program.
template <class Call> auto retried(Call call) -> decltype(call())
{
    for (;;) {
        const auto result = call();
        if (result >= 0 || errno != EINTR)
            return result;
        throwIfInterrupted();
    }
}

mode_t creationMode()
{
    const mode_t mask = ::umask(0);
    ::umask(mask);
    return 0666 & ~mask;
}

} // namespace

Output::Output(std::optional<std::string> path)
{
    if (!path) {
        name_ = "standard output";
        return;
    }
    name_ = target_ = *path;
    struct stat status = {};
    if (inheritedDescriptor(target_) >= 0) {
        if (::fstat(inheritedDescriptor(target_), &status) != 0)
            fail(errno);
        return;
    }
    const bool exists = ::stat(target_.c_str(), &status) == 0;
    if (exists && S_ISDIR(status.st_mode))
        fail(EISDIR);
    if (exists && !isRegular(status))
        return;
    if (!exists && (errno == ELOOP || errno == ENAMETOOLONG))
        fail(errno);
    target_ = resolved(*path);
    if (exists && ::access(target_.c_str(), W_OK) != 0)
        fail(errno);

    const std::string folder = folderOf(target_);
    if (::stat(folder.c_str(), &status) != 0)
        fail(errno);
    if (!S_ISDIR(status.st_mode))
        fail(ENOTDIR);
    if (::access(folder.c_str(), W_OK | X_OK) != 0)
        fail(errno);
}

Output::~Output()
{
    if (!temporary_.empty())
        ::unlink(temporary_.c_str());
}

bool Output::isTerminal() const
{
    if (target_.empty())
        return ::isatty(STDOUT_FILENO) == 1;
    struct stat status = {};
    if (::stat(target_.c_str(), &status) != 0 || !S_ISCHR(status.st_mode))
        return false;
    const Descriptor opened(::open(target_.c_str(), O_WRONLY | O_NOCTTY | O_NONBLOCK | O_CLOEXEC));
    return opened.isOpen() && ::isatty(opened.number()) == 1;
}

bool Output::showsColours() const
{
    return coloursAreWanted() && isTerminal();
}

std::string Output::replacedFile() const
{
    struct stat status = {};
    const bool isDirect = target_.empty() || inheritedDescriptor(target_) >= 0 ||
                          (::stat(target_.c_str(), &status) == 0 && !isRegular(status));
    return isDirect ? std::string() : target_;
}

std::string Output::temporaryFile()
{
    opened_ = openTemporary();
    if (!opened_.isOpen())
        fail(errno);
    return temporary_;
}

void Output::fail(const std::string& reason) const
{
    throw Failure(ExitCode::OutputFailed, name_ + ": " + reason);
}

void Output::write(std::string_view bytes)
{
    buffer_ += bytes;
    if (buffer_.size() >= bufferBytes)
        flush();
}

void Output::commit()
{
    flush();
    if (target_.empty())
        return;
    if (!temporary_.empty() && retried([this] { return ::fsync(descriptor()); }) != 0)
        fail(errno);
    if (::close(opened_.release()) != 0)
        fail(errno);
    if (temporary_.empty())
        return;
    throwIfInterrupted();
    if (::rename(temporary_.c_str(), target_.c_str()) != 0)
        fail(errno);
    temporary_.clear();
    lock_ = Descriptor();
}

Descriptor Output::open()
{
    if (inheritedDescriptor(target_) >= 0)
        return Descriptor(::fcntl(inheritedDescriptor(target_), F_DUPFD_CLOEXEC, 0));
    if (!replacedFile().empty())
        return openTemporary();
    return Descriptor(
        retried([this] { return ::open(target_.c_str(), O_WRONLY | O_NOCTTY | O_CLOEXEC); }));
}

Descriptor Output::openTemporary()
{
    // Before the new one is made, which may need the room.
    removeAbandonedFiles(target_);
    TemporaryFile file = makeTemporaryFile(target_);
    Descriptor opened = std::move(file.opened);
    if (!opened.isOpen())
        return opened;
    temporary_ = file.path;
    lock_ = Descriptor(::fcntl(opened.number(), F_DUPFD_CLOEXEC, 0));
    if (!lock_.isOpen())
        fail(errno);

    mode_t mode = creationMode();
    struct stat earlier = {};
    if (::stat(target_.c_str(), &earlier) == 0) {
        mode = earlier.st_mode & 0777;
        // The group is then the user's own, not the one that the earlier mode was meant for.
        if (::fchown(opened.number(), earlier.st_uid, earlier.st_gid) != 0)
            mode &= ~static_cast<mode_t>(S_IRWXG);
    }
    if (::fchmod(opened.number(), mode) != 0)
        fail(errno);
    return opened;
}

int Output::descriptor() const
{
    return target_.empty() ? STDOUT_FILENO : opened_.number();
}

void Output::flush()
{
    if (descriptor() < 0) {
        opened_ = open();
        if (!opened_.isOpen())
            fail(errno);
    }
    std::size_t written = 0;
    while (written < buffer_.size()) {
        throwIfInterrupted();
        const ssize_t count = retried([&] {
            return ::write(descriptor(), buffer_.data() + written, buffer_.size() - written);
        });
        if (count < 0 && errno == EAGAIN) {
            pollfd ready = {descriptor(), POLLOUT, 0};
            if (retried([&ready] { return ::poll(&ready, 1, -1); }) < 0)
                fail(errno);
            continue;
        }
        if (count < 0)
            fail(errno);
        written += static_cast<std::size_t>(count);
    }
    buffer_.clear();
}

void Output::fail(int error) const
{
    fail(std::generic_category().message(error));
}

} // namespace casetable
