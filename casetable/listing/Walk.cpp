#include "casetable/listing/Walk.h"

#include <atomic>
#include <chrono>
#include <cstddef>
#include <exception>
#include <future>
#include <memory>
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

// What the crawl's thread tells the caller's.
struct Course {
    std::promise<void> started;
    std::promise<void> finished; // Holds what run() threw.
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
        course->started.set_value();
        try {
            FolderCrawler::run();
            course->finished.set_value();
        } catch (...) {
            course->finished.set_exception(std::current_exception());
        }
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
    crawl.course().started.get_future().wait();
}

std::unique_ptr<FolderCrawler> walkTree(const boost::shared_ptr<FileInfoInterface const>& root,
                                        const std::atomic<std::size_t>& filesSeen, Console& console)
{
    Progress progress;
    StatusLine status(console);
    auto crawl = std::make_unique<Crawl>(root);
    std::future<void> finished = crawl->course().finished.get_future();
    QObject::connect(crawl.get(), SIGNAL(processingDirectory(QString)), &progress,
                     SLOT(enterFolder(QString)), Qt::DirectConnection);
    start(*crawl);
    while (finished.wait_for(interruptInterval) == std::future_status::timeout) {
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
    finished.get();
    return crawl;
}

} // namespace

std::unique_ptr<FolderCrawler> walk(FileSystem& fileSystem, const std::string& path,
                                    Console& console)
{
    std::unique_ptr<FolderCrawler> crawler =
        walkTree(fileSystemRoot(fileSystem, path), fileSystem.filesSeen, console);
    std::string error = crawler->result().errorString.toStdString();
    if (error.empty())
        return crawler;
    // The crawler's texts about the root do not say which folder they mean.
    if (fileSystem.refused == FileSystem::Refused::Root)
        error = path + ": " + error;
    if (fileSystem.refused == FileSystem::Refused::Folder)
        error += " --keep-going leaves such folders out.";
    throw Failure(ExitCode::ImportFailed, error);
}

std::unique_ptr<FolderCrawler> walk(FileList& list, Console& console)
{
    std::unique_ptr<FolderCrawler> crawler = walkTree(list.root(), list.filesSeen, console);
    const std::string error = crawler->result().errorString.toStdString();
    if (!error.empty())
        throw Failure(ExitCode::ImportFailed, error);
    return crawler;
}

} // namespace casetable
