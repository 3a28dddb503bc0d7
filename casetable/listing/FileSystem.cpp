#include "casetable/listing/FileSystem.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <optional>
#include <system_error>
#include <utility>
#include <vector>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <boost/make_shared.hpp>

#include "casetable/system/Descriptor.h"
#include "host/ExceptionBase.h"

namespace casetable {

namespace {

// A folder whose subfolders are being listed may keep its descriptor open, from which they are
// opened quickly. Near the root every folder does; farther down one in so many levels, and from
// there the levels between are opened again. So a limit of 1,024 open files is reached only in
// trees of more than 60,000 levels.
const std::size_t levelsThatKeepDescriptors = 32;
const std::size_t levelsBetweenDescriptors = 64;

// How much of a listing is read at once.
const std::size_t listingBytes = std::size_t{32} * 1024;

enum class Kind { File, Folder, FolderLink };

[[noreturn]] void throwSystemError(int error)
{
    throw std::system_error(error, std::generic_category());
}

// Whether an error says that the entry is not there, or no longer.
bool meansAbsent(int error)
{
    return error == ENOENT || error == ENOTDIR || error == ELOOP || error == ENAMETOOLONG;
}

// Whether an error says that this one entry cannot be read. Others, such as a lack of descriptors
// or memory, or a failing disk, concern the whole listing, which would be wrong without the entry.
bool meansUnreadable(int error)
{
    return meansAbsent(error) || error == EACCES || error == EPERM || error == ESTALE;
}

struct stat statusAt(int folder, const char* name, int flags)
{
    struct stat status = {};
    if (::fstatat(folder, name, &status, flags) != 0)
        throwSystemError(errno);
    return status;
}

// A folder that is or was listed. Its entries keep it alive, as the system finds them by it.
class Folder {
public:
    Folder(boost::shared_ptr<const Folder> parent, std::string name, Kind kind)
        : parent_(std::move(parent)), name_(std::move(name)), kind_(kind),
          level_(parent_ ? parent_->level_ + 1 : 0),
          belowLink_(kind == Kind::FolderLink || (parent_ && parent_->belowLink_))
    {
    }

    // The path of an entry as users know it: it begins with the root's.
    std::string pathOf(const std::string& entry) const
    {
        std::string path = parent_ ? parent_->pathOf(name_) : name_;
        if (path.empty() || path.back() != '/')
            path += '/';
        path += entry;
        return path;
    }

    // The entries of the root have depth 1.
    std::size_t depthOfEntries() const { return level_ + 1; }

    // What the path of an entry, relative to the root, has before the entry's name.
    std::string relativePrefix() const
    {
        return parent_ ? parent_->relativePrefix() + name_ + '/' : std::string();
    }

    // Opens the folder. Throws std::system_error.
    Descriptor open() const
    {
        // What was listed as a folder must still be one; the root may be a link.
        const bool mayBeLink = !parent_ || kind_ == Kind::FolderLink;
        const int flags = O_RDONLY | O_DIRECTORY | O_CLOEXEC | (mayBeLink ? 0 : O_NOFOLLOW);
        const auto openIn = [&](int parent) {
            Descriptor opened(::openat(parent, name_.c_str(), flags));
            if (!opened.isOpen())
                throwSystemError(errno);
            return opened;
        };
        return parent_ ? parent_->with(openIn) : openIn(AT_FDCWD);
    }

    // Calls `use` with a descriptor of the folder, open during the call alone, and returns what it
    // returns. Throws std::system_error when the folder has to be opened again and cannot be.
    template <class Use> auto with(Use use) const -> decltype(use(0))
    {
        return kept_.isOpen() ? use(kept_.number()) : use(open().number());
    }

    // Keeps the descriptor open for with(), if the folder is on a level that does.
    void keep(Descriptor opened)
    {
        if (level_ < levelsThatKeepDescriptors || level_ % levelsBetweenDescriptors == 0)
            kept_ = std::move(opened);
    }

    // Tells isOrIsBelow() by what to recognise the folder.
    void setStatus(const struct stat& status) { status_ = status; }

    // Whether `status` is that of the folder or of one above it, up to the root.
    bool isOrIsBelow(const struct stat& status) const
    {
        for (const Folder* folder = this; folder != nullptr; folder = folder->parent_.get()) {
            if (folder->status_.st_dev == status.st_dev && folder->status_.st_ino == status.st_ino)
                return true;
        }
        return false;
    }

