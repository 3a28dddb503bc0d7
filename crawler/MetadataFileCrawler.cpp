#include "crawler/MetadataFileCrawler.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <locale>
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
    return vtkVariant(text.c_str());
}

// boost::lexical_cast reads numbers as the host's global locale writes them.
bool numbersAreClassic()
{
    return std::locale() == std::locale::classic();
}

const char* skipDigits(const char* text)
{
    while (*text >= '0' && *text <= '9')
        ++text;
    return text;
}

// True for the plain forms: a sign, digits with a fraction, an exponent of one or two digits, all
// so short that nothing overflows. Where numbers are classic, boost::lexical_cast<double> accepts
// each of them. Of other texts this says nothing.
bool isPlainNumber(const std::string& text)
{
    const std::size_t longestPlainNumber = 64;
    if (text.size() > longestPlainNumber)
        return false;
    const char* const begin = text.c_str() + (text[0] == '-' || text[0] == '+' ? 1 : 0);
    const char* end = skipDigits(begin);
    if (end == begin)
        return false;
    if (*end == '.')
        end = skipDigits(end + 1);
    if (*end == 'e' || *end == 'E') {
        const char* const digits = end + (end[1] == '-' || end[1] == '+' ? 2 : 1);
        end = skipDigits(digits);
        if (end == digits || end > digits + 2)
            return false;
    }
    return end == text.c_str() + text.size();
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

// A column of the table by its kind. Both are empty where the table refused the column, because the
// parser's number of cases changed under way.
struct CaseColumn {
    vtkStringArray* texts;
    vtkVariantArray* variants;
};

// Puts makeCaseCell(text, valueType) into the column, without the detours that the common texts do
// not need.
void setCell(const CaseColumn& column, vtkIdType row, const std::string& text,
             MetadataPattern::ValueType valueType, bool acceptPlainNumbers)
{
    if (column.texts != nullptr)
        column.texts->SetValue(row, text.c_str());
    else if (column.variants != nullptr && acceptPlainNumbers && isPlainNumber(text))
        column.variants->SetValue(row, vtkVariant(text.c_str()));
    else if (column.variants != nullptr)
        column.variants->SetValue(row, makeCaseCell(text, valueType));
}

void addCaseRows(
    const CrawlerImporterParserInterface& parser,
    std::vector<MetadataPattern> patterns, // NOLINT(performance-unnecessary-value-param)
    vtkTable& table)
{
    std::vector<CaseColumn> columns;
    for (std::size_t j = 0; j < patterns.size(); ++j) {
        vtkAbstractArray* const column = table.GetColumn(static_cast<vtkIdType>(j));
        columns.push_back(
            {vtkStringArray::SafeDownCast(column), vtkVariantArray::SafeDownCast(column)});
    }
    const bool acceptPlainNumbers = numbersAreClassic();
    for (std::size_t row = 0; row < parser.numDefinedCases(); ++row) {
        for (std::size_t j = 0; j < patterns.size(); ++j)
            setCell(columns[j], static_cast<vtkIdType>(row), parser.caseMetadataSValue(row, j),
                    patterns[j].valueType, acceptPlainNumbers);
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

    {
        // Copied whole before anything changes, so that running out of memory here changes nothing.
        FolderCrawler::Result accepted = result;
        impl_->crawlResult.folder.swap(accepted.folder);
        impl_->crawlResult.files.swap(accepted.files);
        impl_->crawlResult.errorString.swap(accepted.errorString);
    }
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
