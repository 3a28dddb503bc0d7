#include "crawler/FolderCrawler.h"

#include <atomic>
#include <chrono>
#include <csignal>
#include <cstddef>
#include <future>
#include <list>
#include <memory>
#include <mutex>
#include <new>
#include <random>
#include <stdexcept>
#include <string>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

#include <boost/make_shared.hpp>
#include <boost/shared_ptr.hpp>

#include <QCoreApplication>
#include <QMetaMethod>
#include <QMetaObject>
#include <QObject>
#include <QString>
#include <QTextCodec>
#include <QThread>
#include <QTranslator>

#include <gtest/gtest.h>

#include "host/ExceptionBase.h"
#include "host/FileInfoInterface.h"
#include "tests/crawler/Doubles.h"
#include "tests/support/Sanitizer.h"

namespace {

using doubles::Calls;
using doubles::FileSystem;
using doubles::MemoryFile;
using doubles::MemoryFilePtr;
using doubles::runToEnd;

using Files = std::list<std::string>;

/// Records the crawler's signal and the threads on which it arrived.
class SignalRecorder : public QObject {
    Q_OBJECT

public:
    explicit SignalRecorder(FolderCrawler& crawler,
                            Qt::ConnectionType connection = Qt::DirectConnection)
    {
        connected_ =
            static_cast<bool>(QObject::connect(&crawler, SIGNAL(processingDirectory(QString)), this,
                                               SLOT(record(QString)), connection));
    }

    bool isConnected() const { return connected_; }

    std::vector<std::string> directories() const
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        return directories_;
    }

    std::vector<std::thread::id> threads() const
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        return threads_;
    }

    /// If set, every signal is added there as well, between the calls to the file system.
    doubles::CallLogPtr log;

public Q_SLOTS:
    void record(const QString& directory)
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        directories_.push_back(directory.toStdString());
        threads_.push_back(std::this_thread::get_id());
        if (log)
            log->add("signal " + directories_.back());
    }

private:
    bool connected_ = false;
    mutable std::mutex mutex_;
    std::vector<std::string> directories_;
    std::vector<std::thread::id> threads_;
};

/// Throws `exception` when `call` is made.
template <class Exception> doubles::Hook throwAt(const std::string& call, Exception exception)
{
    return [call, exception](const std::string& made) {
        if (made == call)
            throw exception;
    };
}

} // namespace

TEST(FolderCrawler, KeepsTheTextsOfItsConstants)
{
    EXPECT_EQ("The specified directory does not exist.",
              FolderCrawler::ROOT_PATH_DOES_NOT_EXIST_ERROR_STRING);
    EXPECT_EQ("The specified directory is not readable.",
              FolderCrawler::ROOT_PATH_IS_NOT_READABLE_ERROR_STRING);
    EXPECT_TRUE((std::is_same<decltype(FolderCrawler::ROOT_PATH_DOES_NOT_EXIST_ERROR_STRING),
                              const std::string>::value));
    EXPECT_TRUE((std::is_same<decltype(FolderCrawler::ROOT_PATH_IS_NOT_READABLE_ERROR_STRING),
                              const std::string>::value));
}

TEST(FolderCrawler, StartsWithTheRootAndNothingElse)
{
    const FileSystem disk;
    const MemoryFilePtr root = disk.directory("/r");

    FolderCrawler crawler(root);

    EXPECT_EQ(root, crawler.result().folder);
    EXPECT_TRUE(crawler.result().files.empty());
    EXPECT_TRUE(crawler.result().errorString.isNull());
    EXPECT_FALSE(crawler.isRunning());
    EXPECT_EQ(nullptr, crawler.parent());
    EXPECT_EQ(Calls{}, disk.log->calls());
}

TEST(FolderCrawler, HandsOutTheSameResultObjectBeforeAndAfterARun)
{
    const FileSystem disk;
    FolderCrawler crawler(disk.directory("/r"));
    const FolderCrawler::Result* before = &crawler.result();

    runToEnd(crawler);

    EXPECT_EQ(before, &crawler.result());
    EXPECT_TRUE((std::is_same<decltype(crawler.result()), const FolderCrawler::Result&>::value));
}

TEST(FolderCrawler, ResultIsEmptyByDefaultAndCopiesMemberByMember)
{
    const FolderCrawler::Result empty;
    EXPECT_FALSE(empty.folder);
    EXPECT_TRUE(empty.files.empty());
    EXPECT_TRUE(empty.errorString.isNull());

    FolderCrawler::Result filled;
    filled.folder = FileSystem().directory("/r");
    filled.files = {"a", "b"};
    filled.errorString = QStringLiteral("text");
    FolderCrawler::Result assigned;
    assigned = filled;
    EXPECT_EQ(filled.folder, assigned.folder);
    EXPECT_EQ(filled.files, assigned.files);
    EXPECT_EQ(filled.errorString, assigned.errorString);
}

