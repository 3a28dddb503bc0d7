#include "casetable/listing/ReadAhead.h"

#include <algorithm>
#include <iterator>
#include <new>
#include <stdexcept>
#include <system_error>
#include <utility>

#include <pthread.h>
#include <sys/resource.h>

#include "casetable/system/Interrupt.h"
#include "casetable/system/Processors.h"

namespace casetable {

namespace {

using Clock = std::chrono::steady_clock;
using Duration = ReadAhead::Duration;

// Only jobs that take so long are measured exactly, as in shorter ones that would show.
const Duration longJob(0.0002);

// Jobs that took so long altogether tell how many threads are wanted now.
const Duration lately(0.1);

// A thread needs little: what a job reads at once, and what the threads of a sanitizer need.
const std::size_t threadStackBytes = std::size_t{1024} * 1024;

// How many bytes a job may have grown before the limit knows of it.
const std::size_t untoldBytes = std::size_t{64} * 1024;

// Whether an error says that the whole process has too much of something.
bool meansLack(const std::error_code& error)
{
    return error == std::errc::too_many_files_open ||
           error == std::errc::too_many_files_open_in_system ||
           error == std::errc::not_enough_memory;
}

// What this thread has used of a processor so far, and how often it has left it to wait.
struct Usage {
    Duration processor{0};
    long waits = 0;
};

Usage usageOfThread()
{
    rusage usage = {};
    ::getrusage(RUSAGE_THREAD, &usage);
    const auto seconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
    };
    return {Duration(seconds(usage.ru_utime) + seconds(usage.ru_stime)), usage.ru_nvcsw};
}

} // namespace

// How long a job took, and how much of that it waited in the system.
struct ReadAhead::Time {
    Duration all{0};
    Duration waited{0};
};

class ReadAhead::Stopwatch {
public:
    explicit Stopwatch(bool exactly)
        : exactly_(exactly), usage_(exactly ? usageOfThread() : Usage()), start_(Clock::now())
    {
    }

    Time read() const
    {
        Time time;
        time.all = Clock::now() - start_;
        if (!exactly_)
            return time;
        const Usage usage = usageOfThread();
        // Where it never left the processor by itself, others took it.
        if (usage.waits != usage_.waits)
            time.waited = std::max(Duration(0), time.all - (usage.processor - usage_.processor));
        return time;
    }

private:
    const bool exactly_;
    const Usage usage_;
    const Clock::time_point start_;
};

ReadAhead::Limits ReadAhead::usualLimits()
{
    Limits limits;
    limits.threads = 64;
    limits.descriptors = 128;
    limits.bytes = std::size_t{16} * 1024 * 1024;
    limits.jobs = 4096;
    rlimit files = {};
    if (::getrlimit(RLIMIT_NOFILE, &files) == 0) {
        limits.threads = std::min<std::size_t>(limits.threads, files.rlim_cur / 16);
        limits.descriptors = std::min<std::size_t>(limits.descriptors, files.rlim_cur / 8);
    }
    return limits;
}

ReadAhead::ReadAhead(const Limits& limits, Duration beforeThreads)
    : cores_(availableProcessors()), beforeThreads_(beforeThreads), limits_(limits)
{
}

bool ReadAhead::await(Job& job)
{
    std::unique_lock<std::mutex> lock(mutex_);
    return isDoneAhead(lock, job);
}

void ReadAhead::finish(Job& job)
{
    std::unique_lock<std::mutex> lock(mutex_);
    if (isDoneAhead(lock, job)) {
        forget(job);
        return;
    }
    const bool exactly = measured_;
    lock.unlock();
    const Stopwatch stopwatch(exactly);
    const Jobs jobs = runHere(job);
    const Time time = stopwatch.read();
    std::list<JobPtr> led(jobs.begin(), jobs.end());
    lock.lock();
    count(time);
    // The walk has come to this job, so whatever is queued comes behind those to which it leads.
    lead(led, queue_.begin());
    useThreadIfWanted();
}

void ReadAhead::close()
{
    withdraw();
    const std::lock_guard<std::mutex> lock(mutex_);
    for (std::list<JobPtr>* const jobs : {&queue_, &done_}) {
        while (!jobs->empty()) {
            const JobPtr dropped = jobs->front();
            forget(*dropped);
            dropped->discard();
        }
    }
}

