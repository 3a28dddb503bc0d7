#include "casetable/importing/Reading.h"

#include "casetable/templates/TemplateParser.h"
#include "crawler/CrawlerBasicImporterParser.h"

namespace casetable {

std::unique_ptr<CrawlerImporterParserInterface> Reading::makeParser() const
{
    if (templates_)
        return std::make_unique<TemplateParser>(*templates_);
    return std::make_unique<CrawlerBasicImporterParser>();
}

} // namespace casetable