TEST(FolderCrawler, ReportsARootThatDoesNotExist)
{
    const FileSystem disk;
    const MemoryFilePtr root = disk.directory("/r", {disk.file("/r/a.txt")});
    root->present = false;
    FolderCrawler crawler(root);
    const SignalRecorder recorder(crawler);

    runToEnd(crawler);

    EXPECT_EQ("The specified directory does not exist.",
              crawler.result().errorString.toStdString());
    EXPECT_EQ(Files{}, crawler.result().files);
    EXPECT_EQ(Calls{}, recorder.directories());
    EXPECT_EQ((Calls{"/r exists"}), disk.log->calls());
}

TEST(FolderCrawler, TestsExistenceOfTheRootBeforeReadability)
{
    const FileSystem disk;
    const MemoryFilePtr root = disk.directory("/r");
    root->present = false;
    root->readable = false;
    FolderCrawler crawler(root);

    runToEnd(crawler);

    EXPECT_EQ("The specified directory does not exist.",
              crawler.result().errorString.toStdString());
}

TEST(FolderCrawler, ReportsARootThatIsNotReadable)
{
    const FileSystem disk;
    const MemoryFilePtr root = disk.directory("/r", {disk.file("/r/a.txt")});
    root->readable = false;
    FolderCrawler crawler(root);
    const SignalRecorder recorder(crawler);

    runToEnd(crawler);

    EXPECT_EQ("The specified directory is not readable.",
              crawler.result().errorString.toStdString());
    EXPECT_EQ(Files{}, crawler.result().files);
    EXPECT_EQ(Calls{}, recorder.directories());
    EXPECT_EQ((Calls{"/r exists", "/r isReadable"}), disk.log->calls());
}

TEST(FolderCrawler, SignalsAnEmptyRootOnceAndFindsNothing)
{
    const FileSystem disk;
    FolderCrawler crawler(disk.directory("/r"));
    const SignalRecorder recorder(crawler);

    runToEnd(crawler);

    EXPECT_EQ((Calls{"/r"}), recorder.directories());
    EXPECT_EQ(Files{}, crawler.result().files);
    EXPECT_TRUE(crawler.result().errorString.isNull());
}

TEST(FolderCrawler, WalksASubfolderBetweenTheFilesAroundIt)
{
    const FileSystem disk;
    FolderCrawler crawler(
        disk.directory("/r", {disk.file("/r/a.txt"),
                              disk.directory("C:\\r\\sub", {disk.file("C:\\r\\sub\\b.txt")}),
                              disk.file("/r/c.txt")}));
    const SignalRecorder recorder(crawler);

    runToEnd(crawler);

    EXPECT_EQ((Files{"a.txt", "sub/b.txt", "c.txt"}), crawler.result().files);
    EXPECT_EQ((Calls{"/r", "C:\\r\\sub"}), recorder.directories());
    EXPECT_TRUE(crawler.result().errorString.isNull());
}

TEST(FolderCrawler, AsksTheHostForNothingButWhatItNeedsInAFixedOrder)
{
    const FileSystem disk;
    FolderCrawler crawler(
        disk.directory("/r", {disk.file("/r/a"), disk.directory("/r/s", {disk.file("/r/s/b")}),
                              disk.other("/r/o", {disk.file("/r/o/c")}), disk.directory("/r/e")}));

    runToEnd(crawler);

    const Calls expected{
        "/r exists",       "/r isReadable",    "/r isDirectory",   "/r fullPath",
        "/r entries()",    "/r/a fileName",    "/r/a isFile",      "/r/s fileName",
        "/r/s isFile",     "/r/s isReadable",  "/r/s isDirectory", "/r/s fullPath",
        "/r/s entries()",  "/r/s/b fileName",  "/r/s/b isFile",    "/r/o fileName",
        "/r/o isFile",     "/r/o isReadable",  "/r/o isDirectory", "/r/o entries()",
        "/r/o/c fileName", "/r/o/c isFile",    "/r/e fileName",    "/r/e isFile",
        "/r/e isReadable", "/r/e isDirectory", "/r/e fullPath",    "/r/e entries()"};
    EXPECT_EQ(expected, disk.log->calls());
    EXPECT_EQ((Files{"a", "s/b", "o/c"}), crawler.result().files);
}

