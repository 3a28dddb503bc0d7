#ifndef CASETABLE_DISTRIBUTING_COORDINATOR_H
#define CASETABLE_DISTRIBUTING_COORDINATOR_H

#include <cstddef>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "casetable/distributing/Messages.h"
#include "casetable/listing/Source.h"

namespace casetable {

class Console;

/// What the first process does for all: it hands out the pieces in their order, and tells what
/// comes of them in that order too, whichever process was faster. Used by one thread at a time.
///
/// All operations throw Failure where the processes do not see the same source, or a piece failed;
/// of several, the first in order, so that a run fails in the same way however pieces were handed
/// out. Then nothing is to be done but to end all processes. They throw Interrupted where a process
/// was interrupted.
class Coordinator {
public:
    /// `source` and `console`, which gets the warnings, must outlive it.
    Coordinator(std::size_t processes, const Source& source, Console& console);

    /// How messages are sent.
    using Send = std::function<void(std::size_t to, std::string message)>;

    /// A process is ready for its first piece. That this process is must be told first.
    void ready(std::size_t from, const Ready& ready, const Begin& begin, const Send& send);

    /// What a process has seen that was found not to have seen the same, and what this one has:
    /// throws Failure, which names the first that differs.
    [[noreturn]] void sights(const Sights& other, const std::vector<Sight>& own) const;

    /// A process has listed its piece, and gets another.
    void listed(std::size_t from, Listed listed, const Send& send);

    /// A process cannot go on.
    void failed(Failed failed);

    /// A process has told what it has met.
    void seen(std::size_t from, const Seen& seen) { seen_[from] = seen; }

    /// Whether all pieces were listed.
    bool isComplete() const { return pieces_ && told_ == *pieces_; }

    /// The hidden entries that were left out, of all pieces.
    std::size_t hiddenLeftOut() const { return hiddenLeftOut_; }

    /// How far all have come, in one line.
    std::string progress() const;

private:
    struct Waiting {
        std::size_t from;
        Ready ready;
    };

    void admit(std::size_t from, const Ready& ready, const Begin& begin, const Send& send);
    void handOut(std::size_t to, const Send& send);
    void tell();
    void tellReport(const PieceReport& report);

    const Source& source_;
    Console& console_;
    std::optional<Ready> own_;
    std::vector<Waiting> waiting_;      // Ready before this process was.
    bool isDifferent_ = false;          // Whether one has seen something else, and is asked what.
    std::optional<std::size_t> pieces_; // How many there are; none until this process is ready.
    std::size_t next_ = 0;              // To be handed out.
    std::size_t told_ = 0;              // So many pieces were told of.
    std::map<std::size_t, PieceReport> reports_; // Of the pieces behind.
    std::map<std::size_t, Failed> failures_;     // By piece.
    std::size_t hiddenLeftOut_ = 0;
    std::size_t pathCount_ = 0;
    ListReader::Oddities oddities_;
    JoinedEdges edges_;
    std::vector<Seen> seen_;
};

} // namespace casetable

#endif
