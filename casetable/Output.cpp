#include "casetable/Output.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <memory>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "casetable/ExitCode.h"
#include "casetable/Interrupt.h"

namespace casetable {

namespace {

const std::size_t bufferBytes = 65536;

std::string folderOf(const std::string& path)
{
    const std::size_t slash = path.rfind('/');
    if (slash == std::string::npos)
        return ".";
    return slash == 0 ? "/" : path.substr(0, slash);
}

// What a link leads to, so that the link itself stays one.
std::string resolved(const std::string& path)
{
    struct stat status = {};
    if (::lstat(path.c_str(), &status) != 0 || !S_ISLNK(status.st_mode))
        return path;
    const std::unique_ptr<char, void (*)(void*)> target(::realpath(path.c_str(), nullptr),
                                                        std::free);
    return target ? target.get() : path;
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
    if (!path)
        return;
    target_ = resolved(*path);
    struct stat status = {};
    if (::stat(target_.c_str(), &status) == 0) {
        if (S_ISDIR(status.st_mode)) {
            errno = EISDIR;
            fail();
        }
        if (!S_ISREG(status.st_mode))
            return;
    } else if (target_.empty() || target_.back() == '/') {
        errno = ENOENT;
        fail();
    }
    if (::access(folderOf(target_).c_str(), W_OK | X_OK) != 0)
        fail();
}

Output::~Output()
{
    if (descriptor_ >= 0 && !target_.empty())
        ::close(descriptor_);
    if (!temporary_.empty())
        ::unlink(temporary_.c_str());
}

bool Output::isTerminal() const
{
    return target_.empty() && ::isatty(STDOUT_FILENO) == 1;
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
    if (!temporary_.empty() && ::fsync(descriptor_) != 0)
        fail();
    const int descriptor = descriptor_;
    descriptor_ = -1;
    if (::close(descriptor) != 0)
        fail();
    if (temporary_.empty())
        return;
    throwIfInterrupted();
    if (::rename(temporary_.c_str(), target_.c_str()) != 0)
        fail();
    temporary_.clear();
}

void Output::open()
{
    if (target_.empty()) {
        descriptor_ = STDOUT_FILENO;
        return;
    }
    struct stat status = {};
    const bool exists = ::stat(target_.c_str(), &status) == 0;
    if (exists && !S_ISREG(status.st_mode)) {
        descriptor_ = ::open(target_.c_str(), O_WRONLY | O_CLOEXEC);
        if (descriptor_ < 0)
            fail();
        return;
    }
    std::string name = folderOf(target_) + "/.casetable-XXXXXX";
    descriptor_ = ::mkostemp(name.data(), O_CLOEXEC);
    if (descriptor_ < 0)
        fail();
    temporary_ = name;
    // The file keeps the owner, as far as the user may set it, and the mode that it had.
    if (exists && ::fchown(descriptor_, status.st_uid, status.st_gid) != 0)
        errno = 0;
    if (::fchmod(descriptor_, exists ? status.st_mode & 0777 : creationMode()) != 0)
        fail();
}

void Output::flush()
{
    if (descriptor_ < 0)
        open();
    std::size_t written = 0;
    while (written < buffer_.size()) {
        throwIfInterrupted();
        const ssize_t count =
            ::write(descriptor_, buffer_.data() + written, buffer_.size() - written);
        if (count >= 0)
            written += static_cast<std::size_t>(count);
        else if (errno != EINTR)
            fail();
    }
    buffer_.clear();
}

void Output::fail() const
{
    const std::string reason = std::strerror(errno);
    throw Failure(ExitCode::OutputFailed,
                  (target_.empty() ? "standard output" : target_) + ": " + reason);
}

} // namespace casetable