TEST(FolderCrawler, DescendsWithoutASignalIntoAnEntryThatIsNeitherFileNorDirectory)
{
    const FileSystem disk;
    FolderCrawler crawler(disk.directory(
        "/r", {disk.other("/r/odd", {disk.file("/r/odd/x"), disk.directory("/r/odd/d")})}));
    const SignalRecorder recorder(crawler);

    runToEnd(crawler);

    EXPECT_EQ((Files{"odd/x"}), crawler.result().files);
    EXPECT_EQ((Calls{"/r", "/r/odd/d"}), recorder.directories());
    EXPECT_TRUE(crawler.result().errorString.isNull());
}

TEST(FolderCrawler, TakesARootThatIsAFileWithoutSignalOrError)
{
    const FileSystem disk;
    const MemoryFilePtr root = disk.file("/r.txt");
    root->children = {disk.file("/r.txt/inside")};
    FolderCrawler crawler(root);
    const SignalRecorder recorder(crawler);

    runToEnd(crawler);

    EXPECT_EQ(Calls{}, recorder.directories());
    EXPECT_EQ((Files{"inside"}), crawler.result().files);
    EXPECT_TRUE(crawler.result().errorString.isNull());
}

TEST(FolderCrawler, KeepsTheHostsOrderAndEveryEntryOfAListing)
{
    const FileSystem disk;
    FolderCrawler crawler(
        disk.directory("/r", {disk.file("/r/z"), disk.file("/r/.hidden"), disk.file("/r/a"),
                              disk.file("/r/.."), disk.file("/r/a"), disk.file("/r/.")}));

    runToEnd(crawler);

    EXPECT_EQ((Files{"z", ".hidden", "a", "..", "a", "."}), crawler.result().files);
}

TEST(FolderCrawler, ListsAnUnreadableFileLikeAnyOther)
{
    const FileSystem disk;
    const MemoryFilePtr locked = disk.file("/r/locked.txt");
    locked->readable = false;
    FolderCrawler crawler(disk.directory("/r", {locked, disk.file("/r/b.txt")}));

    runToEnd(crawler);

    EXPECT_EQ((Files{"locked.txt", "b.txt"}), crawler.result().files);
    EXPECT_TRUE(crawler.result().errorString.isNull());
}

TEST(FolderCrawler, StopsTheWholeWalkAtAnUnreadableSubfolder)
{
    const FileSystem disk;
    const MemoryFilePtr locked = disk.directory("D:\\r\\s\\locked", {disk.file("/r/s/locked/x")});
    locked->readable = false;
    FolderCrawler crawler(disk.directory(
        "/r", {disk.file("/r/a.txt"), disk.directory("/r/s", {locked, disk.file("/r/s/b.txt")}),
               disk.file("/r/c.txt")}));
    const SignalRecorder recorder(crawler);

    runToEnd(crawler);

    EXPECT_EQ("The specified path: D:\\r\\s\\locked is not readable.",
              crawler.result().errorString.toStdString());
    EXPECT_EQ((Files{"a.txt"}), crawler.result().files);
    EXPECT_EQ((Calls{"/r", "/r/s"}), recorder.directories());
    const Calls expected{"/r exists",
                         "/r isReadable",
                         "/r isDirectory",
                         "/r fullPath",
                         "/r entries()",
                         "/r/a.txt fileName",
                         "/r/a.txt isFile",
                         "/r/s fileName",
                         "/r/s isFile",
                         "/r/s isReadable",
                         "/r/s isDirectory",
                         "/r/s fullPath",
                         "/r/s entries()",
                         "D:\\r\\s\\locked fileName",
                         "D:\\r\\s\\locked isFile",
                         "D:\\r\\s\\locked isReadable",
                         "D:\\r\\s\\locked fullPath"};
    EXPECT_EQ(expected, disk.log->calls());
}

TEST(FolderCrawler, EmptiesTheFilesAtTheStartOfEveryRun)
{
    const FileSystem disk;
    const MemoryFilePtr root = disk.directory("/r", {disk.file("/r/a"), disk.file("/r/b")});
    FolderCrawler crawler(root);
    runToEnd(crawler);
    root->children.pop_back();

    runToEnd(crawler);

    EXPECT_EQ((Files{"a"}), crawler.result().files);
    EXPECT_EQ(root, crawler.result().folder);
}

TEST(FolderCrawler, EmptiesTheFilesEvenWhenTheRootIsGone)
{
    const FileSystem disk;
    const MemoryFilePtr root = disk.directory("/r", {disk.file("/r/a")});
    FolderCrawler crawler(root);
    runToEnd(crawler);
    root->present = false;

    runToEnd(crawler);

    EXPECT_EQ(Files{}, crawler.result().files);
}

TEST(FolderCrawler, KeepsTheErrorTextOfAFailedRunThroughALaterSuccess)
{
    const FileSystem disk;
    const MemoryFilePtr root = disk.directory("/r", {disk.file("/r/a")});
    root->readable = false;
    FolderCrawler crawler(root);
    runToEnd(crawler);
    root->readable = true;

    runToEnd(crawler);

    EXPECT_EQ("The specified directory is not readable.",
              crawler.result().errorString.toStdString());
    EXPECT_EQ((Files{"a"}), crawler.result().files);
}

