#include "crawler/FolderCrawler.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <future>
#include <list>
#include <memory>
#include <random>
#include <string>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include <boost/make_shared.hpp>
#include <boost/shared_ptr.hpp>

#include <sys/syscall.h>
#include <unistd.h>

#include <QCoreApplication>
#include <QObject>
#include <QString>
#include <QThread>

#include <vtkSmartPointer.h>
#include <vtkTable.h>
#include <vtkVariant.h>

#include <gtest/gtest.h>

#include "crawler/CrawlerBasicImporterParser.h"
#include "crawler/MetadataFileCrawler.h"
#include "crawler/MetadataPattern.h"
#include "host/FileInfoInterface.h"
#include "tests/crawler/Doubles.h"
#include "tests/support/Sanitizer.h"

namespace {

using doubles::FilePtr;
using doubles::runToEnd;

using Files = std::list<std::string>;

/// What the walks of one crawler do. Outlives the crawler, as a host's file system does.
struct Watch {
    std::atomic<bool> destroyed{false};
    std::atomic<std::size_t> calls{0};
    std::atomic<std::size_t> lateCalls{0}; ///< Made after the destructor had returned.

    void note()
    {
        ++calls;
        if (destroyed)
            ++lateCalls;
    }
};

/// A folder of `breadth` files and, on all but the last of `levels` levels, as many folders; made
/// as it is listed.
doubles::MemoryFilePtr madeTree(Watch& watch, int levels, int breadth,
                                const std::string& path = "/r")
{
    const doubles::Hook note = [&watch](const std::string&) { watch.note(); };
    const doubles::MemoryFilePtr folder = doubles::memoryFolder(path);
    folder->hook = note;
    folder->makeEntries = [&watch, levels, breadth, path, note] {
        std::vector<FilePtr> made;
        for (int i = 0; i < breadth; ++i) {
            const doubles::MemoryFilePtr file =
                doubles::memoryFile(path + "/T" + std::to_string(i));
            file->hook = note;
            made.push_back(file);
            if (levels > 1)
                made.push_back(
                    madeTree(watch, levels - 1, breadth, path + "/d" + std::to_string(i)));
        }
        return made;
    };
    return folder;
}

/// The files of such a tree, by its definition.
Files filesOfMadeTree(int levels, int breadth, const std::string& above = "")
{
    Files files;
    for (int i = 0; i < breadth; ++i) {
        files.push_back(above + "T" + std::to_string(i));
        if (levels > 1)
            files.splice(files.end(), filesOfMadeTree(levels - 1, breadth,
                                                      above + "d" + std::to_string(i) + "/"));
    }
    return files;
}

/// An entry of the machine's own file system, whose calls wait for the disk as a host's do.
struct RealEntry : FileInfoInterface {
    RealEntry(Watch& theWatch, std::filesystem::path thePath)
        : watch(theWatch), path(std::move(thePath))
    {
    }

    bool isDirectory() const override { return watch.note(), is_directory(path); }
    bool isReadable() const override { return watch.note(), access(path.c_str(), R_OK) == 0; }
    bool isFile() const override { return watch.note(), is_regular_file(path); }
    bool exists() const override { return watch.note(), std::filesystem::exists(path); }
    std::string fullPath() const override { return watch.note(), path.string(); }
    std::string fileName() const override { return watch.note(), path.filename().string(); }
    std::vector<FilePtr> entries(const std::string&) const override
    {
        watch.note();
        std::vector<FilePtr> listed;
        for (const auto& entry : std::filesystem::directory_iterator(path))
            listed.push_back(boost::make_shared<RealEntry>(watch, entry.path()));
        return listed;
    }

    Watch& watch;
    const std::filesystem::path path;
};

/// A folder of real folders with real files.
class RealTree {
public:
    RealTree()
    {
        std::string name = testing::TempDir() + "/crawler-test-XXXXXX";
        if (mkdtemp(&name[0]) == nullptr)
            throw std::system_error(errno, std::generic_category(), name);
        path_ = name;
        for (int i = 0; i < folders; ++i) {
            const std::filesystem::path folder = path_ / std::to_string(i) / "inner";
            create_directories(folder);
            for (int j = 0; j < filesAFolder; ++j)
                std::ofstream(folder / ("T" + std::to_string(j)));
        }
    }
    ~RealTree() { remove_all(path_); }
    RealTree(const RealTree&) = delete;
    RealTree& operator=(const RealTree&) = delete;

