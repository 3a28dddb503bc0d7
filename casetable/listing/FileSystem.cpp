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
    // `parent` is null for the root, and `own` for a file. The parent, the tree and the bytes of
    // the name must outlive the entry.
    Entry(const std::shared_ptr<const Tree>& tree, Folder* parent, std::string_view name, Kind kind,
          FolderPtr own)
        : tree_(tree), parent_(parent), name_(name), kind_(kind), own_(std::move(own))
    {
    }

    bool isDirectory() const override { return kind_ != Kind::File; }

    bool isReadable() const override
    {
        // Unreadable folders are left out then, so a folder that was listed is readable.
        if (parent_ != nullptr && isDirectory() && fileSystem().leaveOutUnreadable)
            return true;
        if (own_ && ahead() != nullptr && ahead()->await(*own_))
            return true;
        return recorded(withReason([this] {
            const int error = accessError(parent_, fileName(), isDirectory() ? R_OK | X_OK : R_OK);
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

    ReadAhead* ahead() const { return tree_->ahead.get(); }

    // The folder that is to be listed; null for a file, and once it has been listed.
    const FolderPtr& folder() const { return own_; }

private:
    FileSystem& fileSystem() const { return *tree_->fileSystem; }

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

    // Whether one more may be kept open.
    bool takeSurveyedDescriptor() const
    {
        std::size_t& left = fileSystem().surveyedDescriptors;
        if (left == 0)
            return false;
        --left;
        return true;
    }

    // Tells what came of a listing besides the entries. The walk does so when it comes to the
    // folder, so it does not matter when that was listed.
    void tell(const FolderListing& listing) const
    {
        for (const std::string& warning : listing.warnings)
            fileSystem().warn(warning);
        fileSystem().hiddenLeftOut += listing.hiddenLeftOut;
    }

    const std::shared_ptr<const Tree>& tree_;
    Folder* const parent_;
    const std::string_view name_; // The whole path for the root.
    const Kind kind_;
    mutable FolderPtr own_; // Handed over when it is listed: from then on its entries keep it.
};

// The entries of a folder, which live as long as any of them is in use.
struct Siblings {
    Siblings(FolderPtr parent, std::unique_ptr<FolderListing> parentsListing)
        : folder(std::move(parent)), listing(std::move(parentsListing))
    {
        entries.reserve(listing->entries.size());
        auto own = listing->folders.begin();
        for (const FolderListing::Entry& entry : listing->entries)
            entries.emplace_back(folder->tree(), folder.get(), listing->nameOf(entry), entry.kind,
                                 entry.kind == Kind::File ? nullptr : std::move(*own++));
    }

    const FolderPtr folder;
    const std::unique_ptr<FolderListing> listing; // It has their names.
    std::vector<Entry> entries;
};

std::vector<EntryPtr> Entry::listing() const
{
    // What is no folder is opened like one, to learn the system's reason why not.
    const FolderPtr folder =
        own_ ? std::move(own_) : FolderPtr(new Folder(tree_, parent_, name_, kind_));
    try {
        if (ahead() != nullptr && !fileSystem().isSurveyed)
            ahead()->finish(*folder);
        else
            folder->run(nullptr);
        if (fileSystem().isSurveyed && !takeSurveyedDescriptor())
            folder->closeDescriptor();
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

// What the root must have before it is an entry.
struct RootParts {
    const std::shared_ptr<const Tree> tree;
    const std::string path;
};

// The root. The user names it and no listing tells its kind, so the system is asked.
class Root : private RootParts, public Entry {
public:
    Root(std::shared_ptr<const Tree> tree, const std::string& path)
        : RootParts{std::move(tree), path},
          Entry(RootParts::tree, nullptr, RootParts::path, Kind::Folder, nullptr)
    {
    }

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

std::string walkFailure(std::string error, FileSystem::Refused refused, const std::string& root)
{
    if (refused == FileSystem::Refused::Root)
        error = root + ": " + error;
    if (refused == FileSystem::Refused::Folder)
        error += " --keep-going leaves such folders out.";
    return error;
}

boost::shared_ptr<FileInfoInterface const> fileSystemRoot(std::shared_ptr<FileSystem> fileSystem,
                                                          const std::string& path,
                                                          std::shared_ptr<ReadAhead> ahead)
{
    const auto tree = std::make_shared<const Tree>(Tree{std::move(fileSystem), std::move(ahead)});
    return boost::make_shared<Root>(tree, path);
}

void listAhead(const std::vector<EntryPtr>& entries)
{
    ReadAhead::Jobs jobs;
    ReadAhead* ahead = nullptr;
    for (const EntryPtr& each : entries) {
        const auto& entry = static_cast<const Entry&>(*each);
        if (!entry.folder())
            continue;
        ahead = entry.ahead();
        jobs.push_back(entry.folder());
    }
    if (ahead != nullptr)
        ahead->expect(jobs);
}

boost::shared_ptr<FileInfoInterface const> fileSystemRoot(FileSystem& fileSystem,
                                                          const std::string& path)
{
    return fileSystemRoot(std::shared_ptr<FileSystem>(std::shared_ptr<void>(), &fileSystem), path,
                          nullptr);
}

} // namespace casetable
