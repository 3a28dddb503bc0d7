#include "crawler/MetadataFileCrawler.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>

#include <boost/format.hpp>
#include <boost/lexical_cast/try_lexical_convert.hpp>

#include <vtkSmartPointer.h>
#include <vtkStdString.h>
#include <vtkStringArray.h>
#include <vtkTable.h>
#include <vtkType.h>
#include <vtkVariant.h>
#include <vtkVariantArray.h>

#include "host/AuxFileCollectionInterface.h"
#include "host/AuxFileInfoInterface.h"
#include "host/ExceptionBase.h"
#include "host/FileInfoInterface.h"
#include "host/ImportLoadContextInterface.h"
#include "host/SignalConnectionCollection.h"

namespace {

// The texts of special values. Cells use "NULL" alone; the others complete the vocabulary.
const std::string nullText = "NULL";
const std::string nanText = "NaN";
const std::string infText = "inf";
const std::string minusInfText = "-inf";
const std::string infinityText = "infinity";
const std::string minusInfinityText = "-infinity";
const std::string quietNanText = "1.#QNAN";

const vtkVariant nullVariant{vtkStdString(nullText)};
const vtkVariant nanVariant{vtkStdString(nanText)};

std::string uniqueColumnName(const std::string& base, vtkTable& table)
{
    std::string candidate = base;
    for (std::uint64_t counter = 2; table.GetColumnByName(candidate.c_str()) != nullptr; ++counter)
        candidate = (boost::format("%1%(%2%)") % base % counter).str();
    return candidate;
}

vtkVariant makeCaseCell(const std::string& text, MetadataPattern::ValueType valueType)
{
    if (valueType == MetadataPattern::NumberValue) {
        // Checked, not converted: the cell keeps the text.
        double number = 0;
        if (!boost::conversion::try_lexical_convert(text, number))
            return nullVariant;
    }
    return vtkVariant(vtkVariant(text.c_str()), VTK_STRING);
}

vtkSmartPointer<vtkAbstractArray> makeColumn(MetadataPattern::ValueType valueType)
{
    if (valueType == MetadataPattern::StringValue)
        return vtkSmartPointer<vtkStringArray>::New();
    return vtkSmartPointer<vtkVariantArray>::New();
}

// The parser is asked for its number of cases once per column here and once before each row below:
// a host's own parser relies on it. Both work on a copy of the patterns, so that nothing that the
// parser calls back can change the list under way.
void addCaseColumns(
    const CrawlerImporterParserInterface& parser,
    std::vector<MetadataPattern> patterns, // NOLINT(performance-unnecessary-value-param)
    vtkTable& table)
{
    for (const MetadataPattern& pattern : patterns) {
        const vtkSmartPointer<vtkAbstractArray> column = makeColumn(pattern.valueType);
        column->SetNumberOfComponents(1);
        column->SetNumberOfTuples(static_cast<vtkIdType>(parser.numDefinedCases()));
        column->SetName(uniqueColumnName(pattern.pattern, table).c_str());
        table.AddColumn(column);
    }
}

void addCaseRows(const CrawlerImporterParserInterface& parser,
                 std::vector<MetadataPattern> patterns, vtkTable& table)
{
    for (std::size_t row = 0; row < parser.numDefinedCases(); ++row) {
        const auto values = vtkSmartPointer<vtkVariantArray>::New();
        for (std::size_t j = 0; j < patterns.size(); ++j)
            values->InsertNextValue(
                makeCaseCell(parser.caseMetadataSValue(row, j), patterns[j].valueType));
        table.SetRow(static_cast<vtkIdType>(row), values);
    }
}

} // namespace

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"

struct MetadataFileCrawler::Impl {
    explicit Impl(std::auto_ptr<CrawlerImporterParserInterface> ownParser)
        : parser(ownParser.release())
    {
    }

    // Destroyed in reverse order: the parser goes last.
    boost::shared_ptr<CrawlerImporterParserInterface> parser;
    std::vector<MetadataPattern> patterns;
    boost::shared_ptr<AuxFileCollectionInterface> auxFilesToLoad;
    SignalConnectionCollection signalConnections;
    FolderCrawler::Result crawlResult;
};

MetadataFileCrawler::MetadataFileCrawler(std::auto_ptr<CrawlerImporterParserInterface> parser)
    : impl_(new Impl(parser))
{
}

#pragma GCC diagnostic pop

MetadataFileCrawler::~MetadataFileCrawler() = default;

void MetadataFileCrawler::setCrawlResult(const FolderCrawler::Result& result)
{
    const boost::shared_ptr<FileInfoInterface const> folder = result.folder;
    if (!folder->exists())
        throw ortelo::ExceptionBase(
            "The specified folder: " + folder->fullPath() + " does not exist.", false);
    if (!folder->isDirectory())
        throw ortelo::ExceptionBase(
            "The specified path: " + folder->fullPath() + " must be a directory.", false);
    if (!folder->isReadable())
        throw ortelo::ExceptionBase(
            "The specified path: " + folder->fullPath() + " is not readable.", false);

    // Copied whole before anything changes, so that running out of memory here changes nothing.
    FolderCrawler::Result accepted = result;
    impl_->crawlResult.folder.swap(accepted.folder);
    impl_->crawlResult.files.swap(accepted.files);
    impl_->crawlResult.errorString.swap(accepted.errorString);
    const boost::shared_ptr<CrawlerImporterParserInterface> parser = impl_->parser;
    for (const std::string& path : impl_->crawlResult.files)
        parser->appendRawFilePath(path);
}

boost::shared_ptr<FileInfoInterface const> MetadataFileCrawler::folder() const
{
    return impl_->crawlResult.folder;
}

const std::list<std::string>& MetadataFileCrawler::files() const
{
    return impl_->crawlResult.files;
}

void MetadataFileCrawler::setMetadataPatternList(const std::vector<MetadataPattern>& patterns)
{
    impl_->patterns = patterns;
    impl_->parser->applyMetadataPatternList(patterns);
}

bool MetadataFileCrawler::hasCases() const
{
    return impl_->parser->numDefinedCases() != 0;
}

std::vector<boost::shared_ptr<AuxFileInfoInterface>> MetadataFileCrawler::identifiedAuxFiles() const
{
    auto files = impl_->parser->crawlerFilePathList();
    files.erase(std::remove_if(files.begin(), files.end(),
                               [](const auto& file) { return !file->isMatched(); }),
                files.end());
    return files;
}

void MetadataFileCrawler::setAuxFilesToLoad(boost::shared_ptr<AuxFileCollectionInterface> auxFiles)
{
    impl_->auxFilesToLoad = std::move(auxFiles);
}

void MetadataFileCrawler::extract(ImportLoadContextInterface& context)
{
    if (!impl_->crawlResult.folder)
        throw ortelo::ExceptionBase("Folder name not specified.", false);

    const auto table = vtkSmartPointer<vtkTable>::New();
    if (impl_->parser->numDefinedCases() != 0) {
        addCaseColumns(*impl_->parser, impl_->patterns, *table);
        addCaseRows(*impl_->parser, impl_->patterns, *table);
    }
    context.setMetadataTable(table);
    context.setAuxFiles(impl_->auxFilesToLoad);
}

std::vector<MetadataInfo> MetadataFileCrawler::metadataInfoList(const std::string& name) const
{
    return impl_->parser->metadataInfoList(name);
}
