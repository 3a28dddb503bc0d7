#include <algorithm>
#include <cstdint>
#include <utility>

#include <xxhash.h>

#include "casetable/listing/Crawl.h"
#include "casetable/listing/FileSystem.h"
#include "casetable/listing/Pieces.h"
#include "casetable/listing/ReadAhead.h"
#include "casetable/system/ExitCode.h"
#include "casetable/system/Interrupt.h"
#include "host/ExceptionBase.h"

namespace casetable {

namespace {

using EntryPtr = boost::shared_ptr<FileInfoInterface const>;

// Every process looks at the top levels by itself. So no more of them are looked at where there are
// few folders in each, or so many files for each piece.
const std::size_t mostLevels = 8;
const std::size_t mostEntriesPerPiece = 1000;

// A folder of the top levels that was listed to divide the tree, and what came of that.
struct Top {
    std::string path; // Relative to the root; empty for the root.
    std::vector<std::string> warnings;
    std::size_t hiddenLeftOut = 0;
};

// What a walk meets at the top levels, one behind the other.
struct Unit {
    enum class Kind { Top, File, Subtree };

    Kind kind;
    std::size_t top;      // A top that the walk enters here, or in which the file or subtree lies.
    EntryPtr entry;       // Null for a top.
    bool isWhole = false; // A subtree that is not divided: it has no folders, or cannot be read.
};

std::string pathBelow(const std::string& folder, const std::string& name)
{
    return folder.empty() ? name : folder + '/' + name;
}

std::uint64_t hashOf(const std::vector<EntryPtr>& entries)
{
    std::string text;
    for (const EntryPtr& entry : entries)
        (text += entry->fileName()) += entry->isFile() ? '\0' : '/';
    return XXH3_64bits(text.data(), text.size());
}

class TreePieces : public Pieces {
public:
    TreePieces(const Source& source, std::size_t wanted, bool readsAhead)
        : source_(source), fileSystem_(std::make_shared<FileSystem>()),
          ahead_(readsAhead ? std::make_shared<ReadAhead>() : nullptr)
    {
        fileSystem_->followLinks = source.follow;
        fileSystem_->leaveOutUnreadable = source.keepGoing;
        fileSystem_->selection = source.selection;
        root_ = fileSystemRoot(fileSystem_, source.root, ahead_);
        survey(wanted);
        cut(wanted);
    }

    ~TreePieces() override
    {
        if (ahead_)
            ahead_->close();
    }

    std::size_t count() const override { return ends_.size(); }
    const std::vector<Sight>& sights() const override { return sights_; }
    EntryPtr root() const override { return root_; }

    void list(std::size_t piece, const std::function<void(std::string_view path)>& file,
              PieceReport& report) override
    {
        fileSystem_->warn = [&report](const std::string& text) { report.warnings.push_back(text); };
        const std::size_t hiddenBefore = fileSystem_->hiddenLeftOut;
        const auto begin = units_.begin() + static_cast<std::ptrdiff_t>(beginOf(piece));
        const auto end = units_.begin() + static_cast<std::ptrdiff_t>(ends_[piece]);
        expect(begin, end);
        CrawlVisitor visitor;
        visitor.file = [&](std::string_view path) {
            throwIfInterrupted();
            ++filesSeen_;
            file(path);
        };
        visitor.folder = [this](const std::string&) {
            throwIfInterrupted();
            ++foldersSeen_;
        };
        std::for_each(begin, end, [&](Unit& unit) { listUnit(unit, visitor, report); });
        report.hiddenLeftOut += fileSystem_->hiddenLeftOut - hiddenBefore;
    }

private:
    using Place = std::vector<Unit>::iterator;

    // Lists the top levels, each whole, until there are as many subtrees.
    void survey(std::size_t wanted)
    {
        fileSystem_->isSurveyed = true;
        units_.push_back({Unit::Kind::Subtree, 0, root_});
        for (std::size_t level = 0; level < mostLevels && subtreeCount() < wanted; ++level) {
            std::vector<Unit> below;
            for (Unit& unit : units_) {
                const bool mayList = unit.kind == Unit::Kind::Subtree && !unit.isWhole &&
                                     entriesSeen_ < wanted * mostEntriesPerPiece;
                if (!mayList || !listTop(unit, below))
                    below.push_back(std::move(unit));
            }
            units_ = std::move(below);
        }
        fileSystem_->isSurveyed = false;
        fileSystem_->refused = FileSystem::Refused::Nothing;
        fileSystem_->hiddenLeftOut = 0; // The tops have it.
    }

