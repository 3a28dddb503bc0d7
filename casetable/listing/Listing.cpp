#include "casetable/listing/Listing.h"

#include <chrono>
#include <exception>
#include <future>
#include <mutex>
#include <string>
#include <utility>

#include <QString>

#include "casetable/listing/Crawl.h"
#include "casetable/listing/ListReader.h"
#include "casetable/listing/ListRoot.h"
#include "casetable/listing/Progress.h"
#include "casetable/listing/ReadAhead.h"
#include "casetable/listing/ReadList.h"
#include "casetable/system/Console.h"
#include "casetable/system/ExitCode.h"
#include "casetable/system/Interrupt.h"
#include "casetable/system/StatusLine.h"
#include "casetable/system/Thread.h"

namespace casetable {

namespace {

using Clock = std::chrono::steady_clock;

// How often an interrupt is looked for.
const std::chrono::milliseconds interruptInterval(50);

// How long an interrupted walk may take to stop, if it is not held up in the system.
const std::chrono::milliseconds timeToStop(200);

// From now on a second signal ends the program at once, should anything below take long. That does
// no harm, as nothing is half-written yet.
void letGoIfInterrupted()
{
    if (isInterrupted())
        releaseInterrupts();
    throwIfInterrupted();
}

// A walk on a thread of its own, which may be abandoned: so it shares this with the thread.
struct TreeWalk {
    boost::shared_ptr<FileInfoInterface const> root;
    std::shared_ptr<ReadAhead> ahead; // Of the root's folders; may be null.
    Progress progress;
    std::promise<std::string> ended; // With the error text, or what was thrown.

    // Locked while one of the following is called. Then the walk is not held up in the system.
    std::mutex mutex;
    std::function<void(std::string_view path)> file;
    std::function<void()> finish;

    void run();
};

void TreeWalk::run()
{
    CrawlVisitor visitor;
    visitor.file = [this](std::string_view path) {
        const std::lock_guard<std::mutex> lock(mutex);
        throwIfInterrupted(); // An abandoned walk always ends here.
        file(path);
    };
    visitor.folder = [this](const std::string& path) {
        throwIfInterrupted();
        progress.enterFolder(QString::fromUtf8(path.c_str()));
    };
    std::string error;
    std::exception_ptr failure;
    try {
        error = crawl(root, visitor);
        if (error.empty()) {
            const std::lock_guard<std::mutex> lock(mutex);
            throwIfInterrupted();
            finish();
        }
    } catch (...) {
        failure = std::current_exception();
    }
    if (ahead)
        ahead->close();
    if (failure)
        ended.set_exception(failure);
    else
        ended.set_value(error);
}

} // namespace

Listing::Listing(const Source& source, Console& console, bool readsAhead)
    : source_(source), console_(console), fileSystem_(std::make_shared<FileSystem>()),
      ahead_(readsAhead ? std::make_shared<ReadAhead>() : nullptr)
{
    if (source.list) {
        root_ = listRoot(listName(*source.list));
        return;
    }
    fileSystem_->followLinks = source.follow;
    fileSystem_->leaveOutUnreadable = source.keepGoing;
    fileSystem_->selection = source.selection;
    fileSystem_->warn = [&console](const std::string& text) { console.warning(text); };
    root_ = fileSystemRoot(fileSystem_, source.root, ahead_);
}

void Listing::run(const ShardSize& size, const Taker& taker)
{
    ShardCutter cutter(size, taker.take);
    if (source_.list)
        runList(cutter, taker);
    else
        runTree(cutter, taker);
    throwIfInterrupted();
}

void Listing::runList(ShardCutter& cutter, const Taker& taker)
{
    const Clock::time_point start = Clock::now();
    StatusLine status(console_);
    ListFile file(*source_.list);
    ListReader reader(
        {listName(*source_.list), source_.nullSeparated, source_.selection, file.reread()},
        [&cutter](std::string_view path) { cutter.take(path); });
    runOnThread(
        [&] {
            file.readInto(reader);
            for (const std::string& warning : reader.warnings())
                console_.warning(warning);
            cutter.finish();
            taker.finish();
        },
        [&] {
            letGoIfInterrupted();
            status.update([&] {
                const std::chrono::duration<double> elapsed = Clock::now() - start;
                return listProgress(reader.name(), reader.pathCount(), file.bytesRead(),
                                    file.bytes(), elapsed);
            });
        });
}

void Listing::runTree(ShardCutter& cutter, const Taker& taker)
{
    StatusLine status(console_);
    const auto walk = std::make_shared<TreeWalk>();
    walk->root = root_;
    walk->ahead = ahead_;
    walk->file = [&cutter](std::string_view path) { cutter.take(path); };
    walk->finish = [&cutter, &taker] {
        cutter.finish();
        taker.finish();
    };
    std::future<std::string> ended = walk->ended.get_future();
    std::unique_ptr<Thread> thread = Thread::start([walk] { walk->run(); });
    if (!thread)
        throw Failure(ExitCode::ImportFailed, "the system has no thread left for the walk");
    while (ended.wait_for(interruptInterval) == std::future_status::timeout) {
        if (isInterrupted()) {
            releaseInterrupts();
            if (ended.wait_for(timeToStop) == std::future_status::timeout) {
                // Nobody knows when the system will answer. By then what files are handed to is
                // gone, so the walk must not be handing one on now, nor do so later.
                const std::lock_guard<std::mutex> lock(walk->mutex);
                static_cast<void>(thread.release());
                throwIfInterruptedLeavingThreads();
            }
            break;
        }
        status.update([&] { return walk->progress.text(fileSystem_->filesListed); });
    }
    thread.reset();
    throwIfInterrupted();
    const std::string error = ended.get();
    if (!error.empty())
        throw Failure(ExitCode::ImportFailed,
                      walkFailure(error, fileSystem_->refused, source_.root));
}

} // namespace casetable
