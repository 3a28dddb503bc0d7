#ifndef CASETABLE_LISTING_LISTROOT_H
#define CASETABLE_LISTING_LISTROOT_H

#include <string>

#include <boost/shared_ptr.hpp>

#include "host/FileInfoInterface.h"

namespace casetable {

/// The root of files that are known without a walk, such as those of a list: a folder that exists,
/// is readable and shows no entries. `name` is its full path, and its name.
boost::shared_ptr<FileInfoInterface const> listRoot(std::string name);

} // namespace casetable

#endif
