// MetadataFileCrawler::setCrawlResult, which appends every path to the parser of a new importer;
// beside it a std::map that is filled with the same paths.

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "benchmarks/Campaign.h"
#include "benchmarks/Host.h"
#include "benchmarks/Measure.h"
#include "benchmarks/MemoryTree.h"
#include "crawler/FolderCrawler.h"
#include "crawler/MetadataFileCrawler.h"

namespace {

using campaign::atBothSizes;
using campaign::fileCount;

void setCrawlResult(benchmark::State& state)
{
    const std::vector<std::string> paths = campaign::paths(fileCount(state));
    FolderCrawler::Result result;
    result.folder = campaign::memoryTree({});
    result.files.assign(paths.begin(), paths.end());

    std::unique_ptr<MetadataFileCrawler> importer;
    for ([[maybe_unused]] auto _ : state) {
        state.PauseTiming();
        importer = campaign::makeImporter();
        state.ResumeTiming();
        importer->setCrawlResult(result);
    }
    campaign::expectCount(state, importer->files().size(), paths.size());
    campaign::reportItems(state, paths.size());
}

void fillMap(benchmark::State& state)
{
    const std::vector<std::string> paths = campaign::paths(fileCount(state));
    std::map<std::string, int> map;
    for ([[maybe_unused]] auto _ : state) {
        state.PauseTiming();
        map.clear();
        state.ResumeTiming();
        for (const std::string& path : paths)
            map[path] = 0;
    }
    campaign::expectCount(state, map.size(), paths.size());
    campaign::reportItems(state, paths.size());
}

BENCHMARK(setCrawlResult)->Apply(atBothSizes);
BENCHMARK(fillMap)->Apply(atBothSizes);

} // namespace

BENCHMARK_MAIN();
