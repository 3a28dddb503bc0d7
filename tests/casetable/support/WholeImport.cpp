#include "tests/casetable/support/WholeImport.h"

#include <algorithm>
#include <cstddef>
#include <list>
#include <memory>
#include <stdexcept>
#include <string>

#include <boost/make_shared.hpp>

#include <vtkAbstractArray.h>
#include <vtkSmartPointer.h>
#include <vtkStringArray.h>
#include <vtkTable.h>
#include <vtkVariant.h>

#include "casetable/importing/PlainTagValidator.h"
#include "casetable/system/ExitCode.h"
#include "casetable/templates/Matcher.h"
#include "crawler/CrawlerBasicImporterParser.h"
#include "host/AuxFileInfoInterface.h"
#include "host/ExceptionBase.h"
#include "host/ImportLoadContextInterface.h"

namespace casetable {
namespace tests {

namespace {

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
std::auto_ptr<CrawlerImporterParserInterface> makeParser(const Reading& reading)
{
    return std::auto_ptr<CrawlerImporterParserInterface>(reading.makeParser().release());
}
#pragma GCC diagnostic pop

class IdentifierList : public AuxFileIdentifierValidator::IdentifierProviderInterface {
public:
    explicit IdentifierList(const std::vector<AuxFileIdentifier>& identifiers)
        : identifiers_(identifiers)
    {
    }

    std::vector<AuxFileIdentifier> identifiers() const override { return identifiers_; }

private:
    const std::vector<AuxFileIdentifier>& identifiers_;
};

class LoadContext : public ImportLoadContextInterface {
public:
    void setMetadataTable(vtkSmartPointer<vtkTable> table) override { this->table = table; }

    void setAuxFiles(const boost::shared_ptr<AuxFileCollectionInterface>& auxFiles) override
    {
        this->auxFiles = auxFiles;
    }

    vtkSmartPointer<vtkTable> table;
    boost::shared_ptr<AuxFileCollectionInterface> auxFiles;
};

// Overlapping markers in one path stop the whole matching, and the module does not say in which. So
// each path is matched alone, to name it to the user.
[[noreturn]] void failOverlap(const std::list<std::string>& files,
                              const std::vector<MetadataPattern>& patterns,
                              const std::string& reason)
{
    for (const std::string& file : files) {
        CrawlerBasicImporterParser parser;
        parser.appendRawFilePath(file);
        try {
            parser.applyMetadataPatternList(patterns);
        } catch (const std::out_of_range&) {
            throw Failure(ExitCode::ImportFailed, file + ": the markers overlap: " + reason);
        }
    }
    throw Failure(ExitCode::ImportFailed, reason);
}

// Tells why an identifier is not valid. `fresh` must not have been asked isValid(): that keeps the
// syntax names it has judged, also the invalid one, which then passes for valid.
[[noreturn]] void failIdentifier(const AuxFileIdentifierValidator& fresh)
{
    for (const AuxFileIdentifier& identifier : fresh.identifiers()) {
        const ortelo::ValidationResult result =
            fresh.syntaxNameValidator()->validate(identifier.syntaxName);
        if (result.isValid())
            continue;
        const std::string& name = identifier.syntaxName;
        const bool isAsterisks = name.find_first_not_of('*') == std::string::npos && !name.empty();
        throw Failure(ExitCode::ImportFailed,
                      "--aux '" + name + "=" + identifier.tag + "': " + result.errorString() +
                          (isAsterisks ? " Asterisks alone select nothing; '*?' selects every file."
                                       : " It selects none of the matched files."));
    }
    throw Failure(ExitCode::ImportFailed, "--aux: an identifier is not valid");
}

boost::shared_ptr<AuxFileCollectionInterface>
chooseAuxFiles(const MetadataFileCrawler& importer,
               const std::vector<AuxFileIdentifier>& identifiers)
{
    const IdentifierList provider(identifiers);
    const auto tagValidator = boost::make_shared<PlainTagValidator>();
    const auto files = importer.identifiedAuxFiles();
    AuxFileIdentifierValidator validator(provider, files, tagValidator);
    if (!validator.isValid())
        failIdentifier(AuxFileIdentifierValidator(provider, files, tagValidator));
    return validator.auxFiles();
}

// The text of a cell of the importer's table, which writes "NULL" for a number that does not
// convert. No number is written so, and a text is never changed.
std::string cellText(vtkAbstractArray& column, std::size_t row)
{
    const auto index = static_cast<vtkIdType>(row);
    if (auto* const texts = vtkArrayDownCast<vtkStringArray>(&column))
        return texts->GetValue(index);
    std::string text = column.GetVariantValue(index).ToString();
    return text == "NULL" ? std::string() : text;
}

CaseTable makeTable(const LoadContext& context, const MetadataFileCrawler& importer,
                    const std::vector<MetadataPattern>& patterns,
                    const std::vector<AuxFileIdentifier>& identifiers)
{
    CaseTable table;
    table.patterns = patterns;
    const auto rowCount = static_cast<std::size_t>(context.table->GetNumberOfRows());
    table.cells.resize(rowCount * patterns.size());
    for (vtkIdType column = 0; column < context.table->GetNumberOfColumns(); ++column) {
        vtkAbstractArray& cells = *context.table->GetColumn(column);
        for (std::size_t row = 0; row < rowCount; ++row)
            table.cells[row * patterns.size() + static_cast<std::size_t>(column)] =
                cellText(cells, row);
    }
    table.fileCounts.resize(rowCount);
    for (const auto& file : importer.identifiedAuxFiles())
        ++table.fileCounts[file->caseIndex()];
    table.tags = tagsOf(identifiers);
    table.auxFiles = context.auxFiles;
    return table;
}

} // namespace

WholeImport::WholeImport(FolderCrawler& crawler, const Reading& reading,
                         const std::vector<AuxFileIdentifier>& identifiers)
    : importer_(makeParser(reading))
{
    try {
        importer_.setCrawlResult(crawler.result());
        try {
            importer_.setMetadataPatternList(reading.patterns());
        } catch (const std::out_of_range& failure) {
            failOverlap(importer_.files(), reading.patterns(), failure.what());
        } catch (const MatchError& failure) {
            throw Failure(ExitCode::ImportFailed, failure.what());
        }
        if (importer_.hasCases() && !identifiers.empty())
            importer_.setAuxFilesToLoad(chooseAuxFiles(importer_, identifiers));
        LoadContext context;
        importer_.extract(context);
        table_ = makeTable(context, importer_, reading.patterns(), identifiers);
    } catch (const ortelo::ExceptionBase& failure) {
        throw Failure(ExitCode::ImportFailed, failure.what());
    }
}

} // namespace tests
} // namespace casetable
