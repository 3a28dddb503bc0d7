#ifndef CASETABLE_IMPORTING_READING_H
#define CASETABLE_IMPORTING_READING_H

#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "casetable/templates/TemplateList.h"
#include "crawler/CrawlerImporterParserInterface.h"
#include "crawler/MetadataInfoProviderInterface.h"
#include "crawler/MetadataPattern.h"

namespace casetable {

/// How an import reads paths: by markers or by templates.
class Reading {
public:
    /// Reads the value behind each marker. An import needs at least one.
    explicit Reading(std::vector<MetadataPattern> markers = {}) : patterns_(std::move(markers)) {}

    /// Reads each path by the first template that fits it.
    explicit Reading(TemplateList templates)
        : patterns_(templates.patterns()), templates_(std::move(templates))
    {
    }

    /// The columns, in the form of the importer's pattern list: the markers, or the names of the
    /// templates' columns.
    const std::vector<MetadataPattern>& patterns() const { return patterns_; }

    /// None where paths are read by markers.
    const std::optional<TemplateList>& templates() const { return templates_; }

    /// What `visitor` returns for that by which paths are read: a const TemplateList&, or the
    /// markers as a const std::vector<MetadataPattern>&.
    template <class Visitor> auto visit(const Visitor& visitor) const
    {
        return templates_ ? visitor(*templates_) : visitor(patterns_);
    }

    /// Answers what an import reads from a path, whichever path it is asked about; nothing for one
    /// that it does not match. The answers throw what CrawlerImporterParserInterface throws.
    std::unique_ptr<MetadataInfoProviderInterface> makeValues() const;

    /// A new parser for an importer that is to read paths in this way.
    std::unique_ptr<CrawlerImporterParserInterface> makeParser() const;

private:
    std::vector<MetadataPattern> patterns_;
    std::optional<TemplateList> templates_;
};

} // namespace casetable

#endif
