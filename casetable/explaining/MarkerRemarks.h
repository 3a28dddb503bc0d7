#ifndef CASETABLE_EXPLAINING_MARKERREMARKS_H
#define CASETABLE_EXPLAINING_MARKERREMARKS_H

#include <cstddef>
#include <string>
#include <vector>

#include "casetable/explaining/CountedFiles.h"
#include "crawler/MetadataPattern.h"

namespace casetable {

/// Finds values that were probably meant otherwise: texts that end at a "." though the next marker
/// is farther on; numbers that end at a ",", "." or "p" with digits behind it; and numbers that all
/// begin with a "-" which may be a separator.
///
/// Keeps some bytes for each marker, however many files are counted. Used by one thread at a time.
class MarkerRemarks {
public:
    /// `patterns` must outlive it.
    explicit MarkerRemarks(const std::vector<MetadataPattern>& patterns);

    /// Looks at a file that the patterns match. `infos` are its values, one for each pattern. Each
    /// file is counted once, in any order.
    void count(const std::string& path, const std::vector<MetadataInfo>& infos);

    /// Counts also the files of `other`, which has the same patterns and other files. In which
    /// order files are counted and merged makes no difference.
    void merge(MarkerRemarks&& other);

    /// Writes what was counted; read() of another object with the same patterns, which has counted
    /// nothing, takes that over. Throws BrokenBytes where the bytes cannot be that.
    void write(ByteWriter& writer) const;
    void read(ByteReader& reader);

    /// A remark on each marker of which there are such values, with the number of files and the
    /// least path of them by bytes.
    std::vector<std::string> lines() const;

private:
    // Files in which the value of one marker was probably meant otherwise.
    struct Doubtful {
        CountedFiles files;
        std::string value;  // What is read from the example,
        char behind = '\0'; // and the byte behind that.

        void add(const std::string& path, const MetadataInfo& info);
        void merge(Doubtful&& other);
        void write(ByteWriter& writer) const;
        void read(ByteReader& reader);
        std::string inFiles() const;
    };

    // What the values of one marker are like.
    struct Values {
        Doubtful endEarly;
        Doubtful negative; // With a word in front of the sign.
    };

    const std::vector<MetadataPattern>* patterns_;
    std::vector<Values> values_; // One for each pattern.
    std::size_t files_ = 0;
};

} // namespace casetable

#endif
