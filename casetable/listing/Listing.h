#ifndef CASETABLE_LISTING_LISTING_H
#define CASETABLE_LISTING_LISTING_H

#include <cstddef>
#include <functional>
#include <memory>

#include <boost/shared_ptr.hpp>

#include "casetable/listing/FileSystem.h"
#include "casetable/listing/Shard.h"
#include "casetable/listing/Source.h"
#include "host/FileInfoInterface.h"

namespace casetable {

class Console;
class ReadAhead;

/// The files of a source, a folder or a list, which are handed on in shards.
class Listing {
public:
    /// What becomes of the shards. Both are called on the thread that lists, and what they throw
    /// comes out of run().
    struct Taker {
        std::function<void(Shard shard)> take;
        /// Called after the last.
        std::function<void()> finish = [] {};
    };

    /// Looks at nothing yet. `source` must outlive it, and `console`, which gets warnings.
    /// `readsAhead` says whether threads may list folders before the walk comes to them.
    Listing(const Source& source, Console& console, bool readsAhead = true);

    /// Lists all files, in byte order or in that of the list's lines, on a thread of its own, and
    /// shows the progress. To be called once.
    ///
    /// Throws Failure with ExitCode::ImportFailed, the path and the reason when a folder or the
    /// list cannot be read, or the list is refused, or there is no thread; any unexpected exception
    /// of the thread, such as std::bad_alloc; and Interrupted when a signal comes in. Threads that
    /// the system keeps waiting are then abandoned, with all that they own; the console must stay
    /// until the program ends.
    void run(const ShardSize& size, const Taker& taker);

    /// The root of the files; of a list, a folder that has nothing but its name.
    boost::shared_ptr<FileInfoInterface const> root() const { return root_; }

    /// The number of entries that were left out only because they are hidden.
    std::size_t hiddenLeftOut() const { return fileSystem_->hiddenLeftOut; }

private:
    void runList(ShardCutter& cutter, const Taker& taker);
    void runTree(ShardCutter& cutter, const Taker& taker);

    const Source& source_;
    Console& console_;
    const std::shared_ptr<FileSystem> fileSystem_;
    const std::shared_ptr<ReadAhead> ahead_;
    boost::shared_ptr<FileInfoInterface const> root_;
};

} // namespace casetable

#endif
