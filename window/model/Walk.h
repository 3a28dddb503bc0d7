#ifndef WINDOW_MODEL_WALK_H
#define WINDOW_MODEL_WALK_H

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "casetable/listing/Source.h"
#include "window/model/Files.h"

namespace casetable {

class BackgroundJob;

/// Lists the files of a source on a thread of its own, and keeps them.
///
/// Used by one thread, that of the window, which never waits for the walk: one that the system
/// keeps waiting is left to itself.
class Walk {
public:
    /// How far it has come.
    struct Progress {
        std::size_t folders = 0; ///< Entered so far; of a list, 0.
        std::size_t files = 0;   ///< Handed on so far.
        std::string current;     ///< The path of the folder last entered.
        double seconds = 0;      ///< Since the begin, or to the end.
    };

    /// How it ended.
    struct End {
        bool isStopped = false; ///< Before all files were listed.
        std::string error;      ///< Why it failed; empty where it did not.
        std::vector<std::string> warnings;
        std::size_t hiddenLeftOut = 0; ///< Entries left out only because they are hidden.
    };

    /// Begins to walk. Throws Failure with ExitCode::ImportFailed where the system has no thread
    /// left.
    explicit Walk(const Source& source);

    /// Stops it, and leaves it to itself.
    ~Walk();
    Walk(const Walk&) = delete;
    Walk& operator=(const Walk&) = delete;

    /// Asks it to end; returns at once.
    void stop();

    /// Stops it. Where it has not ended, its thread is left to itself, and the walk soon ends with
    /// all files found so far, put in order by another thread, or by this one where the system has
    /// none. One that only puts its files in order goes on with that.
    void leave();

    /// Whether it is done; not yet while the files are put in order.
    bool hasEnded() const;
    Progress progress() const;

    /// The files so far, in the order of the walk, but for the last few; once it has ended, all, in
    /// byte order.
    Files files() const;

    /// To be asked once it has ended.
    End end() const;

private:
    struct State;
    std::shared_ptr<State> state_;
    std::unique_ptr<BackgroundJob> job_;
};

} // namespace casetable

#endif
