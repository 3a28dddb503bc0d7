#ifndef TESTS_SUPPORT_MEMORYFILE_H
#define TESTS_SUPPORT_MEMORYFILE_H

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include <boost/make_shared.hpp>
#include <boost/shared_ptr.hpp>

#include "host/ExceptionBase.h"
#include "host/FileInfoInterface.h"

namespace doubles {

/// What was called, in order; several threads may add to it.
class CallLog {
public:
    void add(const std::string& call)
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        calls_.push_back(call);
    }

    std::vector<std::string> calls() const
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        return calls_;
    }

private:
    mutable std::mutex mutex_;
    std::vector<std::string> calls_;
};

using CallLogPtr = std::shared_ptr<CallLog>;
using Calls = std::vector<std::string>;

/// Runs before a double answers a call; may throw or block.
using Hook = std::function<void(const std::string& call)>;

using FilePtr = boost::shared_ptr<FileInfoInterface const>;

struct MemoryFile;
using MemoryFilePtr = boost::shared_ptr<MemoryFile>;

/// A file or folder of a file system in memory. The members are its answers; tests set them as they
/// need. A call is told to the log and the hook, where there are any, as the path and the
/// operation:
/// "/r/a isFile". Listing with a filter throws: the module asks for every entry.
struct MemoryFile : FileInfoInterface {
    explicit MemoryFile(std::string thePath)
        : path(std::move(thePath)), name(path.substr(path.find_last_of("/\\") + 1))
    {
    }

    std::string path;
    std::string name;
    bool directory = false;
    bool file = false;
    bool readable = true;
    bool present = true;
    std::vector<MemoryFilePtr> children;
    /// Makes the entries anew for each listing, in place of `children`; may throw.
    std::function<std::vector<FilePtr>()> makeEntries;
    CallLogPtr log;
    Hook hook;

    bool isDirectory() const override { return note("isDirectory"), directory; }
    bool isReadable() const override { return note("isReadable"), readable; }
    bool isFile() const override { return note("isFile"), file; }
    bool exists() const override { return note("exists"), present; }
    std::string fullPath() const override { return note("fullPath"), path; }
    std::string fileName() const override { return note("fileName"), name; }
    std::vector<FilePtr> entries(const std::string& filter) const override
    {
        note("entries()");
        if (!filter.empty())
            throw ortelo::ExceptionBase("a filter: " + filter, false);
        if (makeEntries)
            return makeEntries();
        return {children.begin(), children.end()};
    }

private:
    void note(const char* operation) const
    {
        if (!log && !hook)
            return;
        const std::string call = path + " " + operation;
        if (log)
            log->add(call);
        if (hook)
            hook(call);
    }
};

inline MemoryFilePtr memoryFile(const std::string& path)
{
    const auto file = boost::make_shared<MemoryFile>(path);
    file->file = true;
    return file;
}

inline MemoryFilePtr memoryFolder(const std::string& path, std::vector<MemoryFilePtr> children = {})
{
    const auto folder = boost::make_shared<MemoryFile>(path);
    folder->directory = true;
    folder->children = std::move(children);
    return folder;
}

/// A chain of `levels` folders and the file "2/1/0" in the last three. Each is made when the one
/// above is listed, so that no chain of owners as long as the tree is deep has to be torn down.
/// Only the lowest have a name: the paths stay short. `hook` is that of all of them.
inline MemoryFilePtr deepTree(int levels, const Hook& hook = {})
{
    const std::string path = std::to_string(levels);
    const MemoryFilePtr entry = levels == 0 ? memoryFile(path) : memoryFolder(path);
    if (levels > 2)
        entry->name.clear();
    entry->makeEntries = [levels, hook] {
        return std::vector<FilePtr>{deepTree(levels - 1, hook)};
    };
    entry->hook = hook;
    return entry;
}

} // namespace doubles

#endif
