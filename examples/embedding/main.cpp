// A complete host: it shows the importer a tree that exists in memory only, and prints the case
// table and the auxiliary files that come back. docs/tutorial.md walks through it.
#include <iostream>
#include <map>
#include <string>
#include <vector>

#include <boost/make_shared.hpp>

#include <QCoreApplication>

#include <crawler/AuxFileIdentifierValidator.h>
#include <crawler/CrawlerBasicImporterParser.h>
#include <crawler/FolderCrawler.h>
#include <crawler/MetadataFileCrawler.h>
#include <host/AuxFileCollectionInterface.h>
#include <host/ExceptionBase.h>
#include <host/FileInfoInterface.h>
#include <host/ImportLoadContextInterface.h>
#include <host/TagValidator.h>

// 1. The host's view of a file system. The walk asks from a thread of its own, so nothing may
// change the entries while it runs.
struct Entry : FileInfoInterface {
    explicit Entry(const std::string& path) : path(path) {}

    // Adds the file at `relative`, seen from this folder, and the folders on the way.
    void add(const std::string& relative)
    {
        const std::size_t slash = relative.find('/');
        const std::string name = relative.substr(0, slash);
        if (!children[name])
            children[name] = boost::make_shared<Entry>(path + "/" + name);
        if (slash != std::string::npos)
            children[name]->add(relative.substr(slash + 1));
    }

    bool isDirectory() const override { return !children.empty(); }
    bool isFile() const override { return children.empty(); }
    bool isReadable() const override { return true; }
    bool exists() const override { return true; }
    std::string fullPath() const override { return path; }
    std::string fileName() const override { return path.substr(path.rfind('/') + 1); }
    std::vector<boost::shared_ptr<FileInfoInterface const>>
    entries(const std::string& /*filter: always empty*/) const override
    {
        std::vector<boost::shared_ptr<FileInfoInterface const>> list;
        for (const auto& child : children)
            list.push_back(child.second);
        return list;
    }

    const std::string path;
    std::map<std::string, boost::shared_ptr<Entry>> children;
};

// 2. Receives the progress. The signal is protected, so a slot is connected to it by name.
class Progress : public QObject {
    Q_OBJECT
public Q_SLOTS:
    void enter(const QString& folder) { std::cout << "walking " << folder.toStdString() << '\n'; }
};

// 3. Says which tags are good.
struct KnownTags : TagValidator {
    ortelo::ValidationResult validate(const std::string& tag) const override
    {
        ortelo::ValidationResult result;
        if (tag != "mesh" && tag != "log")
            result.setErrorString("neither mesh nor log: " + tag);
        return result;
    }
};

// 4. Says which files to take under which tags; in a real host its user does.
struct Choice : AuxFileIdentifierValidator::IdentifierProviderInterface {
    std::vector<AuxFileIdentifier> identifiers() const override { return list; }

    const std::vector<AuxFileIdentifier> list = {{"*.vtu", "mesh"}, {"*.log", "log"}};
};

// 5. Receives what was imported.
struct LoadContext : ImportLoadContextInterface {
    void setMetadataTable(vtkSmartPointer<vtkTable> cases) override { table = cases; }
    void setAuxFiles(const boost::shared_ptr<AuxFileCollectionInterface>& chosen) override
    {
        auxFiles = chosen;
    }

    vtkSmartPointer<vtkTable> table;
    boost::shared_ptr<AuxFileCollectionInterface> auxFiles;
};

// The importer takes its parser over in a std::auto_ptr, about which compilers warn.
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"

int main(int argc, char* argv[])
try {
    QCoreApplication application(argc, argv);
    const auto root = boost::make_shared<Entry>("memory:");
    for (const char* path : {"Mach0.80/AoA-2/flow.vtu", "Mach0.80/AoA-2/solver.log",
                             "Mach0.80/AoA4/flow.vtu", "Mach0.85/AoA4/flow.vtu", "notes.txt"})
        root->add(path);

    Progress progress;
    FolderCrawler crawler(root);
    QObject::connect(&crawler, SIGNAL(processingDirectory(QString)), &progress,
                     SLOT(enter(QString)));
    QObject::connect(&crawler, SIGNAL(finished()), &application, SLOT(quit()));
    crawler.start();
    QCoreApplication::exec(); // Hands the progress over to this thread, until the walk is done.
    crawler.wait();
    if (!crawler.result().errorString.isNull())
        throw ortelo::ExceptionBase(crawler.result().errorString.toStdString(), false);

    std::auto_ptr<CrawlerImporterParserInterface> parser(new CrawlerBasicImporterParser);
    MetadataFileCrawler importer(parser);
    importer.setCrawlResult(crawler.result());
    importer.setMetadataPatternList({MetadataPattern("Mach", MetadataPattern::NumberValue),
                                     MetadataPattern("AoA", MetadataPattern::NumberValue)});
    const Choice choice;
    AuxFileIdentifierValidator chooser(choice, importer.identifiedAuxFiles(),
                                       boost::make_shared<KnownTags>());
    if (!chooser.isValid())
        throw ortelo::ExceptionBase("a tag is unknown, or a wildcard selects nothing", false);
    importer.setAuxFilesToLoad(chooser.auxFiles());

    LoadContext context;
    importer.extract(context);
    context.table->Dump();
    for (std::size_t index = 0; index < context.auxFiles->indexCount(); ++index)
        for (const std::string& tag : context.auxFiles->tags())
            for (const std::string& path : context.auxFiles->filePaths(index, tag))
                std::cout << "case " << index << ", " << tag << ": " << path << '\n';
} catch (const ortelo::ExceptionBase& failure) {
    std::cerr << "embedding: " << failure.what() << '\n';
    return 1;
}

#include "main.moc"