TEST(FolderCrawler, HasTheErrorTextOfTheLatestFailure)
{
    const FileSystem disk;
    const MemoryFilePtr root = disk.directory("/r");
    root->readable = false;
    FolderCrawler crawler(root);
    runToEnd(crawler);
    root->present = false;

    runToEnd(crawler);

    EXPECT_EQ("The specified directory does not exist.",
              crawler.result().errorString.toStdString());
}

TEST(FolderCrawler, KeepsTheFilesFoundBeforeTheHostFailed)
{
    for (const char* call : {"/r/s fileName", "/r/s isFile", "/r/s isReadable", "/r/s isDirectory",
                             "/r/s fullPath", "/r/s entries()"}) {
        SCOPED_TRACE(call);
        const FileSystem disk;
        const MemoryFilePtr folder = disk.directory("/r/s", {disk.file("/r/s/b")});
        folder->hook = throwAt(call, ortelo::ExceptionBase("lost \xc3\xa4 share", true));
        FolderCrawler crawler(disk.directory("/r", {disk.file("/r/a"), folder, disk.file("/r/c")}));

        runToEnd(crawler);

        EXPECT_EQ(QString::fromUtf8("lost \xc3\xa4 share"), crawler.result().errorString);
        EXPECT_EQ((Files{"a"}), crawler.result().files);
        EXPECT_EQ(call, disk.log->calls().back());
    }
}

TEST(FolderCrawler, TurnsAHostFailureAtTheRootIntoTheErrorText)
{
    for (const char* call :
         {"/r exists", "/r isReadable", "/r isDirectory", "/r fullPath", "/r entries()"}) {
        SCOPED_TRACE(call);
        const FileSystem disk;
        const MemoryFilePtr root = disk.directory("/r", {disk.file("/r/a")});
        root->hook = throwAt(call, ortelo::ExceptionBase("no answer", false));
        FolderCrawler crawler(root);

        runToEnd(crawler);

        EXPECT_EQ("no answer", crawler.result().errorString.toStdString());
        EXPECT_EQ(Files{}, crawler.result().files);
    }
}

TEST(FolderCrawler, AsksADerivedExceptionForItsOwnText)
{
    struct Detailed : ortelo::ExceptionBase {
        Detailed() : ExceptionBase("plain", false) {}
        const char* what() const noexcept override { return "detailed"; }
    };
    const FileSystem disk;
    const MemoryFilePtr root = disk.directory("/r");
    root->hook = throwAt("/r entries()", Detailed());
    FolderCrawler crawler(root);

    crawler.run();

    EXPECT_EQ("detailed", crawler.result().errorString.toStdString());
}

TEST(FolderCrawler, LetsOtherExceptionsLeaveTheRun)
{
    const FileSystem disk;
    const MemoryFilePtr folder = disk.directory("/r/s");
    FolderCrawler crawler(disk.directory("/r", {disk.file("/r/a"), folder}));

    folder->hook = throwAt("/r/s entries()", std::runtime_error("disk"));
    EXPECT_THROW(crawler.run(), std::runtime_error);
    folder->hook = throwAt("/r/s fileName", std::bad_alloc());
    EXPECT_THROW(crawler.run(), std::bad_alloc);
    folder->hook = throwAt("/r/s isReadable", 7);
    EXPECT_THROW(crawler.run(), int);

    EXPECT_TRUE(crawler.result().errorString.isNull());
    EXPECT_EQ((Files{"a"}), crawler.result().files);
}

TEST(FolderCrawler, EndsTheProgramWhenAnyOtherExceptionLeavesItsOwnThread)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe"); // Others may have left threads of Qt.
    const FileSystem disk;
    const EntryPtr folder = disk.directory("/r");
    folder->hook = throwAt("/r entries()", std::runtime_error("of the host"));
    FolderCrawler crawler(folder);

    EXPECT_EXIT(runToEnd(crawler), testing::KilledBySignal(SIGABRT), "");
}

TEST(FolderCrawler, KeepsFileNamesByteForByteAndReadsPathsAsUtf8)
{
    const FileSystem disk;
    FolderCrawler crawler(disk.directory(
        "/\xc3\xbc", {disk.directory("/\xc3\xbc/\xe6\x97\xa5", {disk.file("/x/\xff\xfe\x80.dat")}),
                      disk.file("/\xc3\xbc/ \t.")}));
    const SignalRecorder recorder(crawler);

    runToEnd(crawler);

    EXPECT_EQ((Files{"\xe6\x97\xa5/\xff\xfe\x80.dat", " \t."}), crawler.result().files);
    EXPECT_EQ((Calls{"/\xc3\xbc", "/\xc3\xbc/\xe6\x97\xa5"}), recorder.directories());
}

