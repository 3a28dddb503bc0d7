#ifndef CASETABLE_LISTING_WALK_H
#define CASETABLE_LISTING_WALK_H

#include <memory>
#include <string>

#include "crawler/FolderCrawler.h"

namespace casetable {

class Console;
class FileList;
struct FileSystem;

/// Crawls the tree at `path` on a thread of its own, for which others list folders ahead, shows the
/// progress on `console`, and returns the crawler, which has its result, when all these threads
/// have finished.
///
/// Throws Failure with ExitCode::ImportFailed, the path and the reason when the walk fails or its
/// thread cannot be started; any unexpected exception of the walk, such as std::bad_alloc; and
/// Interrupted when a signal comes in. Threads that the system keeps waiting are then abandoned,
/// with all that they own; what `fileSystem` refers to must stay until the program ends.
std::unique_ptr<FolderCrawler> walk(const std::shared_ptr<FileSystem>& fileSystem,
                                    const std::string& path, Console& console);

/// The same with the tree of a finished list, which must outlive the crawler. It asks nothing of
/// the system, so there are no further threads and none is abandoned.
std::unique_ptr<FolderCrawler> walk(FileList& list, Console& console);

} // namespace casetable

#endif
