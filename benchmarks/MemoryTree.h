#ifndef BENCHMARKS_MEMORYTREE_H
#define BENCHMARKS_MEMORYTREE_H

#include <string>
#include <vector>

#include <boost/shared_ptr.hpp>

#include "host/FileInfoInterface.h"

namespace campaign {

/// The root of a tree that stands in memory and holds the files at `paths`, which are relative,
/// joined by "/" and all different, with the folders that they need. Listings come in the order of
/// `paths`; everything exists and is readable.
boost::shared_ptr<FileInfoInterface const> memoryTree(const std::vector<std::string>& paths);

} // namespace campaign

#endif