// Whether `job` is done; otherwise nobody does it but the caller.
bool ReadAhead::isDoneAhead(std::unique_lock<std::mutex>& lock, Job& job)
{
    while (job.state_ == State::Begun) {
        if (const JobPtr other = next()) {
            perform(lock, *other, true);
            continue;
        }
        job.isAwaited_ = true;
        space_.notify_all();
        finished_.wait(lock);
        job.isAwaited_ = false;
    }
    if (job.state_ == State::Queued)
        forget(job);
    return job.state_ == State::Done;
}

// Runs a job to which the walk has come. If that lacks something, the threads may have it.
ReadAhead::Jobs ReadAhead::runHere(Job& job)
{
    try {
        return job.run(nullptr);
    } catch (const std::system_error& failure) {
        if (!meansLack(failure.code()) || !withdraw())
            throw;
    }
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        for (const JobPtr& done : done_)
            done->closeDescriptor();
    }
    return job.run(nullptr);
}

// Ends all threads. False if that had been done before.
bool ReadAhead::withdraw()
{
    std::unique_lock<std::mutex> lock(mutex_);
    const bool wasWithdrawn = std::exchange(isWithdrawn_, true);
    work_.notify_all();
    space_.notify_all();
    finished_.wait(lock, [this] { return threads_ == 0; });
    return !wasWithdrawn;
}

void ReadAhead::useThreadIfWanted()
{
    if (isFull_ || queue_.size() == begun_ || busyThreads() >= wantedThreads())
        return;
    if (idle_ > 0) {
        const std::size_t wanted = wantedThreads() - busyThreads();
        for (std::size_t i = std::min({idle_, wanted, queue_.size() - begun_}); i > 0; --i)
            work_.notify_one();
        return;
    }
    pthread_attr_t attributes;
    ::pthread_attr_init(&attributes);
    ::pthread_attr_setstacksize(&attributes, threadStackBytes);
    ::pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_DETACHED);
    const auto run = [](void* self) -> void* {
        const std::unique_ptr<Self> ahead(static_cast<Self*>(self));
        (*ahead)->work();
        return nullptr;
    };
    // An abandoned thread may be the last to use this object.
    std::unique_ptr<Self> self(new (std::nothrow) Self(shared_from_this()));
    const SignalsBlocked signalsBlocked;
    pthread_t thread = {};
    if (self && ::pthread_create(&thread, &attributes, run, self.get()) == 0) {
        static_cast<void>(self.release());
        ++threads_;
    } else {
        limits_.threads = threads_;
    }
    ::pthread_attr_destroy(&attributes);
}

void ReadAhead::work()
{
    std::unique_lock<std::mutex> lock(mutex_);
    while (!isWithdrawn_) {
        if (const JobPtr job = busyThreads() <= wantedThreads() ? next() : nullptr) {
            perform(lock, *job, false);
        } else {
            ++idle_;
            work_.wait(lock);
            --idle_;
        }
    }
    --threads_;
    finished_.notify_one();
}

std::size_t ReadAhead::wantedThreads() const
{
    if (isWithdrawn_ || total_ < beforeThreads_)
        return 0;
    // While one job waits, others may compute. The walk is busy like a thread.
    const double busy =
        static_cast<double>(cores_) * (waited_ + computed_) / std::max(computed_, Duration(1e-9));
    return static_cast<std::size_t>(
        std::clamp(busy - 1, 0.0, static_cast<double>(limits_.threads)));
}

// What is to be begun next; null if there is nothing, or no room for it.
ReadAhead::JobPtr ReadAhead::next() const
{
    if (isFull_ || isWithdrawn_ || queue_.size() == begun_)
        return nullptr;
    // No more stand before it than threads are at work.
    return *std::find_if(queue_.begin(), queue_.end(),
                         [](const JobPtr& job) { return job->state_ == State::Queued; });
}

