#include "crawler/CrawlerBasicImporterParser.h"

#include <map>
#include <utility>

#include <boost/make_shared.hpp>

#include "crawler/CrawlerFilePath.h"

struct CrawlerBasicImporterParser::Impl {
    void registerCase(const boost::shared_ptr<CrawlerFilePath>& file);

    std::map<std::string, boost::shared_ptr<CrawlerFilePath>> filePathsByName;
    std::map<std::vector<std::string>, std::vector<boost::shared_ptr<CrawlerFilePath>>>
        filePathsByCase;
    std::vector<std::vector<std::string>> caseKeys;
};

void CrawlerBasicImporterParser::Impl::registerCase(const boost::shared_ptr<CrawlerFilePath>& file)
{
    const std::vector<std::string>& key = file->metadataValues();
    std::vector<boost::shared_ptr<CrawlerFilePath>>& files = filePathsByCase[key];
    if (files.empty()) {
        caseKeys.push_back(key);
        file->setCaseIndex(caseKeys.size() - 1);
    } else {
        file->setCaseIndex(files.front()->caseIndex());
    }
    files.push_back(file);
}

CrawlerBasicImporterParser::CrawlerBasicImporterParser() : impl_(new Impl) {}

CrawlerBasicImporterParser::~CrawlerBasicImporterParser() = default;

void CrawlerBasicImporterParser::appendRawFilePath(const std::string& path)
{
    boost::shared_ptr<CrawlerFilePath> file = boost::make_shared<CrawlerFilePath>(path);
    impl_->filePathsByName[path] = std::move(file);
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

    for (const auto& entry : impl_->filePathsByName) {
        entry.second->applyMetadataPatterns(patterns);
        if (entry.second->isMatched())
            impl_->registerCase(entry.second);
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
