#include "casetable/distributing/Coordinator.h"

#include <algorithm>
#include <numeric>
#include <utility>

#include "casetable/system/Bytes.h"
#include "casetable/system/Console.h"
#include "casetable/system/Interrupt.h"

namespace casetable {

namespace {

const std::size_t first = 0; // This process.

// Throws where two processes are not the same program with the same options.
void compare(const Ready& own, const Ready& other)
{
    if (own.version != other.version)
        throw Failure(ExitCode::ImportFailed, "casetable-mpi is of version " + other.version +
                                                  " on " + other.machine + ", and of version " +
                                                  own.version + " on " + own.machine);
    if (own.options != other.options)
        throw Failure(ExitCode::ImportFailed,
                      "the process on " + other.machine +
                          " was not given the same options or files of templates as that on " +
                          own.machine);
    if (own.sights == other.sights && own.pieces != other.pieces)
        throw Failure(ExitCode::ImportFailed, "the processes on " + own.machine + " and " +
                                                  other.machine +
                                                  " were not given the same options");
}

bool isSame(const Sight& left, const Sight& right)
{
    return left.path == right.path && left.hash == right.hash;
}

[[noreturn]] void fail(const Failed& failed)
{
    throw Failure(failed.code, failed.message + " (on " + failed.machine + ")", failed.excerpt);
}

} // namespace

Coordinator::Coordinator(std::size_t processes, const Source& source, Console& console)
    : source_(source), console_(console), seen_(processes)
{
}

void Coordinator::ready(std::size_t from, const Ready& ready, const Begin& begin, const Send& send)
{
    if (from != first && !own_) {
        waiting_.push_back({from, ready});
        return;
    }
    if (from == first) {
        own_ = ready;
        pieces_ = ready.pieces;
    }
    admit(from, ready, begin, send);
    for (const Waiting& each : std::exchange(waiting_, {}))
        admit(each.from, each.ready, begin, send);
}

void Coordinator::sights(const Sights& other, const std::vector<Sight>& own) const
{
    const auto [ours, theirs] =
        std::mismatch(own.begin(), own.end(), other.sights.begin(), other.sights.end(), isSame);
    if (ours == own.end() && theirs == other.sights.end())
        throw BrokenBytes("a process has not seen what it has said");
    const std::string& path = ours != own.end() ? ours->path : theirs->path;
    throw Failure(ExitCode::ImportFailed, path + ": it does not look the same on " + other.machine +
                                              " as on " + own_->machine +
                                              "; all processes must see the same files");
}

void Coordinator::listed(std::size_t from, Listed listed, const Send& send)
{
    reports_[listed.piece] = std::move(listed.report);
    tell();
    handOut(from, send);
}

void Coordinator::failed(Failed failed)
{
    if (failed.signal != 0)
        throw Interrupted{failed.signal};
    if (!failed.piece)
        fail(failed);
    const std::size_t piece = *failed.piece;
    failures_.emplace(piece, std::move(failed));
    tell();
}

std::string Coordinator::progress() const
{
    const auto sum = [this](std::size_t Seen::*count) {
        return std::accumulate(
            seen_.begin(), seen_.end(), std::size_t{0},
            [count](std::size_t all, const Seen& seen) { return all + seen.*count; });
    };
    const std::string of = source_.list ? " paths" : " files";
    return (source_.list ? "" : std::to_string(sum(&Seen::folders)) + " folders, ") +
           std::to_string(sum(&Seen::files)) + of + ", " + std::to_string(told_) + " of " +
           std::to_string(pieces_.value_or(0)) +
           " pieces: " + (source_.list ? *source_.list : source_.root);
}

void Coordinator::admit(std::size_t from, const Ready& ready, const Begin& begin, const Send& send)
{
    if (isDifferent_)
        return; // The run will end.
    compare(*own_, ready);
    if (ready.sights != own_->sights) {
        isDifferent_ = true;
        send(from, messageOf(MessageKind::ShowSights));
        return;
    }
    send(from, messageOf(MessageKind::Begin, begin));
    handOut(from, send);
}

void Coordinator::handOut(std::size_t to, const Send& send)
{
    // Behind a piece that failed, nothing is needed any more.
    const bool isAny = next_ < *pieces_ && failures_.empty();
    send(to, pieceMessage(isAny ? std::optional<std::size_t>(next_++) : std::nullopt));
}

// Tells of the pieces in front of the first that is still missing.
void Coordinator::tell()
{
    for (auto report = reports_.find(told_); report != reports_.end();
         report = reports_.find(told_)) {
        tellReport(report->second);
        reports_.erase(report);
        ++told_;
    }
    const auto failure = failures_.find(told_);
    if (failure != failures_.end()) {
        for (const std::string& warning : failure->second.report.warnings)
            console_.warning(warning);
        // A part of a list does not know the number of its first line.
        if (source_.list)
            refuseList(source_);
        fail(failure->second);
    }
    if (isComplete() && source_.list) {
        for (const std::string& warning : listWarnings(source_, oddities_, pathCount_))
            console_.warning(warning);
    }
}

void Coordinator::tellReport(const PieceReport& report)
{
    for (const std::string& warning : report.warnings)
        console_.warning(warning);
    hiddenLeftOut_ += report.hiddenLeftOut;
    if (!source_.list)
        return;
    if (!edges_.join(report.edges)) {
        refuseList(source_);
        throw Failure(ExitCode::ImportFailed, *source_.list + ": a path is a file and a folder");
    }
    if (report.pathCount == 0)
        return;
    pathCount_ += report.pathCount;
    oddities_.hasByteOrderMark = oddities_.hasByteOrderMark || report.oddities.hasByteOrderMark;
    oddities_.allEndInReturn = oddities_.allEndInReturn && report.oddities.allEndInReturn;
    oddities_.anyQuoted = oddities_.anyQuoted || report.oddities.anyQuoted;
}

} // namespace casetable
