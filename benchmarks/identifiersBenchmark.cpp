// AuxFileIdentifierValidator with the campaign's identifiers over its matched files: building it,
// judging the identifiers, and collecting the files that they select. What the work is compared
// with stands in filterBenchmark.

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include <boost/make_shared.hpp>
#include <boost/shared_ptr.hpp>

#include "benchmarks/Campaign.h"
#include "benchmarks/Host.h"
#include "benchmarks/Measure.h"
#include "casetable/importing/PlainTagValidator.h"
#include "crawler/AuxFileIdentifierValidator.h"
#include "crawler/CrawlerBasicImporterParser.h"
#include "host/AuxFileCollectionInterface.h"
#include "host/AuxFileInfoInterface.h"

namespace {

using campaign::atBothSizes;
using campaign::fileCount;
using Files = std::vector<boost::shared_ptr<AuxFileInfoInterface>>;

// The first `count` files, each with its case; all of them match.
Files matchedFiles(std::size_t count)
{
    CrawlerBasicImporterParser parser;
    for (const std::string& path : campaign::paths(count))
        parser.appendRawFilePath(path);
    parser.applyMetadataPatternList(campaign::patterns());
    return parser.crawlerFilePathList();
}

std::unique_ptr<AuxFileIdentifierValidator> makeValidator(const campaign::IdentifierList& provider,
                                                          const Files& files)
{
    return std::make_unique<AuxFileIdentifierValidator>(
        provider, files, boost::make_shared<casetable::PlainTagValidator>());
}

void construct(benchmark::State& state)
{
    const campaign::IdentifierList provider;
    const Files files = matchedFiles(fileCount(state));
    std::unique_ptr<AuxFileIdentifierValidator> validator;
    for ([[maybe_unused]] auto _ : state) {
        state.PauseTiming();
        validator.reset();
        state.ResumeTiming();
        validator = makeValidator(provider, files);
    }
    campaign::reportItems(state, files.size());
}

void isValid(benchmark::State& state)
{
    campaign::IdentifierList provider;
    const Files files = matchedFiles(fileCount(state));
    const auto validator = makeValidator(provider, files);
    bool valid = false;
    for ([[maybe_unused]] auto _ : state) {
        state.PauseTiming();
        // With nothing to judge the validator forgets the names that it knows to be valid.
        provider.list.clear();
        validator->isValid();
        provider.list = campaign::identifiers();
        state.ResumeTiming();
        valid = validator->isValid();
    }
    campaign::expectCount(state, valid ? 1 : 0, 1);
    campaign::reportItems(state, files.size());
}

// As a host does it: after isValid(), which has judged the names.
void auxFiles(benchmark::State& state)
{
    const campaign::IdentifierList provider;
    const Files files = matchedFiles(fileCount(state));
    const auto validator = makeValidator(provider, files);
    validator->isValid();
    boost::shared_ptr<AuxFileCollectionInterface> collection;
    for ([[maybe_unused]] auto _ : state) {
        state.PauseTiming();
        collection.reset();
        state.ResumeTiming();
        collection = validator->auxFiles();
    }
    campaign::expectCount(state, campaign::recordedFiles(*collection),
                          files.size() / campaign::filesPerCase * 6);
    campaign::reportItems(state, files.size());
}

BENCHMARK(construct)->Apply(atBothSizes);
BENCHMARK(isValid)->Apply(atBothSizes);
BENCHMARK(auxFiles)->Apply(atBothSizes);

} // namespace

BENCHMARK_MAIN();
