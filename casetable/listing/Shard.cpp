#include "casetable/listing/Shard.h"

#include <algorithm>
#include <functional>
#include <utility>

#include <boost/make_shared.hpp>

namespace casetable {

namespace {

// Whether `path` leads to a file in `folder`, at any depth.
bool isBelow(std::string_view path, std::string_view folder)
{
    return path.size() > folder.size() && path[folder.size()] == '/' &&
           path.substr(0, folder.size()) == folder;
}

// A folder or a file: the paths that begin with its own. As paths are in byte order, those in a
// folder stand together, and so do those in each folder in it.
class ShardEntry : public FileInfoInterface {
public:
    // The entry to which the paths from `first` to before `last` belong, and whose name they all
    // have at the bytes from `nameBegin` to before `nameEnd`.
    ShardEntry(const std::vector<std::string_view>& paths, std::size_t first, std::size_t last,
               std::size_t nameBegin, std::size_t nameEnd)
        : paths_(paths), first_(first), last_(last), nameBegin_(nameBegin), nameEnd_(nameEnd)
    {
    }

    bool isDirectory() const override { return !isFile(); }
    bool isReadable() const override { return true; }
    bool isFile() const override { return nameEnd_ == paths_[first_].size(); }
    bool exists() const override { return true; }

    std::string fullPath() const override { return std::string(path()); }
    std::string fileName() const override { return std::string(path().substr(nameBegin_)); }

    std::vector<boost::shared_ptr<FileInfoInterface const>>
    entries(const std::string& /*filter*/) const override
    {
        return entriesBehind(nameEnd_ + 1);
    }

protected:
    std::vector<boost::shared_ptr<FileInfoInterface const>> entriesBehind(std::size_t begin) const
    {
        std::vector<boost::shared_ptr<FileInfoInterface const>> entries;
        for (std::size_t first = first_; first < last_;) {
            const std::string_view path = paths_[first];
            const std::size_t end = std::min(path.find('/', begin), path.size());
            const bool isFolder = end < path.size();
            const std::size_t next =
                isFolder ? behindPathsBelow(path.substr(0, end), first) : first + 1;
            entries.emplace_back(boost::make_shared<ShardEntry>(paths_, first, next, begin, end));
            first = next;
        }
        return entries;
    }

private:
    std::string_view path() const { return paths_[first_].substr(0, nameEnd_); }

    // The index behind the paths in `folder`, of which the one at `first` is the first.
    std::size_t behindPathsBelow(std::string_view folder, std::size_t first) const
    {
        const auto at = [this](std::size_t index) {
            return paths_.begin() + static_cast<std::ptrdiff_t>(index);
        };
        const auto behind =
            std::partition_point(at(first), at(last_),
                                 [folder](std::string_view path) { return isBelow(path, folder); });
        return static_cast<std::size_t>(behind - paths_.begin());
    }

    const std::vector<std::string_view>& paths_;
    const std::size_t first_;
    const std::size_t last_;
    const std::size_t nameBegin_;
    const std::size_t nameEnd_;
};

class ShardRoot : public ShardEntry {
public:
    ShardRoot(const std::vector<std::string_view>& paths, std::string name)
        : ShardEntry(paths, 0, paths.size(), 0, 0), name_(std::move(name))
    {
    }

    bool isFile() const override { return false; }
    std::string fullPath() const override { return name_; }
    std::string fileName() const override { return name_; }

    std::vector<boost::shared_ptr<FileInfoInterface const>>
    entries(const std::string& /*filter*/) const override
    {
        return entriesBehind(0);
    }

private:
    const std::string name_;
};

} // namespace

void Shard::append(std::string_view path)
{
    text_ += path;
    ends_.push_back(text_.size());
}

std::string_view Shard::path(std::size_t index) const
{
    const std::size_t begin = index == 0 ? 0 : ends_[index - 1];
    return std::string_view(text_).substr(begin, ends_[index] - begin);
}

std::vector<std::string_view> Shard::paths() const
{
    std::vector<std::string_view> paths;
    paths.reserve(ends_.size());
    std::size_t begin = 0;
    for (const std::size_t end : ends_) {
        paths.push_back(std::string_view(text_).substr(begin, end - begin));
        begin = end;
    }
    const auto isInOrder = [](std::string_view left, std::string_view right) {
        return left < right;
    };
    const auto isOutOfOrder = std::not_fn(isInOrder);
    if (std::adjacent_find(paths.begin(), paths.end(), isOutOfOrder) != paths.end()) {
        std::sort(paths.begin(), paths.end());
        paths.erase(std::unique(paths.begin(), paths.end()), paths.end());
    }
    return paths;
}

ShardCutter::ShardCutter(const ShardSize& size, std::function<void(Shard shard)> give)
    : size_(size), give_(std::move(give))
{
}

void ShardCutter::take(std::string_view path)
{
    shard_.append(path);
    if (shard_.fileCount() >= size_.files || shard_.byteCount() >= size_.bytes)
        give_(std::exchange(shard_, Shard()));
}

void ShardCutter::finish()
{
    if (shard_.fileCount() > 0)
        give_(std::exchange(shard_, Shard()));
}

boost::shared_ptr<FileInfoInterface const> shardRoot(const std::vector<std::string_view>& paths,
                                                     std::string name)
{
    return boost::make_shared<ShardRoot>(paths, std::move(name));
}

} // namespace casetable
