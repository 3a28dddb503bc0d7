// stages ROOT [--template | [--peers] [--qregexp]]: one import of the campaign below ROOT, as the
// importer's host runs it: the seconds of each stage and what was found, one "name value" a line.
// With --peers also the median seconds of extracting again and of filling the same columns by hand,
// with --qregexp those of selecting the auxiliary files with QRegExp alone, which takes most of a
// minute for 200,000 files. With --template the paths are read by a template instead of by markers.

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include <sys/resource.h>

#include <boost/make_shared.hpp>
#include <boost/shared_ptr.hpp>

#include <QString>
#include <QStringList>

#include "benchmarks/Campaign.h"
#include "benchmarks/Host.h"
#include "benchmarks/Peers.h"
#include "casetable/importing/PlainTagValidator.h"
#include "casetable/importing/Reading.h"
#include "casetable/listing/FileSystem.h"
#include "casetable/listing/ReadAhead.h"
#include "crawler/FolderCrawler.h"
#include "host/AuxFileInfoInterface.h"

namespace {

template <class Act> double seconds(Act act)
{
    const auto start = std::chrono::steady_clock::now();
    act();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

void report(const char* name, double value)
{
    std::printf("%s %.6f\n", name, value);
}

void report(const char* name, std::size_t value)
{
    std::printf("%s %zu\n", name, value);
}

void runImport(const char* root, MetadataFileCrawler& importer,
               const std::vector<MetadataPattern>& patterns, campaign::TableKeeper& context)
{
    const auto ahead = std::make_shared<casetable::ReadAhead>();
    auto crawler = std::make_unique<FolderCrawler>(
        casetable::fileSystemRoot(std::make_shared<casetable::FileSystem>(), root, ahead));

    const double walk = seconds([&] {
        crawler->start();
        crawler->wait();
        ahead->close();
    });
    const double intake = seconds([&] {
        importer.setCrawlResult(crawler->result());
        crawler.reset();
    });
    const double match = seconds([&] { importer.setMetadataPatternList(patterns); });
    const double extract = seconds([&] { importer.extract(context); });
    report("walk", walk);
    report("setCrawlResult", intake);
    report("setMetadataPatternList", match);
    report("extract", extract);
    report("import", walk + intake + match + extract);

    rusage usage = {};
    ::getrusage(RUSAGE_SELF, &usage);
    report("peak_kib", static_cast<std::size_t>(usage.ru_maxrss));
    report("files", importer.files().size());
    report("cases", static_cast<std::size_t>(context.table->GetNumberOfRows()));
    report("again", seconds([&] { importer.setMetadataPatternList(patterns); }));
}

void chooseAuxFiles(const MetadataFileCrawler& importer)
{
    const campaign::IdentifierList provider;
    std::unique_ptr<AuxFileIdentifierValidator> validator;
    report("validator", seconds([&] {
               validator = std::make_unique<AuxFileIdentifierValidator>(
                   provider, importer.identifiedAuxFiles(),
                   boost::make_shared<casetable::PlainTagValidator>());
           }));
    bool valid = false;
    boost::shared_ptr<AuxFileCollectionInterface> collection;
    report("auxFiles", seconds([&] {
               valid = validator->isValid();
               collection = validator->auxFiles();
           }));
    report("valid", std::size_t{valid});
    report("recorded", campaign::recordedFiles(*collection));
}

double median(std::vector<double> values)
{
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

// Alternately, so that neither finds a heap that the other does not.
void compareExtractions(MetadataFileCrawler& importer, campaign::TableKeeper& context)
{
    const auto texts = campaign::textsOf(*context.table);
    const std::vector<MetadataPattern> patterns = campaign::patterns();
    std::vector<double> extractions;
    std::vector<double> fills;
    for (int i = 0; i < 9; ++i) {
        context.table = nullptr;
        extractions.push_back(seconds([&] { importer.extract(context); }));
        context.table = nullptr;
        fills.push_back(seconds([&] { context.table = campaign::fillByHand(texts, patterns); }));
    }
    report("extractAgain", median(extractions));
    report("fillByHand", median(fills));
}

void selectAuxFiles(const MetadataFileCrawler& importer)
{
    QStringList candidates;
    for (const auto& file : importer.identifiedAuxFiles())
        candidates.append(QString::fromStdString(file->filePath()));
    std::size_t selected = 0;
    report("auxFilesWithQRegExp", seconds([&] {
               for (const AuxFileIdentifier& identifier : campaign::identifiers())
                   selected += campaign::selectWithQRegExp(identifier.syntaxName, candidates);
           }));
    report("selected", selected);
}

} // namespace

int main(int argc, char** argv)
{
    if (argc < 2) {
        std::cerr << "usage: stages ROOT [--template | [--peers] [--qregexp]]\n";
        return 2;
    }
    const bool byTemplate = argc == 3 && std::strcmp(argv[2], "--template") == 0;
    const casetable::Reading reading =
        byTemplate ? casetable::Reading(casetable::TemplateList({campaign::pathTemplate}))
                   : casetable::Reading(campaign::patterns());
    const auto importer = campaign::makeImporter(reading.makeParser());
    campaign::TableKeeper context;
    runImport(argv[1], *importer, reading.patterns(), context);
    chooseAuxFiles(*importer);
    for (int i = 2; i < argc; ++i) {
        if (std::strcmp(argv[i], "--peers") == 0)
            compareExtractions(*importer, context);
        else if (std::strcmp(argv[i], "--qregexp") == 0)
            selectAuxFiles(*importer);
    }
}