// Does a queued job. The lock is let go of meanwhile.
void ReadAhead::perform(std::unique_lock<std::mutex>& lock, Job& job, bool byWalk)
{
    job.state_ = State::Begun;
    ++begun_;
    const bool exactly = measured_;
    lock.unlock();

    const Stopwatch stopwatch(exactly);
    Meter meter(*this, job, !byWalk);
    std::list<JobPtr> led;
    bool isDone = false;
    bool isLack = false;
    try {
        const Jobs jobs = job.run(&meter);
        led.assign(jobs.begin(), jobs.end());
        isDone = true;
    } catch (const std::system_error& failure) {
        isLack = meansLack(failure.code());
    } catch (const std::bad_alloc&) {
        isLack = true;
    } catch (...) {
        // The walk will see for itself.
    }
    const Time time = stopwatch.read();

    lock.lock();
    --begun_;
    if (!meter.hasWaited_)
        count(time);
    hold(job, meter.untold_);
    if (isDone) {
        lead(led, job.place_);
        done_.splice(done_.end(), queue_, job.place_);
        job.state_ = State::Done;
        isFull_ = isFull_ || done_.size() >= limits_.jobs;
    } else {
        forget(job);
    }
    if (isLack)
        limits_.threads = std::max<std::size_t>(busyThreads(), 1) - 1;
    if (job.isAwaited_)
        finished_.notify_one();
    useThreadIfWanted();
}

std::size_t ReadAhead::busyThreads() const
{
    return threads_ - idle_;
}

void ReadAhead::count(const Time& time)
{
    total_ += time.all;
    waited_ += time.waited;
    computed_ += time.all - time.waited;
    if (waited_ + computed_ > lately) {
        waited_ /= 2;
        computed_ /= 2;
    }
    measured_ = time.all >= longJob;
}

// Queues `jobs` before `place`.
void ReadAhead::lead(std::list<JobPtr>& jobs, std::list<JobPtr>::const_iterator place)
{
    if (isWithdrawn_)
        return;
    for (auto job = jobs.begin(); job != jobs.end(); ++job) {
        (*job)->state_ = State::Queued;
        (*job)->place_ = job;
    }
    queue_.splice(place, jobs);
}

// Counts memory that a job has taken.
void ReadAhead::hold(Job& job, std::size_t bytes)
{
    job.bytes_ += bytes;
    bytes_ += bytes;
    isFull_ = isFull_ || bytes_ >= limits_.bytes;
}

// Takes a job out of its list; nobody does it any more but the walk. It must have another owner.
void ReadAhead::forget(Job& job)
{
    (job.state_ == State::Done ? done_ : queue_).erase(job.place_);
    job.state_ = State::Alone;
    bytes_ -= std::exchange(job.bytes_, 0);
    if (std::exchange(job.keepsDescriptor_, false))
        --descriptors_;
    // Not at once when there is room for one, lest threads are woken for every job.
    if (isFull_ && bytes_ <= limits_.bytes / 2 && done_.size() <= limits_.jobs / 2) {
        isFull_ = false;
        work_.notify_all();
        space_.notify_all();
    }
}

void ReadAhead::Meter::grow(std::size_t bytes)
{
    untold_ += bytes;
    if (untold_ < untoldBytes)
        return;
    std::unique_lock<std::mutex> lock(ahead_.mutex_);
    ahead_.hold(job_, std::exchange(untold_, 0));
    const auto mayGoOn = [this] { return !mayWait_ || !ahead_.isFull_ || job_.isAwaited_; };
    while (!mayGoOn()) {
        if (ahead_.isWithdrawn_)
            throw std::runtime_error("nobody needs the job any more");
        hasWaited_ = true;
        ahead_.space_.wait(lock);
    }
}

bool ReadAhead::Meter::mayKeepDescriptor()
{
    const std::lock_guard<std::mutex> lock(ahead_.mutex_);
    if (!job_.keepsDescriptor_ && ahead_.descriptors_ < ahead_.limits_.descriptors) {
        job_.keepsDescriptor_ = true;
        ++ahead_.descriptors_;
    }
    return job_.keepsDescriptor_;
}

void intrusive_ptr_add_ref(ReadAhead::Job* job)
{
    job->references_.fetch_add(1, std::memory_order_relaxed);
}

void intrusive_ptr_release(ReadAhead::Job* job)
{
    // In a loop, as jobs may stand one below the other on more levels than a stack has room for.
    while (job != nullptr && job->references_.fetch_sub(1, std::memory_order_acq_rel) == 1) {
        ReadAhead::Job* const parent = job->parent_.detach();
        delete job;
        job = parent;
    }
}

} // namespace casetable