    // Lists the folder and appends what is in it. Returns false where it stays whole. Where it
    // cannot be read, the walk will tell why.
    bool listTop(Unit& unit, std::vector<Unit>& below)
    {
        throwIfInterrupted();
        unit.isWhole = true;
        topWarnings_.clear();
        fileSystem_->warn = [this](const std::string& text) { topWarnings_.push_back(text); };
        fileSystem_->hiddenLeftOut = 0;
        std::vector<EntryPtr> entries;
        try {
            if (!unit.entry->exists() || !unit.entry->isReadable())
                return notRead(*unit.entry);
            entries = unit.entry->entries(std::string());
        } catch (const ortelo::ExceptionBase&) {
            return notRead(*unit.entry);
        }
        Top top;
        top.warnings = std::move(topWarnings_);
        top.hiddenLeftOut = fileSystem_->hiddenLeftOut;
        if (unit.entry != root_)
            top.path = pathOf(unit);
        sights_.push_back({unit.entry->fullPath(), hashOf(entries)});
        entriesSeen_ += entries.size();
        if (std::all_of(entries.begin(), entries.end(),
                        [](const EntryPtr& entry) { return entry->isFile(); }))
            return false;
        const std::size_t index = tops_.size();
        tops_.push_back(std::move(top));
        below.push_back({Unit::Kind::Top, index, nullptr});
        for (EntryPtr& entry : entries) {
            const auto kind = entry->isFile() ? Unit::Kind::File : Unit::Kind::Subtree;
            below.push_back({kind, index, std::move(entry)});
        }
        return true;
    }

    // Others may be able to read the folder. So it is noted, and that it stays whole.
    bool notRead(const FileInfoInterface& folder)
    {
        sights_.push_back({folder.fullPath(), 0});
        return false;
    }

    // Ends pieces behind subtrees, so that each has as many as the next.
    void cut(std::size_t wanted)
    {
        const std::size_t subtrees = subtreeCount();
        const std::size_t pieces = std::clamp<std::size_t>(subtrees, 1, wanted);
        std::size_t seen = 0;
        for (std::size_t index = 0; index < units_.size(); ++index) {
            if (units_[index].kind != Unit::Kind::Subtree)
                continue;
            ++seen;
            if (ends_.size() + 1 < pieces && seen * pieces >= (ends_.size() + 1) * subtrees)
                ends_.push_back(index + 1);
        }
        ends_.push_back(units_.size());
    }

    std::size_t subtreeCount() const
    {
        return static_cast<std::size_t>(
            std::count_if(units_.begin(), units_.end(),
                          [](const Unit& unit) { return unit.kind == Unit::Kind::Subtree; }));
    }

    std::size_t beginOf(std::size_t piece) const { return piece == 0 ? 0 : ends_[piece - 1]; }

    std::string pathOf(const Unit& unit) const
    {
        return pathBelow(tops_[unit.top].path, unit.entry->fileName());
    }

    // Has the subtrees of a piece listed ahead.
    void expect(Place begin, Place end) const
    {
        std::vector<EntryPtr> entries;
        std::for_each(begin, end, [&](const Unit& unit) {
            if (unit.kind == Unit::Kind::Subtree && unit.entry != root_)
                entries.push_back(unit.entry);
        });
        listAhead(entries);
    }

    void listUnit(Unit& unit, const CrawlVisitor& visitor, PieceReport& report)
    {
        if (unit.kind == Unit::Kind::Top) {
            const Top& top = tops_[unit.top];
            report.warnings.insert(report.warnings.end(), top.warnings.begin(), top.warnings.end());
            report.hiddenLeftOut += top.hiddenLeftOut;
            ++foldersSeen_;
            return;
        }
        // What has been listed is let go of.
        const EntryPtr entry = std::move(unit.entry);
        unit.entry = nullptr;
        const std::string error =
            entry == root_
                ? crawl(entry, visitor)
                : crawlEntry(entry, pathBelow(tops_[unit.top].path, entry->fileName()), visitor);
        if (!error.empty())
            throw Failure(ExitCode::ImportFailed,
                          walkFailure(error, fileSystem_->refused, source_.root));
    }

    const Source& source_;
    const std::shared_ptr<FileSystem> fileSystem_;
    const std::shared_ptr<ReadAhead> ahead_;
    EntryPtr root_;
    std::vector<Top> tops_;
    std::vector<std::string> topWarnings_; // Of the top that is being listed.
    std::vector<Sight> sights_;
    std::size_t entriesSeen_ = 0;
    std::vector<Unit> units_;       // In the order of the walk.
    std::vector<std::size_t> ends_; // Of each piece, among the units.
};

} // namespace

std::unique_ptr<Pieces> divideTree(const Source& source, std::size_t wanted, bool readsAhead)
{
    return std::make_unique<TreePieces>(source, wanted, readsAhead);
}

} // namespace casetable
