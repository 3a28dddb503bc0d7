#ifndef TESTS_CRAWLER_DOUBLES_H
#define TESTS_CRAWLER_DOUBLES_H

#include <cstddef>
#include <future>
#include <initializer_list>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <boost/shared_ptr.hpp>

#include <QThread>

#include <vtkSmartPointer.h>
#include <vtkTable.h>

#include "crawler/CrawlerImporterParserInterface.h"
#include "crawler/FolderCrawler.h"
#include "crawler/MetadataFileCrawler.h"
#include "crawler/MetadataPattern.h"
#include "host/AuxFileCollectionInterface.h"
#include "host/AuxFileInfoInterface.h"
#include "host/ImportLoadContextInterface.h"
#include "tests/support/MemoryFile.h"

namespace doubles {

/// Makes files and folders that share one log.
struct FileSystem {
    CallLogPtr log = std::make_shared<CallLog>();

    MemoryFilePtr file(const std::string& path) const { return logged(memoryFile(path)); }

    MemoryFilePtr directory(const std::string& path, std::vector<MemoryFilePtr> children = {}) const
    {
        return logged(memoryFolder(path, std::move(children)));
    }

    /// Neither a file nor a directory.
    MemoryFilePtr other(const std::string& path, std::vector<MemoryFilePtr> children) const
    {
        const MemoryFilePtr entry = directory(path, std::move(children));
        entry->directory = false;
        return entry;
    }

private:
    MemoryFilePtr logged(MemoryFilePtr entry) const
    {
        entry->log = log;
        return entry;
    }
};

/// Keeps its promise when the thread that owns it is gone.
struct EndOfThread {
    std::promise<void> promise;
    ~EndOfThread() { promise.set_value(); }
};

/// Starts the thread and returns when it has ended. A future hands the end over, from after Qt's
/// own last steps, because ThreadSanitizer does not see the locks inside an uninstrumented Qt.
inline void runToEnd(FolderCrawler& crawler)
{
    std::promise<void> ended;
    const std::future<void> end = ended.get_future();
    const QMetaObject::Connection connection =
        QObject::connect(&crawler, &QThread::finished, [&ended] {
            static thread_local EndOfThread owner;
            owner.promise = std::move(ended);
        });
    crawler.start();
    end.wait();
    crawler.wait();
    QObject::disconnect(connection);
}

/// What a recording parser answers and what it was told; outlives the parser.
struct ParserRecord {
    CallLogPtr log = std::make_shared<CallLog>();
    /// The value texts of each case.
    std::vector<std::vector<std::string>> cases;
    std::vector<boost::shared_ptr<AuxFileInfoInterface>> files;
    std::vector<MetadataInfo> infos;
    Hook hook;
    /// The vector last applied, by address, and the markers that it held.
    const std::vector<MetadataPattern>* appliedList = nullptr;
    std::vector<std::string> appliedMarkers;
};

using ParserRecordPtr = std::shared_ptr<ParserRecord>;

struct RecordingParser : virtual CrawlerImporterParserInterface {
    explicit RecordingParser(ParserRecordPtr theRecord) : record(std::move(theRecord)) {}
    RecordingParser(const RecordingParser&) = delete;
    RecordingParser& operator=(const RecordingParser&) = delete;
    ~RecordingParser() override { record->log->add("parser destroyed"); }

    void appendRawFilePath(const std::string& path) override
    {
        note("appendRawFilePath(" + path + ")");
    }
    void clearFilePaths() override { note("clearFilePaths()"); }
    void applyMetadataPatternList(const std::vector<MetadataPattern>& patterns) override
    {
        record->appliedList = &patterns;
        record->appliedMarkers.clear();
        for (const MetadataPattern& pattern : patterns)
            record->appliedMarkers.push_back(pattern.pattern);
        note("applyMetadataPatternList(" + std::to_string(patterns.size()) + ")");
    }
    std::vector<MetadataInfo> metadataInfoList(const std::string& name) const override
    {
        note("metadataInfoList(" + name + ")");
        return record->infos;
    }
    std::size_t numDefinedCases() const override
    {
        note("numDefinedCases()");
        return record->cases.size();
    }
    std::string caseMetadataSValue(std::size_t caseIndex, std::size_t metadataIndex) const override
    {
        note("caseMetadataSValue(" + std::to_string(caseIndex) + "," +
             std::to_string(metadataIndex) + ")");
        return record->cases.at(caseIndex).at(metadataIndex);
    }
    std::vector<boost::shared_ptr<AuxFileInfoInterface>> crawlerFilePathList() const override
    {
        note("crawlerFilePathList()");
        return record->files;
    }

    ParserRecordPtr record;

private:
    void note(const std::string& call) const
    {
        record->log->add(call);
        if (record->hook)
            record->hook(call);
    }
};

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
/// An importer that owns `parser`. `leftEmpty`, if given, says whether the argument that carried
/// the parser was left without it.
inline std::unique_ptr<MetadataFileCrawler> makeImporter(CrawlerImporterParserInterface* parser,
                                                         bool* leftEmpty = nullptr)
{
    std::auto_ptr<CrawlerImporterParserInterface> argument(parser);
    std::unique_ptr<MetadataFileCrawler> importer(new MetadataFileCrawler(argument));
    if (leftEmpty)
        *leftEmpty = argument.get() == nullptr;
    return importer;
}
#pragma GCC diagnostic pop

inline std::unique_ptr<MetadataFileCrawler> makeImporter(const ParserRecordPtr& record)
{
    return makeImporter(new RecordingParser(record));
}

inline FolderCrawler::Result crawlResult(FilePtr folder,
                                         std::initializer_list<std::string> files = {})
{
    FolderCrawler::Result result;
    result.folder = std::move(folder);
    result.files = files;
    return result;
}

/// A file that counts how often it is asked whether it matched.
struct StubAuxFile : virtual AuxFileInfoInterface {
    explicit StubAuxFile(bool isItMatched) : matched(isItMatched) {}
    std::string filePath() const override { return std::string(); }
    bool isMatched() const override { return ++matchedAsked, matched; }
    void setCaseIndex(std::size_t) override {}
    std::size_t caseIndex() const override { return 0; }
    std::string label() const override { return std::string(); }
    Type type() const override { return OtherFile; }

    bool matched;
    mutable int matchedAsked = 0;
};

struct EmptyCollection : virtual AuxFileCollectionInterface {
    bool isEmpty() const override { return true; }
    std::set<std::string> tags() const override { return {}; }
    std::vector<std::string> filePaths(std::size_t, const std::string&) const override
    {
        return {};
    }
    std::size_t indexCount() const override { return 0; }
};

/// Keeps what it is given and logs in which order.
struct RecordingContext : ImportLoadContextInterface {
    void setMetadataTable(vtkSmartPointer<vtkTable> theTable) override
    {
        log.add("setMetadataTable");
        table = std::move(theTable);
    }
    void setAuxFiles(const boost::shared_ptr<AuxFileCollectionInterface>& theFiles) override
    {
        log.add("setAuxFiles");
        auxFiles = theFiles;
    }

    CallLog log;
    vtkSmartPointer<vtkTable> table;
    boost::shared_ptr<AuxFileCollectionInterface> auxFiles;
};

} // namespace doubles

#endif