TEST(FolderCrawler, KeepsFileNamesBehindANul)
{
    const FileSystem disk;
    const std::string name("a\0b", 3);
    FolderCrawler crawler(
        disk.directory("/r", {disk.file("/r/" + name), disk.directory("/r/s", {disk.file(name)})}));

    crawler.run();

    EXPECT_EQ((Files{name, "s/" + name}), crawler.result().files);
}

namespace {

/// The encoding of the host's locale, as long as this lives.
struct LocaleEncoding {
    explicit LocaleEncoding(const char* name)
    {
        QTextCodec::setCodecForLocale(QTextCodec::codecForName(name));
    }
    ~LocaleEncoding() { QTextCodec::setCodecForLocale(before); }
    LocaleEncoding(const LocaleEncoding&) = delete;
    LocaleEncoding& operator=(const LocaleEncoding&) = delete;

    QTextCodec* before = QTextCodec::codecForLocale();
};

} // namespace

TEST(FolderCrawler, ReadsPathsAsUtf8WhateverTheLocaleOfItsHost)
{
    const LocaleEncoding latin("ISO-8859-1");
    ASSERT_NE(QString::fromUtf8("\xc3\xbc"), QString::fromLocal8Bit("\xc3\xbc"));
    const FileSystem disk;
    const MemoryFilePtr locked = disk.directory("/\xc3\xbc/\xe6\x97\xa5");
    locked->readable = false;
    FolderCrawler crawler(disk.directory("/\xc3\xbc", {locked}));
    const SignalRecorder recorder(crawler);

    runToEnd(crawler);

    EXPECT_EQ(Calls{"/\xc3\xbc"}, recorder.directories());
    EXPECT_EQ(QString::fromUtf8("The specified path: /\xc3\xbc/\xe6\x97\xa5 is not readable."),
              crawler.result().errorString);
}

TEST(FolderCrawler, WalksATreeOfTwentyThousandLevels)
{
    FolderCrawler crawler(doubles::deepTree(20000));
    const SignalRecorder recorder(crawler);

    runToEnd(crawler);

    EXPECT_EQ((Files{"2/1/0"}), crawler.result().files);
    EXPECT_TRUE(crawler.result().errorString.isNull());
    ASSERT_EQ(20000U, recorder.directories().size());
    EXPECT_EQ("20000", recorder.directories().front());
    EXPECT_EQ("1", recorder.directories().back());
}

TEST(FolderCrawler, MakesEveryCallAndEverySignalOnItsOwnThread)
{
    const FileSystem disk;
    std::mutex mutex;
    std::vector<std::thread::id> callers;
    const MemoryFilePtr folder = disk.directory("/r/s");
    const MemoryFilePtr root = disk.directory("/r", {folder});
    root->hook = folder->hook = [&](const std::string&) {
        const std::lock_guard<std::mutex> lock(mutex);
        callers.push_back(std::this_thread::get_id());
    };
    FolderCrawler crawler(root);
    const SignalRecorder recorder(crawler);

    runToEnd(crawler);

    EXPECT_TRUE(crawler.isFinished());
    ASSERT_EQ(11U, callers.size());
    EXPECT_NE(std::this_thread::get_id(), callers.front());
    EXPECT_EQ(std::vector<std::thread::id>(11, callers.front()), callers);
    EXPECT_EQ(std::vector<std::thread::id>(2, callers.front()), recorder.threads());
}

TEST(FolderCrawler, SignalsADirectoryBeforeItListsIt)
{
    const FileSystem disk;
    FolderCrawler crawler(disk.directory("/r", {disk.directory("/r/s")}));
    SignalRecorder recorder(crawler);
    recorder.log = disk.log;

    runToEnd(crawler);

    const Calls expected{"/r exists",       "/r isReadable",    "/r isDirectory", "/r fullPath",
                         "signal /r",       "/r entries()",     "/r/s fileName",  "/r/s isFile",
                         "/r/s isReadable", "/r/s isDirectory", "/r/s fullPath",  "signal /r/s",
                         "/r/s entries()"};
    EXPECT_EQ(expected, disk.log->calls());
}

