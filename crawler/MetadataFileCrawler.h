#ifndef CRAWLER_METADATAFILECRAWLER_H
#define CRAWLER_METADATAFILECRAWLER_H

#include <list>
#include <memory>
#include <string>
#include <vector>

#include <boost/shared_ptr.hpp>

#include "crawler/CrawlerImporterParserInterface.h"
#include "crawler/Export.h"
#include "crawler/FolderCrawler.h"
#include "crawler/MetadataInfoProviderInterface.h"
#include "crawler/MetadataPattern.h"
#include "host/ImporterInterface.h"

class AuxFileCollectionInterface;
class AuxFileInfoInterface;
class FileInfoInterface;

/// The importer: takes in a finished crawl, groups its files into cases and hands the host the case
/// table.
///
/// Call setCrawlResult(), then setMetadataPatternList(), then ask or extract(); after every further
/// crawl result give the pattern list again, since a parser matches only when a list is applied.
/// All operations run on the caller's thread, one at a time. Exceptions of the host's objects and
/// of the parser pass through unchanged.
class CRAWLER_API MetadataFileCrawler : public virtual ImporterInterface,
                                        public virtual MetadataInfoProviderInterface {
public:
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
    /// Takes over `parser` and leaves the argument empty. The parser must be present for every
    /// other operation.
    explicit MetadataFileCrawler(std::auto_ptr<CrawlerImporterParserInterface> parser);
#pragma GCC diagnostic pop
    MetadataFileCrawler(const MetadataFileCrawler&) = delete;
    MetadataFileCrawler& operator=(const MetadataFileCrawler&) = delete;
    ~MetadataFileCrawler() override;

    /// Checks the root folder of `result`, keeps a copy of the result and appends its files to the
    /// parser, beside those of earlier results. The error text is not examined: a partial result is
    /// taken like a complete one. `result.folder` must not be empty.
    ///
    /// Throws ortelo::ExceptionBase, with nothing changed, when the folder
    /// - does not exist: "The specified folder: PATH does not exist.",
    /// - is no directory: "The specified path: PATH must be a directory.",
    /// - is not readable: "The specified path: PATH is not readable.".
    void setCrawlResult(const FolderCrawler::Result& result);

    /// The root folder of the result last accepted, shared; empty before the first.
    boost::shared_ptr<FileInfoInterface const> folder() const;

    /// The files of the result last accepted. The list is owned by the importer and stays the same
    /// object for its life; its content changes with the next accepted result.
    const std::list<std::string>& files() const;

    /// Keeps a copy of `patterns`, also when the parser then throws, and has the parser apply them.
    /// Throws std::bad_alloc, with nothing changed, when there is no memory for the copy.
    void setMetadataPatternList(const std::vector<MetadataPattern>& patterns);

    /// True when the parser defined at least one case.
    bool hasCases() const;

    /// The matched files, in the parser's order; ownership is shared with the parser.
    ///
    /// With CrawlerBasicImporterParser, a file that the last pattern list was not applied to still
    /// counts as matched when the list before matched it, and has its old case index. Those are all
    /// files after an empty list, and after setMetadataPatternList() threw, the file at which it
    /// did and those behind it in byte order of path.
    std::vector<boost::shared_ptr<AuxFileInfoInterface>> identifiedAuxFiles() const;

    /// Keeps the collection that extract() hands on, in place of an earlier one; may be empty.
    void setAuxFilesToLoad(boost::shared_ptr<AuxFileCollectionInterface> auxFiles);

    /// Builds a new case table and gives it to `context`, then the auxiliary files to load.
    ///
    /// The table has one row per case, in case order, and, if there is any case, one column per
    /// pattern, in pattern order: a vtkStringArray for StringValue, a vtkVariantArray otherwise. A
    /// column is named after its marker, with "(2)", "(3)" ... behind it where the name is taken.
    /// Every cell is a string; a number that does not convert to double is "NULL". Numbers are
    /// judged under the global C++ locale: where that writes a decimal comma, 1.5 is none. Names
    /// and texts end at their first NUL; a number with a NUL in it is none.
    ///
    /// Throws ortelo::ExceptionBase ("Folder name not specified.") before the first accepted
    /// result, with the context untouched.
    void extract(ImportLoadContextInterface& context) override;

    /// What the parser answers for `name`: a path relative to the root, as it stands in files().
    std::vector<MetadataInfo> metadataInfoList(const std::string& name) const override;

private:
    struct CRAWLER_LOCAL Impl;
    const std::unique_ptr<Impl> impl_;
};

#endif
