#ifndef CASETABLE_DISTRIBUTING_WORKER_H
#define CASETABLE_DISTRIBUTING_WORKER_H

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "casetable/distributing/Messages.h"
#include "casetable/listing/Pieces.h"
#include "casetable/options/Options.h"
#include "casetable/running/Run.h"

namespace casetable {

class Thread;

/// Divides the source and imports the pieces that this process is given, on threads of its own, so
/// that the main thread can serve the messages meanwhile.
class Worker {
public:
    /// Starts. `options` must outlive it; `readsAhead` says whether threads may list folders before
    /// they are needed, `machine` is what this one is called, and `processes` how many divide the
    /// source. Throws Failure with ExitCode::ImportFailed where there is no thread.
    Worker(const Options& options, bool readsAhead, std::string machine, std::size_t processes);

    /// Waits until the threads have ended, which they do before the next piece.
    ~Worker();
    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;

    /// The answers of the first process: the first before any piece; a piece, or none when there
    /// are no more.
    void begin(const Begin& begin);
    void give(std::optional<std::size_t> piece);

    /// The next message for the first process; nothing where there is none.
    std::optional<std::string> takeMessage();

    /// What all pieces came to; nothing before that is known, and once it was taken.
    std::optional<ImportedFiles> takeResult();

    /// What was looked at to divide the source; nothing before that.
    std::vector<Sight> sights() const;

    /// What it has met so far.
    Seen seen() const;

    /// The root of the files; null before the source was divided.
    boost::shared_ptr<FileInfoInterface const> root() const;

    /// Waits until it has a message or the result, at most so long.
    void wait(std::chrono::milliseconds atMost);

private:
    struct Stopped {};

    void work();
    ImportedFiles import();
    std::optional<std::size_t> next();
    void post(std::string message);

    const Options& options_;
    const bool readsAhead_;
    const std::string machine_;
    const std::size_t processes_;

    mutable std::mutex mutex_; // Guards all below but the thread.
    std::condition_variable changed_;
    std::shared_ptr<Pieces> pieces_; // That are divided; only the thread lists them.
    std::deque<std::string> messages_;
    std::optional<Begin> begin_;
    std::deque<std::optional<std::size_t>> given_;
    std::optional<ImportedFiles> result_;
    bool isStopped_ = false;

    std::optional<std::size_t> piece_; // That is being listed, and what came of it so far; the
    PieceReport report_;               // thread's own.

    std::unique_ptr<Thread> thread_;
};

} // namespace casetable

#endif
