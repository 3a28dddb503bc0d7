#ifndef CASETABLE_LISTING_WALK_H
#define CASETABLE_LISTING_WALK_H

#include <memory>
#include <string>

#include "crawler/FolderCrawler.h"

namespace casetable {

class Console;
class FileList;
struct FileSystem;

/// Crawls the tree at `path` on a thread of its own, shows the progress on `console`, and returns
/// the crawler, which has its result, when the thread has finished. `fileSystem` must outlive it.
///
/// Throws Failure with ExitCode::ImportFailed, the path and the reason when the walk fails or its
/// thread cannot be started; any unexpected exception of the walk, such as std::bad_alloc; and
/// Interrupted, after the walk has stopped, when a signal comes in.
std::unique_ptr<FolderCrawler> walk(FileSystem& fileSystem, const std::string& path,
                                    Console& console);

/// The same with the tree of a finished list, which must outlive the crawler.
std::unique_ptr<FolderCrawler> walk(FileList& list, Console& console);

} // namespace casetable

#endif
