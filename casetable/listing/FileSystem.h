#ifndef CASETABLE_LISTING_FILESYSTEM_H
#define CASETABLE_LISTING_FILESYSTEM_H

#include <atomic>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <boost/shared_ptr.hpp>

#include "casetable/listing/Selection.h"
#include "host/FileInfoInterface.h"

namespace casetable {

class ReadAhead;

/// How the folders of a real file system are listed, and what came of it. Set the options before
/// the tree is read.
struct FileSystem {
    /// Follow links to folders, except into a folder that is its own ancestor.
    bool followLinks = false;

    /// Leave folders that cannot be read out of their parents' listings, with a warning for each.
    /// Otherwise such a folder is listed as not readable, and its own listing throws.
    bool leaveOutUnreadable = false;

    /// Which entries are listed. The system is asked nothing about one that is left out, unless
    /// only the system can say whether it is a folder.
    Selection selection;

    /// While set, a folder whose entries are asked for is listed by the asking thread, and none of
    /// its folders is listed ahead: so that many can be held of which few will be walked.
    bool isSurveyed = false;

    /// How many more folders that are surveyed may keep their descriptors open.
    std::size_t surveyedDescriptors = 64;

    /// Called on the thread that asks for the entries of a folder, with a warning of one line, for
    /// each folder that is left out as it cannot be read, and each link whose target the user may
    /// not look at. What it throws comes out of the asking. Does nothing unless it is set.
    std::function<void(const std::string&)> warn = [](const std::string&) {};

    /// The number of files that were listed so far, ahead of the walk too, and while a folder is
    /// still being listed; those of a listing that failed and is made again count twice. May be
    /// read from any thread at any time.
    std::atomic<std::size_t> filesListed{0};

    /// The number of entries that were left out so far only because they are hidden: files,
    /// folders, and all links, as it is not asked what these lead to. May be read like
    /// `filesListed`.
    std::atomic<std::size_t> hiddenLeftOut{0};

    /// What an answer that ends a walk was about: the root, or an entry below it.
    enum class Refused { Nothing, Root, Folder };

    /// What was last said not to exist or not to be readable. A walk fails at that, with an error
    /// text that does not tell which it was. May be read like `filesListed`.
    std::atomic<Refused> refused{Refused::Nothing};
};

/// The sentence for people about a walk below `root` that ended with `error`, as crawl() returns it
/// and which does not name the root, when `refused` was what was last refused.
std::string walkFailure(std::string error, FileSystem::Refused refused, const std::string& root);

/// The root of a tree on the real file system: the entry at `path`, which need not exist.
///
/// A listing holds regular files, folders and links to files. Broken links, sockets, pipes and
/// devices are left out, and so are links to folders unless they are followed, and what the
/// selection leaves out, which does not judge the root itself. Names are bytes, taken as the system
/// gives them. A folder lists its entries in such an order that a walk meets the files in byte
/// order of path. A folder is readable when it can be listed and entered. Where the system fails,
/// for want of permission, of descriptors or of a sound disk, operations throw
/// ortelo::ExceptionBase with the path and the system's reason. A walk ends at its next folder when
/// a signal comes in: asking for entries then throws Interrupted.
///
/// A listing tells the kinds of its entries, so a file costs no system call of its own. Links do,
/// and so do folders below a followed link, and all entries on file systems whose listings do not
/// tell the kind. Folders are opened relative to their parent's descriptor, so paths may be longer
/// than the system takes in one call.
///
/// The entries of one root are used by one thread at a time, the walk. Where there is an `ahead`,
/// its threads list folders before the walk asks for their entries; whatever comes of that is told
/// when it asks, so that only what changes meanwhile makes a difference to it. Without, the walk's
/// thread lists each folder when it asks.
boost::shared_ptr<FileInfoInterface const> fileSystemRoot(std::shared_ptr<FileSystem> fileSystem,
                                                          const std::string& path,
                                                          std::shared_ptr<ReadAhead> ahead);

/// Has the folders among these entries of a tree that was surveyed be listed ahead, as the walk
/// will come to them next, in this order.
void listAhead(const std::vector<boost::shared_ptr<FileInfoInterface const>>& entries);

/// The same without threads. `fileSystem` must outlive the entries.
boost::shared_ptr<FileInfoInterface const> fileSystemRoot(FileSystem& fileSystem,
                                                          const std::string& path);

} // namespace casetable

#endif
