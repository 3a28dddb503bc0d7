// MetadataFileCrawler::extract, with four number and with four text markers; beside it the same
// columns filled by hand. An item is a case here.

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include <vtkSmartPointer.h>
#include <vtkTable.h>

#include "benchmarks/Campaign.h"
#include "benchmarks/Host.h"
#include "benchmarks/Measure.h"
#include "benchmarks/MemoryTree.h"
#include "benchmarks/Peers.h"
#include "crawler/FolderCrawler.h"
#include "crawler/MetadataFileCrawler.h"

namespace {

using Patterns = std::vector<MetadataPattern>;

std::size_t caseCount(const benchmark::State& state)
{
    return static_cast<std::size_t>(state.range(0));
}

std::unique_ptr<MetadataFileCrawler> importerWith(std::size_t cases, const Patterns& patterns)
{
    const std::vector<std::string> paths = campaign::paths(cases * campaign::filesPerCase);
    FolderCrawler::Result result;
    result.folder = campaign::memoryTree({});
    result.files.assign(paths.begin(), paths.end());
    auto importer = campaign::makeImporter();
    importer->setCrawlResult(result);
    importer->setMetadataPatternList(patterns);
    return importer;
}

void extract(benchmark::State& state, const Patterns& patterns)
{
    const auto importer = importerWith(caseCount(state), patterns);
    campaign::TableKeeper context;
    for ([[maybe_unused]] auto _ : state) {
        state.PauseTiming();
        context.table = nullptr;
        state.ResumeTiming();
        importer->extract(context);
    }
    campaign::expectCount(state, static_cast<std::size_t>(context.table->GetNumberOfRows()),
                          caseCount(state));
    campaign::reportItems(state, caseCount(state));
}

void fill(benchmark::State& state, const Patterns& patterns)
{
    campaign::TableKeeper context;
    importerWith(caseCount(state), patterns)->extract(context);
    const std::vector<std::vector<std::string>> texts = campaign::textsOf(*context.table);
    vtkSmartPointer<vtkTable> table;
    for ([[maybe_unused]] auto _ : state) {
        state.PauseTiming();
        table = nullptr;
        state.ResumeTiming();
        table = campaign::fillByHand(texts, patterns);
    }
    if (campaign::textsOf(*table) != texts)
        state.SkipWithError("the tables differ");
    campaign::reportItems(state, caseCount(state));
}

void extractNumbers(benchmark::State& state)
{
    extract(state, campaign::patterns());
}

void extractTexts(benchmark::State& state)
{
    extract(state, campaign::textPatterns());
}

void fillNumbersByHand(benchmark::State& state)
{
    fill(state, campaign::patterns());
}

void fillTextsByHand(benchmark::State& state)
{
    fill(state, campaign::textPatterns());
}

void atBothSizes(benchmark::internal::Benchmark* benchmark)
{
    benchmark->Arg(2'000)->Arg(20'000)->Unit(benchmark::kMillisecond);
}

BENCHMARK(extractNumbers)->Apply(atBothSizes);
BENCHMARK(fillNumbersByHand)->Apply(atBothSizes);
BENCHMARK(extractTexts)->Apply(atBothSizes);
BENCHMARK(fillTextsByHand)->Apply(atBothSizes);

} // namespace

BENCHMARK_MAIN();
