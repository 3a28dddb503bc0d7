#include "casetable/listing/ListReader.h"

#include <algorithm>
#include <utility>

#include "casetable/listing/FilePath.h"
#include "casetable/system/ExitCode.h"
#include "casetable/system/Printable.h"

namespace casetable {

namespace {

// A list may be as deep as a tree that the module is sure to walk.
const std::size_t maxFolders = 20'000;

// In bytes; more than so many folders with names of 255 bytes take.
const std::size_t longestPath = std::size_t{16} * 1024 * 1024;

// Of a refused path: what is no list at all may have lines of any length.
const std::size_t shownBytes = 500;

// Some dozens of paths, of which PathLines is told ahead.
const std::size_t expectedBytes = 2048;

const std::string_view byteOrderMark = "\xef\xbb\xbf";

// Whether `left` stands before `right` in byte order; both begin with `common` equal bytes.
bool standsBefore(std::string_view left, std::string_view right, std::size_t common)
{
    return left.substr(common) < right.substr(common);
}

// Calls `take` with each text that a separator ends; `rest` has what stands behind the last one of
// the piece before, and then of this one.
template <class Take>
void split(std::string_view piece, char separator, std::string& rest, const Take& take)
{
    std::size_t begin = 0;
    for (std::size_t end = 0; (end = piece.find(separator, begin)) != std::string_view::npos;
         begin = end + 1) {
        const std::string_view text = piece.substr(begin, end - begin);
        if (rest.empty()) {
            take(text);
            continue;
        }
        rest += text;
        take(std::string_view(rest));
        rest.clear();
    }
    rest += piece.substr(begin);
}

} // namespace

ListReader::ListReader(Options options, std::function<void(std::string_view path)> take)
    : options_(std::move(options)), take_(std::move(take)),
      separator_(options_.nullSeparated ? '\0' : '\n'), takesAll_(options_.selection.takesAll()),
      previous_(options_.before), commonWithBefore_(previous_.size())
{
    if (!previous_.empty())
        beginnings_.push_back({previous_.size(), 0});
    if (options_.order == Order::Any && !options_.reread)
        lines_ = std::make_unique<PathLines>();
}

void ListReader::append(std::string_view text)
{
    if (options_.isBeginning)
        beginning_ += text.substr(0, byteOrderMark.size() - beginning_.size());
    for (std::size_t begin = 0; begin < text.size(); begin += expectedBytes) {
        const std::string_view piece = text.substr(begin, expectedBytes);
        if (lines_)
            expect(piece);
        split(piece, separator_, rest_, [this](std::string_view path) { take(path); });
    }
    // What is no list, such as a device, may never end a line, so what there is is checked too.
    if (separator_ != '\0' && text.find('\0') != std::string_view::npos)
        check(rest_, 0, pathCount_ + 1);
    if (rest_.size() > longestPath)
        refuse(rest_, pathCount_ + 1,
               "the path does not end within " + std::to_string(longestPath) + " bytes");
}

void ListReader::finish()
{
    if (separator_ == '\0' && options_.isBeginning && pathCount_ == 0 &&
        rest_.find('\n') != std::string::npos)
        refuse(rest_, 1, "no NUL ends it; a list of lines is read without --null");
    if (!rest_.empty())
        append(std::string_view(&separator_, 1));
    if (!contradiction_)
        return;
    const auto& [path, line, earlierLine, file] = *contradiction_;
    refuse(path, line,
           place(earlierLine) + (file.empty() ? " names it as a folder; list files only"
                                              : " names " + file + " as a file; list files only"));
}

ListReader::Oddities ListReader::oddities() const
{
    return {beginning_ == byteOrderMark, allEndInReturn_, anyQuoted_};
}

std::vector<std::string> ListReader::warnings(const Options& options, const Oddities& oddities,
                                              std::size_t pathCount)
{
    std::vector<std::string> warnings;
    if (oddities.hasByteOrderMark)
        warnings.push_back(options.name +
                           ": the byte order mark is taken as a part of the first path");
    if (options.nullSeparated || pathCount == 0)
        return warnings;
    if (oddities.allEndInReturn)
        warnings.push_back(options.name + ": all lines end in CR LF, and the CR is taken as a part "
                                          "of the paths");
    if (oddities.anyQuoted)
        warnings.push_back(options.name +
                           ": quotes around paths are taken as parts of them; with --null a "
                           "lister need not quote, as with -z or -print0");
    return warnings;
}

void ListReader::take(std::string_view path)
{
    const std::size_t common = commonLength(path, previous_);
    // The path in front of a part was not checked here, so it vouches for nothing.
    const bool isFirst = ++pathCount_ == 1;
    check(path, isFirst ? 0 : common, pathCount_);
    allEndInReturn_ = allEndInReturn_ && path.back() == '\r';
    anyQuoted_ = anyQuoted_ || (path.size() > 1 && path.front() == '"' && path.back() == '"');
    if (contradiction_)
        return;
    const bool isNewFile = isNew(path, common);
    if (contradiction_)
        return;
    const bool isTaken = takesAll_ || isSelected(path, common);
    previous_ = path;
    if (isNewFile && isTaken)
        take_(path);
}

ListReader::Edges ListReader::edges() const
{
    Edges edges;
    edges.folders = undecided_;
    edges.last = previous_;
    for (const Beginning& each : beginnings_)
        edges.files.push_back(previous_.substr(0, each.length));
    return edges;
}

void ListReader::expect(std::string_view piece) const
{
    std::string rest;
    split(piece, separator_, rest, [this](std::string_view path) {
        lines_->expect(path);
        lines_->expect(path.substr(0, std::min(path.rfind('/'), path.size())));
    });
}

// Whether no line before has the path, which begins with `common` bytes of the previous one. Finds
// contradictions.
bool ListReader::isNew(std::string_view path, std::size_t common)
{
    switch (options_.order) {
    case Order::Trusted:
        return true;
    case Order::Bytes:
        keepInOrder(path, common);
        break;
    case Order::Any:
        if (!lines_ && standsBefore(path, previous_, common))
            rememberLines();
        break;
    }
    return lines_ ? isNewInLines(path, common, pathCount_) : isNewInOrder(path, common);
}

// Refuses a path that stands before the previous one. Remembers its folder if a file in front of
// the one in front of the text may have that path: then all paths between the two begin with it.
void ListReader::keepInOrder(std::string_view path, std::size_t common)
{
    if (standsBefore(path, previous_, common))
        refuse(path, pathCount_,
               "it stands before the path in front of it in byte order; sort the list with "
               "LC_ALL=C, or see to it that no path is in it twice and say --no-duplicates");
    commonWithBefore_ = std::min(commonWithBefore_, common);
    const std::size_t length = commonWithBefore_;
    if (length > 0 && path.size() > length && path[length] == '/' &&
        (undecided_.empty() || undecided_.back().size() != length))
        undecided_.emplace_back(path.substr(0, length));
}

// By the paths whose beginnings this one has, where it does not stand before the previous one.
bool ListReader::isNewInOrder(std::string_view path, std::size_t common)
{
    while (!beginnings_.empty() && beginnings_.back().length > common)
        beginnings_.pop_back();
    // Of the files that the path begins with, the previous one began with all too, so it was asked
    // about those that end before the two differ.
    if (!beginnings_.empty() && beginnings_.back().length == common) {
        if (path.size() == common)
            return false;
        if (path[common] == '/') {
            contradiction_ = {std::string(path), pathCount_, beginnings_.back().line,
                              std::string(path.substr(0, common))};
            return false;
        }
    }
    beginnings_.push_back({path.size(), pathCount_});
    return true;
}

// The same by all paths so far.
bool ListReader::isNewInLines(std::string_view path, std::size_t common, std::size_t line)
{
    const PathLines::Entry entry = lines_->insert(path, PathLines::Kind::File, line);
    if (entry.kind == PathLines::Kind::Folder)
        contradiction_ = {std::string(path), line, entry.line, std::string()};
    if (entry.kind == PathLines::Kind::Folder || entry.line != line)
        return false;
    // The folders that the previous path lies in too are recorded, and so are those above one that
    // is.
    std::size_t slash = path.rfind('/');
    while (slash != std::string_view::npos && slash >= common) {
        const std::string_view folder = path.substr(0, slash);
        const PathLines::Entry above = lines_->insert(folder, PathLines::Kind::Folder, line);
        if (above.kind == PathLines::Kind::File) {
            contradiction_ = {std::string(path), line, above.line, std::string(folder)};
            return false;
        }
        if (above.line != line)
            break;
        slash = slash == 0 ? std::string_view::npos : path.rfind('/', slash - 1);
    }
    return true;
}

// Records the lines before this one, which are in byte order and do not contradict each other.
void ListReader::rememberLines()
{
    lines_ = std::make_unique<PathLines>();
    beginnings_.clear();
    std::string previous;
    std::string rest;
    std::size_t line = 0;
    options_.reread([&](std::string_view piece) {
        split(piece, separator_, rest, [&](std::string_view path) {
            if (++line >= pathCount_)
                return;
            isNewInLines(path, commonLength(path, previous), line);
            previous = path;
        });
    });
}

// Asks about the folders on the way too, but not about those that the previous path lies in.
bool ListReader::isSelected(std::string_view path, std::size_t common)
{
    while (!levels_.empty() && levels_.back().end >= common)
        levels_.pop_back();
    for (;;) {
        if (!levels_.empty() && !levels_.back().isTaken)
            return false;
        const std::size_t begin = levels_.empty() ? 0 : levels_.back().end + 1;
        const std::size_t end = std::min(path.find('/', begin), path.size());
        const bool isFolder = end < path.size();
        // The folder "." is the folder that it stands in, so it adds no level.
        const std::size_t depth = (levels_.empty() ? 0 : levels_.back().depth) +
                                  (path.substr(begin, end - begin) == "." ? 0 : 1);
        const bool isTaken = options_.selection.judge(path.substr(0, end), depth, isFolder) ==
                             Selection::Verdict::Taken;
        if (!isFolder)
            return isTaken;
        levels_.push_back({end, depth, isTaken});
    }
}

// `shared` is as pathFault() has it.
void ListReader::check(std::string_view path, std::size_t shared, std::size_t number) const
{
    const std::size_t null = path.find('\0');
    if (null != std::string_view::npos)
        refuse(path.substr(0, null + 1), number,
               "a path holds no NUL; a list divided by NULs needs --null");
    switch (pathFault(path, shared)) {
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
    // A folder takes two bytes or more.
    if (path.size() > 2 * maxFolders &&
        static_cast<std::size_t>(std::count(path.begin(), path.end(), '/')) > maxFolders)
        refuse(path, number,
               "the path lies below more than " + std::to_string(maxFolders) + " folders");
}

// What messages call a line.
std::string ListReader::place(std::size_t number) const
{
    return (separator_ == '\0' ? "record " : "line ") + std::to_string(number);
}

void ListReader::refuse(std::string_view path, std::size_t number, const std::string& reason) const
{
    std::string message = name() + ": " + place(number) + ": ";
    // Made printable already here, as what() of a Failure would end at a NUL.
    if (!path.empty())
        message +=
            printable(path.substr(0, shownBytes)) + (path.size() > shownBytes ? "...: " : ": ");
    throw Failure(ExitCode::ImportFailed, message + reason);
}

} // namespace casetable
