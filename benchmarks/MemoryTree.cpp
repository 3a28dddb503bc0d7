#include "benchmarks/MemoryTree.h"

#include <cstddef>
#include <unordered_map>
#include <utility>

#include <boost/make_shared.hpp>

namespace campaign {

namespace {

using Entries = std::vector<boost::shared_ptr<FileInfoInterface const>>;

// The tests' file in memory, with its log and its hooks, is four times as large, and a walk over it
// takes a third longer. Here the walk is to be measured, not what it walks over.
class File : public FileInfoInterface {
public:
    explicit File(std::string path) : path_(std::move(path)) {}

    bool isDirectory() const override { return false; }
    bool isReadable() const override { return true; }
    bool isFile() const override { return true; }
    bool exists() const override { return true; }
    std::string fullPath() const override { return path_; }
    std::string fileName() const override { return path_.substr(path_.rfind('/') + 1); }
    Entries entries(const std::string& /*filter*/) const override { return Entries(); }

private:
    const std::string path_;
};

class Folder : public File {
public:
    using File::File;

    void add(boost::shared_ptr<FileInfoInterface const> entry)
    {
        entries_.push_back(std::move(entry));
    }

    bool isDirectory() const override { return true; }
    bool isFile() const override { return false; }
    Entries entries(const std::string& /*filter*/) const override { return entries_; }

private:
    Entries entries_;
};

// The folders made so far, by path; the root has the empty path.
using Folders = std::unordered_map<std::string, boost::shared_ptr<Folder>>;

std::string parentPath(const std::string& path)
{
    const std::size_t separator = path.rfind('/');
    return separator == std::string::npos ? std::string() : path.substr(0, separator);
}

Folder& folderAt(const std::string& path, Folders& folders)
{
    const auto known = folders.find(path);
    if (known != folders.end())
        return *known->second;
    const auto folder = boost::make_shared<Folder>(path);
    folders.emplace(path, folder);
    folderAt(parentPath(path), folders).add(folder);
    return *folder;
}

} // namespace

boost::shared_ptr<FileInfoInterface const> memoryTree(const std::vector<std::string>& paths)
{
    const auto root = boost::make_shared<Folder>(std::string());
    Folders folders = {{std::string(), root}};
    for (const std::string& path : paths)
        folderAt(parentPath(path), folders).add(boost::make_shared<File>(path));
    return root;
}

} // namespace campaign
