#include <algorithm>
#include <array>
#include <cerrno>
#include <optional>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <xxhash.h>

#include "casetable/listing/ListRoot.h"
#include "casetable/listing/Pieces.h"
#include "casetable/system/Descriptor.h"
#include "casetable/system/ExitCode.h"
#include "casetable/system/Interrupt.h"

namespace casetable {

namespace {

// How much is read at once.
const std::size_t blockBytes = std::size_t{64} * 1024;

// How much of a list is compared at each cut.
const std::size_t sightBytes = std::size_t{4} * 1024;

ListReader::Options readerOptions(const Source& source)
{
    ListReader::Options options;
    options.name = *source.list;
    options.nullSeparated = source.nullSeparated;
    options.selection = source.selection;
    options.order = source.noDuplicates ? ListReader::Order::Trusted : ListReader::Order::Bytes;
    return options;
}

// A list that can be read at any place.
class RegularList {
public:
    explicit RegularList(const std::string& path)
        : path_(path), file_(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC))
    {
        struct stat status = {};
        if (!file_.isOpen() || ::fstat(file_.number(), &status) != 0)
            fail(errno);
        if (!S_ISREG(status.st_mode))
            throw Failure(ExitCode::ImportFailed,
                          path +
                              ": is not a regular file, of which each process could read a part");
        size_ = static_cast<std::uint64_t>(status.st_size);
    }

    std::uint64_t size() const { return size_; }

    // The bytes from `begin`, as many as are read at once and stand before `end`. They last until
    // the next call.
    std::string_view read(std::uint64_t begin, std::uint64_t end)
    {
        const auto wanted =
            static_cast<std::size_t>(std::min<std::uint64_t>(end - begin, buffer_.size()));
        for (;;) {
            throwIfInterrupted();
            const ssize_t size =
                ::pread(file_.number(), buffer_.data(), wanted, static_cast<off_t>(begin));
            if (size < 0 && errno == EINTR)
                continue;
            if (size <= 0)
                fail(size < 0 ? errno : ESTALE); // It has become shorter.
            return {buffer_.data(), static_cast<std::size_t>(size)};
        }
    }

    // Where the first line begins that does so at `offset` or behind.
    std::uint64_t lineFrom(std::uint64_t offset, char separator)
    {
        if (offset == 0)
            return 0;
        for (std::uint64_t at = offset - 1; at < size_;) {
            const std::string_view block = read(at, size_);
            const std::size_t end = block.find(separator);
            if (end != std::string_view::npos)
                return at + end + 1;
            at += block.size();
        }
        return size_;
    }

    // The line that ends where the one at `begin` begins; empty where there is none.
    std::string lineBefore(std::uint64_t begin, char separator)
    {
        std::string line;
        if (begin == 0)
            return line;
        for (std::uint64_t end = begin - 1; end > 0;) {
            const std::uint64_t from = end - std::min<std::uint64_t>(end, buffer_.size());
            std::string block;
            while (from + block.size() < end)
                block += read(from + block.size(), end);
            const std::size_t last = block.rfind(separator);
            line.insert(0, block, last == std::string::npos ? 0 : last + 1, std::string::npos);
            if (last != std::string::npos)
                break;
            end = from;
        }
        return line;
    }

private:
    [[noreturn]] void fail(int error) const
    {
        throw Failure(ExitCode::ImportFailed,
                      path_ + ": " + std::generic_category().message(error));
    }

