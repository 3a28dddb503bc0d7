#ifndef TESTS_WINDOW_KEPT_H
#define TESTS_WINDOW_KEPT_H

#include <atomic>
#include <memory>
#include <string>
#include <vector>

#include "window/model/Files.h"
#include "window/model/Matching.h"

namespace casetable {
namespace tests {

/// A flag that cancels nothing.
inline const std::atomic<bool>& notCancelled()
{
    static const std::atomic<bool> flag(false);
    return flag;
}

/// The paths as kept files, a few in each shard, in byte order.
inline Files filesOf(const std::vector<std::string>& paths, std::size_t shardSize = 3)
{
    Files::Shards shards;
    ShardCutter cutter({shardSize, 1 << 20}, [&shards](Shard shard) {
        shards.push_back(std::make_shared<const Shard>(std::move(shard)));
    });
    for (const std::string& path : paths)
        cutter.take(path);
    cutter.finish();
    return Files(std::move(shards)).inByteOrder();
}

inline std::vector<std::string> pathsOf(const Files& files)
{
    std::vector<std::string> paths;
    for (std::size_t i = 0; i < files.count(); ++i)
        paths.emplace_back(files.path(i));
    return paths;
}

inline std::shared_ptr<const Matching> matched(const std::vector<std::string>& paths,
                                               const std::vector<std::string>& templates,
                                               const std::vector<Setup::AuxRow>& rows = {})
{
    return matchFiles(filesOf(paths), Reading(TemplateList(templates)), rows, "root", 2,
                      notCancelled());
}

} // namespace tests
} // namespace casetable

#endif
