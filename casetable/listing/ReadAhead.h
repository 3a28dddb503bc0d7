#ifndef CASETABLE_LISTING_READAHEAD_H
#define CASETABLE_LISTING_READAHEAD_H

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <list>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

#include <boost/intrusive_ptr.hpp>

namespace casetable {

/// Does jobs that lead to further jobs, such as the listings of folders, on threads of its own
/// before a walk comes to them: first what the walk needs first.
///
/// The walk, one thread, finishes the jobs in its order: a job, then all to which that one leads,
/// in theirs. What nobody has begun by then, it does itself, so it waits only for what is nearly
/// done, and without any thread all is done as it would be without this class. The results are the
/// jobs' own; only when they are made depends on time.
///
/// Threads are set to work one by one, none before jobs have taken a millisecond. Where jobs
/// compute, they are one less than the processors that this process may use, as the walk works too;
/// where jobs wait in the system, so many more that the processors have work. They block the
/// interrupts. Where the system gives no more threads, descriptors or memory, fewer are used.
///
/// Made by std::make_shared, and closed by the walk in the end: until then, it and the jobs that
/// were not finished keep each other alive.
class ReadAhead : public std::enable_shared_from_this<ReadAhead> {
public:
    class Job;
    class Meter;
    using JobPtr = boost::intrusive_ptr<Job>;
    using Jobs = std::vector<JobPtr>;

    /// What is used at most, beside what the walk itself uses.
    struct Limits {
        std::size_t threads = 0;     ///< Threads at a time.
        std::size_t descriptors = 0; ///< Descriptors that stay open for jobs done but not finished.
        std::size_t bytes = 0;       ///< Memory of jobs begun or done, but not finished.
        std::size_t jobs = 0;        ///< Jobs done but not finished.
    };

    /// 64 threads, 128 descriptors, 16 MiB and 4,096 jobs; of threads and descriptors fewer where
    /// the process may open fewer than 1,024 files.
    static Limits usualLimits();

    /// How long the jobs together must have taken before the first thread is started.
    using Duration = std::chrono::duration<double>;

    explicit ReadAhead(const Limits& limits = usualLimits(),
                       Duration beforeThreads = Duration(0.001));
    ReadAhead(const ReadAhead&) = delete;
    ReadAhead& operator=(const ReadAhead&) = delete;

    /// Whether `job` is done. Waits where it is being done, and does others meanwhile. Otherwise
    /// it is left to finish(). To be called by the walk.
    bool await(Job& job);

    /// Returns when `job` is done, here if nobody else has done it, and counts it no longer among
    /// those done ahead. To be called by the walk. Throws what Job::run() throws here; failures
    /// ahead do not count, as the job is then done once more.
    void finish(Job& job);

    /// Has these jobs done ahead too, behind what is queued; the walk will come to them in this
    /// order, though no job has led to them. To be called by the walk.
    void expect(const Jobs& jobs);

    /// From now on nothing is done ahead. Returns when no thread is left. To be called by the walk.
    void close();

private:
    enum class State { Alone, Queued, Begun, Done };
    struct Time;
    class Stopwatch;
    using Self = std::shared_ptr<ReadAhead>;

    bool isDoneAhead(std::unique_lock<std::mutex>& lock, Job& job);
    Jobs runHere(Job& job);
    bool withdraw();
    void useThreadIfWanted();
    void work();
    std::size_t wantedThreads() const;
    std::size_t busyThreads() const;
    JobPtr next() const;
    void perform(std::unique_lock<std::mutex>& lock, Job& job, bool byWalk);
    void count(const Time& time);
    void lead(std::list<JobPtr>& jobs, std::list<JobPtr>::const_iterator place);
    void hold(Job& job, std::size_t bytes);
    void forget(Job& job);

    const std::size_t cores_;
    const Duration beforeThreads_;

    std::mutex mutex_;                 // Guards all below, and what jobs have for this class.
    std::condition_variable work_;     // There may be something to begin, or no need of a thread.
    std::condition_variable space_;    // A job that waits for room may go on.
    std::condition_variable finished_; // What the walk waits for has changed.
    Limits limits_;
    std::list<JobPtr> queue_; // Those queued or begun, in the order of the walk.
    std::list<JobPtr> done_;  // Those done ahead, in any order.
    std::size_t begun_ = 0;
    std::size_t bytes_ = 0;
    std::size_t descriptors_ = 0;
    std::size_t threads_ = 0;
    std::size_t idle_ = 0;
    bool isFull_ = false;      // A limit was reached, and what is held not yet halved.
    bool isWithdrawn_ = false; // Nothing is done ahead any more.
    bool measured_ = true;     // Whether the next job is measured exactly.
    Duration total_{0};        // What all jobs took.
    Duration waited_{0};       // What the latest jobs waited,
    Duration computed_{0};     // and what else they took.
};

/// Something to be done. Counts its references, in any threads.
class ReadAhead::Job {
public:
    Job(const Job&) = delete;
    Job& operator=(const Job&) = delete;

    /// The job that led to this one; null for the first. It lives as long as this one.
    const Job* parent() const { return parent_.get(); }

    /// Does it, keeps the result in this object, and returns the jobs to which it leads, in the
    /// order of the walk. Called on any thread, but by one at a time, and again after a failure.
    /// `ahead` is null when the walk, which has come to it, does it.
    virtual Jobs run(Meter* ahead) = 0;

    /// Closes the descriptor that run() kept open by leave of its Meter, as others lack
    /// descriptors.
    virtual void closeDescriptor() = 0;

    /// Drops the result, for which nobody will ask. The jobs in it keep this one alive, and it
    /// keeps them.
    virtual void discard() = 0;

protected:
    explicit Job(JobPtr parent) : parent_(std::move(parent)) {}
    virtual ~Job() = default;

private:
    friend class ReadAhead;
    friend class ReadAhead::Meter;
    friend void intrusive_ptr_add_ref(Job* job);
    friend void intrusive_ptr_release(Job* job);

    std::atomic<std::size_t> references_{0};
    JobPtr parent_;
    State state_ = State::Alone;
    std::list<JobPtr>::iterator place_; // In `queue_` or `done_`.
    std::size_t bytes_ = 0;
    bool keepsDescriptor_ = false;
    bool isAwaited_ = false;
};

/// Through which a job that is done ahead keeps to the limits.
class ReadAhead::Meter {
public:
    /// Tells that the result has grown by so many bytes. Waits where there is no room for them,
    /// until there is or the walk needs the job. Throws when nothing is done ahead any more.
    void grow(std::size_t bytes);

    /// Whether the job may keep a descriptor open for the jobs to which it leads.
    bool mayKeepDescriptor();

private:
    friend class ReadAhead;

    Meter(ReadAhead& ahead, Job& job, bool mayWait) : ahead_(ahead), job_(job), mayWait_(mayWait) {}

    ReadAhead& ahead_;
    Job& job_;
    const bool mayWait_;
    std::size_t untold_ = 0; // Bytes that the limit does not know of.
    bool hasWaited_ = false;
};

void intrusive_ptr_add_ref(ReadAhead::Job* job);
void intrusive_ptr_release(ReadAhead::Job* job);

} // namespace casetable

#endif
