#include "casetable/listing/Walk.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <exception>
#include <memory>
#include <mutex>
#include <utility>

#include <QtGlobal>

#include "casetable/listing/FileList.h"
#include "casetable/listing/FileSystem.h"
#include "casetable/listing/Progress.h"
#include "casetable/system/Console.h"
#include "casetable/system/ExitCode.h"
#include "casetable/system/Interrupt.h"
#include "casetable/system/StatusLine.h"

namespace casetable {

namespace {

// How often an interrupt is looked for.
const std::chrono::milliseconds interruptInterval(50);

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
        // A thread that does not start is told below; Qt would do so in a line of its own, too.
        const QtMessageHandler own =
            qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
        crawl.start();
        qInstallMessageHandler(own);
    }
    if (!crawl.isRunning() && !crawl.isFinished())
        throw Failure(ExitCode::ImportFailed, "the system has no thread left for the walk");
    // From here on the thread is inside run(), so that the crawl may be destroyed at any time.
    crawl.course().started.wait();
}

// The crawler's texts for the root do not say which folder they mean.
std::string withPath(const std::string& text, const std::string& path)
{
    const bool aboutRoot = text == FolderCrawler::ROOT_PATH_DOES_NOT_EXIST_ERROR_STRING ||
                           text == FolderCrawler::ROOT_PATH_IS_NOT_READABLE_ERROR_STRING;
    return aboutRoot ? path + ": " + text : text;
}

// The crawler's text for a folder below the root.
bool isAboutAFolderThatMayNotBeRead(const std::string& text)
{
    const std::string beginning = "The specified path: ";
    const std::string end = " is not readable.";
    return text.compare(0, beginning.size(), beginning) == 0 && text.size() > end.size() &&
           text.compare(text.size() - end.size(), end.size(), end) == 0;
}

std::unique_ptr<FolderCrawler> walkTree(const boost::shared_ptr<FileInfoInterface const>& root,
                                        const std::atomic<std::size_t>& filesSeen, Console& console)
{
    Progress progress;
    StatusLine status(console);
    auto crawl = std::make_unique<Crawl>(root);
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
        status.update([&] { return progress.text(filesSeen); });
    }
    crawl->wait();
    throwIfInterrupted();
    if (course.failure)
        std::rethrow_exception(course.failure);

    const QString& error = crawl->result().errorString;
    if (!error.isNull())
        throw Failure(ExitCode::ImportFailed, withPath(error.toStdString(), root->fullPath()));
    return crawl;
}

} // namespace

std::unique_ptr<FolderCrawler> walk(FileSystem& fileSystem, const std::string& path,
                                    Console& console)
{
    try {
        return walkTree(fileSystemRoot(fileSystem, path), fileSystem.filesSeen, console);
    } catch (const Failure& failure) {
        if (!isAboutAFolderThatMayNotBeRead(failure.what()))
            throw;
        throw Failure(failure.code,
                      failure.what() + std::string(" --keep-going leaves such folders out."));
    }
}

std::unique_ptr<FolderCrawler> walk(FileList& list, Console& console)
{
    return walkTree(list.root(), list.filesSeen, console);
}

} // namespace casetable
