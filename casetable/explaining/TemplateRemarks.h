#ifndef CASETABLE_EXPLAINING_TEMPLATEREMARKS_H
#define CASETABLE_EXPLAINING_TEMPLATEREMARKS_H

#include <string>
#include <vector>

#include "casetable/system/Bytes.h"
#include "casetable/templates/TemplateList.h"

namespace casetable {

/// Finds what the user has probably not meant with templates: a template that reads no file; an
/// optional part that no file has; an optional part that is left out in files in which a wildcard
/// or a column beside it holds the text that the part begins with.
///
/// Keeps some bytes for each element, however many files are counted. Used by one thread at a time.
class TemplateRemarks {
public:
    /// The templates must outlive it.
    explicit TemplateRemarks(const TemplateList& templates);
    TemplateRemarks(TemplateRemarks&& other) noexcept;
    TemplateRemarks& operator=(TemplateRemarks&& other) noexcept;
    ~TemplateRemarks();

    /// Reads a file that a template fits. Each file is counted once, in any order. Where the engine
    /// gives up on the parts of the template, nothing will be said of these.
    void count(const std::string& path);

    /// Counts also the files of `other`, which has the same templates and other files. In which
    /// order files are counted and merged makes no difference.
    void merge(TemplateRemarks&& other);

    /// Writes what was counted; read() of another object with the same templates, which has counted
    /// nothing, takes that over. Throws BrokenBytes where the bytes cannot be that.
    void write(ByteWriter& writer) const;
    void read(ByteReader& reader);

    /// The remarks, one line each. Where they are on files, with the number of these and the least
    /// path by bytes.
    std::vector<std::string> lines() const;

private:
    class Use;
    std::vector<Use> uses_; // One for each template.
};

} // namespace casetable

#endif
