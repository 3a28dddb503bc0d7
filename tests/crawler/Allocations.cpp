#include "tests/crawler/Allocations.h"

#include <cstdlib>
#include <cstring>
#include <new>

#include <dlfcn.h>
#include <execinfo.h>

namespace {

std::size_t count = 0;
std::size_t live = 0;

std::size_t untilFailure = 0;
bool failing = false;
bool failed = false;
std::size_t ofOtherLibraries = 0;
doubles::Shortage kind = doubles::Shortage::Once;

// True for an allocation that Qt or VTK makes for itself. What the module's own code, or the
// standard library for it, allocates is met first below it.
bool isOfAnotherLibrary()
{
    constexpr int depth = 64;
    void* callers[depth];
    const int callerCount = backtrace(callers, depth);
    for (int i = 0; i < callerCount; ++i) {
        Dl_info caller;
        if (dladdr(callers[i], &caller) == 0 || caller.dli_fname == nullptr)
            continue;
        const char* const slash = std::strrchr(caller.dli_fname, '/');
        const char* const file = slash == nullptr ? caller.dli_fname : slash + 1;
        if (std::strncmp(file, "libcrawler", 10) == 0)
            return false;
        // A cell is a value, which the module makes and copies as it does strings.
        if (caller.dli_sname != nullptr && std::strstr(caller.dli_sname, "10vtkVariant") != nullptr)
            return false;
        if (std::strncmp(file, "libvtk", 6) == 0 || std::strncmp(file, "libQt", 5) == 0)
            return true;
    }
    return false;
}

bool isDue()
{
    if (untilFailure == 0 && !failing)
        return false;
    if (isOfAnotherLibrary()) {
        ++ofOtherLibraries;
        return false;
    }
    if (failing)
        return true;
    if (--untilFailure != 0)
        return false;
    failed = true;
    failing = kind == doubles::Shortage::Lasting;
    return true;
}

void* allocate(std::size_t size) noexcept
{
    ++count;
    if (isDue())
        return nullptr;
    void* const memory = std::malloc(size == 0 ? 1 : size);
    if (memory != nullptr)
        ++live;
    return memory;
}

void* allocateOrThrow(std::size_t size)
{
    if (void* const memory = allocate(size))
        return memory;
    throw std::bad_alloc();
}

void release(void* memory) noexcept
{
    if (memory != nullptr)
        --live;
    std::free(memory);
}

} // namespace

std::size_t doubles::allocations()
{
    return count;
}

std::size_t doubles::liveBlocks()
{
    return live;
}

void doubles::failAllocation(std::size_t number, Shortage shortage)
{
    untilFailure = number;
    kind = shortage;
    failing = false;
    failed = false;
    ofOtherLibraries = 0;
}

bool doubles::endShortage()
{
    untilFailure = 0;
    failing = false;
    return failed;
}

std::size_t doubles::sparedAllocations()
{
    return ofOtherLibraries;
}

void* operator new(std::size_t size)
{
    return allocateOrThrow(size);
}

void* operator new[](std::size_t size)
{
    return allocateOrThrow(size);
}

void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept
{
    return allocate(size);
}

void* operator new[](std::size_t size, const std::nothrow_t& /*tag*/) noexcept
{
    return allocate(size);
}

void operator delete(void* memory) noexcept
{
    release(memory);
}

void operator delete[](void* memory) noexcept
{
    release(memory);
}

void operator delete(void* memory, std::size_t /*size*/) noexcept
{
    release(memory);
}

void operator delete[](void* memory, std::size_t /*size*/) noexcept
{
    release(memory);
}

void operator delete(void* memory, const std::nothrow_t& /*tag*/) noexcept
{
    release(memory);
}

void operator delete[](void* memory, const std::nothrow_t& /*tag*/) noexcept
{
    release(memory);
}