// The abort flag is private, yet only its value tells when a destructor has raised it. An explicit
// instantiation may name a private member and hands out access here.
namespace {

std::atomic<bool>& abortFlag(FolderCrawler& crawler);

template <std::atomic<bool> FolderCrawler::*Flag> struct AbortFlagAccess {
    friend std::atomic<bool>& abortFlag(FolderCrawler& crawler) { return crawler.*Flag; }
};

template struct AbortFlagAccess<&FolderCrawler::aborted_>;

/// Lets a destructor that has raised the flag go to sleep in its wait, where ThreadSanitizer sees
/// the thread's end handed over. No verdict of a test depends on it.
void letTheDestructorBlock()
{
    if (BUILT_WITH_THREAD_SANITIZER)
        std::this_thread::sleep_for(std::chrono::milliseconds(200));
}

} // namespace

TEST(FolderCrawler, StopsBeforeTheNextEntryWhenItIsDestroyedWhileRunning)
{
    const FileSystem disk;
    const MemoryFilePtr held =
        disk.directory("/r/s", {disk.file("/r/s/b"), disk.directory("/r/s/t")});
    std::promise<void> listing;
    std::promise<void> release;
    held->hook = [&](const std::string& call) {
        if (call != "/r/s entries()")
            return;
        listing.set_value();
        release.get_future().wait();
    };
    auto crawler = std::make_unique<FolderCrawler>(
        disk.directory("/r", {disk.file("/r/a"), held, disk.file("/r/c")}));
    QObject::connect(crawler.get(), &QThread::finished, [&] { disk.log->add("thread ended"); });
    crawler->start();
    listing.get_future().wait();

    bool raised = false;
    std::thread releaser([&, &flag = abortFlag(*crawler)] {
        const auto giveUp = std::chrono::steady_clock::now() + std::chrono::minutes(1);
        while (!(raised = flag) && std::chrono::steady_clock::now() < giveUp)
            std::this_thread::yield();
        letTheDestructorBlock();
        release.set_value();
    });
    crawler.reset();
    disk.log->add("destroyed");
    releaser.join();

    EXPECT_TRUE(raised);
    const Calls expected{"/r exists",      "/r isReadable",   "/r isDirectory",   "/r fullPath",
                         "/r entries()",   "/r/a fileName",   "/r/a isFile",      "/r/s fileName",
                         "/r/s isFile",    "/r/s isReadable", "/r/s isDirectory", "/r/s fullPath",
                         "/r/s entries()", "thread ended",    "destroyed"};
    EXPECT_EQ(expected, disk.log->calls());
}

TEST(FolderCrawler, WaitsForAHostThatTakesItsTime)
{
    const FileSystem disk;
    const MemoryFilePtr root = disk.directory("/r");
    std::promise<void> listing;
    root->hook = [&](const std::string& call) {
        if (call != "/r entries()")
            return;
        listing.set_value();
        // Longer than anybody would dare to wait who does not wait for ever.
        std::this_thread::sleep_for(std::chrono::milliseconds(1500));
        disk.log->add("listed");
    };
    auto crawler = std::make_unique<FolderCrawler>(root);
    QObject::connect(crawler.get(), &QThread::finished, [&] { disk.log->add("thread ended"); });
    crawler->start();
    listing.get_future().wait();

    crawler.reset();
    disk.log->add("destroyed");

    const Calls expected{"/r exists",    "/r isReadable", "/r isDirectory", "/r fullPath",
                         "/r entries()", "listed",        "thread ended",   "destroyed"};
    EXPECT_EQ(expected, disk.log->calls());
}

TEST(FolderCrawler, KeepsTheFilesFoundAndNoErrorTextAfterAnAbort)
{
    const FileSystem disk;
    const MemoryFilePtr last = disk.file("/r/s/b");
    FolderCrawler crawler(disk.directory("/r", {disk.file("/r/a"),
                                                disk.directory("/r/s", {last, disk.file("/r/s/c")}),
                                                disk.file("/r/d")}));
    last->hook = [&](const std::string&) { abortFlag(crawler) = true; };

    crawler.run();

    EXPECT_EQ((Files{"a", "s/b"}), crawler.result().files);
    EXPECT_TRUE(crawler.result().errorString.isNull());
    EXPECT_EQ("/r/s/b isFile", disk.log->calls().back());
}

TEST(FolderCrawler, NeverClearsTheAbortFlagAndStopsALaterRunAtTheFirstEntry)
{
    const FileSystem disk;
    FolderCrawler crawler(disk.directory("/r", {disk.file("/r/a")}));
    crawler.run();
    const std::size_t callsBefore = disk.log->calls().size();
    const SignalRecorder recorder(crawler);
    abortFlag(crawler) = true;

    crawler.run();

    Calls calls = disk.log->calls();
    calls.erase(calls.begin(), calls.begin() + static_cast<std::ptrdiff_t>(callsBefore));
    EXPECT_EQ(
        (Calls{"/r exists", "/r isReadable", "/r isDirectory", "/r fullPath", "/r entries()"}),
        calls);
    EXPECT_EQ((Calls{"/r"}), recorder.directories());
    EXPECT_EQ(Files{}, crawler.result().files);
    EXPECT_TRUE(abortFlag(crawler));
}

