#include "casetable/Walk.h"

#include <chrono>
#include <condition_variable>
#include <exception>
#include <mutex>
#include <utility>

#include "casetable/Console.h"
#include "casetable/ExitCode.h"
#include "casetable/FileSystem.h"
#include "casetable/Interrupt.h"
#include "casetable/Progress.h"

namespace casetable {

namespace {

// How often an interrupt is looked for, and how often the status line changes.
const std::chrono::milliseconds interruptInterval(50);
const std::chrono::milliseconds statusInterval(200);

class Event {
public:
    void set()
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        happened_ = true;
        condition_.notify_all();
    }

    void wait()
    {
        std::unique_lock<std::mutex> lock(mutex_);
        condition_.wait(lock, [this] { return happened_; });
    }

    bool waitFor(std::chrono::milliseconds time)
    {
        std::unique_lock<std::mutex> lock(mutex_);
        return condition_.wait_for(lock, time, [this] { return happened_; });
    }

private:
    std::mutex mutex_;
    std::condition_variable condition_;
    bool happened_ = false;
};

// What the crawl's thread tells the caller's. Outlives the thread.
struct Course {
    Event started;
    Event finished;
    std::exception_ptr failure; // Read after `finished`.
};

// A crawler whose unexpected failures, such as a lack of memory, reach the caller instead of ending
// the program.
class Crawl : public FolderCrawler {
public:
    Crawl(boost::shared_ptr<FileInfoInterface const> root, Course& course)
        : FolderCrawler(std::move(root)), course_(course)
    {
    }

    void run() override
    {
        // The base's destructor waits for this thread, so what belongs to the derived object may be
        // gone before run() ends.
        Course& course = course_;
        course.started.set();
        try {
            FolderCrawler::run();
        } catch (...) {
            course.failure = std::current_exception();
        }
        course.finished.set();
    }

private:
    Course& course_;
};

void start(Crawl& crawl, Course& course)
{
    {
        const SignalsBlocked signalsBlocked;
        crawl.start();
    }
    if (!crawl.isRunning() && !crawl.isFinished())
        throw Failure(ExitCode::ImportFailed, "the system has no thread left for the walk");
    // From here on the thread is inside run(), so that the crawl may be destroyed at any time.
    course.started.wait();
}

// Clears the status line however the walk ends.
class StatusLine {
public:
    explicit StatusLine(Console& console) : console_(console) {}
    ~StatusLine() { console_.clearStatus(); }
    StatusLine(const StatusLine&) = delete;
    StatusLine& operator=(const StatusLine&) = delete;

    void update(const Progress& progress, const FileSystem& fileSystem)
    {
        const auto now = std::chrono::steady_clock::now();
        if (now - updated_ < statusInterval)
            return;
        updated_ = now;
        console_.setStatus(progress.text(fileSystem.filesSeen));
    }

private:
    Console& console_;
    std::chrono::steady_clock::time_point updated_ = std::chrono::steady_clock::now();
};

// The crawler's texts for the root do not say which folder they mean.
std::string withPath(const std::string& text, const std::string& path)
{
    const bool aboutRoot = text == FolderCrawler::ROOT_PATH_DOES_NOT_EXIST_ERROR_STRING ||
                           text == FolderCrawler::ROOT_PATH_IS_NOT_READABLE_ERROR_STRING;
    return aboutRoot ? path + ": " + text : text;
}

} // namespace

FolderCrawler::Result walk(FileSystem& fileSystem, const std::string& path, Console& console)
{
    Course course;
    Progress progress;
    StatusLine status(console);
    Crawl crawl(fileSystemRoot(fileSystem, path), course);
    QObject::connect(&crawl, SIGNAL(processingDirectory(QString)), &progress,
                     SLOT(enterFolder(QString)), Qt::DirectConnection);
    start(crawl, course);
    while (!course.finished.waitFor(interruptInterval)) {
        if (isInterrupted()) {
            // The walk stops at its next entry. Should the system keep it waiting for that, a
            // second signal ends the program; nothing is half-written yet.
            releaseInterrupts();
            throwIfInterrupted();
        }
        status.update(progress, fileSystem);
    }
    crawl.wait();
    throwIfInterrupted();
    if (course.failure)
        std::rethrow_exception(course.failure);

    FolderCrawler::Result result = crawl.result();
    if (!result.errorString.isNull())
        throw Failure(ExitCode::ImportFailed, withPath(result.errorString.toStdString(), path));
    return result;
}

} // namespace casetable
