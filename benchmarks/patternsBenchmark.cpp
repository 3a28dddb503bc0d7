// CrawlerBasicImporterParser::applyMetadataPatternList, for the first time and again; beside it
// the search for the markers alone.

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "benchmarks/Campaign.h"
#include "benchmarks/Host.h"
#include "benchmarks/Measure.h"
#include "crawler/CrawlerBasicImporterParser.h"

namespace {

using campaign::atBothSizes;
using campaign::fileCount;

std::unique_ptr<CrawlerBasicImporterParser> parserWith(const std::vector<std::string>& paths)
{
    auto parser = std::make_unique<CrawlerBasicImporterParser>();
    for (const std::string& path : paths)
        parser->appendRawFilePath(path);
    return parser;
}

std::size_t caseCount(std::size_t files)
{
    return (files + campaign::filesPerCase - 1) / campaign::filesPerCase;
}

void applyFirst(benchmark::State& state, const std::vector<MetadataPattern>& patterns)
{
    const std::vector<std::string> paths = campaign::paths(fileCount(state));
    std::unique_ptr<CrawlerBasicImporterParser> parser;
    for ([[maybe_unused]] auto _ : state) {
        state.PauseTiming();
        parser.reset(); // So that one parser at a time takes memory.
        parser = parserWith(paths);
        state.ResumeTiming();
        parser->applyMetadataPatternList(patterns);
    }
    campaign::expectCount(state, parser->numDefinedCases(), caseCount(paths.size()));
    campaign::reportItems(state, paths.size());
}

// Applies the lists by turns to a parser that knows them both.
void applyAgain(benchmark::State& state, const std::vector<MetadataPattern>& one,
                const std::vector<MetadataPattern>& other, std::size_t expectedCases)
{
    const std::vector<std::string> paths = campaign::paths(fileCount(state));
    const auto parser = parserWith(paths);
    parser->applyMetadataPatternList(other);
    bool isOnesTurn = true;
    for ([[maybe_unused]] auto _ : state) {
        parser->applyMetadataPatternList(isOnesTurn ? one : other);
        isOnesTurn = !isOnesTurn;
    }
    campaign::expectCount(state, parser->numDefinedCases(), expectedCases);
    campaign::reportItems(state, paths.size());
}

void applyNumbers(benchmark::State& state)
{
    applyFirst(state, campaign::patterns());
}

void applyTexts(benchmark::State& state)
{
    applyFirst(state, campaign::textPatterns());
}

// No path has the last marker: every path is searched for all of them, and none joins a case. The
// parser stays as it was, so one serves for every iteration.
void applyUnmatched(benchmark::State& state)
{
    std::vector<MetadataPattern> patterns = campaign::patterns();
    patterns.back().pattern = "point_";
    applyAgain(state, patterns, patterns, 0);
}

// The type of the last marker changes to and fro, which changes no case and hardly the work.
void applyChanged(benchmark::State& state)
{
    std::vector<MetadataPattern> changed = campaign::patterns();
    changed.back().valueType = MetadataPattern::StringValue;
    applyAgain(state, changed, campaign::patterns(), caseCount(fileCount(state)));
}

void findMarkers(benchmark::State& state)
{
    const std::vector<std::string> paths = campaign::paths(fileCount(state));
    const std::vector<MetadataPattern> patterns = campaign::patterns();
    for ([[maybe_unused]] auto _ : state) {
        for (const std::string& path : paths) {
            std::size_t start = 0;
            for (const MetadataPattern& pattern : patterns)
                start = path.find(pattern.pattern, start) + 1;
            benchmark::DoNotOptimize(start);
        }
    }
    campaign::reportItems(state, paths.size());
}

BENCHMARK(applyNumbers)->Apply(atBothSizes);
BENCHMARK(applyTexts)->Apply(atBothSizes);
BENCHMARK(applyUnmatched)->Apply(atBothSizes);
BENCHMARK(applyChanged)->Apply(atBothSizes);
BENCHMARK(findMarkers)->Apply(atBothSizes);

} // namespace

BENCHMARK_MAIN();
