// The walk, over a tree in memory and over the same tree on the file system; beside it what only
// lists that tree. The file system's caches are warm.

#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <list>
#include <map>
#include <memory>
#include <string>
#include <system_error>
#include <vector>

#include <ftw.h>
#include <sys/stat.h>

#include <boost/shared_ptr.hpp>

#include "benchmarks/Campaign.h"
#include "benchmarks/Measure.h"
#include "benchmarks/MemoryTree.h"
#include "casetable/listing/FileSystem.h"
#include "crawler/FolderCrawler.h"

namespace {

using campaign::atBothSizes;
using campaign::fileCount;

// The campaign's tree below a temporary folder that goes away with the object.
class TemporaryTree {
public:
    explicit TemporaryTree(std::size_t count) : TemporaryTree()
    {
        campaign::makeTree(root(), count);
    }
    TemporaryTree(const TemporaryTree&) = delete;
    TemporaryTree& operator=(const TemporaryTree&) = delete;
    ~TemporaryTree()
    {
        std::error_code ignored;
        std::filesystem::remove_all(folder_, ignored);
    }

    std::string root() const { return folder_ / "campaign"; }

private:
    // On its own, so that the folder goes away also when the tree cannot be made.
    TemporaryTree()
    {
        std::string folder = std::filesystem::temp_directory_path() / "walkBenchmark-XXXXXX";
        if (::mkdtemp(folder.data()) == nullptr)
            throw std::system_error(errno, std::generic_category(), folder);
        folder_ = folder;
    }

    std::filesystem::path folder_;
};

// The tree of `count` files, made once in a run of the program.
std::string treeRoot(std::size_t count)
{
    static std::map<std::size_t, TemporaryTree> trees;
    return trees.try_emplace(count, count).first->second.root();
}

void walk(benchmark::State& state, const boost::shared_ptr<FileInfoInterface const>& root)
{
    std::unique_ptr<FolderCrawler> crawler;
    for ([[maybe_unused]] auto _ : state) {
        state.PauseTiming();
        crawler = std::make_unique<FolderCrawler>(root);
        state.ResumeTiming();
        crawler->start();
        crawler->wait();
    }
    campaign::expectCount(state, crawler->result().files.size(), fileCount(state));
    campaign::reportItems(state, fileCount(state));
}

void walkInMemory(benchmark::State& state)
{
    walk(state, campaign::memoryTree(campaign::paths(fileCount(state))));
}

void walkFileSystem(benchmark::State& state)
{
    casetable::FileSystem fileSystem;
    walk(state, casetable::fileSystemRoot(fileSystem, treeRoot(fileCount(state))));
}

// nftw() has no room for an argument of its caller's.
std::list<std::string> filesSeen;

int noteFile(const char* path, const struct stat* /*status*/, int type, FTW* /*position*/)
{
    if (type == FTW_F)
        filesSeen.emplace_back(path);
    return 0;
}

void listWithNftw(benchmark::State& state)
{
    const std::string root = treeRoot(fileCount(state));
    for ([[maybe_unused]] auto _ : state) {
        state.PauseTiming();
        filesSeen.clear();
        state.ResumeTiming();
        ::nftw(root.c_str(), noteFile, 64, FTW_PHYS);
    }
    campaign::expectCount(state, filesSeen.size(), fileCount(state));
    filesSeen.clear();
    campaign::reportItems(state, fileCount(state));
}

void listWithDirectoryIterator(benchmark::State& state)
{
    const std::string root = treeRoot(fileCount(state));
    std::list<std::string> files;
    for ([[maybe_unused]] auto _ : state) {
        state.PauseTiming();
        files.clear();
        state.ResumeTiming();
        for (const auto& entry : std::filesystem::recursive_directory_iterator(root)) {
            if (entry.is_regular_file())
                files.push_back(entry.path().native());
        }
    }
    campaign::expectCount(state, files.size(), fileCount(state));
    campaign::reportItems(state, fileCount(state));
}

// The crawler has a thread of its own, so wall-clock time and the whole process's CPU time count.
BENCHMARK(walkInMemory)->Apply(atBothSizes)->MeasureProcessCPUTime()->UseRealTime();
BENCHMARK(walkFileSystem)->Apply(atBothSizes)->MeasureProcessCPUTime()->UseRealTime();
BENCHMARK(listWithNftw)->Apply(atBothSizes)->MeasureProcessCPUTime()->UseRealTime();
BENCHMARK(listWithDirectoryIterator)->Apply(atBothSizes)->MeasureProcessCPUTime()->UseRealTime();

} // namespace

BENCHMARK_MAIN();