    // Whether a link was followed on the way here. Then even a folder that is no link may be one of
    // those on the way.
    bool isBelowLink() const { return belowLink_; }

private:
    const boost::shared_ptr<const Folder> parent_; // Empty for the root.
    const std::string name_;                       // The whole path for the root.
    const Kind kind_;
    const std::size_t level_;
    const bool belowLink_;
    Descriptor kept_;
    struct stat status_ = {};
};

// Calls `visit(name, type)` for every entry but "." and "..". Throws std::system_error.
template <class Visit> void readEntries(int folder, Visit visit)
{
    alignas(dirent64) char buffer[listingBytes];
    for (;;) {
        const ssize_t size = ::getdents64(folder, buffer, sizeof buffer);
        if (size < 0)
            throwSystemError(errno);
        if (size == 0)
            return;
        for (ssize_t offset = 0; offset < size;) {
            const auto* entry = reinterpret_cast<const dirent64*>(buffer + offset);
            if (std::strcmp(entry->d_name, ".") != 0 && std::strcmp(entry->d_name, "..") != 0)
                visit(entry->d_name, entry->d_type);
            offset += entry->d_reclen;
        }
    }
}

// Asks the selection about the entries of one folder. A path is made only where it is needed.
class Judge {
public:
    Judge(const Selection& selection, const Folder& folder)
        : selection_(selection), needsPaths_(selection.needsPaths()),
          depth_(folder.depthOfEntries())
    {
        if (needsPaths_)
            path_ = folder.relativePrefix();
        prefixLength_ = path_.size();
    }

    Selection::Verdict operator()(const char* name, bool isFolder)
    {
        if (!needsPaths_)
            return selection_.judge(name, depth_, isFolder);
        path_.resize(prefixLength_);
        path_ += name;
        return selection_.judge(path_, depth_, isFolder);
    }

private:
    const Selection& selection_;
    const bool needsPaths_;
    const std::size_t depth_;
    std::string path_;
    std::size_t prefixLength_;
};

// Whether an entry of this type, as the system's listing tells it, may be a file, a folder or a
// link to one.
bool mayBeListed(unsigned char type)
{
    return type == DT_REG || type == DT_DIR || type == DT_LNK || type == DT_UNKNOWN;
}

struct Listed {
    std::string name;
    Kind kind;
};

// Whether the paths of one entry stand before those of another in byte order. Behind its name, the
// paths of a folder go on with a separator. A walk in this order meets the files in byte order of
// path, in which the importer keeps them, so that it need not search for the place of each.
bool standsBefore(const Listed& left, const Listed& right)
{
    const std::size_t length = std::min(left.name.size(), right.name.size());
    const int order = left.name.compare(0, length, right.name, 0, length);
    if (order != 0)
        return order < 0;
    const auto next = [length](const Listed& listed) {
        if (length < listed.name.size())
            return int{static_cast<unsigned char>(listed.name[length])};
        return listed.kind == Kind::File ? -1 : int{'/'};
    };
    return next(left) < next(right);
}

// An entry of a listing, or the root.
class Entry : public FileInfoInterface {
public:
    Entry(FileSystem& fileSystem, boost::shared_ptr<const Folder> parent, std::string name,
          Kind kind)
        : fileSystem_(fileSystem), parent_(std::move(parent)), name_(std::move(name)), kind_(kind)
    {
    }

    bool isDirectory() const override { return kind_ != Kind::File; }

    bool isReadable() const override
    {
        // Unreadable folders are left out then, so a folder that was listed is readable.
        if (parent_ && isDirectory() && fileSystem_.leaveOutUnreadable)
            return true;
        return recorded(withReason([this] {
            const int error = accessError(isDirectory() ? R_OK | X_OK : R_OK);
            if (error != 0 && !meansUnreadable(error))
                throwSystemError(error);
            return error == 0;
        }));
    }

    bool isFile() const override { return kind_ == Kind::File; }

    // What the user may not look at is taken to exist; isReadable() then answers false.
    bool exists() const override
    {
        return recorded(withReason([this] { return !meansAbsent(accessError(F_OK)); }));
    }

    std::string fullPath() const override { return parent_ ? parent_->pathOf(name_) : name_; }
    std::string fileName() const override { return name_; }

