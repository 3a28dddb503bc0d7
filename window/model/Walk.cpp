#include "window/model/Walk.h"

#include <atomic>
#include <chrono>
#include <exception>
#include <mutex>
#include <new>
#include <utility>

#include "casetable/listing/Crawl.h"
#include "casetable/listing/FileSystem.h"
#include "casetable/listing/ListReader.h"
#include "casetable/listing/ReadAhead.h"
#include "casetable/listing/ReadList.h"
#include "casetable/system/ExitCode.h"
#include "window/model/BackgroundJob.h"

namespace casetable {

namespace {

using Clock = std::chrono::steady_clock;

// Thrown through the walk to end it.
struct Stopped {};

} // namespace

// What the walk's thread shares with its owner, and keeps where it is left to itself.
struct Walk::State {
    Source source;
    Clock::time_point begin = Clock::now();
    std::atomic<bool> isStopped{false};
    std::atomic<bool> hasEnded{false};
    std::atomic<std::size_t> folders{0};
    std::atomic<std::size_t> fileCount{0};

    mutable std::mutex mutex; // Guards what follows.
    std::string current;
    Files::Shards shards;
    ShardCutter cutter{ShardSize(), [this](Shard shard) {
                           shards.push_back(std::make_shared<const Shard>(std::move(shard)));
                       }};
    bool isListed = false; // Whether no more files come, and they have only to be put in order.
    End end;
    Clock::time_point endTime;

    void run() { finish(runToEnd()); }

    // Puts the files in order, and ends. The error is that of the walk, if there is one.
    void finish(std::string error);

    // Hands over what there is so far of a walk that was stopped, as that of one that has only to
    // finish. Null where this is such a walk itself.
    std::shared_ptr<State> handOver();

private:
    void throwIfStopped() const
    {
        if (isStopped)
            throw Stopped();
    }
    void take(std::string_view path);
    void warn(const std::string& text);
    void walkTree();
    void readList();
    std::string runToEnd();
};

void Walk::State::take(std::string_view path)
{
    const std::lock_guard<std::mutex> lock(mutex);
    throwIfStopped();
    ++fileCount;
    cutter.take(path);
}

void Walk::State::warn(const std::string& text)
{
    const std::lock_guard<std::mutex> lock(mutex);
    end.warnings.push_back(text);
}

void Walk::State::walkTree()
{
    const auto fileSystem = std::make_shared<FileSystem>();
    fileSystem->followLinks = source.follow;
    fileSystem->leaveOutUnreadable = source.keepGoing;
    fileSystem->selection = source.selection;
    fileSystem->warn = [this](const std::string& text) { warn(text); };
    const auto ahead = std::make_shared<ReadAhead>();
    CrawlVisitor visitor;
    visitor.file = [&](std::string_view path) { take(path); };
    visitor.folder = [this](const std::string& path) {
        throwIfStopped();
        ++folders;
        const std::lock_guard<std::mutex> lock(mutex);
        current = path;
    };
    std::string error;
    try {
        error = crawl(fileSystemRoot(fileSystem, source.root, ahead), visitor);
    } catch (...) {
        ahead->close();
        throw;
    }
    ahead->close();
    if (!error.empty())
        throw Failure(ExitCode::ImportFailed, walkFailure(error, fileSystem->refused, source.root));
    const std::lock_guard<std::mutex> lock(mutex);
    end.hiddenLeftOut = fileSystem->hiddenLeftOut;
}

void Walk::State::readList()
{
    ListFile file(*source.list);
    ListReader reader(
        {listName(*source.list), source.nullSeparated, source.selection, file.reread()},
        [&](std::string_view path) { take(path); });
    file.readInto(reader);
    for (const std::string& warning : reader.warnings())
        warn(warning);
}

// The error, if there is one.
std::string Walk::State::runToEnd()
{
    try {
        if (source.list)
            readList();
        else
            walkTree();
    } catch (const Stopped&) {
        return "";
    } catch (const std::bad_alloc&) {
        return "not enough memory";
    } catch (const std::exception& failure) {
        return failure.what();
    }
    return "";
}

void Walk::State::finish(std::string error)
{
    Files::Shards ordered;
    try {
        {
            const std::lock_guard<std::mutex> lock(mutex);
            end.error = std::move(error);
            end.isStopped = isStopped;
            isListed = true;
            cutter.finish();
            ordered = shards;
        }
        ordered = Files(std::move(ordered)).inByteOrder().shards();
    } catch (const std::bad_alloc&) {
        const std::lock_guard<std::mutex> lock(mutex);
        end.error = "not enough memory";
    }
    {
        const std::lock_guard<std::mutex> lock(mutex);
        shards = std::move(ordered);
        endTime = Clock::now();
    }
    hasEnded = true;
}

std::shared_ptr<Walk::State> Walk::State::handOver()
{
    const std::lock_guard<std::mutex> lock(mutex);
    if (isListed)
        return nullptr;
    auto other = std::make_shared<State>();
    other->begin = begin;
    other->isStopped = true;
    other->isListed = true;
    other->folders = folders.load();
    cutter.finish();
    other->shards = std::exchange(shards, {});
    for (const auto& shard : other->shards)
        other->fileCount += shard->fileCount();
    other->current = current;
    other->end.warnings = end.warnings;
    return other;
}

Walk::Walk(const Source& source) : state_(std::make_shared<State>())
{
    state_->source = source;
    job_ = std::make_unique<BackgroundJob>([state = state_] { state->run(); });
}

Walk::~Walk()
{
    stop();
}

void Walk::stop()
{
    state_->isStopped = true;
}

void Walk::leave()
{
    stop();
    std::shared_ptr<State> other = state_->handOver();
    if (!other)
        return;
    state_ = std::move(other);
    try {
        job_ = std::make_unique<BackgroundJob>([state = state_] { state->finish(""); });
    } catch (const Failure&) {
        job_.reset();
        state_->finish("");
    }
}

bool Walk::hasEnded() const
{
    return state_->hasEnded;
}

Walk::Progress Walk::progress() const
{
    const std::lock_guard<std::mutex> lock(state_->mutex);
    const Clock::time_point now = hasEnded() ? state_->endTime : Clock::now();
    return {state_->folders, state_->fileCount, state_->current,
            std::chrono::duration<double>(now - state_->begin).count()};
}

Files Walk::files() const
{
    const std::lock_guard<std::mutex> lock(state_->mutex);
    return Files(state_->shards);
}

Walk::End Walk::end() const
{
    const std::lock_guard<std::mutex> lock(state_->mutex);
    return state_->end;
}

} // namespace casetable
