#ifndef CASETABLE_EXPLAINING_TEMPLATEFAILURE_H
#define CASETABLE_EXPLAINING_TEMPLATEFAILURE_H

#include <cstddef>
#include <string>
#include <vector>

#include "casetable/importing/Report.h"
#include "casetable/templates/Matcher.h"
#include "casetable/templates/TemplateList.h"
#include "crawler/MetadataFileCrawler.h"

namespace casetable {

/// Where a template stopped fitting a path.
struct TemplateFailure {
    const Template* pathTemplate;
    Beginning beginning; ///< Of the path, which the template fits.
};

/// Finds out why templates do not fit paths. Refers to the templates; used by one thread at a time.
class TemplateFailures {
public:
    explicit TemplateFailures(const TemplateList& templates);

    /// Of the templates, none of which fits the path: the one of which most elements fit a
    /// beginning of the path; of such, the longest beginning. Throws MatchError.
    TemplateFailure furthest(const std::string& path);

private:
    const TemplateList& templates_;
    std::vector<Matcher> matchers_;
};

/// The element that failed, as it stands in the template, and behind which beginning of the path;
/// or that the path goes on where the template ends. All bytes are as they stand in the path.
std::string failureReason(const TemplateFailure& failure, const std::string& path);

/// A row for each file of the importer that no template fits: the path, the template that came
/// furthest, and why it failed. Refers to the templates. Throws MatchError.
Report unmatchedReport(const MetadataFileCrawler& importer, const TemplateList& templates);

/// One line that says how many files no template fits, and why, for the one of them in which a
/// template came furthest, as far as the engine can tell; empty where there are none.
std::string failureSummary(const MetadataFileCrawler& importer, const TemplateList& templates);

/// An element as it stands in its template.
std::string elementText(const Template& pathTemplate, const TemplateElement& element);

} // namespace casetable

#endif
