#ifndef CASETABLE_LISTING_WALK_H
#define CASETABLE_LISTING_WALK_H

#include <memory>
#include <string>

#include "crawler/FolderCrawler.h"

namespace casetable {

class Console;
class FileList;
struct FileSystem;

/// Crawls the tree at `path` on a thread of its own, shows the progress on `console` and returns
/// the crawler when its thread has finished. Its entries refer to `fileSystem`, which must outlive
/// it.
///
/// Throws Failure when the walk fails, with the crawler's text and the path, and Interrupted, after
/// the walk has stopped, when a signal comes in.
std::unique_ptr<FolderCrawler> walk(FileSystem& fileSystem, const std::string& path,
                                    Console& console);

/// The same with the tree of a finished list.
std::unique_ptr<FolderCrawler> walk(FileList& list, Console& console);

} // namespace casetable

#endif
