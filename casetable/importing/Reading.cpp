#include "casetable/importing/Reading.h"

#include <string>

#include "casetable/templates/TemplateParser.h"
#include "crawler/CrawlerBasicImporterParser.h"

namespace casetable {

namespace {

// Matches each path alone when it is asked about.
class Values : public virtual MetadataInfoProviderInterface {
public:
    explicit Values(const Reading& reading)
        : patterns_(reading.patterns()), parser_(reading.makeParser())
    {
    }

    std::vector<MetadataInfo> metadataInfoList(const std::string& name) const override
    {
        parser_->clearFilePaths();
        parser_->appendRawFilePath(name);
        parser_->applyMetadataPatternList(patterns_);
        const bool isMatched = parser_->numDefinedCases() != 0;
        return isMatched ? parser_->metadataInfoList(name) : std::vector<MetadataInfo>();
    }

private:
    const std::vector<MetadataPattern> patterns_;
    const std::unique_ptr<CrawlerImporterParserInterface> parser_;
};

} // namespace

std::unique_ptr<MetadataInfoProviderInterface> Reading::makeValues() const
{
    return std::make_unique<Values>(*this);
}

std::unique_ptr<CrawlerImporterParserInterface> Reading::makeParser() const
{
    if (templates_)
        return std::make_unique<TemplateParser>(*templates_);
    return std::make_unique<CrawlerBasicImporterParser>();
}

} // namespace casetable
