#include "casetable/listing/FileList.h"

#include <algorithm>
#include <optional>
#include <utility>

#include <boost/make_shared.hpp>

#include "casetable/listing/FilePath.h"
#include "casetable/system/ExitCode.h"
#include "casetable/system/Printable.h"

namespace casetable {

namespace {

// A walk calls itself for each folder in a folder; its stack is large enough for so many.
const std::size_t maxFolders = 20'000;

// In bytes; more than so many folders with names of 255 bytes take.
const std::size_t longestPath = std::size_t{16} * 1024 * 1024;

// Of a refused path: what is no list at all may have lines of any length.
const std::size_t shownBytes = 500;

bool beginsWith(std::string_view text, std::string_view beginning)
{
    return text.substr(0, beginning.size()) == beginning;
}

// Whether `path` leads to a file in `folder`, at any depth.
bool isBelow(std::string_view path, std::string_view folder)
{
    return path.size() > folder.size() && path[folder.size()] == '/' && beginsWith(path, folder);
}

std::size_t commonLength(std::string_view left, std::string_view right)
{
    const auto ends = std::mismatch(left.begin(), left.end(), right.begin(), right.end());
    return static_cast<std::size_t>(ends.first - left.begin());
}

} // namespace

// A folder or a file: the paths of the list that begin with its own. As paths are in byte order,
// those in a folder stand together, and so do those in each folder in it.
class FileList::ListedEntry : public FileInfoInterface {
public:
    // The root.
    explicit ListedEntry(FileList& list) : list_(list), last_(list.paths_.size()) {}

    // The entry to which the paths from `first` to before `last` belong, and whose name they all
    // have at the bytes from `nameBegin` to before `nameEnd`.
    ListedEntry(FileList& list, std::size_t first, std::size_t last, std::size_t nameBegin,
                std::size_t nameEnd, std::size_t depth)
        : list_(list), first_(first), last_(last), nameBegin_(nameBegin), nameEnd_(nameEnd),
          depth_(depth)
    {
    }

    bool isDirectory() const override { return !isFile(); }
    bool isReadable() const override { return true; }
    bool isFile() const override { return !isRoot() && nameEnd_ == list_.paths_[first_].size(); }
    bool exists() const override { return true; }

    std::string fullPath() const override { return isRoot() ? list_.name_ : std::string(path()); }
    std::string fileName() const override
    {
        return isRoot() ? list_.name_ : std::string(path().substr(nameBegin_));
    }

    std::vector<boost::shared_ptr<FileInfoInterface const>>
    entries(const std::string& /*filter*/) const override
    {
        std::vector<boost::shared_ptr<FileInfoInterface const>> entries;
        const std::size_t begin = isRoot() ? 0 : nameEnd_ + 1;
        for (std::size_t first = first_; first < last_;) {
            const std::string_view path = list_.paths_[first];
            const std::size_t end = std::min(path.find('/', begin), path.size());
            const std::string_view entry = path.substr(0, end);
            const bool isFolder = end < path.size();
            const std::size_t next = isFolder ? behindPathsBelow(entry, first) : first + 1;
            // The folder "." is the folder that it stands in, so it adds no level.
            const std::size_t depth = depth_ + (entry.substr(begin) == "." ? 0 : 1);
            if (list_.selection.judge(entry, depth, isFolder) == Selection::Verdict::Taken) {
                if (!isFolder)
                    ++list_.filesSeen;
                entries.emplace_back(
                    boost::make_shared<ListedEntry>(list_, first, next, begin, end, depth));
            }
            first = next;
        }
        return entries;
    }

private:
    bool isRoot() const { return nameEnd_ == 0; }
    std::string_view path() const { return list_.paths_[first_].substr(0, nameEnd_); }

    // The index behind the paths in `folder`, of which the one at `first` is the first.
    std::size_t behindPathsBelow(std::string_view folder, std::size_t first) const
    {
        const auto begin = list_.paths_.begin();
        const auto behind = std::partition_point(
            begin + static_cast<std::ptrdiff_t>(first), begin + static_cast<std::ptrdiff_t>(last_),
            [folder](std::string_view path) { return isBelow(path, folder); });
        return static_cast<std::size_t>(behind - begin);
    }