    std::vector<boost::shared_ptr<FileInfoInterface const>>
    entries(const std::string& /*filter*/) const override
    {
        return withReason([this] {
            try {
                return listing();
            } catch (const std::system_error& failure) {
                // A folder that has become unreadable since it was listed is left out late.
                if (!parent_ || !fileSystem_.leaveOutUnreadable ||
                    !meansUnreadable(failure.code().value()))
                    throw;
                fileSystem_.warn(fullPath() + ": " + failure.code().message());
                return std::vector<boost::shared_ptr<FileInfoInterface const>>();
            }
        });
    }

private:
    // Returns the answer, and keeps it in FileSystem::refused if it ends a walk.
    bool recorded(bool answer) const
    {
        if (!answer)
            fileSystem_.refused = parent_ ? FileSystem::Refused::Folder : FileSystem::Refused::Root;
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

    // The system's error where the entry cannot be accessed in `mode`; 0 where it can. Throws
    // std::system_error when its folder cannot be opened to ask.
    int accessError(int mode) const
    {
        const auto accessIn = [&](int parent) {
            return ::faccessat(parent, name_.c_str(), mode, 0) == 0 ? 0 : errno;
        };
        return parent_ ? parent_->with(accessIn) : accessIn(AT_FDCWD);
    }

    std::vector<boost::shared_ptr<FileInfoInterface const>> listing() const
    {
        const auto folder = boost::make_shared<Folder>(parent_, name_, kind_);
        Descriptor opened = folder->open();
        if (fileSystem_.followLinks)
            folder->setStatus(statusAt(opened.number(), "", AT_EMPTY_PATH));

        std::vector<Listed> listed;
        Judge judge(fileSystem_.selection, *folder);
        readEntries(opened.number(), [&](const char* name, unsigned char type) {
            const Selection::Verdict verdict = judge(name, type == DT_DIR);
            if (verdict == Selection::Verdict::Hidden && mayBeListed(type))
                ++fileSystem_.hiddenLeftOut;
            if (verdict != Selection::Verdict::Taken)
                return;
            const std::optional<Kind> kind = kindOf(*folder, opened.number(), name, type);
            if (!kind)
                return;
            // The selection judges folders otherwise than files, and only now this one is known.
            const bool provedAFolder = *kind != Kind::File && type != DT_DIR;
            if (provedAFolder && judge(name, true) != Selection::Verdict::Taken)
                return;
            if (isUnreadable(*folder, opened.number(), name, *kind))
                return;
            if (*kind == Kind::File)
                ++fileSystem_.filesSeen;
            listed.push_back({name, *kind});
        });
        folder->keep(std::move(opened));

        std::sort(listed.begin(), listed.end(), standsBefore);
        std::vector<boost::shared_ptr<FileInfoInterface const>> entries;
        entries.reserve(listed.size());
        for (Listed& each : listed)
            entries.emplace_back(
                boost::make_shared<Entry>(fileSystem_, folder, std::move(each.name), each.kind));
        return entries;
    }

    // The kind of the entry `name` in `folder`, whose descriptor is given; nothing if it is not to
    // be listed. Throws std::system_error.
    std::optional<Kind> kindOf(const Folder& folder, int descriptor, const char* name,
                               unsigned char type) const
    {
        try {
            if (type == DT_UNKNOWN)
                type = IFTODT(statusAt(descriptor, name, AT_SYMLINK_NOFOLLOW).st_mode);
            if (type == DT_REG)
                return Kind::File;
            if (type == DT_DIR) {
                if (folder.isBelowLink() && folder.isOrIsBelow(statusAt(descriptor, name, 0)))
                    return std::nullopt;
                return Kind::Folder;
            }
            if (type == DT_LNK) {
                const struct stat target = statusAt(descriptor, name, 0);
                if (S_ISREG(target.st_mode))
                    return Kind::File;
                if (S_ISDIR(target.st_mode) && fileSystem_.followLinks &&
                    !folder.isOrIsBelow(target))
                    return Kind::FolderLink;
            }
        } catch (const std::system_error& failure) {
            // Broken links, and entries that went away since they were listed, are left out without
            // a warning.
            const int error = failure.code().value();
            if (!meansUnreadable(error))
                throw;
            if (!meansAbsent(error))
                warnAbout(folder, name, error);
        }
        return std::nullopt;
    }

    // Whether the entry is a folder that is to be left out, and warns of it. Throws
    // std::system_error.
    bool isUnreadable(const Folder& folder, int descriptor, const char* name, Kind kind) const
    {
        if (kind == Kind::File || !fileSystem_.leaveOutUnreadable ||
            ::faccessat(descriptor, name, R_OK | X_OK, 0) == 0)
            return false;
        const int error = errno;
        if (!meansUnreadable(error))
            throwSystemError(error);
        warnAbout(folder, name, error);
        return true;
    }

    void warnAbout(const Folder& folder, const char* name, int error) const
    {
        fileSystem_.warn(folder.pathOf(name) + ": " + std::generic_category().message(error));
    }

    FileSystem& fileSystem_;
    const boost::shared_ptr<const Folder> parent_; // Empty for the root.
    const std::string name_;                       // The whole path for the root.
    const Kind kind_;
};

// The root. The user names it and no listing tells its kind, so the system is asked.
class Root : public Entry {
public:
    Root(FileSystem& fileSystem, const std::string& path)
        : Entry(fileSystem, nullptr, path, Kind::Folder)
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

boost::shared_ptr<FileInfoInterface const> fileSystemRoot(FileSystem& fileSystem,
                                                          const std::string& path)
{
    return boost::make_shared<Root>(fileSystem, path);
}

} // namespace casetable
