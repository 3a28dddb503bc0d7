#include "casetable/templates/TemplateList.h"

#include <algorithm>

namespace casetable {

namespace {

// Where the column's name stands in its template.
std::size_t positionOf(const std::vector<TemplateElement>& elements, std::size_t column)
{
    for (const TemplateElement& element : elements) {
        if (element.kind == TemplateElement::Kind::Column && element.column == column)
            return element.position + 1;
        const std::size_t inPart = positionOf(element.elements, column);
        if (inPart != std::string::npos)
            return inPart;
    }
    return std::string::npos;
}

} // namespace

TemplateList::TemplateList(const std::vector<std::string>& texts)
{
    for (const std::string& text : texts) {
        Template read(text);
        std::vector<std::size_t> indices;
        for (const TemplateColumn& column : read.columns()) {
            const auto known = std::find_if(
                columns_.begin(), columns_.end(),
                [&column](const TemplateColumn& other) { return other.name == column.name; });
            if (known != columns_.end() && known->isNumber != column.isNumber)
                throw TemplateError(text, positionOf(read.elements(), indices.size()),
                                    "another template has this column as a " +
                                        std::string(known->isNumber ? "number" : "text"));
            indices.push_back(static_cast<std::size_t>(known - columns_.begin()));
            if (known == columns_.end())
                columns_.push_back(column);
        }
        templates_.push_back(std::move(read));
        columnIndices_.push_back(std::move(indices));
    }
}

std::vector<MetadataPattern> TemplateList::patterns() const
{
    std::vector<MetadataPattern> patterns;
    patterns.reserve(columns_.size());
    for (const TemplateColumn& column : columns_)
        patterns.emplace_back(column.name, column.isNumber ? MetadataPattern::NumberValue
                                                           : MetadataPattern::StringValue);
    return patterns;
}

} // namespace casetable