    FileList& list_;
    const std::size_t first_ = 0;
    const std::size_t last_;
    const std::size_t nameBegin_ = 0;
    const std::size_t nameEnd_ = 0; // 0 for the root alone.
    const std::size_t depth_ = 0;
};

FileList::FileList(std::string name, bool nullSeparated)
    : name_(std::move(name)), separator_(nullSeparated ? '\0' : '\n')
{
}

void FileList::append(std::string_view text)
{
    std::size_t searched = text_.size();
    text_ += text;
    for (std::size_t end = 0; (end = text_.find(separator_, searched)) != std::string::npos;) {
        check(std::string_view(text_).substr(pathBegin_, end - pathBegin_), ++pathCount_);
        pathBegin_ = searched = end + 1;
    }
    // What is no list, such as a device, may never end a line, so what there is is checked too.
    const std::string_view rest = std::string_view(text_).substr(searched);
    if (separator_ != '\0' && rest.find('\0') != std::string_view::npos)
        check(std::string_view(text_).substr(pathBegin_), pathCount_ + 1);
    if (text_.size() - pathBegin_ > longestPath)
        refuse(std::string_view(text_).substr(pathBegin_), pathCount_ + 1,
               "the path does not end within " + std::to_string(longestPath) + " bytes");
}

void FileList::finish()
{
    if (separator_ == '\0' && pathCount_ == 0 && text_.find('\n') != std::string::npos)
        refuse(text_, 1, "no NUL ends it; a list of lines is read without --null");
    if (pathBegin_ < text_.size())
        append(std::string_view(&separator_, 1));
    paths_.reserve(pathCount_);
    for (std::size_t begin = 0; begin < text_.size();) {
        const std::size_t end = text_.find(separator_, begin);
        paths_.push_back(std::string_view(text_).substr(begin, end - begin));
        begin = end + 1;
    }
    // The first of equal paths stays, as its line is the one to name.
    std::stable_sort(paths_.begin(), paths_.end());
    paths_.erase(std::unique(paths_.begin(), paths_.end()), paths_.end());
    checkFolders();
}

std::vector<std::string> FileList::warnings() const
{
    std::vector<std::string> warnings;
    if (beginsWith(text_, "\xef\xbb\xbf"))
        warnings.push_back(name_ + ": the byte order mark is taken as a part of the first path");
    if (separator_ == '\0' || paths_.empty())
        return warnings;
    const auto endsInReturn = [](std::string_view path) { return path.back() == '\r'; };
    const auto isQuoted = [](std::string_view path) {
        return path.size() > 1 && path.front() == '"' && path.back() == '"';
    };
    if (std::all_of(paths_.begin(), paths_.end(), endsInReturn))
        warnings.push_back(name_ + ": all lines end in CR LF, and the CR is taken as a part of the "
                                   "paths");
    if (std::any_of(paths_.begin(), paths_.end(), isQuoted))
        warnings.push_back(name_ +
                           ": quotes around paths are taken as parts of them; with --null a "
                           "lister need not quote, as with -z or -print0");
    return warnings;
}

boost::shared_ptr<FileInfoInterface const> FileList::root()
{
    return boost::make_shared<ListedEntry>(*this);
}

void FileList::check(std::string_view path, std::size_t number) const
{
    const std::size_t null = path.find('\0');
    if (null != std::string_view::npos)
        refuse(path.substr(0, null + 1), number,
               "a path holds no NUL; a list divided by NULs needs --null");
    switch (pathFault(path)) {
    case PathFault::Empty:
        refuse(path, number, "the path is empty");
    case PathFault::Absolute:
        refuse(path, number, "the path is absolute; list files relative to one folder");
    case PathFault::EmptyComponent:
        refuse(path, number, "a component of the path is empty");
    case PathFault::NamesFolder:
        refuse(path, number,
               std::string("a path that ends in ") + path.back() +
                   " names a folder; list files only");
    case PathFault::ClimbsOut:
        refuse(path, number, "the path climbs out by \"..\"");
    case PathFault::None:
        break;
    }
    if (static_cast<std::size_t>(std::count(path.begin(), path.end(), '/')) > maxFolders)
        refuse(path, number,
               "the path lies below more than " + std::to_string(maxFolders) + " folders");
}

// Finds the first line that contradicts one before it.
void FileList::checkFolders() const
{
    struct Contradiction {
        std::string_view earlier;
        std::string_view later;
    };
    std::optional<Contradiction> contradiction;
    const auto isBefore = [](std::string_view left, std::string_view right) {
        return left.data() < right.data(); // Where they stand in the text.
    };
    const auto keepFirst = [&](std::string_view file, std::string_view below) {
        const auto [earlier, later] = std::minmax(file, below, isBefore);
        if (!contradiction || isBefore(later, contradiction->later))
            contradiction = Contradiction{earlier, later};
    };

    std::string_view previous;
    for (auto path = paths_.begin(); path != paths_.end(); previous = *path++) {
        // The folders that the previous path lies in too have been looked at.
        std::size_t slash = path->find('/', commonLength(*path, previous));
        for (; slash != std::string_view::npos; slash = path->find('/', slash + 1)) {
            const std::string_view folder = path->substr(0, slash);
            const auto file = std::lower_bound(paths_.begin(), path, folder);
            if (file == path || *file != folder)
                continue;
            const auto behind =
                std::find_if_not(path, paths_.end(), [folder](std::string_view other) {
                    return isBelow(other, folder);
                });
            keepFirst(*file, *std::min_element(path, behind, isBefore));
        }
    }
    if (!contradiction)
        return;
    const auto [earlier, later] = *contradiction;
    const std::string other =
        (separator_ == '\0' ? "record " : "line ") + std::to_string(numberOf(earlier));
    refuse(later, numberOf(later),
           isBelow(later, earlier)
               ? other + " names " + std::string(earlier) + " as a file; list files only"
               : other + " names it as a folder; list files only");
}

std::size_t FileList::numberOf(std::string_view path) const
{
    const char* const begin = text_.data();
    return static_cast<std::size_t>(std::count(begin, path.data(), separator_)) + 1;
}

void FileList::refuse(std::string_view path, std::size_t number, const std::string& reason) const
{
    std::string message = name_ + (separator_ == '\0' ? ": record " : ": line ");
    message += std::to_string(number) + ": ";
    // Made printable already here, as what() of a Failure would end at a NUL.
    if (!path.empty())
        message +=
            printable(path.substr(0, shownBytes)) + (path.size() > shownBytes ? "...: " : ": ");
    throw Failure(ExitCode::ImportFailed, message + reason);
}

} // namespace casetable
