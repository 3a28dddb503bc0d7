#include "casetable/listing/FileSystem.h"

#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include <sys/stat.h>
#include <unistd.h>

#include <boost/make_shared.hpp>

#include "casetable/listing/Folder.h"
#include "casetable/listing/ReadAhead.h"
#include "casetable/system/Interrupt.h"
#include "host/ExceptionBase.h"

namespace casetable {

namespace {

using EntryPtr = boost::shared_ptr<FileInfoInterface const>;

// An entry of a listing, or the root.
class Entry : public FileInfoInterface {
public:
    // `parent` is null for the root, and `own` for a file. The parent and the bytes of the name
    // must outlive the entry.
    Entry(Folder* parent, std::string_view name, Kind kind, FolderPtr own)
        : parent_(parent), name_(name), kind_(kind), own_(std::move(own))
    {
    }

    bool isDirectory() const override { return kind_ != Kind::File; }

    bool isReadable() const override
    {
        // Unreadable folders are left out then, so a folder that was listed is readable.
        if (parent_ != nullptr && own_ && fileSystem().leaveOutUnreadable)
            return true;
        if (parent_ != nullptr && own_ && ahead() != nullptr && ahead()->await(*own_))
            return true;
        return recorded(withReason([this] {
            const int error = accessError(parent_, fileName(), own_ ? R_OK | X_OK : R_OK);
            if (error != 0 && !meansUnreadable(error))
                throwSystemError(error);
            return error == 0;
        }));
    }

    bool isFile() const override { return kind_ == Kind::File; }

    // What the user may not look at is taken to exist; isReadable() then answers false.
    bool exists() const override
    {
        return recorded(
            withReason([this] { return !meansAbsent(accessError(parent_, fileName(), F_OK)); }));
    }

    std::string fullPath() const override
    {
        return parent_ != nullptr ? parent_->pathOf(name_) : fileName();
    }

    std::string fileName() const override { return std::string(name_); }

    std::vector<EntryPtr> entries(const std::string& /*filter*/) const override
    {
        throwIfInterrupted();
        return withReason([this] {
            try {
                return listing();
            } catch (const std::system_error& failure) {
                // A folder that has become unreadable since it was listed is left out late.
                if (parent_ == nullptr || !fileSystem().leaveOutUnreadable ||
                    !meansUnreadable(failure.code().value()))
                    throw;
                fileSystem().warn(fullPath() + ": " + failure.code().message());
                return std::vector<EntryPtr>();
            }
        });
    }

private:
    const std::shared_ptr<const Tree>& tree() const { return (own_ ? *own_ : *parent_).tree(); }
    FileSystem& fileSystem() const { return *tree()->fileSystem; }
    ReadAhead* ahead() const { return tree()->ahead.get(); }

    // Returns the answer, and keeps it in FileSystem::refused if it ends a walk.
    bool recorded(bool answer) const
    {
        if (!answer)
            fileSystem().refused =
                parent_ != nullptr ? FileSystem::Refused::Folder : FileSystem::Refused::Root;
        return answer;
    }

    // Calls `act` and turns an error of the system into the exception that the crawler catches.
    template <class Act> auto withReason(Act act) const -> decltype(act())
    {
        try {
            return act();
        } catch (const std::system_error& failure) {
            throw ortelo::ExceptionBase(fullPath() + ": " + failure.code().message(), false);
        }
    }

    std::vector<EntryPtr> listing() const;

    // Tells what came of a listing besides the entries. The walk does so when it comes to the
    // folder, so it does not matter when that was listed.
    void tell(const FolderListing& listing) const
    {
        for (const std::string& warning : listing.warnings)
            fileSystem().warn(warning);
        fileSystem().hiddenLeftOut += listing.hiddenLeftOut;
        fileSystem().filesSeen += listing.files;
    }

    Folder* const parent_;
    const std::string_view name_; // The whole path for the root.
    const Kind kind_;
    const FolderPtr own_;
};

// The entries of a folder, which live as long as any of them is in use.
struct Siblings {
    Siblings(FolderPtr folder, std::unique_ptr<const FolderListing> listing)
        : folder(std::move(folder)), listing(std::move(listing))
    {
        entries.reserve(this->listing->entries.size());
        auto own = this->listing->folders.begin();
        for (const FolderListing::Entry& entry : this->listing->entries)
            entries.emplace_back(this->folder.get(), this->listing->nameOf(entry), entry.kind,
                                 entry.kind == Kind::File ? nullptr : *own++);
    }

    const FolderPtr folder;
    const std::unique_ptr<const FolderListing> listing; // It has their names.
    std::vector<Entry> entries;
};

std::vector<EntryPtr> Entry::listing() const
{
    // What is no folder is opened like one, to learn the system's reason why not.
    const FolderPtr folder =
        own_ && own_->claim() ? own_ : FolderPtr(new Folder(tree(), parent_, name_, kind_));
    try {
        if (ahead() != nullptr)
            ahead()->finish(*folder);
        else
            folder->run(nullptr);
    } catch (...) {
        if (const auto listing = folder->takeListing())
            tell(*listing);
        throw;
    }
    const auto siblings = boost::make_shared<Siblings>(folder, folder->takeListing());
    tell(*siblings->listing);
    std::vector<EntryPtr> entries;
    entries.reserve(siblings->entries.size());
    for (const Entry& entry : siblings->entries)
        entries.emplace_back(siblings, &entry);
    return entries;
}

// The root. The user names it and no listing tells its kind, so the system is asked.
class Root : public Entry {
public:
    explicit Root(const FolderPtr& folder) : Entry(nullptr, folder->name(), Kind::Folder, folder) {}

    bool isDirectory() const override { return hasType(S_IFDIR); }
    bool isFile() const override { return hasType(S_IFREG); }

private:
    bool hasType(mode_t type) const
    {
        struct stat status = {};
        return ::stat(fullPath().c_str(), &status) == 0 && (status.st_mode & S_IFMT) == type;
    }
};

} // namespace

boost::shared_ptr<FileInfoInterface const> fileSystemRoot(std::shared_ptr<FileSystem> fileSystem,
                                                          const std::string& path,
                                                          std::shared_ptr<ReadAhead> ahead)
{
    const auto tree = std::make_shared<const Tree>(Tree{std::move(fileSystem), std::move(ahead)});
    return boost::make_shared<Root>(FolderPtr(new Folder(tree, nullptr, path, Kind::Folder)));
}

boost::shared_ptr<FileInfoInterface const> fileSystemRoot(FileSystem& fileSystem,
                                                          const std::string& path)
{
    return fileSystemRoot(std::shared_ptr<FileSystem>(std::shared_ptr<void>(), &fileSystem), path,
                          nullptr);
}

} // namespace casetable
