#ifndef CASETABLE_EXPLAINING_TEMPLATEFAILURE_H
#define CASETABLE_EXPLAINING_TEMPLATEFAILURE_H

#include <cstddef>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "casetable/explaining/Unmatched.h"
#include "casetable/system/Bytes.h"
#include "casetable/templates/Matcher.h"
#include "casetable/templates/TemplateList.h"

namespace casetable {

/// How far a template fits a path that it does not fit as a whole.
struct TemplateFailure {
    const Template* pathTemplate; ///< Lives as long as the list that it is in.
    Beginning beginning;          ///< The longest beginning of the path that it fits.
};

/// Finds out why templates do not fit paths. The templates must outlive it; used by one thread at a
/// time.
class TemplateFailures {
public:
    explicit TemplateFailures(const TemplateList& templates);

    /// For a path that no template fits: the template of which the most elements fit a beginning of
    /// it; of equal ones that which fits the longest beginning. Throws MatchError.
    TemplateFailure furthest(const std::string& path);

private:
    const TemplateList& templates_;
    std::vector<Matcher> matchers_;
};

/// The reason why the template does not fit `path`, in half a sentence: which of its elements
/// failed, and behind which beginning of the path; or that the path goes on where the template
/// ends. All bytes are as they stand in the template and the path.
std::string failureReason(const TemplateFailure& failure, const std::string& path);

/// The path, the template that comes furthest in it, and why that one failed. The templates must
/// outlive the rows; making a row throws MatchError.
UnmatchedRows unmatchedRows(const TemplateList& templates);

/// The files that no template fits: how many they are, and a sample of them. Each path is tried
/// with many beginnings of each template to tell why it does not fit, so of many paths only a
/// thousand are kept and tried. Used by one thread at a time.
class UnfittedFiles {
public:
    /// The templates must outlive it.
    explicit UnfittedFiles(const TemplateList& templates) : templates_(&templates) {}

    /// Counts a file that no template fits. Each file is counted once, in any order.
    void count(const std::string& path);

    /// Counts also the files of `other`, which has the same templates and other files. In which
    /// order files are counted and merged makes no difference.
    void merge(UnfittedFiles&& other);

    /// Writes what was counted; read() of another object with the same templates, which has counted
    /// nothing, takes that over. Throws BrokenBytes where the bytes cannot be that.
    void write(ByteWriter& writer) const;
    void read(ByteReader& reader);

    /// One line that says how many files no template fits, and, for one example of them, why, as
    /// far as the engine can tell; empty where there are none. The example is, of the sample, the
    /// file of which a template fits the most elements; of equal ones the least by bytes.
    std::string summary() const;

private:
    void keep(std::size_t hash, std::string path);

    const TemplateList* templates_;
    std::size_t files_ = 0;
    std::set<std::pair<std::size_t, std::string>> sample_; // Paths behind their hashes.
};

/// An element as it stands in its template.
std::string elementText(const Template& pathTemplate, const TemplateElement& element);

} // namespace casetable

#endif