TEST(FolderCrawler, LetsGoOfTheRootWhenItIsDestroyedWithoutEverRunning)
{
    const MemoryFilePtr root = FileSystem().directory("/r");
    {
        const FolderCrawler crawler(root);
        EXPECT_EQ(2, root.use_count());
    }
    EXPECT_EQ(1, root.use_count());
}

TEST(FolderCrawler, DeclaresOneSignalAndNothingElseInItsMetaObject)
{
    const QMetaObject& meta = FolderCrawler::staticMetaObject;

    EXPECT_STREQ("FolderCrawler", meta.className());
    EXPECT_EQ(&QThread::staticMetaObject, meta.superClass());
    EXPECT_EQ(meta.propertyOffset(), meta.propertyCount());
    EXPECT_EQ(meta.enumeratorOffset(), meta.enumeratorCount());
    EXPECT_EQ(meta.classInfoOffset(), meta.classInfoCount());
    EXPECT_EQ(0, meta.constructorCount());
    ASSERT_EQ(meta.methodOffset() + 1, meta.methodCount());
    const QMetaMethod signal = meta.method(meta.methodOffset());
    EXPECT_EQ(QMetaMethod::Signal, signal.methodType());
    EXPECT_EQ(QMetaMethod::Public, signal.access());
    EXPECT_EQ("processingDirectory(QString)", signal.methodSignature());
    EXPECT_STREQ("void", signal.typeName());
    EXPECT_EQ(QList<QByteArray>{"QString"}, signal.parameterTypes());
    EXPECT_EQ(QList<QByteArray>{"directory"}, signal.parameterNames());
}

TEST(FolderCrawler, AnswersQtsCastsAndMetaObjectAsAnObject)
{
    FolderCrawler crawler(FileSystem().directory("/r"));

    EXPECT_EQ(&FolderCrawler::staticMetaObject, crawler.metaObject());
    EXPECT_EQ(&crawler, crawler.qt_metacast("FolderCrawler"));
    EXPECT_TRUE(crawler.inherits("QThread"));
    EXPECT_EQ(nullptr, crawler.qt_metacast("SignalRecorder"));
}

namespace {

template <class T, class = void> struct SignalIsAccessible : std::false_type {
};
template <class T>
struct SignalIsAccessible<T, decltype(static_cast<void>(&T::processingDirectory))>
    : std::true_type {
};

/// Proves that the check above can find an accessible member.
struct OpenSignal {
    void processingDirectory(const QString&) const {}
};

/// Only what derives from the crawler reaches its signal, from const members as well.
struct EmittingCrawler : FolderCrawler {
    using FolderCrawler::FolderCrawler;
    void tell(const QString& directory) const { Q_EMIT processingDirectory(directory); }
};

} // namespace

TEST(FolderCrawler, KeepsItsSignalProtectedInCpp)
{
    EXPECT_TRUE(SignalIsAccessible<OpenSignal>::value);
    EXPECT_FALSE(SignalIsAccessible<FolderCrawler>::value);
}

TEST(FolderCrawler, CanBeSignalledFromAConstMemberOfASubclass)
{
    EmittingCrawler crawler(FileSystem().directory("/r"));
    const SignalRecorder recorder(crawler);
    ASSERT_TRUE(recorder.isConnected());

    const EmittingCrawler& readOnly = crawler;
    readOnly.tell(QStringLiteral("/somewhere"));

    EXPECT_EQ((Calls{"/somewhere"}), recorder.directories());
}

TEST(FolderCrawler, IsAThreadThatTheHostCanRunAndCannotCopy)
{
    EXPECT_TRUE((std::is_convertible<FolderCrawler*, QThread*>::value));
    EXPECT_TRUE((std::is_same<void (FolderCrawler::*)(), decltype(&FolderCrawler::run)>::value));
    EXPECT_FALSE(std::is_copy_constructible<FolderCrawler>::value);
    EXPECT_TRUE(
        (std::is_constructible<FolderCrawler, boost::shared_ptr<FileInfoInterface const>>::value));
    EXPECT_FALSE(std::is_default_constructible<FolderCrawler>::value);
}

namespace {

/// The application object that translations and event delivery need.
struct Application {
    int argc = 1;
    char name[6] = "tests";
    char* argv[2] = {name, nullptr};
    QCoreApplication application{argc, argv};
};

/// Answers every text with the context in which it was asked for.
struct ContextTranslator : QTranslator {
    bool isEmpty() const override { return false; }
    QString translate(const char* context, const char* text, const char*, int) const override
    {
        return QString::fromUtf8(context) + QStringLiteral(": ") + QString::fromUtf8(text);
    }
};

} // namespace

