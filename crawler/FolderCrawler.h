#ifndef CRAWLER_FOLDERCRAWLER_H
#define CRAWLER_FOLDERCRAWLER_H

#include <atomic>
#include <list>
#include <string>

#include <boost/shared_ptr.hpp>

#include <QString>
#include <QThread>

#include "crawler/Export.h"

class FileInfoInterface;

/// Walks a folder tree in a thread of its own and lists the files below the root.
///
/// Construct it with the root, connect to processingDirectory() for progress, start() the thread,
/// wait for it to finish and read result(). The tree is seen through FileInfoInterface alone, and
/// every call to it is made on the crawler's thread.
///
/// The walk recurses once per folder level. In an optimised build each level takes about 300 bytes
/// of stack, besides what the host's own operations take at the deepest. The thread's stack is
/// 64 MiB of address space, so that trees of 20,000 levels take less than half of it in any build;
/// setStackSize() before start() changes that.
class CRAWLER_API FolderCrawler : public QThread {
    Q_OBJECT

public:
    /// What a walk found.
    struct Result {
        /// The root given to the crawler; no run changes it.
        boost::shared_ptr<FileInfoInterface const> folder;
        /// The files found by the last run, in the order of the walk, each as its path relative to
        /// the root with the components joined by "/". Emptied at the start of every run; after a
        /// failure or an abort it holds the files found before.
        std::list<std::string> files;
        /// The text of the failure that stopped a run; null when none ever did. A later run that
        /// succeeds leaves it as it is: for a clean result, make a new crawler.
        QString errorString;
    };

    /// The error text of a run whose root does not exist.
    static const std::string ROOT_PATH_DOES_NOT_EXIST_ERROR_STRING;
    /// The error text of a run whose root exists but cannot be read.
    static const std::string ROOT_PATH_IS_NOT_READABLE_ERROR_STRING;

    /// Shares `root`, which must not be empty when a run starts. Neither checks it nor starts the
    /// thread.
    explicit FolderCrawler(boost::shared_ptr<FileInfoInterface const> root);

    /// Stops a running walk at its next entry and waits for the thread, without a time limit.
    ~FolderCrawler() override;

    /// The walk, depth-first, each folder in the order of its listing; called on the crawler's
    /// thread by start(). Everything that is not a file is taken for a folder and entered.
    ///
    /// A root that does not exist or cannot be read, a folder below it that cannot be read, and any
    /// ortelo::ExceptionBase of the host stop the whole walk and become Result::errorString; what()
    /// is read as UTF-8. Any other exception leaves run(); on the crawler's own thread, that ends
    /// the program.
    void run() override;

    /// The result, owned by the crawler. Read it only while the thread is not running.
    const Result& result();

    // The meta-object lists the signal as public, as it does every signal; in C++ only the crawler
    // itself may emit it, which Qt's own keyword would not give.
#ifdef Q_MOC_RUN
Q_SIGNALS:
#else
protected:
#endif
    /// Emitted on the crawler's thread for every directory that the walk enters, the root first,
    /// with its fullPath(), read as UTF-8. Connect with SIGNAL(processingDirectory(QString)).
    void processingDirectory(QString directory) const;

private:
    void abort();
    void crawlFolder(const FileInfoInterface& folder, const std::string& relativePath,
                     std::list<std::string>& files);

    Result result_;
    std::atomic<bool> aborted_;
};

#endif
