#include "casetable/Walk.h"

#include <chrono>
#include <condition_variable>
#include <exception>
#include <memory>
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

// What the crawl's thread tells the caller's.
struct Course {
    Event started;
    Event finished;
    std::exception_ptr failure; // Read after `finished`.
};

// A crawler whose unexpected failures, such as a lack of memory, reach the caller instead of ending
// the program.
class Crawl : public FolderCrawler {
public:
    explicit Crawl(boost::shared_ptr<FileInfoInterface const> root)
        : FolderCrawler(std::move(root)), course_(std::make_shared<Course>())
    {
    }

    Course& course() const { return *course_; }

    void run() override
    {
        // The base's destructor waits for this thread, so what belongs to the derived object may be
        // gone before run() ends.
        const std::shared_ptr<Course> course = course_;
        course->started.set();
        try {
            FolderCrawler::run();
        } catch (...) {
            course->failure = std::current_exception();
        }
        course->finished.set();
    }

private:
    const std::shared_ptr<Course> course_;
};

void start(Crawl& crawl)
{
    {
        const SignalsBlocked signalsBlocked;
        crawl.start();
    }
    if (!crawl.isRunning() && !crawl.isFinished())
        throw Failure(ExitCode::ImportFailed, "the system has no thread left for the walk");
    // From here on the thread is inside run(), so that the crawl may be destroyed at any time.
    crawl.course().started.wait();
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

std::unique_ptr<FolderCrawler> walk(FileSystem& fileSystem, const std::string& path,
                                    Console& console)
{
    Progress progress;
    StatusLine status(console);
    auto crawl = std::make_unique<Crawl>(fileSystemRoot(fileSystem, path));
    Course& course = crawl->course();
    QObject::connect(crawl.get(), SIGNAL(processingDirectory(QString)), &progress,
                     SLOT(enterFolder(QString)), Qt::DirectConnection);
    start(*crawl);
    while (!course.finished.waitFor(interruptInterval)) {
        if (isInterrupted()) {
            // The walk stops at its next entry. Should the system keep it waiting for that, a
            // second signal ends the program; nothing is half-written yet.
            releaseInterrupts();
            throwIfInterrupted();
        }
        status.update(progress, fileSystem);
    }
    crawl->wait();
    throwIfInterrupted();
    if (course.failure)
        std::rethrow_exception(course.failure);

    const QString& error = crawl->result().errorString;
    if (!error.isNull())
        throw Failure(ExitCode::ImportFailed, withPath(error.toStdString(), path));
    return crawl;
}

} // namespace casetable
