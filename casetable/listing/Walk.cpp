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
#include "casetable/listing/ReadAhead.h"
#include "casetable/system/Console.h"
#include "casetable/system/ExitCode.h"
#include "casetable/system/Interrupt.h"
#include "casetable/system/StatusLine.h"

namespace casetable {

namespace {

// How often an interrupt is looked for.
const std::chrono::milliseconds interruptInterval(50);

// How long an interrupted walk may take to stop, if it is not held up in the system.
const std::chrono::milliseconds timeToStop(200);

// By what the thread of a crawl tells the caller's how far it is.
struct Milestones {
    std::promise<void> started;
    std::promise<void> finished; // With what run() threw, if it did.
};

// A crawler that hands unexpected exceptions, such as a lack of memory, to the caller. In the base
// class they would end the program.
class Crawl : public FolderCrawler {
public:
    // `ahead` lists the folders of the tree ahead; it may be null.
    Crawl(boost::shared_ptr<FileInfoInterface const> root, std::shared_ptr<ReadAhead> ahead)
        : FolderCrawler(std::move(root)), ahead_(std::move(ahead)),
          milestones_(std::make_shared<Milestones>())
    {
    }

    Milestones& milestones() const { return *milestones_; }

    void run() override
    {
        // The base class's destructor waits for this thread, so the members of this class may be
        // gone before run() ends.
        const std::shared_ptr<ReadAhead> ahead = ahead_;
        const std::shared_ptr<Milestones> milestones = milestones_;
        milestones->started.set_value();
        std::exception_ptr failure;
        try {
            FolderCrawler::run();
        } catch (...) {
            failure = std::current_exception();
        }
        if (ahead)
            ahead->close();
        if (failure)
            milestones->finished.set_exception(failure);
        else
            milestones->finished.set_value();
    }

private:
    const std::shared_ptr<ReadAhead> ahead_;
    const std::shared_ptr<Milestones> milestones_;
};

void start(Crawl& crawl)
{
    {
        const SignalsBlocked signalsBlocked;
        // Without this, Qt would print a line of its own where the thread does not start; the
        // exception below tells it.
        const QtMessageHandler own =
            qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
        crawl.start();
        qInstallMessageHandler(own);
    }
    if (!crawl.isRunning() && !crawl.isFinished())
        throw Failure(ExitCode::ImportFailed, "the system has no thread left for the walk");
    // From here on the thread is inside run(), so the crawl may be destroyed at any time.
    crawl.milestones().started.get_future().wait();
}

std::unique_ptr<FolderCrawler> walkTree(const boost::shared_ptr<FileInfoInterface const>& root,
                                        const std::shared_ptr<ReadAhead>& ahead,
                                        const std::atomic<std::size_t>& filesSeen, Console& console)
{
    auto progress = std::make_unique<Progress>();
    StatusLine status(console);
    auto crawl = std::make_unique<Crawl>(root, ahead);
    std::future<void> finished = crawl->milestones().finished.get_future();
    QObject::connect(crawl.get(), SIGNAL(processingDirectory(QString)), progress.get(),
                     SLOT(enterFolder(QString)), Qt::DirectConnection);
    start(*crawl);
    while (finished.wait_for(interruptInterval) == std::future_status::timeout) {
        if (isInterrupted()) {
            // Should anything below take long, a second signal ends the program at once, which does
            // no harm, as nothing is half-written yet.
            releaseInterrupts();
            if (ahead && finished.wait_for(timeToStop) == std::future_status::timeout) {
                // Nobody knows when the system will answer, and what the threads do then.
                static_cast<void>(crawl.release());
                static_cast<void>(progress.release());
                throwIfInterruptedLeavingThreads();
            }
            throwIfInterrupted();
        }
        status.update([&] { return progress->text(filesSeen); });
    }
    crawl->wait();
    throwIfInterrupted();
    finished.get();
    return crawl;
}

} // namespace

std::unique_ptr<FolderCrawler> walk(const std::shared_ptr<FileSystem>& fileSystem,
                                    const std::string& path, Console& console)
{
    const auto ahead = std::make_shared<ReadAhead>();
    std::unique_ptr<FolderCrawler> crawler =
        walkTree(fileSystemRoot(fileSystem, path, ahead), ahead, fileSystem->filesSeen, console);
    std::string error = crawler->result().errorString.toStdString();
    if (error.empty())
        return crawler;
    // The crawler's error text does not name the root.
    if (fileSystem->refused == FileSystem::Refused::Root)
        error = path + ": " + error;
    if (fileSystem->refused == FileSystem::Refused::Folder)
        error += " --keep-going leaves such folders out.";
    throw Failure(ExitCode::ImportFailed, error);
}

std::unique_ptr<FolderCrawler> walk(FileList& list, Console& console)
{
    std::unique_ptr<FolderCrawler> crawler =
        walkTree(list.root(), nullptr, list.filesSeen, console);
    const std::string error = crawler->result().errorString.toStdString();
    if (!error.empty())
        throw Failure(ExitCode::ImportFailed, error);
    return crawler;
}

} // namespace casetable
