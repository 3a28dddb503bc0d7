// Compiles when a host may define TagValidator itself: no public header of the module defines it.

#include "crawler/AuxFileIdentifierValidator.h"
#include "crawler/CrawlerBasicImporterParser.h"
#include "crawler/FolderCrawler.h"
#include "crawler/MetadataFileCrawler.h"
#include "crawler/SyntaxNameFilter.h"

class TagValidator : public virtual ortelo::ValidatorInterface<std::string> {
public:
    ortelo::ValidationResult validate(const std::string& tag) const override
    {
        ortelo::ValidationResult result;
        if (tag.empty())
            result.setErrorString("empty");
        return result;
    }
};

boost::shared_ptr<TagValidator> makeOwnTagValidator();

boost::shared_ptr<TagValidator> makeOwnTagValidator()
{
    return boost::shared_ptr<TagValidator>(new TagValidator);
}
