#ifndef WINDOW_MODEL_WALK_H
#define WINDOW_MODEL_WALK_H

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "casetable/listing/Source.h"
#include "window/model/Files.h"

namespace casetable {

class Thread;

/// Lists the files of a source on a thread of its own, and keeps them.
///
/// Used by one thread, that of the window, which never waits for the walk: one that the system
/// keeps waiting is put aside.
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
        bool isStopped = false;
        std::string error; ///< Why it failed; empty where it did not.
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

    /// Whether it is done, or stopped and no longer kept waiting by the system.
    bool hasEnded() const;
    Progress progress() const;

    /// The files so far, in the order of the walk; once it has ended well, all, in byte order.
    Files files() const;

    /// To be asked once it has ended.
    End end() const;

    /// Whether a walk that was left to itself still waits in the system. Then the program must end
    /// without destroying what is static.
    static bool isAnyLeft();

private:
    struct State;
    const std::shared_ptr<State> state_;
    std::unique_ptr<Thread> thread_;
};

} // namespace casetable

#endif
