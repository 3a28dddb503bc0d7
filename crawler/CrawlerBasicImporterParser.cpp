#include "crawler/CrawlerBasicImporterParser.h"

#include <map>
#include <utility>

#include <boost/make_shared.hpp>

#include "crawler/private/CrawlerFilePath.h"

struct CrawlerBasicImporterParser::Impl {
    using FilesOfCases =
        std::map<std::vector<std::string>, std::vector<boost::shared_ptr<CrawlerFilePath>>>;

    FilesOfCases::iterator registerCase(const boost::shared_ptr<CrawlerFilePath>& file,
                                        FilesOfCases::iterator last);
    void giveBackSpareMemory(FilesOfCases::iterator last);

    std::map<std::string, boost::shared_ptr<CrawlerFilePath>> filePathsByName;
    FilesOfCases filePathsByCase;
    std::vector<std::vector<std::string>> caseKeys;
};

// Returns the file's case. `last` is the case of the file registered before, or the end: neighbours
// mostly share their case, and then one comparison finds it.
CrawlerBasicImporterParser::Impl::FilesOfCases::iterator
CrawlerBasicImporterParser::Impl::registerCase(const boost::shared_ptr<CrawlerFilePath>& file,
                                               FilesOfCases::iterator last)
{
    const std::vector<std::string>& key = file->metadataValues();
    auto owner = last;
    if (owner == filePathsByCase.end() || owner->first != key) {
        owner = filePathsByCase.lower_bound(key);
        if (owner == filePathsByCase.end() || owner->first != key)
            owner = filePathsByCase.emplace_hint(owner, key, FilesOfCases::mapped_type());
    }
    std::vector<boost::shared_ptr<CrawlerFilePath>>& files = owner->second;
    if (files.empty()) {
        giveBackSpareMemory(last);
        caseKeys.push_back(key);
        file->setCaseIndex(caseKeys.size() - 1);
    } else {
        file->setCaseIndex(files.front()->caseIndex());
    }
    files.push_back(file);
    return owner;
}

// Called before a new case. The newest case so far then mostly has all its files, so its list gives
// back the memory that it took ahead. An older case does not: it may get its files one by one
// between those of others, and would be copied each time.
void CrawlerBasicImporterParser::Impl::giveBackSpareMemory(FilesOfCases::iterator last)
{
    if (last != filePathsByCase.end() && last->second.front()->caseIndex() + 1 == caseKeys.size())
        last->second.shrink_to_fit();
}

CrawlerBasicImporterParser::CrawlerBasicImporterParser() : impl_(new Impl) {}

CrawlerBasicImporterParser::~CrawlerBasicImporterParser() = default;

void CrawlerBasicImporterParser::appendRawFilePath(const std::string& path)
{
    boost::shared_ptr<CrawlerFilePath> file = boost::make_shared<CrawlerFilePath>(path);
    // The end is where the next path of a sorted walk belongs; from there it costs no search.
    auto& files = impl_->filePathsByName;
    files.emplace_hint(files.end(), path, nullptr)->second = std::move(file);
}

void CrawlerBasicImporterParser::clearFilePaths()
{
    impl_->filePathsByName.clear();
}

void CrawlerBasicImporterParser::applyMetadataPatternList(
    const std::vector<MetadataPattern>& patterns)
{
    for (const auto& entry : impl_->filePathsByName)
        entry.second->clearMetadataInfoList();
    impl_->filePathsByCase.clear();
    impl_->caseKeys.clear();
    if (patterns.empty())
        return;

    auto last = impl_->filePathsByCase.end();
    for (const auto& entry : impl_->filePathsByName) {
        entry.second->applyMetadataPatterns(patterns);
        if (entry.second->isMatched())
            last = impl_->registerCase(entry.second, last);
    }
}

std::vector<MetadataInfo>
CrawlerBasicImporterParser::metadataInfoList(const std::string& name) const
{
    const auto entry = impl_->filePathsByName.find(name);
    return entry == impl_->filePathsByName.end() ? std::vector<MetadataInfo>()
                                                 : entry->second->metadataInfoList();
}

std::size_t CrawlerBasicImporterParser::numDefinedCases() const
{
    return impl_->caseKeys.size();
}

std::string CrawlerBasicImporterParser::caseMetadataSValue(std::size_t caseIndex,
                                                           std::size_t metadataIndex) const
{
    return impl_->caseKeys[caseIndex][metadataIndex];
}

std::vector<boost::shared_ptr<AuxFileInfoInterface>>
CrawlerBasicImporterParser::crawlerFilePathList() const
{
    std::vector<boost::shared_ptr<AuxFileInfoInterface>> files;
    files.reserve(impl_->filePathsByName.size());
    for (const auto& entry : impl_->filePathsByName)
        files.emplace_back(entry.second);
    return files;
}
