#ifndef BENCHMARKS_MEASURE_H
#define BENCHMARKS_MEASURE_H

#include <cstddef>
#include <cstdint>

#include <benchmark/benchmark.h>

namespace campaign {

/// Runs a benchmark at both sizes of the campaign, in files.
inline void atBothSizes(benchmark::internal::Benchmark* benchmark)
{
    benchmark->Arg(20'000)->Arg(200'000)->Unit(benchmark::kMillisecond);
}

/// The number of files that a benchmark was asked for.
inline std::size_t fileCount(const benchmark::State& state)
{
    return static_cast<std::size_t>(state.range(0));
}

/// Reports how many items one iteration works on: as items a second, and as seconds an item.
inline void reportItems(benchmark::State& state, std::size_t count)
{
    const auto items = static_cast<std::int64_t>(count);
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()) * items);
    state.counters["s_per_item"] = benchmark::Counter(
        static_cast<double>(items),
        benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

/// Fails the benchmark when the work done was not the work meant.
inline void expectCount(benchmark::State& state, std::size_t count, std::size_t expected)
{
    if (count != expected)
        state.SkipWithError("unexpected result");
}

} // namespace campaign

#endif
