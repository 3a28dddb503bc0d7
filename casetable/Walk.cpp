#include "casetable/Walk.h"

#include <chrono>
#include <condition_variable>
#include <mutex>

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
    Event finished;
    Progress progress;
    StatusLine status(console);
    FolderCrawler crawler(fileSystemRoot(fileSystem, path));
    QObject::connect(&crawler, SIGNAL(processingDirectory(QString)), &progress,
                     SLOT(enterFolder(QString)), Qt::DirectConnection);
    QObject::connect(&crawler, &QThread::finished, [&finished] { finished.set(); });
    {
        const SignalsBlocked signalsBlocked;
        crawler.start();
    }
    while (!finished.waitFor(interruptInterval)) {
        throwIfInterrupted();
        status.update(progress, fileSystem);
    }
    crawler.wait();
    throwIfInterrupted();

    FolderCrawler::Result result = crawler.result();
    if (!result.errorString.isNull())
        throw Failure(ExitCode::ImportFailed, withPath(result.errorString.toStdString(), path));
    return result;
}

} // namespace casetable
