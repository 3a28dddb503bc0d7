#ifndef HOST_FILEINFOINTERFACE_H
#define HOST_FILEINFOINTERFACE_H

#include <string>
#include <vector>

#include <boost/shared_ptr.hpp>

#include "host/Export.h"

/// One entry of the host's view of a file system, held as
/// `boost::shared_ptr<FileInfoInterface const>`.
///
/// The host implements it. A crawl makes all its calls from the crawler's own thread, so
/// implementations must allow calls from a thread other than the one that created them. Any
/// operation may throw; ortelo::ExceptionBase is what a crawl turns into an error text.
class HOST_API FileInfoInterface {
public:
    /// The entry is a directory.
    virtual bool isDirectory() const = 0;

    /// The entry can be read.
    virtual bool isReadable() const = 0;

    /// The entry is a regular file.
    virtual bool isFile() const = 0;

    /// The entry exists.
    virtual bool exists() const = 0;

    /// The entry's complete path, for messages and progress.
    virtual std::string fullPath() const = 0;

    /// The entry's own name, its last path component.
    virtual std::string fileName() const = 0;

    /// The entries of a directory, in the host's order. The meaning of `filter` belongs to the
    /// host; the module always passes an empty text and expects every entry.
    virtual std::vector<boost::shared_ptr<FileInfoInterface const>>
    entries(const std::string& filter) const = 0;

    virtual ~FileInfoInterface();
};

#endif
