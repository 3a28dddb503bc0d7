// A library to be loaded in front of the C library. It stands in for a file system of another
// machine: opening a folder takes a millisecond, and for ever if it is called "hanging".

#include <cstdarg>
#include <cstring>
#include <ctime>

#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

int openSlowly(int folder, const char* name, int flags, mode_t mode)
{
    if ((flags & O_DIRECTORY) != 0) {
        while (std::strcmp(name, "hanging") == 0)
            pause();
        const timespec delay = {0, 1'000'000};
        nanosleep(&delay, nullptr);
    }
    return static_cast<int>(syscall(SYS_openat, folder, name, flags, mode));
}

} // namespace

// The names under which the C library has what is called for a path with and without a mode.
extern "C" __attribute__((visibility("default"))) int openAny(int folder, const char* name,
                                                              int flags, ...) __asm__("openat");
extern "C" __attribute__((visibility("default"))) int openChecked(int folder, const char* name,
                                                                  int flags) __asm__("__openat_2");

int openAny(int folder, const char* name, int flags, ...)
{
    mode_t mode = 0;
    if ((flags & O_CREAT) != 0) {
        va_list rest;
        va_start(rest, flags);
        mode = va_arg(rest, mode_t);
        va_end(rest);
    }
    return openSlowly(folder, name, flags, mode);
}

int openChecked(int folder, const char* name, int flags)
{
    return openSlowly(folder, name, flags, 0);
}
