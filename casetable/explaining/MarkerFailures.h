#ifndef CASETABLE_EXPLAINING_MARKERFAILURES_H
#define CASETABLE_EXPLAINING_MARKERFAILURES_H

#include <array>
#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "casetable/explaining/CountedFiles.h"
#include "crawler/MetadataPattern.h"

namespace casetable {

/// Counts for how many files markers fail, and finds a likely reason.
///
/// Keeps a few paths for each marker and kind of file, which is the ending of its name, however
/// many files are counted. Of very many endings, all but the 256 shortest count as one. Used by one
/// thread at a time.
class MarkerFailures {
public:
    /// `patterns` is not empty and must outlive it.
    explicit MarkerFailures(const std::vector<MetadataPattern>& patterns);

    /// Counts a file that the patterns match. Each file is counted once, here or below, in any
    /// order.
    void countMatched(const std::string& path);

    /// Counts a file that they do not match.
    void countUnmatched(const std::string& path);

    /// Counts also the files of `other`, which has the same patterns and other files. In which
    /// order files are counted and merged makes no difference.
    void merge(MarkerFailures&& other);

    /// Writes what was counted; read() of another object with the same patterns, which has counted
    /// nothing, takes that over. Throws BrokenBytes where the bytes cannot be that.
    void write(ByteWriter& writer) const;
    void read(ByteReader& reader);

    /// One line that says for how many files each marker was the first that failed, the highest
    /// number first; empty where there are none.
    std::string summary() const;

    /// One line with a likely reason why the marker that summary() names first failed; empty where
    /// none is likely. `root` is the root folder as the user named it.
    std::string likelyReason(const std::string& root) const;

private:
    // The files for which one marker was the first that failed.
    struct Failed {
        std::array<CountedFiles, 4> byReason; // By MarkerFailure::Reason.

        // The least path in which the marker is not found, but stands otherwise.
        std::optional<std::string> misplaced;

        void addMisplaced(const std::string& path);
        void merge(Failed&& other);
        void write(ByteWriter& writer) const;
        void read(ByteReader& reader);
    };

    // The files whose names have the same ending.
    struct Kind {
        bool isMatched = false;     // Some are matched.
        std::vector<Failed> failed; // One for each marker, or none where no file has failed.

        void merge(Kind&& other);
        void write(ByteWriter& writer) const;
        void read(ByteReader& reader, std::size_t markers);
    };

    struct ShorterFirst {
        using is_transparent = void;
        bool operator()(std::string_view left, std::string_view right) const;
    };

    Kind& kindOf(std::string_view ending);
    std::vector<const Kind*> allKinds() const;
    std::vector<std::size_t> counts() const;
    bool hasMatches() const;
    Failed tellingFiles(std::size_t metadataIndex) const;

    const std::vector<MetadataPattern>* patterns_;
    std::map<std::string, Kind, ShorterFirst> kinds_; // By ending: the shortest, so far.
    Kind others_;                                     // Of all other endings.
};

} // namespace casetable

#endif
