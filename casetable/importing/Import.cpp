#include "casetable/importing/Import.h"

#include <algorithm>
#include <map>
#include <memory>
#include <set>
#include <utility>

#include <QString>

#include <boost/make_shared.hpp>

#include <vtkSmartPointer.h>
#include <vtkTable.h>
#include <vtkVariant.h>

#include "casetable/importing/PlainTagValidator.h"
#include "casetable/system/ExitCode.h"
#include "crawler/CrawlerImporterParserInterface.h"
#include "crawler/FolderCrawler.h"
#include "crawler/MetadataFileCrawler.h"
#include "host/AuxFileInfoInterface.h"
#include "host/ExceptionBase.h"
#include "host/ImportLoadContextInterface.h"

namespace casetable {

namespace {

// The most cases in one table of the module, which takes more memory for each than ours.
const std::size_t batchSize = 10'000;

// Cases that were found already, as a parser from which the module's importer makes its table.
class FoundCases : public virtual CrawlerImporterParserInterface {
public:
    void clear() { values_.clear(); }

    // The key must stay where it is until the next clear().
    void add(std::string_view key) { values_.push_back(CaseKey::values(key)); }

    std::size_t numDefinedCases() const override { return values_.size(); }

    std::string caseMetadataSValue(std::size_t caseIndex, std::size_t metadataIndex) const override
    {
        return std::string(values_[caseIndex][metadataIndex]);
    }

    // It has no files.
    void appendRawFilePath(const std::string& /*path*/) override {}
    void clearFilePaths() override {}
    void applyMetadataPatternList(const std::vector<MetadataPattern>& /*patterns*/) override {}
    std::vector<MetadataInfo> metadataInfoList(const std::string& /*name*/) const override
    {
        return {};
    }
    std::vector<boost::shared_ptr<AuxFileInfoInterface>> crawlerFilePathList() const override
    {
        return {};
    }

private:
    std::vector<std::vector<std::string_view>> values_;
};

class TableContext : public ImportLoadContextInterface {
public:
    void setMetadataTable(vtkSmartPointer<vtkTable> table) override { this->table = table; }
    void setAuxFiles(const boost::shared_ptr<AuxFileCollectionInterface>& /*auxFiles*/) override {}

    vtkSmartPointer<vtkTable> table;
};

class IdentifierList : public AuxFileIdentifierValidator::IdentifierProviderInterface {
public:
    std::vector<AuxFileIdentifier> identifiers() const override { return {}; }
};

// Fails as AuxFileIdentifierValidator::isValid() would on all matched files, where `selectsAny`
// tells of each identifier whether its syntax name selects one.
void checkIdentifiers(const std::vector<AuxFileIdentifier>& identifiers,
                      const std::vector<bool>& selectsAny)
{
    const PlainTagValidator tagValidator;
    bool areValid = true;
    for (std::size_t k = 0; k < identifiers.size(); ++k) {
        const auto& [name, tag] = identifiers[k];
        const bool isEmpty = name.empty() && tag.empty();
        areValid = areValid && (isEmpty || (selectsAny[k] && tagValidator.validate(tag).isValid()));
    }
    if (areValid)
        return;
    const IdentifierList none;
    const AuxFileIdentifierValidator withoutFiles(none, {},
                                                  boost::make_shared<PlainTagValidator>());
    for (std::size_t k = 0; k < identifiers.size(); ++k) {
        if (selectsAny[k])
            continue;
        const std::string& name = identifiers[k].syntaxName;
        const bool isAsterisks = name.find_first_not_of('*') == std::string::npos && !name.empty();
        throw Failure(ExitCode::ImportFailed,
                      "--aux '" + name + "=" + identifiers[k].tag +
                          "': " + withoutFiles.syntaxNameValidator()->validate(name).errorString() +
                          (isAsterisks ? " Asterisks alone select nothing; '*?' selects every file."
                                       : " It selects none of the matched files."));
    }
    throw Failure(ExitCode::ImportFailed, "--aux: an identifier is not valid");
}

// The text of a cell of the importer's table, which writes "NULL" for a number that does not
// convert. No number is written so, and a text is never changed.
std::string cellText(const MetadataPattern& pattern, std::string text)
{
    const bool isNoNumber = pattern.valueType == MetadataPattern::NumberValue && text == "NULL";
    return isNoNumber ? std::string() : std::move(text);
}

void appendCells(vtkTable& table, const std::vector<MetadataPattern>& patterns,
                 std::vector<std::string>& cells)
{
    for (vtkIdType row = 0; row < table.GetNumberOfRows(); ++row) {
        for (std::size_t column = 0; column < patterns.size(); ++column)
            cells.push_back(cellText(
                patterns[column], table.GetValue(row, static_cast<vtkIdType>(column)).ToString()));
    }
}

// Has the module's importer make the cells of the table.
class Extraction {
public:
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
    explicit Extraction(const std::vector<MetadataPattern>& patterns)
        : patterns_(patterns), cases_(new FoundCases),
          importer_(std::auto_ptr<CrawlerImporterParserInterface>(cases_))
    {
        importer_.setMetadataPatternList(patterns);
    }
#pragma GCC diagnostic pop
    Extraction(const Extraction&) = delete;
    Extraction& operator=(const Extraction&) = delete;

