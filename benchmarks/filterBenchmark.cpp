// SyntaxNameFilter::filter and validate over the campaign's paths, for one syntax name each; beside
// them QRegExp alone, over fewer candidates since it is slow: compare the time an item.

#include <cstddef>
#include <string>

#include <QString>
#include <QStringList>

#include "benchmarks/Campaign.h"
#include "benchmarks/Measure.h"
#include "benchmarks/Peers.h"
#include "crawler/SyntaxNameFilter.h"

namespace {

using campaign::atBothSizes;
using campaign::fileCount;

struct Selection {
    std::string syntaxName;
    std::size_t filesPerCase; // How many of a case's files it selects.
};

const Selection selections[] = {{"*.vtu", 4},         {"*probe*.dat", 2}, {"flow.vtu", 1},
                                {"*probe_??.dat", 0}, {"*.[dc]*", 5},     {"*.vtk", 0}};

QStringList candidates(std::size_t count)
{
    QStringList list;
    for (const std::string& path : campaign::paths(count))
        list.append(QString::fromStdString(path));
    return list;
}

std::size_t expectedCount(const benchmark::State& state, const Selection& selection)
{
    return fileCount(state) / campaign::filesPerCase * selection.filesPerCase;
}

void filter(benchmark::State& state, const Selection& selection)
{
    const SyntaxNameFilter filter(candidates(fileCount(state)));
    QStringList selected;
    for ([[maybe_unused]] auto _ : state) {
        state.PauseTiming();
        selected.clear();
        state.ResumeTiming();
        selected = filter.filter(selection.syntaxName);
    }
    campaign::expectCount(state, static_cast<std::size_t>(selected.size()),
                          expectedCount(state, selection));
    campaign::reportItems(state, fileCount(state));
}

void validate(benchmark::State& state, const Selection& selection)
{
    const SyntaxNameFilter filter(candidates(fileCount(state)));
    bool isValid = false;
    for ([[maybe_unused]] auto _ : state)
        isValid = filter.validate(selection.syntaxName).isValid();
    campaign::expectCount(state, isValid ? 1 : 0, selection.filesPerCase == 0 ? 0 : 1);
    campaign::reportItems(state, fileCount(state));
}

void qRegExp(benchmark::State& state, const Selection& selection)
{
    const QStringList list = candidates(fileCount(state));
    std::size_t selected = 0;
    for ([[maybe_unused]] auto _ : state)
        selected = campaign::selectWithQRegExp(selection.syntaxName, list);
    campaign::expectCount(state, selected, expectedCount(state, selection));
    campaign::reportItems(state, fileCount(state));
}

} // namespace

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    for (const Selection& selection : selections) {
        const auto add = [&selection](const std::string& name, auto function) {
            return benchmark::RegisterBenchmark((name + "/" + selection.syntaxName).c_str(),
                                                function, selection);
        };
        add("filter", filter)->Apply(atBothSizes);
        add("validate", validate)->Apply(atBothSizes);
        add("qRegExp", qRegExp)->Arg(2'000)->Unit(benchmark::kMillisecond);
    }
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
}
