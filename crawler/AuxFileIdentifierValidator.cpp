#include "crawler/AuxFileIdentifierValidator.h"

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <map>
#include <set>
#include <stdexcept>
#include <utility>

#include <boost/make_shared.hpp>

#include <QString>
#include <QStringList>

#include "crawler/SyntaxNameFilter.h"
#include "host/AuxFileCollectionInterface.h"
#include "host/AuxFileInfoInterface.h"
#include "host/TagValidator.h"

namespace {

// Remembers the syntax names that it judged valid, so that isValid() followed by auxFiles() matches
// each of them once.
class CachingSyntaxNameFilter : public SyntaxNameFilter {
public:
    explicit CachingSyntaxNameFilter(const QStringList& syntaxes) : SyntaxNameFilter(syntaxes) {}

    ortelo::ValidationResult validate(const std::string& name) const override
    {
        if (cache_.count(name) != 0)
            return ortelo::ValidationResult();
        ortelo::ValidationResult result = SyntaxNameFilter::validate(name);
        if (result.isValid())
            cache_.insert(name);
        return result;
    }

    using SyntaxNameFilter::selectedPositions;

    // Replaces the cache, or leaves it as it is where there is no memory; the old names are not
    // merged.
    void setCache(std::set<std::string> names) { cache_.swap(names); }

private:
    mutable std::set<std::string> cache_;
};

class AuxFileCollection : public virtual AuxFileCollectionInterface {
public:
    void addFile(std::size_t index, const std::string& tag, std::string path)
    {
        auto number = tagNumbers_.find(tag);
        if (number == tagNumbers_.end()) {
            number = tagNumbers_.emplace(tag, nextTagNumber_++).first;
            tags_.insert(tag);
        }
        if (index >= filesPerIndex_.max_size())
            throw std::length_error("case index too large");
        if (index >= filesPerIndex_.size())
            filesPerIndex_.resize(index + 1);
        filesPerIndex_[index][number->second].push_back(std::move(path));
    }

    bool isEmpty() const override { return filesPerIndex_.empty(); }

    std::set<std::string> tags() const override { return tags_; }

    std::vector<std::string> filePaths(std::size_t index, const std::string& tag) const override
    {
        const auto number = tagNumbers_.find(tag);
        if (number == tagNumbers_.end())
            return std::vector<std::string>();
        const auto& filesPerTag = filesPerIndex_[index];
        const auto files = filesPerTag.find(number->second);
        return files == filesPerTag.end() ? std::vector<std::string>() : files->second;
    }

    std::size_t indexCount() const override { return filesPerIndex_.size(); }

private:
    std::set<std::string> tags_;
    std::map<std::string, std::uint32_t> tagNumbers_;
    std::uint32_t nextTagNumber_ = 0;
    std::vector<std::map<std::uint32_t, std::vector<std::string>>> filesPerIndex_;
};

} // namespace

struct AuxFileIdentifierValidator::Impl {
    using FilesByPath = std::map<std::string, boost::shared_ptr<AuxFileInfoInterface>>;

    Impl(const IdentifierProviderInterface& givenProvider,
         std::vector<boost::shared_ptr<AuxFileInfoInterface>> givenFiles,
         boost::shared_ptr<TagValidator> givenTagValidator)
        : provider(givenProvider), auxFiles(std::move(givenFiles)),
          tagValidator(std::move(givenTagValidator))
    {
        QStringList candidates;
        candidates.reserve(static_cast<int>(auxFiles.size()));
        std::vector<FilesByPath::const_iterator> entries;
        entries.reserve(auxFiles.size());
        for (const auto& file : auxFiles) {
            candidates.append(QString::fromStdString(file->filePath()));
            // A file is found again by its path as it comes back from QString, which is another
            // one where the file's own is not UTF-8.
            const auto entry =
                pathMap.emplace_hint(pathMap.end(), candidates.back().toStdString(), nullptr);
            entry->second = file;
            entries.emplace_back(entry);
        }
        fileOfCandidate.reserve(entries.size());
        for (const auto& entry : entries)
            fileOfCandidate.push_back(entry->second);
        syntaxFilter = boost::make_shared<CachingSyntaxNameFilter>(candidates);
    }

    const IdentifierProviderInterface& provider;
    std::vector<boost::shared_ptr<AuxFileInfoInterface>> auxFiles;
    FilesByPath pathMap;
    boost::shared_ptr<TagValidator> tagValidator;
    boost::shared_ptr<CachingSyntaxNameFilter> syntaxFilter;
    // What pathMap holds for each candidate, so that selecting looks nothing up.
    std::vector<boost::shared_ptr<AuxFileInfoInterface>> fileOfCandidate;
};

AuxFileIdentifierValidator::IdentifierProviderInterface::~IdentifierProviderInterface() = default;

AuxFileIdentifierValidator::AuxFileIdentifierValidator(
    const IdentifierProviderInterface& provider,
    std::vector<boost::shared_ptr<AuxFileInfoInterface>> auxFiles,
    boost::shared_ptr<TagValidator> tagValidator)
    : impl_(new Impl(provider, std::move(auxFiles), std::move(tagValidator)))
{
}

AuxFileIdentifierValidator::~AuxFileIdentifierValidator() = default;

bool AuxFileIdentifierValidator::isValid() const
{
    std::set<std::string> visited;
    bool valid = true;
    // By contract the provider is asked twice: whether there is anything, and again for the list.
    if (!impl_->provider.identifiers().empty()) {
        for (const AuxFileIdentifier& identifier : impl_->provider.identifiers()) {
            visited.insert(identifier.syntaxName);
            if (identifier.syntaxName.empty() && identifier.tag.empty())
                continue;
            if (!impl_->tagValidator->validate(identifier.tag).isValid() ||
                !impl_->syntaxFilter->validate(identifier.syntaxName).isValid()) {
                valid = false;
                break;
            }
        }
    }
    // By contract also the names that failed, and those that were never judged.
    impl_->syntaxFilter->setCache(visited);
    return valid;
}

std::vector<AuxFileIdentifier> AuxFileIdentifierValidator::identifiers() const
{
    return impl_->provider.identifiers();
}

boost::shared_ptr<AuxFileCollectionInterface> AuxFileIdentifierValidator::auxFiles()
{
    const auto collection = boost::make_shared<AuxFileCollection>();
    std::set<boost::shared_ptr<AuxFileInfoInterface>> recorded;
    auto next = recorded.end(); // Where the next file belongs if files were made one by one.
    for (const AuxFileIdentifier& identifier : impl_->provider.identifiers()) {
        if (!impl_->tagValidator->validate(identifier.tag).isValid() ||
            !impl_->syntaxFilter->validate(identifier.syntaxName).isValid())
            continue;
        for (const int position : impl_->syntaxFilter->selectedPositions(identifier.syntaxName)) {
            const auto& file = impl_->fileOfCandidate[static_cast<std::size_t>(position)];
            const std::size_t count = recorded.size();
            next = std::next(recorded.insert(next, file));
            if (recorded.size() != count)
                collection->addFile(file->caseIndex(), identifier.tag, file->filePath());
        }
    }
    return collection;
}

boost::shared_ptr<ortelo::ValidatorInterface<std::string>>
AuxFileIdentifierValidator::syntaxNameValidator() const
{
    return impl_->syntaxFilter;
}

boost::shared_ptr<ortelo::ValidatorInterface<std::string>>
AuxFileIdentifierValidator::tagValidator() const
{
    return impl_->tagValidator;
}
