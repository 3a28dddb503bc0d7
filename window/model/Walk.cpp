#include "window/model/Walk.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <exception>
#include <functional>
#include <mutex>
#include <new>
#include <utility>

#include "casetable/listing/Crawl.h"
#include "casetable/listing/FileSystem.h"
#include "casetable/listing/ListReader.h"
#include "casetable/listing/ReadAhead.h"
#include "casetable/listing/ReadList.h"
#include "casetable/system/ExitCode.h"
#include "casetable/system/Thread.h"

namespace casetable {

namespace {

using Clock = std::chrono::steady_clock;

// Thrown through the walk to end it.
struct Stopped {};

} // namespace

// What the walk's thread shares with its owner, and keeps where it is left to itself.
struct Walk::State {
    Source source;
    const Clock::time_point begin = Clock::now();
    std::atomic<bool> isStopped{false};
    std::atomic<bool> hasEnded{false};
    std::atomic<std::size_t> folders{0};
    std::atomic<std::size_t> fileCount{0};

    mutable std::mutex mutex; // Guards what follows.
    std::string current;
    Files::Shards shards;
    End end;
    Clock::time_point endTime;

    void run();

private:
    void throwIfStopped() const
    {
        if (isStopped)
            throw Stopped();
    }
    void take(ShardCutter& cutter, std::string_view path);
    void warn(const std::string& text);
    void walkTree(ShardCutter& cutter);
    void readList(ShardCutter& cutter);
    std::string runToEnd();
};

void Walk::State::take(ShardCutter& cutter, std::string_view path)
{
    throwIfStopped();
    ++fileCount;
    cutter.take(path);
}

void Walk::State::warn(const std::string& text)
{
    const std::lock_guard<std::mutex> lock(mutex);
    end.warnings.push_back(text);
}

void Walk::State::walkTree(ShardCutter& cutter)
{
    const auto fileSystem = std::make_shared<FileSystem>();
    fileSystem->followLinks = source.follow;
    fileSystem->leaveOutUnreadable = source.keepGoing;
    fileSystem->selection = source.selection;
    fileSystem->warn = [this](const std::string& text) { warn(text); };
    const auto ahead = std::make_shared<ReadAhead>();
    CrawlVisitor visitor;
    visitor.file = [&](std::string_view path) { take(cutter, path); };
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

void Walk::State::readList(ShardCutter& cutter)
{
    ListFile file(*source.list);
    ListReader reader(
        {listName(*source.list), source.nullSeparated, source.selection, file.reread()},
        [&](std::string_view path) { take(cutter, path); });
    file.readInto(reader);
    for (const std::string& warning : reader.warnings())
        warn(warning);
}

// The error, if there is one.
std::string Walk::State::runToEnd()
{
    ShardCutter cutter(ShardSize(), [this](Shard shard) {
        const std::lock_guard<std::mutex> lock(mutex);
        shards.push_back(std::make_shared<const Shard>(std::move(shard)));
    });
    try {
        if (source.list)
            readList(cutter);
        else
            walkTree(cutter);
        cutter.finish();
    } catch (const Stopped&) {
        cutter.finish();
    } catch (const std::bad_alloc&) {
        return "not enough memory";
    } catch (const std::exception& failure) {
        return failure.what();
    }
    return "";
}

void Walk::State::run()
{
    std::string error = runToEnd();
    Files::Shards ordered;
    try {
        ordered = Files(shards).inByteOrder().shards();
    } catch (const std::bad_alloc&) {
        error = "not enough memory";
    }
    {
        const std::lock_guard<std::mutex> lock(mutex);
        shards = std::move(ordered);
        end.error = error;
        end.isStopped = isStopped;
        endTime = Clock::now();
    }
    hasEnded = true;
}

namespace {

// Walks that were left to themselves, with what tells whether they have ended.
struct Left {
    std::function<bool()> hasEnded;
    std::unique_ptr<Thread> thread;
};

std::vector<Left>& leftWalks()
{
    static std::vector<Left> walks;
    return walks;
}

// Takes those off that have ended.
void reapLeft()
{
    std::vector<Left>& walks = leftWalks();
    walks.erase(std::remove_if(walks.begin(), walks.end(),
                               [](const Left& walk) { return walk.hasEnded(); }),
                walks.end());
}

} // namespace

Walk::Walk(const Source& source) : state_(std::make_shared<State>())
{
    reapLeft();
    state_->source = source;
    thread_ = Thread::start([state = state_] { state->run(); });
    if (!thread_)
        throw Failure(ExitCode::ImportFailed, "the system has no thread left for the walk");
}

Walk::~Walk()
{
    stop();
    if (!hasEnded())
        leftWalks().push_back(
            {[state = state_] { return state->hasEnded.load(); }, std::move(thread_)});
}

void Walk::stop()
{
    state_->isStopped = true;
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

bool Walk::isAnyLeft()
{
    reapLeft();
    return !leftWalks().empty();
}

} // namespace casetable
