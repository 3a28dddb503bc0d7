#ifndef CASETABLE_LISTING_FOLDER_H
#define CASETABLE_LISTING_FOLDER_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <boost/intrusive_ptr.hpp>
#include <sys/stat.h>

#include "casetable/listing/ReadAhead.h"
#include "casetable/system/Descriptor.h"

namespace casetable {

class Folder;
struct FileSystem;

/// What an entry of a folder is, as far as it is listed.
enum class Kind { File, Folder, FolderLink };

/// What came of listing a folder.
struct FolderListing {
    struct Entry {
        std::size_t offset; ///< Of the name, in `names`.
        std::uint32_t length;
        Kind kind;
    };

    std::string names;
    std::vector<Entry> entries;                        ///< In the order of a walk.
    std::vector<boost::intrusive_ptr<Folder>> folders; ///< Those among the entries, in their order.
    std::vector<std::string> warnings;                 ///< For FileSystem::warn.
    std::size_t files = 0;
    std::size_t hiddenLeftOut = 0; ///< As in FileSystem.

    std::string_view nameOf(const Entry& entry) const
    {
        return std::string_view(names).substr(entry.offset, entry.length);
    }
};

/// What the folders of one tree have in common.
struct Tree {
    std::shared_ptr<FileSystem> fileSystem;
    std::shared_ptr<ReadAhead> ahead; ///< Null where only the walk lists folders.
};

/// A folder that is to be listed, is, or was, by whatever thread. Listing it reads the options of
/// the file system, and changes nothing but the folder and the count of files listed.
class Folder : public ReadAhead::Job {
public:
    /// `parent` is null for the root, whose `name` is its path.
    Folder(std::shared_ptr<const Tree> tree, const boost::intrusive_ptr<Folder>& parent,
           std::string_view name, Kind kind);

    /// Lists the folder, and returns its subfolders. Throws std::system_error when the system
    /// fails; what was found before is kept. Ahead it also throws for a folder that is listed and
    /// cannot be read, which the walk asks about on its own.
    ReadAhead::Jobs run(ReadAhead::Meter* ahead) override;

    void closeDescriptor() override { kept_ = Descriptor(); }
    void discard() override { listing_.reset(); }

    /// Hands over what run() has found; null where it has not run.
    std::unique_ptr<FolderListing> takeListing() { return std::move(listing_); }

    const std::shared_ptr<const Tree>& tree() const { return tree_; }

    /// The path of an entry as users know it: it begins with the root's.
    std::string pathOf(std::string_view entry) const;

    /// Calls `use` with a descriptor of the folder, open during the call alone, and returns what it
    /// returns. Throws std::system_error when the folder has to be opened again and cannot be.
    template <class Use> auto with(Use use) const -> decltype(use(0))
    {
        return kept_.isOpen() ? use(kept_.number()) : use(open().number());
    }

private:
    class Lister;

    const Folder* parent() const { return static_cast<const Folder*>(Job::parent()); }
    Descriptor open() const;
    bool isOrIsBelow(const struct stat& status) const;
    std::string relativePrefix() const;

    const std::shared_ptr<const Tree> tree_;
    const std::string name_; // The whole path for the root.
    const Kind kind_;
    const bool isBelowLink_; // Then even a folder that is no link may be one of those above.
    const std::size_t level_;
    Descriptor kept_;
    dev_t device_ = 0; // By this and its number the folder is recognised, where links are followed.
    ino_t number_ = 0;
    std::unique_ptr<FolderListing> listing_;
};

using FolderPtr = boost::intrusive_ptr<Folder>;

/// The system's error where the entry `name` of `folder` cannot be accessed in `mode`; 0 where it
/// can. Without a folder, `name` is a path. Throws std::system_error when the folder cannot be
/// opened to ask.
int accessError(const Folder* folder, const std::string& name, int mode);

/// Throws std::system_error with an error of the system.
[[noreturn]] void throwSystemError(int error);

/// Whether an error says that the entry is not there, or no longer.
bool meansAbsent(int error);

/// Whether an error says that this one entry cannot be read. Others, such as a lack of descriptors
/// or memory, or a failing disk, concern the whole listing, which would be wrong without the entry.
bool meansUnreadable(int error);

} // namespace casetable

#endif