    const std::filesystem::path& path() const { return path_; }

    static const int folders = 20;
    static const int filesAFolder = 10;

private:
    std::filesystem::path path_;
};

/// True when the thread rests in the system, as one does that waits for another.
bool isAsleep(long thread)
{
    std::string state;
    std::ifstream file("/proc/self/task/" + std::to_string(thread) + "/stat");
    std::getline(file, state);
    const std::size_t name = state.rfind(')');
    return name != std::string::npos && state.compare(name, 4, ") S ") == 0;
}

/// Keeps the crawl's thread from ending before the destructor waits for it. ThreadSanitizer sees
/// the end handed over only there, because it does not see the locks inside an uninstrumented Qt.
class EndSeenBySanitizer {
public:
    explicit EndSeenBySanitizer(FolderCrawler& crawler)
    {
        if (!BUILT_WITH_THREAD_SANITIZER)
            return;
        const auto destroying = destroying_;
        const long owner = syscall(SYS_gettid);
        QObject::connect(&crawler, &QThread::finished, [destroying, owner] {
            const auto giveUp = std::chrono::steady_clock::now() + std::chrono::seconds(30);
            int asleep = 0;
            while (asleep < 3 && std::chrono::steady_clock::now() < giveUp) {
                std::this_thread::sleep_for(std::chrono::microseconds(200));
                asleep = *destroying && isAsleep(owner) ? asleep + 1 : 0;
            }
        });
    }

    void destructionComes() { *destroying_ = true; }

private:
    const std::shared_ptr<std::atomic<bool>> destroying_ =
        std::make_shared<std::atomic<bool>>(false);
};

/// Starts a walk of `root` and destroys the crawler `delay` later. Answers with the number of calls
/// that the walk had made.
std::size_t destroyAfter(std::chrono::nanoseconds delay, const FilePtr& root, Watch& watch)
{
    auto crawler = std::make_unique<FolderCrawler>(root);
    EndSeenBySanitizer end(*crawler);
    const auto moment = std::chrono::steady_clock::now() + delay;
    crawler->start();
    while (std::chrono::steady_clock::now() < moment)
        ; // A sleep would not be as short as most delays are.
    end.destructionComes();
    crawler.reset();
    watch.destroyed = true;
    return watch.calls;
}

/// Delays from none to `longest`, with as many short ones as long ones.
std::chrono::nanoseconds randomDelay(std::mt19937& random, std::chrono::nanoseconds longest)
{
    const double part = std::generate_canonical<double, 32>(random);
    const auto limit = longest / (1U << random() % 11);
    return std::chrono::nanoseconds(
        static_cast<std::int64_t>(part * static_cast<double>(limit.count())));
}

using Clock = std::chrono::steady_clock;

} // namespace

TEST(FolderCrawlerThreads, MayBeDestroyedAtAnyMomentOfAWalkInMemory)
{
    const int levels = 5;
    const int breadth = 5;
    Watch whole;
    FolderCrawler wholeWalk(madeTree(whole, levels, breadth));
    const auto begin = Clock::now();
    runToEnd(wholeWalk);
    const auto duration = Clock::now() - begin;
    const Files files = wholeWalk.result().files;
    ASSERT_EQ(filesOfMadeTree(levels, breadth), files);

    int cutShort = 0;
    std::mt19937 random(20240);
    for (int i = 0; i < 300; ++i) {
        Watch watch;
        const FilePtr root = madeTree(watch, levels, breadth);
        const auto delay = randomDelay(random, duration);
        SCOPED_TRACE("delay " + std::to_string(delay.count()) + " ns");

        const std::size_t calls = destroyAfter(delay, root, watch);

        ASSERT_EQ(1, root.use_count()) << "the crawler or its thread holds on to the root";
        ASSERT_LE(calls, whole.calls);
        ASSERT_EQ(0U, watch.lateCalls);
        ASSERT_EQ(calls, watch.calls);
        cutShort += calls < whole.calls ? 1 : 0;
    }
    EXPECT_GT(cutShort, 0);
}

