#ifndef CASETABLE_TEMPLATES_TEMPLATEPARSER_H
#define CASETABLE_TEMPLATES_TEMPLATEPARSER_H

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include <boost/shared_ptr.hpp>

#include "casetable/templates/TemplateList.h"
#include "crawler/CrawlerImporterParserInterface.h"

namespace casetable {

/// A parser that reads paths by templates. Paths are worked off in ascending byte order, and cases
/// are numbered from 0 in the order in which their values first appear. The value of a column that
/// a path's template has not, or that is in a part left out, is empty.
///
/// Not copyable. Used by one thread at a time. The records of files may outlive it.
class TemplateParser : public virtual CrawlerImporterParserInterface {
public:
    explicit TemplateParser(const TemplateList& templates);
    TemplateParser(const TemplateParser&) = delete;
    TemplateParser& operator=(const TemplateParser&) = delete;
    ~TemplateParser() override;

    /// Records `path` under exactly its bytes; a path that is already there gets a fresh record,
    /// without metadata, in place of the old one. Leaves the cases as they are.
    void appendRawFilePath(const std::string& path) override;

    /// Forgets every path. The cases of the last application stay until the next one.
    void clearFilePaths() override;

    /// Reads every path by the first template that fits it, and numbers the cases anew. `patterns`
    /// is the patterns() of the templates. An empty list leaves no cases and no metadata, but each
    /// file's matched flag and case index as they were.
    ///
    /// Throws std::invalid_argument for any other list, with nothing changed, and MatchError for
    /// the first path, in byte order, on which the engine gives up; the cases built so far stay,
    /// and the files from there on are unmatched.
    void applyMetadataPatternList(const std::vector<MetadataPattern>& patterns) override;

    /// For a matched path one entry a column. `valuePosition` and `value` are what the column read;
    /// for one that is left out, the place where it would stand, and for one that the path's
    /// template has not, 0. `patternPosition` is the end of the nearest value before it in the
    /// path, or 0: a marker and its length are the marker parser's matter. Empty for a path
    /// that is not recorded or not matched. Reads the path again; throws
    /// MatchError when the engine gives up on that.
    std::vector<MetadataInfo> metadataInfoList(const std::string& name) const override;

    std::size_t numDefinedCases() const override;

    /// The indices are not checked.
    std::string caseMetadataSValue(std::size_t caseIndex, std::size_t metadataIndex) const override;

    /// Every recorded file in ascending byte order of path, unmatched ones included.
    std::vector<boost::shared_ptr<AuxFileInfoInterface>> crawlerFilePathList() const override;

private:
    struct Impl;
    const std::unique_ptr<Impl> impl_;
};

} // namespace casetable

#endif
