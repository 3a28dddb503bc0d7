#include "window/model/Files.h"

#include <algorithm>
#include <utility>

namespace casetable {

namespace {

std::vector<std::string_view> pathsOf(const Files& files)
{
    std::vector<std::string_view> paths;
    paths.reserve(files.count());
    for (const auto& shard : files.shards()) {
        for (std::size_t i = 0; i < shard->fileCount(); ++i)
            paths.push_back(shard->path(i));
    }
    return paths;
}

} // namespace

Files::Files(Shards shards) : shards_(std::move(shards))
{
    ends_.reserve(shards_.size());
    for (const auto& shard : shards_)
        ends_.push_back(count() + shard->fileCount());
}

std::string_view Files::path(std::size_t index) const
{
    const auto end = std::upper_bound(ends_.begin(), ends_.end(), index);
    const auto shard = static_cast<std::size_t>(end - ends_.begin());
    return shards_[shard]->path(index - (shard == 0 ? 0 : ends_[shard - 1]));
}

Files Files::inByteOrder() const
{
    std::vector<std::string_view> paths = pathsOf(*this);
    const auto isOutOfOrder = [](std::string_view left, std::string_view right) {
        return left >= right;
    };
    if (std::adjacent_find(paths.begin(), paths.end(), isOutOfOrder) == paths.end())
        return *this;
    std::sort(paths.begin(), paths.end());
    paths.erase(std::unique(paths.begin(), paths.end()), paths.end());
    Shards shards;
    ShardCutter cutter(ShardSize(), [&shards](Shard shard) {
        shards.push_back(std::make_shared<const Shard>(std::move(shard)));
    });
    for (const std::string_view path : paths)
        cutter.take(path);
    cutter.finish();
    return Files(std::move(shards));
}

} // namespace casetable