TEST(FolderCrawler, TranslatesThroughItsOwnMetaObject)
{
    const Application application;
    ContextTranslator translator;
    QCoreApplication::installTranslator(&translator);

    EXPECT_EQ("FolderCrawler: text", FolderCrawler::tr("text").toStdString());
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
    EXPECT_EQ("FolderCrawler: text", FolderCrawler::trUtf8("text").toStdString());
#pragma GCC diagnostic pop
}

TEST(FolderCrawler, DeliversItsSignalQueuedToAReceiverInAnotherThread)
{
    const Application application;
    const FileSystem disk;
    FolderCrawler crawler(disk.directory("/r", {disk.directory("/r/s")}));
    const SignalRecorder recorder(crawler, Qt::AutoConnection);
    runToEnd(crawler);
    ASSERT_EQ(Calls{}, recorder.directories());

    QCoreApplication::processEvents();

    EXPECT_EQ((Calls{"/r", "/r/s"}), recorder.directories());
    EXPECT_EQ(std::vector<std::thread::id>(2, std::this_thread::get_id()), recorder.threads());
}

namespace {

/// The walk as its rules read, over the doubles' fields: the calls, signals and files to expect.
struct ExpectedWalk {
    Calls calls;
    Calls signalled;
    Files files;
    std::string error;

    explicit ExpectedWalk(const MemoryFile& root)
    {
        calls.push_back(root.path + " exists");
        if (!root.present) {
            error = "The specified directory does not exist.";
            return;
        }
        calls.push_back(root.path + " isReadable");
        if (!root.readable) {
            error = "The specified directory is not readable.";
            return;
        }
        walk(root, "");
    }

private:
    void walk(const MemoryFile& folder, const std::string& relativePath)
    {
        calls.push_back(folder.path + " isDirectory");
        if (folder.directory) {
            calls.push_back(folder.path + " fullPath");
            signalled.push_back(folder.path);
        }
        calls.push_back(folder.path + " entries()");
        for (const MemoryFilePtr& child : folder.children) {
            const MemoryFile& entry = *child;
            const std::string path =
                relativePath.empty() ? entry.name : relativePath + "/" + entry.name;
            calls.push_back(entry.path + " fileName");
            calls.push_back(entry.path + " isFile");
            if (entry.file) {
                files.push_back(path);
                continue;
            }
            calls.push_back(entry.path + " isReadable");
            if (!entry.readable) {
                calls.push_back(entry.path + " fullPath");
                error = "The specified path: " + entry.path + " is not readable.";
            } else {
                walk(entry, path);
            }
            if (!error.empty())
                return;
        }
    }
};

/// A tree of at most `levels` levels in which a few entries are odd or cannot be read.
MemoryFilePtr randomEntry(const FileSystem& disk, std::mt19937& random, const std::string& path,
                          int levels)
{
    std::vector<MemoryFilePtr> children;
    const auto count = levels == 0 ? 0U : random() % 5;
    for (auto i = 0U; i < count; ++i)
        children.push_back(
            randomEntry(disk, random, path + "/" + std::to_string(random() % 20), levels - 1));
    const MemoryFilePtr entry = disk.directory(path, std::move(children));
    entry->file = random() % 3 == 0;
    entry->directory = random() % 10 != 0;
    entry->readable = random() % 25 != 0;
    entry->present = random() % 25 != 0;
    return entry;
}

std::string listing(const MemoryFile& entry)
{
    std::string text = entry.path + (entry.file ? " file" : "") +
                       (entry.directory ? " directory" : "") + (entry.readable ? "" : " locked") +
                       (entry.present ? "" : " missing") + "\n";
    for (const MemoryFilePtr& child : entry.children)
        text += listing(*child);
    return text;
}

} // namespace

TEST(FolderCrawler, WalksRandomTreesAsTheRulesSay)
{
    for (unsigned seed = 1; seed <= 300; ++seed) {
        std::mt19937 random(seed);
        const FileSystem disk;
        const MemoryFilePtr root = randomEntry(disk, random, "/root", 5);
        SCOPED_TRACE("seed " + std::to_string(seed) + "\n" + listing(*root));
        const ExpectedWalk expected(*root);
        FolderCrawler crawler(root);
        const SignalRecorder recorder(crawler);

        crawler.run();

        ASSERT_EQ(expected.calls, disk.log->calls());
        ASSERT_EQ(expected.signalled, recorder.directories());
        ASSERT_EQ(expected.files, crawler.result().files);
        ASSERT_EQ(expected.error, crawler.result().errorString.toStdString());
    }
}

#include "FolderCrawlerTest.moc"
