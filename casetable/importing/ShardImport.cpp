#include "casetable/importing/ShardImport.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

#include <boost/make_shared.hpp>

#include "casetable/importing/PlainTagValidator.h"
#include "casetable/importing/Reading.h"
#include "casetable/listing/Shard.h"
#include "casetable/templates/Matcher.h"
#include "crawler/CrawlerBasicImporterParser.h"
#include "crawler/MetadataFileCrawler.h"
#include "host/AuxFileCollectionInterface.h"
#include "host/AuxFileInfoInterface.h"

namespace casetable {

namespace {

using Paths = std::vector<std::string_view>;

// An importer, and the parser that it owns, which tells the texts of values.
struct Importer {
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
    explicit Importer(std::unique_ptr<CrawlerImporterParserInterface> own)
        : parser(*own), crawler(std::auto_ptr<CrawlerImporterParserInterface>(own.release()))
    {
    }
#pragma GCC diagnostic pop

    CrawlerImporterParserInterface& parser;
    MetadataFileCrawler crawler;
};

class IdentifierList : public AuxFileIdentifierValidator::IdentifierProviderInterface {
public:
    std::vector<AuxFileIdentifier> identifiers() const override { return list; }

    std::vector<AuxFileIdentifier> list;
};

// Overlapping markers in one path stop the whole matching, and the module does not say in which. So
// each path is matched alone, to name it to the user.
Partial::MatchFailure overlapFailure(const Paths& paths,
                                     const std::vector<MetadataPattern>& patterns,
                                     const std::string& reason)
{
    for (const std::string_view path : paths) {
        CrawlerBasicImporterParser parser;
        parser.appendRawFilePath(std::string(path));
        try {
            parser.applyMetadataPatternList(patterns);
        } catch (const std::out_of_range&) {
            return {std::string(path), std::string(path) + ": the markers overlap: " + reason};
        }
    }
    return {std::string(paths.front()), reason};
}

std::optional<Partial::MatchFailure> match(Importer& importer, const Paths& paths,
                                           const Reading& reading)
{
    // What a crawl through the shard finds is known, and in the order of the walk. So it goes where
    // the importer would put it, without a list and a copy of that on the way.
    std::string file;
    for (const std::string_view path : paths) {
        file = path;
        importer.parser.appendRawFilePath(file);
    }
    try {
        importer.crawler.setMetadataPatternList(reading.patterns());
    } catch (const std::out_of_range& failure) {
        return overlapFailure(paths, reading.patterns(), failure.what());
    } catch (const MatchError& failure) {
        return Partial::MatchFailure{failure.path, failure.what()};
    }
    return std::nullopt;
}

// What the files of a case come to.
struct FoundFiles {
    std::string_view leastPath;
    std::size_t count = 0;
};

// Adds the cases of the parser, of which each has some of the files. They keep their indices.
void addCases(const CrawlerImporterParserInterface& parser, std::size_t valueCount,
              const std::vector<FoundFiles>& files, Cases& cases)
{
    std::string key;
    for (std::size_t index = 0; index < files.size(); ++index) {
        key.clear();
        for (std::size_t k = 0; k < valueCount; ++k)
            CaseKey::append(key, parser.caseMetadataSValue(index, k));
        cases.add(key, files[index].leastPath, files[index].count);
    }
}

// For each of `paths`, the index of the first identifier that selects it, or Partial::none. Each
// identifier is given a tag of its own, so that the module's collection tells them apart.
std::vector<std::uint32_t> selectingIdentifiers(const MetadataFileCrawler& importer,
                                                const Paths& paths,
                                                const std::vector<AuxFileIdentifier>& identifiers,
                                                std::vector<bool>& areValid)
{
    std::vector<std::uint32_t> selecting(paths.size(), Partial::none);
    IdentifierList provider;
    AuxFileIdentifierValidator validator(provider, importer.identifiedAuxFiles(),
                                         boost::make_shared<PlainTagValidator>());
    for (std::size_t k = 0; k < identifiers.size(); ++k) {
        const std::string& name = identifiers[k].syntaxName;
        areValid[k] = validator.syntaxNameValidator()->validate(name).isValid();
        if (areValid[k])
            provider.list.push_back({name, std::to_string(k)});
    }
    const boost::shared_ptr<AuxFileCollectionInterface> selected = validator.auxFiles();
    for (std::size_t index = 0; index < selected->indexCount(); ++index) {
        for (const AuxFileIdentifier& identifier : provider.list) {
            const auto k = static_cast<std::uint32_t>(std::stoul(identifier.tag));
            for (const std::string& path : selected->filePaths(index, identifier.tag)) {
                const auto place = std::lower_bound(paths.begin(), paths.end(), path);
                selecting[static_cast<std::size_t>(place - paths.begin())] = k;
            }
        }
    }
    return selecting;
}

} // namespace

Partial importShard(const Shard& shard, const Reading& reading,
                    const std::vector<AuxFileIdentifier>& identifiers, const KeptFiles& keptFiles,
                    const FileVisitor& visitor)
{
    Partial partial;
    partial.validIdentifiers.resize(identifiers.size());
    const Paths paths = shard.paths();
    partial.fileCount = paths.size();
    Importer importer(reading.makeParser());
    partial.matchFailure = match(importer, paths, reading);
    if (partial.matchFailure)
        return partial;

    Partial::Files kept;
    std::vector<FoundFiles> found(importer.parser.numDefinedCases());
    std::vector<std::uint32_t> selecting;
    if (!identifiers.empty())
        selecting =
            selectingIdentifiers(importer.crawler, paths, identifiers, partial.validIdentifiers);
    // The parser has the paths in the same order. Therefore the first file of a case has its least.
    const auto files = importer.parser.crawlerFilePathList();
    const bool visitsUnmatched =
        visitor.unmatched && (found.empty() || !visitor.unmatchedOnlyWithoutCases);
    for (std::size_t i = 0; i < files.size(); ++i) {
        if (!files[i]->isMatched()) {
            if (visitsUnmatched)
                visitor.unmatched(std::string(paths[i]));
            if (keptFiles.unmatched)
                kept.append(paths[i], Partial::none, Partial::none);
            continue;
        }
        if (visitor.matched)
            visitor.matched(std::string(paths[i]), importer.crawler);
        const std::size_t index = files[i]->caseIndex();
        if (found[index].count++ == 0)
            found[index].leastPath = paths[i];
        partial.isWatchedMatched = partial.isWatchedMatched || paths[i] == keptFiles.watched;
        const std::uint32_t identifier = selecting.empty() ? Partial::none : selecting[i];
        if (keptFiles.matched || identifier != Partial::none)
            kept.append(paths[i], static_cast<std::uint32_t>(index), identifier);
    }
    addCases(importer.parser, reading.patterns().size(), found, partial.cases);
    if (kept.files.empty())
        return partial;
    kept.text.shrink_to_fit();
    kept.files.shrink_to_fit();
    partial.files.push_back(std::move(kept));
    return partial;
}

} // namespace casetable
