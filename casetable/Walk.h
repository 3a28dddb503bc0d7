#ifndef CASETABLE_WALK_H
#define CASETABLE_WALK_H

#include <string>

#include "crawler/FolderCrawler.h"

namespace casetable {

class Console;
struct FileSystem;

/// Crawls the tree at `path` on a thread of its own and shows the progress on `console`.
///
/// Throws Failure when the walk fails, with the crawler's text and the path, and Interrupted, after
/// the walk has stopped, when a signal comes in.
FolderCrawler::Result walk(FileSystem& fileSystem, const std::string& path, Console& console);

} // namespace casetable

#endif
