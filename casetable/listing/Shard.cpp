#include "casetable/listing/Shard.h"

#include <algorithm>
#include <functional>
#include <utility>

namespace casetable {

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

} // namespace casetable
