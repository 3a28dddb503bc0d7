#ifndef CASETABLE_EXPLAINING_TALLY_H
#define CASETABLE_EXPLAINING_TALLY_H

#include <string>
#include <variant>
#include <vector>

#include "casetable/explaining/MarkerFailures.h"
#include "casetable/explaining/MarkerRemarks.h"
#include "casetable/explaining/TemplateFailure.h"
#include "casetable/explaining/TemplateRemarks.h"
#include "crawler/MetadataInfoProviderInterface.h"
#include "crawler/MetadataPattern.h"

namespace casetable {

class Reading;

/// What is said of the files of an import, whether they are read by markers or by templates. It is
/// given each path once, in any order; and several tallies of different files can be merged, in any
/// order too: all sentences are as if one had been given all files.
///
/// Its memory is bounded, however many files there are: it keeps counts, and a few paths as
/// examples. Where a sentence names an example, that is the least path by bytes of those that it is
/// about. Used by one thread at a time.
class Tally {
public:
    /// Of an import by `reading`, which must have columns and outlive the tally.
    explicit Tally(const Reading& reading);

    /// Counts a file that belongs to a case. Where markers are read, `values` is asked what was
    /// read from the path. Throws what it throws.
    void countMatched(const std::string& path, const MetadataInfoProviderInterface& values);

    /// Counts a file that belongs to no case.
    void countUnmatched(const std::string& path);

    /// Counts also the files of `other`, which is of the same reading and of other files.
    void merge(Tally&& other);

    /// Writes what was counted, for read() in this process or another.
    void write(ByteWriter& writer) const;

    /// Takes over what write() wrote of a tally of the same reading; this one must have counted
    /// nothing. Throws BrokenBytes where the bytes cannot be that.
    void read(ByteReader& reader);

    /// One line that says for how many files the reading failed, and why. There must be some.
    /// `root`, here and below, is the root folder as the user named it.
    std::string whyNoneMatched(const std::string& root) const;

    /// One line with a likely reason why the reading failed for some files; empty where none is
    /// known.
    std::string whySomeFailed(const std::string& root) const;

    /// Remarks on what was probably not meant, one line each: on values that were read by markers,
    /// or on templates and their parts.
    std::vector<std::string> remarks() const;

private:
    // Each has the operations of the tally.
    struct ByMarkers {
        explicit ByMarkers(const std::vector<MetadataPattern>& patterns)
            : matched(patterns), failures(patterns)
        {
        }

        void countMatched(const std::string& path, const MetadataInfoProviderInterface& values);
        void countUnmatched(const std::string& path) { failures.countUnmatched(path); }
        void merge(ByMarkers&& other);
        void write(ByteWriter& writer) const;
        void read(ByteReader& reader);
        std::string whyNoneMatched(const std::string& root) const;
        std::string whySomeFailed(const std::string& root) const;

        MarkerRemarks matched;
        MarkerFailures failures;
    };

    struct ByTemplates {
        explicit ByTemplates(const TemplateList& templates)
            : matched(templates), unfitted(templates)
        {
        }

        void countMatched(const std::string& path, const MetadataInfoProviderInterface& values);
        void countUnmatched(const std::string& path) { unfitted.count(path); }
        void merge(ByTemplates&& other);
        void write(ByteWriter& writer) const;
        void read(ByteReader& reader);
        std::string whyNoneMatched(const std::string& root) const;
        std::string whySomeFailed(const std::string& root) const;

        TemplateRemarks matched;
        UnfittedFiles unfitted;
    };

    using Counts = std::variant<ByMarkers, ByTemplates>;

    static Counts countsFor(const Reading& reading);

    Counts counts_;
};

} // namespace casetable

#endif