    void checkRoot(const boost::shared_ptr<FileInfoInterface const>& root)
    {
        FolderCrawler::Result result;
        result.folder = root;
        try {
            importer_.setCrawlResult(result);
        } catch (const ortelo::ExceptionBase& failure) {
            throw Failure(ExitCode::ImportFailed, failure.what());
        }
    }

    // The root has been checked.
    std::vector<std::string> cells(const std::vector<const Cases::Case*>& cases)
    {
        std::vector<std::string> cells;
        cells.reserve(cases.size() * patterns_.size());
        for (std::size_t begin = 0; begin < cases.size(); begin += batchSize) {
            cases_->clear();
            for (std::size_t i = begin; i < std::min(begin + batchSize, cases.size()); ++i)
                cases_->add(cases[i]->key());
            TableContext context;
            importer_.extract(context);
            appendCells(*context.table, patterns_, cells);
        }
        return cells;
    }

private:
    const std::vector<MetadataPattern>& patterns_;
    FoundCases* const cases_; // The importer's.
    MetadataFileCrawler importer_;
};

// The cases in byte order of their least paths, by which they are numbered.
std::vector<const Cases::Case*> inOrder(const Cases& cases)
{
    std::vector<const Cases::Case*> order;
    order.reserve(cases.size());
    for (const Cases::Case& each : cases)
        order.push_back(&each);
    const auto standsBefore = [](const Cases::Case* left, const Cases::Case* right) {
        return left->leastPath() < right->leastPath();
    };
    // Those of a list in byte order mostly stand so.
    if (!std::is_sorted(order.begin(), order.end(), standsBefore))
        std::sort(order.begin(), order.end(), standsBefore);
    return order;
}

// Gives the files the numbers of their cases, which are `cases` in the order of these.
void numberFiles(const Cases& cases, const std::vector<const Cases::Case*>& order,
                 std::vector<Partial::Files>& parts)
{
    if (parts.empty())
        return;
    std::vector<std::uint32_t> numbers(order.size());
    for (std::uint32_t number = 0; number < order.size(); ++number)
        numbers[static_cast<std::size_t>(order[number] - &cases[0])] = number;
    for (Partial::Files& part : parts) {
        for (Partial::Files::File& file : part.files) {
            if (file.caseIndex != Partial::none)
                file.caseIndex = numbers[file.caseIndex];
        }
    }
}

// A path as the module's validator of identifiers takes it, which reads it as UTF-8.
std::string asText(std::string_view path)
{
    return QString::fromUtf8(path.data(), static_cast<int>(path.size())).toStdString();
}

bool isAscii(std::string_view path)
{
    return std::all_of(path.begin(), path.end(),
                       [](char byte) { return static_cast<unsigned char>(byte) < 0x80; });
}

} // namespace

// The files that were kept, in byte order of path.
class Import::Files {
public:
    using Place = Import::Place;

    // The cases of the files are numbered.
    explicit Files(std::vector<Partial::Files> parts) : parts_(std::move(parts))
    {
        // Mostly no part has paths between those of another.
        std::sort(parts_.begin(), parts_.end(),
                  [](const auto& left, const auto& right) { return left.path(0) < right.path(0); });
        std::size_t count = 0;
        for (const Partial::Files& part : parts_)
            count += part.files.size();
        places_.reserve(count);
        for (std::uint32_t part = 0; part < parts_.size(); ++part) {
            for (std::uint32_t index = 0; index < parts_[part].files.size(); ++index)
                places_.push_back({part, index});
        }
        const auto standsBefore = [this](Place left, Place right) {
            return path(left) < path(right);
        };
        if (!std::is_sorted(places_.begin(), places_.end(), standsBefore))
            std::sort(places_.begin(), places_.end(), standsBefore);
    }

    const std::vector<Place>& places() const { return places_; }
    std::string_view path(Place place) const { return parts_[place.part].path(place.index); }
    const Partial::Files::File& file(Place place) const
    {
        return parts_[place.part].files[place.index];
    }