TEST(FolderCrawlerThreads, MayBeDestroyedAtAnyMomentOfAWalkOfARealTree)
{
    const RealTree tree;
    Watch whole;
    FolderCrawler wholeWalk(boost::make_shared<RealEntry>(whole, tree.path()));
    const auto begin = Clock::now();
    runToEnd(wholeWalk);
    const auto duration = Clock::now() - begin;
    ASSERT_EQ(std::size_t{RealTree::folders * RealTree::filesAFolder},
              wholeWalk.result().files.size());

    int cutShort = 0;
    std::mt19937 random(20241);
    for (int i = 0; i < 200; ++i) {
        Watch watch;
        const FilePtr root = boost::make_shared<RealEntry>(watch, tree.path());
        const auto delay = randomDelay(random, duration);
        SCOPED_TRACE("delay " + std::to_string(delay.count()) + " ns");

        const std::size_t calls = destroyAfter(delay, root, watch);

        ASSERT_EQ(1, root.use_count()) << "the crawler or its thread holds on to the root";
        ASSERT_LE(calls, whole.calls);
        ASSERT_EQ(0U, watch.lateCalls);
        ASSERT_EQ(calls, watch.calls);
        cutShort += calls < whole.calls ? 1 : 0;
    }
    EXPECT_GT(cutShort, 0);
}

namespace {

/// The application object that event delivery needs.
struct Application {
    int argc = 1;
    char name[6] = "tests";
    char* argv[2] = {name, nullptr};
    QCoreApplication application{argc, argv};
};

/// What arrived, and on which threads.
struct Received {
    std::vector<std::string> directories;
    std::vector<std::thread::id> threads;
};

/// Takes progress in the thread where it lives.
class ProgressReceiver : public QObject {
    Q_OBJECT

public:
    const Received& received() const { return received_; }

public Q_SLOTS:
    void enter(const QString& directory)
    {
        received_.directories.push_back(directory.toStdString());
        received_.threads.push_back(std::this_thread::get_id());
    }

private:
    Received received_;
};

/// A thread that is neither the test's nor a crawler's, with a receiver of a crawler's progress.
class ProgressThread {
public:
    ProgressThread() : thread_([this] { deliver(); }) { receiver_ = made_.get_future().get(); }
    ~ProgressThread() { finish(); }
    ProgressThread(const ProgressThread&) = delete;
    ProgressThread& operator=(const ProgressThread&) = delete;

    std::thread::id id() const { return thread_.get_id(); }

    void listenTo(const FolderCrawler& crawler, Qt::ConnectionType connection)
    {
        ASSERT_TRUE(QObject::connect(&crawler, SIGNAL(processingDirectory(QString)), receiver_,
                                     SLOT(enter(QString)), connection));
    }

    /// Ends the thread when all that was queued has arrived.
    const Received& finish()
    {
        if (thread_.joinable()) {
            stop_.set_value();
            thread_.join();
        }
        return received_;
    }

private:
    void deliver()
    {
        ProgressReceiver receiver;
        made_.set_value(&receiver);
        const std::future<void> stop = stop_.get_future();
        // ThreadSanitizer does not see the lock of Qt's queue, so there all is delivered at the
        // end.
        while (!BUILT_WITH_THREAD_SANITIZER &&
               stop.wait_for(std::chrono::microseconds(50)) != std::future_status::ready)
            QCoreApplication::sendPostedEvents();
        stop.wait();
        QCoreApplication::sendPostedEvents();
        received_ = receiver.received();
    }

    std::promise<ProgressReceiver*> made_;
    std::promise<void> stop_;
    ProgressReceiver* receiver_ = nullptr;
    Received received_;
    std::thread thread_;
};

std::vector<std::string> foldersOfMadeTree(int levels, int breadth, const std::string& path)
{
    std::vector<std::string> folders = {path};
    for (int i = 0; i < breadth && levels > 1; ++i)
        for (const std::string& below :
             foldersOfMadeTree(levels - 1, breadth, path + "/d" + std::to_string(i)))
            folders.push_back(below);
    return folders;
}

} // namespace

