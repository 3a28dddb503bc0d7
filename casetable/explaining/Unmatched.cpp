#include "casetable/explaining/Unmatched.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "casetable/explaining/TemplateFailure.h"
#include "casetable/importing/Reading.h"
#include "crawler/private/PathReading.h"

namespace casetable {

const std::string otherReading = "; --suggest finds templates, and -t reads by them";

namespace {

using Reason = MarkerFailure::Reason;

// As --unmatched says it.
std::string reasonText(const MarkerFailure& failure, const std::vector<MetadataPattern>& patterns)
{
    switch (failure.reason) {
    case Reason::NotFound:
        return "not found";
    case Reason::OneCharacter:
        return "one character, which is no value here" + otherReading;
    case Reason::NextInside:
        return "'" + patterns[failure.metadataIndex + 1].pattern + "' is found inside it" +
               otherReading;
    case Reason::NoValue:
        break;
    }
    return "no value";
}

} // namespace

MarkerFailure markerFailure(const std::string& path, const std::vector<MetadataPattern>& patterns)
{
    std::vector<std::size_t> positions;
    positions.reserve(patterns.size() + 1);
    if (!reading::locateMarkers(path, patterns, positions))
        return {positions.size(), Reason::NotFound};
    positions.push_back(path.size());
    const auto segment = [&](std::size_t k) {
        return std::string_view(path).substr(positions[k], positions[k + 1] - positions[k]);
    };
    std::size_t k = 0;
    while (k + 1 < patterns.size() &&
           reading::scanValue(segment(k), patterns[k]) != reading::noValue)
        ++k;
    const std::size_t markerLength = patterns[k].pattern.size();
    if (segment(k).size() < markerLength)
        return {k, Reason::NextInside};
    const bool isOne = patterns[k].valueType != MetadataPattern::NumberValue &&
                       reading::lengthWithoutExtensions(segment(k)) == markerLength + 1;
    return {k, isOne ? Reason::OneCharacter : Reason::NoValue};
}

UnmatchedRows unmatchedRows(const std::vector<MetadataPattern>& patterns)
{
    UnmatchedRows rows;
    rows.columns = {{"path", Column::Kind::Text},
                    {"marker", Column::Kind::Text},
                    {"reason", Column::Kind::Text}};
    rows.row = [&patterns](const std::string& path) {
        const MarkerFailure failure = markerFailure(path, patterns);
        Row row;
        row.cells = {path, patterns[failure.metadataIndex].pattern, reasonText(failure, patterns)};
        return row;
    };
    return rows;
}

Report unmatchedReport(FileRows files, const Reading& reading)
{
    UnmatchedRows rows = reading.visit([](const auto& by) { return unmatchedRows(by); });
    Report report;
    report.rowsName = "unmatched";
    report.columns = std::move(rows.columns);
    report.rowCount = files.count;
    report.row = [files = std::move(files), row = std::move(rows.row)](std::size_t index) {
        return row(std::string(files.file(index).path));
    };
    return report;
}

} // namespace casetable
