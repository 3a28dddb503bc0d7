#ifndef CASETABLE_LISTING_FILESYSTEM_H
#define CASETABLE_LISTING_FILESYSTEM_H

#include <atomic>
#include <cstddef>
#include <functional>
#include <string>

#include <boost/shared_ptr.hpp>

#include "casetable/listing/Selection.h"
#include "host/FileInfoInterface.h"

namespace casetable {

/// How folders are listed, and what is told about it. Must outlive the entries.
struct FileSystem {
    /// Follow links to folders, except into a folder that is its own ancestor.
    bool followLinks = false;

    /// Leave a folder that the user may not read out of its parent's listing, with a warning.
    /// Otherwise it is listed as not readable, and listing it throws.
    bool leaveOutUnreadable = false;

    /// What is listed of all that could be. Of an entry that is left out nothing is asked, unless
    /// it takes that to know whether it is a folder.
    Selection selection;

    /// Called with a one-line text, on the thread that lists, for each folder, and each
    /// link whose target may not be looked at, that is left out.
    std::function<void(const std::string&)> warn;

    /// The number of files listed so far; may be read from any thread at any time.
    std::atomic<std::size_t> filesSeen{0};

    /// The number of entries left out so far only because they are hidden: files, folders, and
    /// links wherever they may lead. May be read like `filesSeen`.
    std::atomic<std::size_t> hiddenLeftOut{0};

    enum class Refused { Nothing, Root, Folder };

    /// Which entry was last said not to exist or not to be readable: a walk that meets one fails,
    /// and its text does not tell which it was. May be read like `filesSeen`.
    std::atomic<Refused> refused{Refused::Nothing};
};

/// The entry at `path`, which need not exist, on the real file system.
///
/// A listing holds regular files, folders and links to files. Broken links, sockets, pipes and
/// devices are left out, and so are links to folders unless they are followed, and what the
/// selection leaves out; the root itself is not judged by it. Names are bytes, taken as the system
/// gives them. Entries stand in the byte order of the paths below them, so that a walk meets its
/// files in byte order of path. A folder is readable when it can be listed and entered. Where the
/// system fails, for want of permission, of descriptors or of a sound disk, operations throw
/// ortelo::ExceptionBase with the path and the system's reason.
///
/// The kind of an entry comes from the listing itself: a file costs no system call of its own.
/// Links do, and so do folders below a followed link, and everything on file systems that do not
/// tell the kind. Folders are opened relative to their parent's descriptor, so paths may be longer
/// than the system takes in one call. The entries of one root may be used by one thread at a time.
boost::shared_ptr<FileInfoInterface const> fileSystemRoot(FileSystem& fileSystem,
                                                          const std::string& path);

} // namespace casetable

#endif
