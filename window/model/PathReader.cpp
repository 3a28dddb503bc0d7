#include "window/model/PathReader.h"

#include <stdexcept>
#include <utility>

#include "casetable/explaining/TemplateFailure.h"

namespace casetable {

namespace {

// Goes through the elements in the order of their spans, parts before what is in them.
void addPieces(const std::vector<TemplateElement>& elements, const std::vector<Span>& spans,
               const std::vector<std::size_t>& columns, std::size_t& next, bool isInLeftOut,
               std::vector<PathPiece>& pieces)
{
    for (const TemplateElement& element : elements) {
        const Span& span = spans[next++];
        if (element.kind == TemplateElement::Kind::Part) {
            if (span.isLeftOut && !isInLeftOut)
                pieces.push_back({PathPiece::Kind::LeftOut, span.begin, 0, 0});
            addPieces(element.elements, spans, columns, next, isInLeftOut || span.isLeftOut,
                      pieces);
        } else if (!span.isLeftOut && element.kind == TemplateElement::Kind::Column) {
            pieces.push_back(
                {PathPiece::Kind::Value, span.begin, span.length, columns[element.column]});
        } else if (!span.isLeftOut && (element.kind == TemplateElement::Kind::Text ||
                                       element.kind == TemplateElement::Kind::Again)) {
            pieces.push_back({PathPiece::Kind::Quiet, span.begin, span.length, 0});
        }
    }
}

} // namespace

PathReader::PathReader(std::shared_ptr<const Reading> reading)
    : reading_(std::move(reading)), values_(reading_->makeValues())
{
    if (reading_->templates()) {
        for (const Template& each : reading_->templates()->templates())
            matchers_.emplace_back(each);
    }
}

PathRead PathReader::read(const std::string& path)
{
    try {
        return reading_->templates() ? readByTemplates(path, *reading_->templates())
                                     : readByMarkers(path);
    } catch (const MatchError& failure) {
        PathRead read;
        read.reason = failure.reason;
        return read;
    } catch (const std::out_of_range&) {
        PathRead read;
        read.reason = "the markers overlap";
        return read;
    }
}

PathRead PathReader::readByTemplates(const std::string& path, const TemplateList& templates)
{
    PathRead read;
    for (std::size_t i = 0; i < matchers_.size(); ++i) {
        const std::vector<Span> spans = matchers_[i].elementSpans(path);
        if (spans.empty())
            continue;
        read.isMatched = true;
        read.templateIndex = i;
        std::size_t next = 0;
        addPieces(templates.templates()[i].elements(), spans, templates.columnIndices(i), next,
                  false, read.pieces);
        return read;
    }
    const TemplateFailure failure = TemplateFailures(templates).furthest(path);
    read.reason = failureReason(failure, path);
    read.fitting = failure.beginning.end;
    return read;
}

PathRead PathReader::readByMarkers(const std::string& path)
{
    PathRead read;
    const std::vector<MetadataPattern>& patterns = reading_->patterns();
    const std::vector<MetadataInfo> infos = values_->metadataInfoList(path);
    read.isMatched = infos.size() == patterns.size();
    for (std::size_t column = 0; column < infos.size(); ++column) {
        const MetadataInfo& info = infos[column];
        read.pieces.push_back(
            {PathPiece::Kind::Quiet, info.patternPosition, patterns[column].pattern.size(), 0});
        read.pieces.push_back(
            {PathPiece::Kind::Value, info.valuePosition, info.value.size(), column});
    }
    if (!read.isMatched) {
        const MarkerFailure failure = markerFailure(path, patterns);
        const Row row = unmatchedRows(patterns).row(path);
        read.reason = "'" + patterns[failure.metadataIndex].pattern + "': " + row.cells.back();
    }
    return read;
}

} // namespace casetable
