#include "crawler/MetadataFileCrawler.h"

#include <algorithm>
#include <cstddef>
#include <locale>
#include <new>
#include <string>
#include <utility>

#include <vtkSmartPointer.h>
#include <vtkStdString.h>
#include <vtkStringArray.h>
#include <vtkTable.h>
#include <vtkType.h>
#include <vtkVariant.h>
#include <vtkVariantArray.h>

#include "crawler/private/PathReading.h"
#include "crawler/private/UniqueName.h"
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
    return uniqueName(base, [&table](const std::string& name) {
        return table.GetColumnByName(name.c_str()) != nullptr;
    });
}

vtkVariant makeCaseCell(const std::string& text, MetadataPattern::ValueType valueType)
{
    if (valueType == MetadataPattern::NumberValue) {
        // Checked, not converted: the cell keeps the text.
        double number = 0;
        if (!reading::convertsToNumber(text, number))
            return nullVariant;
    }
    return vtkVariant(text.c_str());
}

// boost::lexical_cast reads numbers as the host's global locale writes them. Asked once for all
// cells: a locale does not change during an extraction.
bool numbersAreClassic()
{
    return std::locale() == std::locale::classic();
}

const char* skipDigits(const char* text)
{
    while (reading::isDigit(*text))
        ++text;
    return text;
}

// Longer numbers may overflow, which only a conversion can tell.
const std::size_t longestPlainNumber = 64;
const std::ptrdiff_t longestPlainExponent = 2; // Without its sign.

// True for the plain forms: a sign, digits with a fraction, an exponent, all so short that nothing
// overflows. Where numbers are classic, boost::lexical_cast<double> accepts
// each of them. Of other texts this says nothing.
bool isPlainNumber(const std::string& text)
{
    if (text.size() > longestPlainNumber)
        return false;
    const char* const begin = text.c_str() + (reading::isSign(text[0]) ? 1 : 0);
    const char* end = skipDigits(begin);
    if (end == begin)
        return false;
    if (*end == '.')
        end = skipDigits(end + 1);
    if (*end == 'e' || *end == 'E') {
        const char* const digits = end + (reading::isSign(end[1]) ? 2 : 1);
        end = skipDigits(digits);
        if (end == digits || end - digits > longestPlainExponent)
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

// A host's own parser may rely on how often it is asked for its number of cases: once for each
// column here, and once before each row below. Both functions take a copy of the patterns, because
// such a parser may call the importer back and give it another list meanwhile.
void addCaseColumns(
    const CrawlerImporterParserInterface& parser,
    std::vector<MetadataPattern> patterns, // NOLINT(performance-unnecessary-value-param)
    vtkTable& table)
{
    for (const MetadataPattern& pattern : patterns) {
        const vtkSmartPointer<vtkAbstractArray> column = makeColumn(pattern.valueType);
        column->SetNumberOfComponents(1);
        column->SetNumberOfTuples(static_cast<vtkIdType>(parser.numDefinedCases()));
        // A column's name ends at its first NUL, so only what stands before that is made unique.
        const std::string base = pattern.pattern.substr(0, pattern.pattern.find('\0'));
        column->SetName(uniqueColumnName(base, table).c_str());
        table.AddColumn(column);
    }
}

// The new cells of a column: of texts or of variants, and the other pointer is null.
struct CaseColumn {
    vtkStdString* texts;
    vtkVariant* variants;
};

// Builds the content in the place of a new cell, which owns nothing yet. An assignment that ran out
// of memory would leave a cell that later frees what it never got.
template <class Content> void buildCell(vtkVariant& cell, const Content& content)
{
    try {
        new (&cell) vtkVariant(content);
    } catch (...) {
        new (&cell) vtkVariant;
        throw;
    }
}

// Puts makeCaseCell(text, valueType) into the column. A text that stays as it is goes there
// directly, without another variant or string on the way.
void setCell(const CaseColumn& column, std::size_t row, const std::string& text,
             MetadataPattern::ValueType valueType, bool acceptPlainNumbers)
{
    const bool staysAsItIs =
        valueType != MetadataPattern::NumberValue || (acceptPlainNumbers && isPlainNumber(text));
    if (column.texts != nullptr && staysAsItIs)
        column.texts[row] = text.c_str();
    else if (column.texts != nullptr)
        column.texts[row] = makeCaseCell(text, valueType).ToString();
    else if (staysAsItIs)
        buildCell(column.variants[row], text.c_str());
    else
        buildCell(column.variants[row], makeCaseCell(text, valueType));
}

std::vector<CaseColumn> caseColumns(vtkTable& table)
{
    std::vector<CaseColumn> columns;
    for (vtkIdType j = 0; j < table.GetNumberOfColumns(); ++j) {
        auto* const texts = vtkStringArray::SafeDownCast(table.GetColumn(j));
        auto* const variants = vtkVariantArray::SafeDownCast(table.GetColumn(j));
        columns.push_back({texts != nullptr ? texts->GetPointer(0) : nullptr,
                           variants != nullptr ? variants->GetPointer(0) : nullptr});
    }
    return columns;
}

void addCaseRows(const CrawlerImporterParserInterface& parser,
                 std::vector<MetadataPattern> patterns, vtkTable& table)
{
    const std::vector<CaseColumn> columns = caseColumns(table);
    const auto rows = static_cast<std::size_t>(table.GetNumberOfRows());
    const bool acceptPlainNumbers = numbersAreClassic();
    for (std::size_t row = 0; row < parser.numDefinedCases(); ++row) {
        // A parser whose number of cases changes under way may have more than there are rows.
        const bool hasRow = row < rows;
        if (columns.size() == patterns.size()) {
            for (std::size_t j = 0; j < patterns.size(); ++j) {
                const std::string text = parser.caseMetadataSValue(row, j);
                if (hasRow)
                    setCell(columns[j], row, text, patterns[j].valueType, acceptPlainNumbers);
            }
            continue;
        }
        // The table has refused a column, so columns and patterns are no longer the same. It
        // decides itself which values of a row it takes.
        const auto values = vtkSmartPointer<vtkVariantArray>::New();
        for (std::size_t j = 0; j < patterns.size(); ++j)
            values->InsertNextValue(
                makeCaseCell(parser.caseMetadataSValue(row, j), patterns[j].valueType));
        if (hasRow)
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
    // Copied whole before the old list goes, so that running out of memory here changes nothing.
    impl_->patterns = std::vector<MetadataPattern>(patterns);
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
