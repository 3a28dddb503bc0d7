#ifndef CASETABLE_TEMPLATES_TEMPLATELIST_H
#define CASETABLE_TEMPLATES_TEMPLATELIST_H

#include <cstddef>
#include <string>
#include <vector>

#include "casetable/templates/Template.h"
#include "crawler/MetadataPattern.h"

namespace casetable {

/// Several templates that read one table: each path is read by the first that fits.
///
/// Immutable; threads may share one.
class TemplateList {
public:
    /// Throws TemplateError for the first text that is no template, or that makes a column a number
    /// which another makes a text.
    explicit TemplateList(const std::vector<std::string>& texts);

    const std::vector<Template>& templates() const { return templates_; }

    /// The columns of all templates, in the order in which their names first appear.
    const std::vector<TemplateColumn>& columns() const { return columns_; }

    /// For each column of the template at `index`, its index in columns().
    const std::vector<std::size_t>& columnIndices(std::size_t index) const
    {
        return columnIndices_[index];
    }

    /// The columns as a pattern list: a column's name, and NumberValue for a number.
    std::vector<MetadataPattern> patterns() const;

private:
    std::vector<Template> templates_;
    std::vector<TemplateColumn> columns_;
    std::vector<std::vector<std::size_t>> columnIndices_;
};

} // namespace casetable

#endif