    // Files whose paths are the same to the module's validator are one file to it, the last of
    // them. Within a shard it has seen to that.
    void keepLastOfSameText()
    {
        std::map<std::string, std::size_t> lastOf; // Of each text of which a path differs.
        const auto eachSelected = [this](const auto& act) {
            for (std::size_t rank = 0; rank < places_.size(); ++rank) {
                const Place place = places_[rank];
                if (file(place).identifier != Partial::none)
                    act(rank, path(place), parts_[place.part].files[place.index].identifier);
            }
        };
        eachSelected([&](std::size_t, std::string_view path, std::uint32_t&) {
            if (isAscii(path))
                return;
            const std::string text = asText(path);
            if (text != path)
                lastOf[text];
        });
        if (lastOf.empty())
            return;
        eachSelected([&](std::size_t rank, std::string_view path, std::uint32_t&) {
            const auto last = lastOf.find(asText(path));
            if (last != lastOf.end())
                last->second = rank;
        });
        eachSelected([&](std::size_t rank, std::string_view path, std::uint32_t& identifier) {
            const auto last = lastOf.find(asText(path));
            if (last != lastOf.end() && last->second != rank)
                identifier = Partial::none;
        });
    }

private:
    std::vector<Partial::Files> parts_;
    std::vector<Place> places_;
};

// The collected files as the module's collection would list them: those of a case under a tag by
// identifier, and then in byte order of path.
class Import::AuxFiles : public AuxFileCollectionInterface {
public:
    AuxFiles(boost::shared_ptr<const Files> files,
             const std::vector<AuxFileIdentifier>& identifiers)
        : files_(std::move(files))
    {
        for (const AuxFileIdentifier& identifier : identifiers)
            tagOf_.push_back(identifier.tag);
        for (const Files::Place place : files_->places()) {
            const std::uint32_t identifier = files_->file(place).identifier;
            if (identifier == Partial::none)
                continue;
            places_.push_back(place);
            tags_.insert(tagOf_[identifier]);
        }
        std::stable_sort(places_.begin(), places_.end(),
                         [this](Files::Place left, Files::Place right) {
                             const Partial::Files::File& a = files_->file(left);
                             const Partial::Files::File& b = files_->file(right);
                             return std::make_pair(a.caseIndex, a.identifier) <
                                    std::make_pair(b.caseIndex, b.identifier);
                         });
    }

    bool isEmpty() const override { return places_.empty(); }
    std::set<std::string> tags() const override { return tags_; }

    std::size_t indexCount() const override
    {
        if (places_.empty())
            return 0;
        return files_->file(places_.back()).caseIndex + std::size_t{1};
    }

    std::vector<std::string> filePaths(std::size_t index, const std::string& tag) const override
    {
        std::vector<std::string> paths;
        auto place = std::lower_bound(places_.begin(), places_.end(), index,
                                      [this](Files::Place each, std::size_t wanted) {
                                          return files_->file(each).caseIndex < wanted;
                                      });
        for (; place != places_.end() && files_->file(*place).caseIndex == index; ++place) {
            if (tagOf_[files_->file(*place).identifier] == tag)
                paths.emplace_back(files_->path(*place));
        }
        return paths;
    }

private:
    boost::shared_ptr<const Files> files_;
    std::vector<std::string> tagOf_; // Each identifier.
    std::vector<Files::Place> places_;
    std::set<std::string> tags_;
};

Import::Import(Partial all, const boost::shared_ptr<FileInfoInterface const>& root,
               const Reading& reading, const std::vector<AuxFileIdentifier>& identifiers,
               const KeptFiles& keptFiles)
    : fileCount_(all.fileCount), matchedCount_(all.matchedCount()),
      isWatchedMatched_(all.isWatchedMatched)
{
    Extraction extraction(reading.patterns());
    extraction.checkRoot(root);
    if (all.matchFailure)
        throw Failure(ExitCode::ImportFailed, all.matchFailure->message);
    const bool hasIdentifiers = !all.cases.empty() && !identifiers.empty();
    if (hasIdentifiers)
        checkIdentifiers(identifiers, all.validIdentifiers);

    table_.patterns = reading.patterns();
    table_.tags = tagsOf(identifiers);
    cases_ = std::move(all.cases);
    const std::vector<const Cases::Case*> order = inOrder(cases_);
    table_.cells = extraction.cells(order);
    table_.fileCounts.reserve(order.size());
    firstFiles_.reserve(order.size());
    for (const Cases::Case* const each : order) {
        table_.fileCounts.push_back(each->fileCount());
        firstFiles_.push_back(each->leastPath());
    }
    numberFiles(cases_, order, all.files);
    const auto files = boost::make_shared<Files>(std::move(all.files));
    if (hasIdentifiers) {
        files->keepLastOfSameText();
        table_.auxFiles = boost::make_shared<AuxFiles>(files, identifiers);
    }
    for (const AuxFileIdentifier& identifier : identifiers)
        tagOf_.push_back(identifier.tag);
    for (const Files::Place place : files->places()) {
        const bool isMatched = files->file(place).caseIndex != Partial::none;
        if (isMatched ? keptFiles.matched : keptFiles.unmatched)
            (isMatched ? matched_ : unmatched_).push_back(place);
    }
    files_ = files;
}

Import::~Import() = default;

FileRows Import::rowsOf(const std::vector<Place>& places) const
{
    FileRows rows;
    rows.count = places.size();
    rows.file = [this, &places](std::size_t index) {
        const Place place = places[index];
        const Partial::Files::File& file = files_->file(place);
        const bool hasTag = file.identifier != Partial::none;
        return FileRow{files_->path(place), file.caseIndex,
                       hasTag ? std::string_view(tagOf_[file.identifier]) : std::string_view()};
    };
    return rows;
}

} // namespace casetable
