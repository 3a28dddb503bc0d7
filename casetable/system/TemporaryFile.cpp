#include "casetable/system/TemporaryFile.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string_view>

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <xxhash.h>

#include "casetable/system/Interrupt.h"

namespace casetable {

namespace {

const std::string_view anyLetters = "XXXXXX"; // As the system wants them for a name of its choice.

// What the names of all temporary files for the target begin with. A hash, as the target's name
// itself may leave no room for more.
std::string beginningOfNames(const std::string& target)
{
    const std::string name = target.substr(target.rfind('/') + 1);
    std::array<char, 9> digits = {};
    static_cast<void>(std::snprintf(digits.data(), digits.size(), "%08x",
                                    static_cast<unsigned>(XXH3_64bits(name.data(), name.size()))));
    return ".casetable-" + std::string(digits.data()) + "-";
}

std::string folderWithSlash(const std::string& target)
{
    const std::size_t slash = target.rfind('/');
    return slash == std::string::npos ? "./" : target.substr(0, slash + 1);
}

bool isLetterOrDigit(char c)
{
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool isTemporaryName(std::string_view name, std::string_view beginning)
{
    return name.size() == beginning.size() + anyLetters.size() &&
           name.substr(0, beginning.size()) == beginning &&
           std::all_of(name.begin() + static_cast<std::ptrdiff_t>(beginning.size()), name.end(),
                       isLetterOrDigit);
}

// Never waits for who holds the lock.
bool lock(int descriptor)
{
    return ::flock(descriptor, LOCK_EX | LOCK_NB) == 0;
}

void removeIfAbandoned(const std::string& path)
{
    // For writing, without which some file systems do not lock. What is no regular file makes the
    // open fail, or is let be.
    const Descriptor opened(
        ::open(path.c_str(), O_WRONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    if (!opened.isOpen() || !lock(opened.number()))
        return;
    // Before it could be locked, its run may have put it in place.
    struct stat locked = {};
    struct stat named = {};
    if (::fstat(opened.number(), &locked) == 0 && ::lstat(path.c_str(), &named) == 0 &&
        S_ISREG(locked.st_mode) && locked.st_dev == named.st_dev && locked.st_ino == named.st_ino)
        ::unlink(path.c_str());
}

} // namespace

TemporaryFile makeTemporaryFile(const std::string& target)
{
    for (;;) {
        throwIfInterrupted();
        // A file without a name (O_TMPFILE) would go with its process. But it could not take the
        // place of another one without a name of its own before, which would have to be cleaned up
        // likewise, and not all file systems have it.
        TemporaryFile file;
        file.path = folderWithSlash(target) + beginningOfNames(target);
        file.path += anyLetters;
        file.opened = Descriptor(::mkostemp(file.path.data(), O_CLOEXEC));
        if (!file.opened.isOpen())
            return file;
        // Between the two steps another run may have taken it for an abandoned one. Then it is
        // about to remove it, or has done so.
        struct stat status = {};
        const bool isTaken =
            lock(file.opened.number())
                ? ::fstat(file.opened.number(), &status) == 0 && status.st_nlink == 0
                : errno == EWOULDBLOCK;
        if (!isTaken)
            return file;
    }
}

void removeAbandonedFiles(const std::string& target)
{
    const std::string folder = folderWithSlash(target);
    const std::string beginning = beginningOfNames(target);
    const std::unique_ptr<DIR, int (*)(DIR*)> listing(::opendir(folder.c_str()), ::closedir);
    if (!listing)
        return;
    while (const dirent* const entry = ::readdir(listing.get())) {
        if (isTemporaryName(entry->d_name, beginning))
            removeIfAbandoned(folder + entry->d_name);
    }
}

} // namespace casetable
