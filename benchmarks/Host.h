#ifndef BENCHMARKS_HOST_H
#define BENCHMARKS_HOST_H

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include <boost/shared_ptr.hpp>

#include <vtkSmartPointer.h>
#include <vtkTable.h>

#include "benchmarks/Campaign.h"
#include "crawler/AuxFileIdentifierValidator.h"
#include "crawler/CrawlerBasicImporterParser.h"
#include "crawler/MetadataFileCrawler.h"
#include "crawler/MetadataPattern.h"
#include "host/AuxFileCollectionInterface.h"
#include "host/ImportLoadContextInterface.h"

/// What a benchmark needs of a host.
namespace campaign {

/// Four text markers that match every path and make the same cases as patterns(); each value ends
/// at a separator or at the next marker. Mach is not among them: in wing C's folders, where its
/// value ends at a marker, what follows the decimal point would be taken for an extension.
inline std::vector<MetadataPattern> textPatterns()
{
    return {{"wing", MetadataPattern::StringValue},
            {"AoA", MetadataPattern::StringValue},
            {"Re", MetadataPattern::StringValue},
            {"run_", MetadataPattern::StringValue}};
}

/// A new importer with the module's own parser, or with another one.
inline std::unique_ptr<MetadataFileCrawler>
makeImporter(std::unique_ptr<CrawlerImporterParserInterface> parser =
                 std::make_unique<CrawlerBasicImporterParser>())
{
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
    return std::make_unique<MetadataFileCrawler>(
        std::auto_ptr<CrawlerImporterParserInterface>(parser.release()));
#pragma GCC diagnostic pop
}

/// Provides the campaign's identifiers, or whatever `list` is set to.
class IdentifierList : public AuxFileIdentifierValidator::IdentifierProviderInterface {
public:
    std::vector<AuxFileIdentifier> identifiers() const override { return list; }

    std::vector<AuxFileIdentifier> list = campaign::identifiers();
};

/// Keeps the table that it is given.
class TableKeeper : public ImportLoadContextInterface {
public:
    void setMetadataTable(vtkSmartPointer<vtkTable> newTable) override { table = newTable; }
    void setAuxFiles(const boost::shared_ptr<AuxFileCollectionInterface>& /*auxFiles*/) override {}

    vtkSmartPointer<vtkTable> table;
};

/// How many files a collection holds.
inline std::size_t recordedFiles(const AuxFileCollectionInterface& collection)
{
    std::size_t count = 0;
    for (std::size_t index = 0; index < collection.indexCount(); ++index) {
        for (const std::string& tag : collection.tags())
            count += collection.filePaths(index, tag).size();
    }
    return count;
}

} // namespace campaign

#endif
