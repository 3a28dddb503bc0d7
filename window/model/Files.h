#ifndef WINDOW_MODEL_FILES_H
#define WINDOW_MODEL_FILES_H

#include <cstddef>
#include <memory>
#include <string_view>
#include <vector>

#include "casetable/listing/Shard.h"

namespace casetable {

/// The files of a walk, in shards that are kept: a path takes little more than its bytes.
/// Immutable; copies share the shards, and threads may share one.
class Files {
public:
    using Shards = std::vector<std::shared_ptr<const Shard>>;

    Files() = default;
    explicit Files(Shards shards);

    std::size_t count() const { return ends_.empty() ? 0 : ends_.back(); }

    /// The path of the file at `index`, below count(). It lasts as long as any copy.
    std::string_view path(std::size_t index) const;

    const Shards& shards() const { return shards_; }

    /// The same files, in byte order of path; of equal paths one.
    Files inByteOrder() const;

private:
    Shards shards_;
    std::vector<std::size_t> ends_; // The number of files up to the end of each shard.
};

} // namespace casetable

#endif
