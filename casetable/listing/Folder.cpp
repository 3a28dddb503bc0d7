#include "casetable/listing/Folder.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <optional>
#include <utility>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "casetable/listing/FileSystem.h"

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

struct stat statusAt(int folder, const char* name, int flags)
{
    struct stat status = {};
    if (::fstatat(folder, name, &status, flags) != 0)
        throwSystemError(errno);
    return status;
}

// Calls `visit(name, type)` for every entry but "." and "..", and `pause()` now and then. Throws
// std::system_error.
template <class Visit, class Pause> void readEntries(int folder, Visit visit, Pause pause)
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
        pause();
    }
}

// Asks the selection about the entries of one folder. A path is made only where it is needed.
class Judge {
public:
    // `prefix` is what the paths of the entries, relative to the root, have before their names.
    Judge(const Selection& selection, std::string prefix, std::size_t depth)
        : selection_(selection), depth_(depth), path_(std::move(prefix)),
          prefixLength_(path_.size())
    {
    }

    Selection::Verdict operator()(const char* name, bool isFolder)
    {
        if (!selection_.needsPaths())
            return selection_.judge(name, depth_, isFolder);
        path_.resize(prefixLength_);
        path_ += name;
        return selection_.judge(path_, depth_, isFolder);
    }

private:
    const Selection& selection_;
    const std::size_t depth_;
    std::string path_;
    const std::size_t prefixLength_;
};

// Whether an entry of this type, as the system's listing tells it, may be a file, a folder or a
// link to one.
bool mayBeListed(unsigned char type)
{
    return type == DT_REG || type == DT_DIR || type == DT_LNK || type == DT_UNKNOWN;
}

// Whether the paths of one entry stand before those of another in byte order. Behind its name, the
// paths of a folder go on with a separator. A walk in this order meets the files in byte order of
// path, in which the importer keeps them, so that it need not search for the place of each.
bool standsBefore(std::string_view left, Kind leftKind, std::string_view right, Kind rightKind)
{
    const std::size_t length = std::min(left.size(), right.size());
    const int order = std::memcmp(left.data(), right.data(), length);
    if (order != 0)
        return order < 0;
    const auto next = [length](std::string_view name, Kind kind) {
        if (length < name.size())
            return int{static_cast<unsigned char>(name[length])};
        return kind == Kind::File ? -1 : int{'/'};
    };
    return next(left, leftKind) < next(right, rightKind);
}

} // namespace

// Lists one folder, whose descriptor is given.
class Folder::Lister {
public:
    Lister(Folder& folder, int descriptor)
        : folder_(folder), fileSystem_(*folder.tree_->fileSystem), descriptor_(descriptor),
          listing_(*folder.listing_),
          judge_(fileSystem_.selection,
                 fileSystem_.selection.needsPaths() ? folder.relativePrefix() : std::string(),
                 folder.level_ + 1)
    {
    }

    void list(ReadAhead::Meter* ahead)
    {
        std::size_t known = 0;
        std::size_t counted = 0;
        readEntries(
            descriptor_, [this](const char* name, unsigned char type) { look(name, type); },
            [&] {
                fileSystem_.filesListed += listing_.files - std::exchange(counted, listing_.files);
                if (ahead != nullptr)
                    ahead->grow(bytes() - std::exchange(known, bytes()));
            });
        std::sort(listing_.entries.begin(), listing_.entries.end(),
                  [this](const FolderListing::Entry& left, const FolderListing::Entry& right) {
                      return standsBefore(listing_.nameOf(left), left.kind, listing_.nameOf(right),
                                          right.kind);
                  });
        for (const FolderListing::Entry& entry : listing_.entries) {
            if (entry.kind != Kind::File)
                listing_.folders.emplace_back(new Folder(folder_.tree_, FolderPtr(&folder_),
                                                         listing_.nameOf(entry), entry.kind));
        }
    }

private:
    // What the listing will take, roughly.
    std::size_t bytes() const
    {
        const std::size_t perFolder = sizeof(Folder) + 4 * sizeof(void*);
        return listing_.names.size() + listing_.entries.size() * sizeof(FolderListing::Entry) +
               (listing_.entries.size() - listing_.files) * perFolder;
    }

    void look(const char* name, unsigned char type)
    {
        const Selection::Verdict verdict = judge_(name, type == DT_DIR);
        if (verdict == Selection::Verdict::Hidden && mayBeListed(type))
            ++listing_.hiddenLeftOut;
        if (verdict != Selection::Verdict::Taken)
            return;
        const std::optional<Kind> kind = kindOf(name, type);
        if (!kind)
            return;
        // The selection judges folders otherwise than files, and only now this one is known.
        const bool provedAFolder = *kind != Kind::File && type != DT_DIR;
        if (provedAFolder && judge_(name, true) != Selection::Verdict::Taken)
            return;
        if (isUnreadable(name, *kind))
            return;
        if (*kind == Kind::File)
            ++listing_.files;
        const std::size_t length = std::strlen(name);
        listing_.entries.push_back(
            {listing_.names.size(), static_cast<std::uint32_t>(length), *kind});
        listing_.names.append(name, length);
    }