    const std::string path_;
    const Descriptor file_;
    std::uint64_t size_ = 0;
    std::array<char, blockBytes> buffer_;
};

// Where the list is cut in front of `piece`, but for the rest of a line there.
std::uint64_t cutOf(std::uint64_t size, std::size_t piece, std::size_t count)
{
    // So that no product overflows.
    return size / count * piece + size % count * piece / count;
}

// A hash of the list's size, and of some bytes at each cut, which decide in which piece a line is.
// To read more would cost each process more than its own pieces do.
std::uint64_t hashOf(RegularList& list, std::size_t count)
{
    std::uint64_t hash = list.size();
    for (std::size_t piece = 0; piece < count; ++piece) {
        const std::uint64_t cut = cutOf(list.size(), piece, count);
        const std::uint64_t begin = cut - std::min<std::uint64_t>(cut, 1);
        const std::uint64_t end = cut + std::min<std::uint64_t>(list.size() - cut, sightBytes);
        std::string bytes;
        while (begin + bytes.size() < end)
            bytes += list.read(begin + bytes.size(), end);
        hash = XXH3_64bits_withSeed(bytes.data(), bytes.size(), hash);
    }
    return hash;
}

class ListPieces : public Pieces {
public:
    ListPieces(const Source& source, std::size_t wanted)
        : options_(readerOptions(source)), separator_(source.nullSeparated ? '\0' : '\n'),
          list_(*source.list), count_(static_cast<std::size_t>(std::clamp<std::uint64_t>(
                                   wanted, 1, std::max<std::uint64_t>(list_.size(), 1)))),
          sights_{{*source.list, hashOf(list_, count_)}}, root_(listRoot(*source.list))
    {
    }

    std::size_t count() const override { return count_; }
    const std::vector<Sight>& sights() const override { return sights_; }
    boost::shared_ptr<FileInfoInterface const> root() const override { return root_; }

    void list(std::size_t piece, const std::function<void(std::string_view path)>& file,
              PieceReport& report) override
    {
        const std::uint64_t begin = beginOf(piece);
        const std::uint64_t end = beginOf(piece + 1);
        ListReader::Options options = options_;
        options.isBeginning = begin == 0;
        if (options.order == ListReader::Order::Bytes)
            options.before = list_.lineBefore(begin, separator_);
        ListReader reader(options, file);
        for (std::uint64_t at = begin; at < end;) {
            const std::string_view block = list_.read(at, end);
            const std::size_t known = reader.pathCount();
            reader.append(block);
            at += block.size();
            filesSeen_ += reader.pathCount() - known;
        }
        reader.finish();
        report.pathCount = reader.pathCount();
        report.oddities = reader.oddities();
        if (options.order == ListReader::Order::Bytes && begin < end)
            report.edges = reader.edges();
    }

private:
    std::uint64_t beginOf(std::size_t piece)
    {
        return piece == count_ ? list_.size()
                               : list_.lineFrom(cutOf(list_.size(), piece, count_), separator_);
    }

    const ListReader::Options options_;
    const char separator_;
    RegularList list_;
    const std::size_t count_;
    const std::vector<Sight> sights_;
    const boost::shared_ptr<FileInfoInterface const> root_;
};

} // namespace

std::unique_ptr<Pieces> divideList(const Source& source, std::size_t wanted)
{
    return std::make_unique<ListPieces>(source, wanted);
}

bool JoinedEdges::join(const ListReader::Edges& next)
{
    for (const std::string& folder : next.folders) {
        if (std::find(files_.begin(), files_.end(), folder) != files_.end())
            return false;
    }
    if (next.last.empty())
        return true;
    const auto isOver = [&next](const std::string& file) {
        return next.last.compare(0, file.size(), file) != 0;
    };
    files_.erase(std::remove_if(files_.begin(), files_.end(), isOver), files_.end());
    files_.insert(files_.end(), next.files.begin(), next.files.end());
    return true;
}

void refuseList(const Source& source)
{
    RegularList list(*source.list);
    ListReader reader(readerOptions(source), [](std::string_view) {});
    for (std::uint64_t at = 0; at < list.size();) {
        const std::string_view block = list.read(at, list.size());
        reader.append(block);
        at += block.size();
    }
    reader.finish();
}

std::vector<std::string> listWarnings(const Source& source, const ListReader::Oddities& oddities,
                                      std::size_t pathCount)
{
    return ListReader::warnings(readerOptions(source), oddities, pathCount);
}

} // namespace casetable
