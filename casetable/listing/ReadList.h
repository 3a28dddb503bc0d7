#ifndef CASETABLE_LISTING_READLIST_H
#define CASETABLE_LISTING_READLIST_H

#include <atomic>
#include <cstddef>
#include <string>

#include <sys/types.h>

#include "casetable/listing/ListReader.h"
#include "casetable/system/Descriptor.h"

namespace casetable {

/// What messages call the list that is read from `file`: "standard input" for "-", else its path.
std::string listName(const std::string& file);

/// The file of a list. Must outlive what reread() returns. Used by one thread at a time.
///
/// All operations throw Failure with ExitCode::ImportFailed and the reason when the system refuses,
/// and Interrupted when a signal has come in, also while they wait for a pipe or a terminal.
class ListFile {
public:
    /// Opens `file`, "-" being standard input.
    explicit ListFile(const std::string& file);

    /// What reads again all that has been read so far; nothing where the file is a pipe, a terminal
    /// or the like.
    ListReader::Reread reread() const;

    /// How many bytes it had from where it is read on when it was opened; 0 where only its end will
    /// tell, as for a pipe.
    std::size_t bytes() const { return bytes_; }

    /// How many bytes have been read so far; may be asked from any thread at any time.
    std::size_t bytesRead() const { return bytesRead_; }

    /// Gives `reader` all of the file, and finishes it. Throws also what it throws.
    void readInto(ListReader& reader);

private:
    int descriptor() const { return opened_.isOpen() ? opened_.number() : 0; }
    bool isReady() const;
    [[noreturn]] void fail(int error) const;

    const std::string name_;
    Descriptor opened_; // Nothing for standard input, which is not ours to close.
    off_t begin_ = -1;  // Of the list in the file; negative where it cannot be read again.
    std::size_t bytes_ = 0;
    std::atomic<std::size_t> bytesRead_{0};
};

} // namespace casetable

#endif