TEST(FolderCrawlerThreads, DeliverProgressQueuedToAnotherThreadInTheOrderOfTheWalk)
{
    const Application application;
    const std::vector<std::string> folders = foldersOfMadeTree(4, 4, "/r");
    for (const Qt::ConnectionType connection : {Qt::AutoConnection, Qt::QueuedConnection}) {
        Watch watch;
        FolderCrawler crawler(madeTree(watch, 4, 4));
        ProgressThread progress;
        progress.listenTo(crawler, connection);
        const std::thread::id receiving = progress.id();

        runToEnd(crawler);
        const Received& received = progress.finish();

        EXPECT_NE(std::this_thread::get_id(), receiving);
        EXPECT_EQ(folders, received.directories);
        EXPECT_EQ(std::vector<std::thread::id>(folders.size(), receiving), received.threads);
    }
}

TEST(FolderCrawlerThreads, MayBeDestroyedWhileProgressIsStillQueuedElsewhere)
{
    const Application application;
    const std::vector<std::string> folders = foldersOfMadeTree(5, 4, "/r");
    std::mt19937 random(20242);
    for (int i = 0; i < 60; ++i) {
        Watch watch;
        ProgressThread progress;
        auto crawler = std::make_unique<FolderCrawler>(madeTree(watch, 5, 4));
        EndSeenBySanitizer end(*crawler);
        progress.listenTo(*crawler, Qt::QueuedConnection);
        crawler->start();
        std::this_thread::sleep_for(std::chrono::microseconds(random() % 500));
        end.destructionComes();
        crawler.reset();

        // Whatever arrived is where the walk began, in its order.
        const std::vector<std::string>& came = progress.finish().directories;
        ASSERT_LE(came.size(), folders.size());
        ASSERT_EQ(std::vector<std::string>(
                      folders.begin(), folders.begin() + static_cast<std::ptrdiff_t>(came.size())),
                  came);
    }
}

TEST(FolderCrawlerThreads, WalkOneTreeSeveralAtOnce)
{
    Watch watch;
    const FilePtr root = madeTree(watch, 5, 4);
    const Files files = filesOfMadeTree(5, 4);
    std::vector<std::unique_ptr<FolderCrawler>> crawlers;
    std::vector<std::future<void>> ends;
    for (int i = 0; i < 6; ++i) {
        crawlers.push_back(std::make_unique<FolderCrawler>(root));
        ends.push_back(
            std::async(std::launch::async, [&crawler = *crawlers.back()] { runToEnd(crawler); }));
    }
    for (std::future<void>& end : ends)
        end.get();

    for (const auto& crawler : crawlers) {
        EXPECT_EQ(files, crawler->result().files);
        EXPECT_TRUE(crawler->result().errorString.isNull());
    }
}

TEST(FolderCrawlerThreads, LeaveImportersOfOtherThreadsAlone)
{
    const auto importOnce = [](int breadth) {
        Watch watch;
        FolderCrawler crawler(madeTree(watch, 3, breadth));
        runToEnd(crawler);
        const std::unique_ptr<MetadataFileCrawler> importer =
            doubles::makeImporter(new CrawlerBasicImporterParser);
        importer->setCrawlResult(crawler.result());
        importer->setMetadataPatternList({MetadataPattern("T", MetadataPattern::NumberValue)});
        doubles::RecordingContext context;
        importer->extract(context);
        std::vector<std::string> values;
        for (vtkIdType row = 0; row < context.table->GetNumberOfRows(); ++row)
            values.push_back(context.table->GetValue(row, 0).ToString());
        return values;
    };
    std::atomic<int> differences{0};
    // Threads of the toolkit's own; those of the standard library leave it with records of them.
    std::vector<std::unique_ptr<QThread>> threads;
    for (int breadth = 3; breadth < 7; ++breadth) {
        threads.emplace_back(QThread::create([breadth, importOnce, &differences] {
            std::vector<std::string> expected; // A case for each number.
            for (int i = 0; i < breadth; ++i)
                expected.push_back(std::to_string(i));
            for (int i = 0; i < 5; ++i) {
                std::vector<std::string> values = importOnce(breadth);
                std::sort(values.begin(), values.end());
                if (values != expected)
                    ++differences;
            }
        }));
        threads.back()->start();
    }

    for (const auto& thread : threads)
        thread->wait();
    EXPECT_EQ(0, differences);
}

#include "FolderCrawlerThreadsTest.moc"