    // The kind of an entry; nothing if it is not to be listed. Throws std::system_error.
    std::optional<Kind> kindOf(const char* name, unsigned char type)
    {
        try {
            if (type == DT_UNKNOWN)
                type = IFTODT(statusAt(descriptor_, name, AT_SYMLINK_NOFOLLOW).st_mode);
            if (type == DT_REG)
                return Kind::File;
            if (type == DT_DIR) {
                if (folder_.isBelowLink_ && folder_.isOrIsBelow(statusAt(descriptor_, name, 0)))
                    return std::nullopt;
                return Kind::Folder;
            }
            if (type == DT_LNK) {
                const struct stat target = statusAt(descriptor_, name, 0);
                if (S_ISREG(target.st_mode))
                    return Kind::File;
                if (S_ISDIR(target.st_mode) && fileSystem_.followLinks &&
                    !folder_.isOrIsBelow(target))
                    return Kind::FolderLink;
            }
        } catch (const std::system_error& failure) {
            // Broken links, and entries that went away since they were listed, are left out without
            // a warning.
            const int error = failure.code().value();
            if (!meansUnreadable(error))
                throw;
            if (!meansAbsent(error))
                warnAbout(name, error);
        }
        return std::nullopt;
    }

    // Whether the entry is a folder that is to be left out, and warns of it. Throws
    // std::system_error.
    bool isUnreadable(const char* name, Kind kind)
    {
        if (kind == Kind::File || !fileSystem_.leaveOutUnreadable ||
            ::faccessat(descriptor_, name, R_OK | X_OK, 0) == 0)
            return false;
        const int error = errno;
        if (!meansUnreadable(error))
            throwSystemError(error);
        warnAbout(name, error);
        return true;
    }

    void warnAbout(const char* name, int error)
    {
        listing_.warnings.push_back(folder_.pathOf(name) + ": " +
                                    std::generic_category().message(error));
    }

    Folder& folder_;
    FileSystem& fileSystem_;
    const int descriptor_;
    FolderListing& listing_;
    Judge judge_;
};

Folder::Folder(std::shared_ptr<const Tree> tree, const FolderPtr& parent, std::string_view name,
               Kind kind)
    : Job(parent), tree_(std::move(tree)), name_(name), kind_(kind),
      isBelowLink_(kind == Kind::FolderLink || (parent && parent->isBelowLink_)),
      level_(parent ? parent->level_ + 1 : 0)
{
}

ReadAhead::Jobs Folder::run(ReadAhead::Meter* ahead)
{
    const FileSystem& fileSystem = *tree_->fileSystem;
    listing_ = std::make_unique<FolderListing>();
    if (ahead != nullptr && !fileSystem.leaveOutUnreadable) {
        const int error = accessError(parent(), name_, R_OK | X_OK);
        if (error != 0)
            throwSystemError(error);
    }
    Descriptor opened = open();
    if (fileSystem.followLinks) {
        const struct stat status = statusAt(opened.number(), "", AT_EMPTY_PATH);
        device_ = status.st_dev;
        number_ = status.st_ino;
    }
    Lister(*this, opened.number()).list(ahead);

    const bool mayKeep =
        level_ < levelsThatKeepDescriptors || level_ % levelsBetweenDescriptors == 0;
    if (!listing_->folders.empty() && mayKeep && (ahead == nullptr || ahead->mayKeepDescriptor()))
        kept_ = std::move(opened);
    return ReadAhead::Jobs(listing_->folders.begin(), listing_->folders.end());
}

std::string Folder::pathOf(std::string_view entry) const
{
    // From the end, level by level: there may be more of them than a stack has room for.
    std::string reversed(entry.rbegin(), entry.rend());
    for (const Folder* folder = this; folder != nullptr; folder = folder->parent()) {
        const std::string& name = folder->name_;
        if (name.empty() || name.back() != '/')
            reversed += '/';
        reversed.append(name.rbegin(), name.rend());
    }
    std::reverse(reversed.begin(), reversed.end());
    return reversed;
}

std::string Folder::relativePrefix() const
{
    std::string reversed;
    for (const Folder* folder = this; folder->parent() != nullptr; folder = folder->parent()) {
        reversed += '/';
        reversed.append(folder->name_.rbegin(), folder->name_.rend());
    }
    std::reverse(reversed.begin(), reversed.end());
    return reversed;
}

// Throws std::system_error.
Descriptor Folder::open() const
{
    std::vector<const Folder*> way = {this};
    const Folder* above = parent();
    for (; above != nullptr && !above->kept_.isOpen(); above = above->parent())
        way.push_back(above);

    int from = above != nullptr ? above->kept_.number() : AT_FDCWD;
    Descriptor opened;
    for (auto folder = way.rbegin(); folder != way.rend(); ++folder) {
        // What was listed as a folder must still be one; the root may be a link.
        const bool mayBeLink =
            (*folder)->parent() == nullptr || (*folder)->kind_ == Kind::FolderLink;
        const int flags = O_RDONLY | O_DIRECTORY | O_CLOEXEC | (mayBeLink ? 0 : O_NOFOLLOW);
        Descriptor next(::openat(from, (*folder)->name_.c_str(), flags));
        if (!next.isOpen())
            throwSystemError(errno);
        opened = std::move(next);
        from = opened.number();
    }
    return opened;
}

// Whether `status` is that of the folder or of one above it, up to the root.
bool Folder::isOrIsBelow(const struct stat& status) const
{
    for (const Folder* folder = this; folder != nullptr; folder = folder->parent()) {
        if (folder->device_ == status.st_dev && folder->number_ == status.st_ino)
            return true;
    }
    return false;
}

int accessError(const Folder* folder, const std::string& name, int mode)
{
    const auto accessIn = [&](int descriptor) {
        return ::faccessat(descriptor, name.c_str(), mode, 0) == 0 ? 0 : errno;
    };
    return folder != nullptr ? folder->with(accessIn) : accessIn(AT_FDCWD);
}

void throwSystemError(int error)
{
    throw std::system_error(error, std::generic_category());
}

bool meansAbsent(int error)
{
    return error == ENOENT || error == ENOTDIR || error == ELOOP || error == ENAMETOOLONG;
}

bool meansUnreadable(int error)
{
    return meansAbsent(error) || error == EACCES || error == EPERM || error == ESTALE;
}

} // namespace casetable
