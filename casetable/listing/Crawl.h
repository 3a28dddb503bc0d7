#ifndef CASETABLE_LISTING_CRAWL_H
#define CASETABLE_LISTING_CRAWL_H

#include <functional>
#include <string>
#include <string_view>

#include <boost/shared_ptr.hpp>

#include "host/FileInfoInterface.h"

namespace casetable {

/// What a crawl() meets. Both are called on its thread, and what they throw comes out of it.
struct CrawlVisitor {
    /// Each file, by its path relative to the root.
    std::function<void(std::string_view path)> file;
    /// Each folder that is entered, the root first, by its full path.
    std::function<void(const std::string& path)> folder = [](const std::string&) {};
};

/// Goes through the tree below `root` as FolderCrawler::run() does, with the same questions in the
/// same order, but keeps no files, and takes no stack for each level.
///
/// Returns what FolderCrawler::Result::errorString then would be, empty where nothing stopped the
/// walk. Files before that were visited. Throws what FolderCrawler::run() would.
std::string crawl(const boost::shared_ptr<FileInfoInterface const>& root,
                  const CrawlVisitor& visitor);

/// Goes through the one part of such a tree that `entry` is: a file, or a folder with all below it.
/// `path` is its path relative to the root. Visits, returns and throws what crawl() would when it
/// comes there.
std::string crawlEntry(const boost::shared_ptr<FileInfoInterface const>& entry,
                       const std::string& path, const CrawlVisitor& visitor);

} // namespace casetable

#endif
