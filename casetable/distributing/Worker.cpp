#include "casetable/distributing/Worker.h"

#include <utility>

#include "casetable/listing/Shard.h"
#include "casetable/system/Thread.h"

namespace casetable {

namespace {

// So many that in the end no process waits long for another's last.
const std::size_t piecesPerProcess = 16;

} // namespace

Worker::Worker(const Options& options, bool readsAhead, std::string machine, std::size_t processes)
    : options_(options), readsAhead_(readsAhead), machine_(std::move(machine)),
      processes_(processes), thread_(Thread::start([this] { work(); }))
{
    if (!thread_)
        throw Failure(ExitCode::ImportFailed, "the system has no thread left for the walk");
}

Worker::~Worker()
{
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        isStopped_ = true;
    }
    changed_.notify_all();
    thread_.reset();
}

void Worker::begin(const Begin& begin)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    begin_ = begin;
    changed_.notify_all();
}

void Worker::give(std::optional<std::size_t> piece)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    given_.push_back(piece);
    changed_.notify_all();
}

std::optional<std::string> Worker::takeMessage()
{
    const std::lock_guard<std::mutex> lock(mutex_);
    if (messages_.empty())
        return std::nullopt;
    std::string message = std::move(messages_.front());
    messages_.pop_front();
    return message;
}

std::optional<ImportedFiles> Worker::takeResult()
{
    const std::lock_guard<std::mutex> lock(mutex_);
    return std::exchange(result_, std::nullopt);
}

std::vector<Sight> Worker::sights() const
{
    const std::lock_guard<std::mutex> lock(mutex_);
    return pieces_ ? pieces_->sights() : std::vector<Sight>();
}

Seen Worker::seen() const
{
    const std::lock_guard<std::mutex> lock(mutex_);
    return pieces_ ? Seen{pieces_->foldersSeen(), pieces_->filesSeen()} : Seen();
}

boost::shared_ptr<FileInfoInterface const> Worker::root() const
{
    const std::lock_guard<std::mutex> lock(mutex_);
    return pieces_ ? pieces_->root() : nullptr;
}

void Worker::wait(std::chrono::milliseconds atMost)
{
    std::unique_lock<std::mutex> lock(mutex_);
    changed_.wait_for(lock, atMost, [this] { return !messages_.empty() || result_; });
}

void Worker::work()
{
    try {
        ImportedFiles files = import();
        const std::lock_guard<std::mutex> lock(mutex_);
        result_ = std::move(files);
        changed_.notify_all();
    } catch (const Stopped&) {
        return; // Nobody wants to know.
    } catch (...) {
        Failed failed = presentFailure();
        failed.piece = piece_;
        failed.report = std::move(report_);
        failed.machine = machine_;
        post(messageOf(MessageKind::Failed, failed));
    }
}

ImportedFiles Worker::import()
{
    const Source& source = options_.source;
    const std::size_t wanted = piecesPerProcess * processes_;
    const std::shared_ptr<Pieces> pieces =
        source.list ? divideList(source, wanted) : divideTree(source, wanted, readsAhead_);
    Begin begin;
    {
        std::unique_lock<std::mutex> lock(mutex_);
        pieces_ = pieces;
        messages_.push_back(
            messageOf(MessageKind::Ready, Ready{CASETABLE_VERSION, machine_, hashOf(options_),
                                                pieces->count(), hashOf(pieces->sights())}));
        changed_.notify_all();
        changed_.wait(lock, [this] { return begin_ || isStopped_; });
        if (isStopped_)
            throw Stopped();
        begin = *begin_;
    }
    return importFiles(
        options_, keptFiles(options_, *options_.format), begin.showsRemarks,
        [&](const Listing::Taker& taker) {
            ShardCutter cutter(ShardSize(), taker.take);
            while ((piece_ = next())) {
                report_ = PieceReport();
                pieces->list(
                    *piece_, [&cutter](std::string_view path) { cutter.take(path); }, report_);
                post(messageOf(MessageKind::Listed, Listed{*piece_, std::move(report_)}));
            }
            cutter.finish();
            taker.finish();
        });
}

// The next piece, which may have to be waited for; none when there are no more.
std::optional<std::size_t> Worker::next()
{
    std::unique_lock<std::mutex> lock(mutex_);
    changed_.wait(lock, [this] { return !given_.empty() || isStopped_; });
    if (isStopped_)
        throw Stopped();
    const std::optional<std::size_t> piece = given_.front();
    given_.pop_front();
    return piece;
}

void Worker::post(std::string message)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    messages_.push_back(std::move(message));
    changed_.notify_all();
}

} // namespace casetable
