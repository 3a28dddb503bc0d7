#ifndef CASETABLE_LISTING_SHARD_H
#define CASETABLE_LISTING_SHARD_H

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace casetable {

/// Some of the files below a root, as their paths relative to it, which take little more memory
/// than their bytes.
class Shard {
public:
    /// Adds a file. Components are divided by "/"; none is empty, and no file is the folder of
    /// another.
    void append(std::string_view path);

    /// The number of files, each as often as it was added.
    std::size_t fileCount() const { return ends_.size(); }

    /// The length of all paths together.
    std::size_t byteCount() const { return text_.size(); }

    /// The path of the file that was added at `index`, below fileCount(). It refers to the shard as
    /// it is now.
    std::string_view path(std::size_t index) const;

    /// The paths in byte order, each once. They refer to the shard as it is now.
    std::vector<std::string_view> paths() const;

private:
    std::string text_;              // The paths, without anything between them.
    std::vector<std::size_t> ends_; // Where each ends in the text.
};

/// How large a shard may become: it is full once it has reached either.
struct ShardSize {
    /// An importer takes about a kilobyte for each file. So many fit into a processor's own cache,
    /// and then an import takes little more than half the time.
    std::size_t files = 1'000;
    std::size_t bytes = std::size_t{4} * 1024 * 1024;
};

/// Divides files that come one by one into shards.
class ShardCutter {
public:
    /// `give` takes each shard that is full, and then the last one.
    ShardCutter(const ShardSize& size, std::function<void(Shard shard)> give);

    /// Takes the next file, as Shard::append() does.
    void take(std::string_view path);

    /// There are no more files.
    void finish();

private:
    const ShardSize size_;
    const std::function<void(Shard shard)> give_;
    Shard shard_;
};

} // namespace casetable

#endif
