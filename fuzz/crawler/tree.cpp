// Trees in memory through the crawler, the importer with its parser, the validator and the
// extraction, compared step by step with the rules said plainly.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <set>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <boost/make_shared.hpp>
#include <boost/shared_ptr.hpp>

#include <QObject>
#include <QString>
#include <QStringList>

#include "crawler/AuxFileIdentifierValidator.h"
#include "crawler/CrawlerBasicImporterParser.h"
#include "crawler/FolderCrawler.h"
#include "crawler/MetadataFileCrawler.h"
#include "fuzz/Input.h"
#include "fuzz/crawler/CaseTable.h"
#include "host/AuxFileCollectionInterface.h"
#include "host/ExceptionBase.h"
#include "tests/crawler/AuxFileDoubles.h"
#include "tests/crawler/Doubles.h"
#include "tests/crawler/ParserModel.h"
#include "tests/support/MemoryFile.h"

namespace {

using doubles::MemoryFile;
using doubles::MemoryFilePtr;

/// Reads trees and writes them down for the report of a difference.
class Forest {
public:
    explicit Forest(FuzzedDataProvider& data) : data_(data) {}

    MemoryFilePtr tree(std::string& written)
    {
        remaining_ = 30;
        const MemoryFilePtr root = node("/r", "r", 5, written);
        root->file = false;
        root->present = !rarely();
        written += root->present ? "" : " absent";
        return root;
    }

private:
    bool rarely() { return data_.ConsumeIntegralInRange<int>(0, 31) == 31; }

    MemoryFilePtr node(const std::string& path, const std::string& name, int levels,
                       std::string& written)
    {
        const MemoryFilePtr entry = boost::make_shared<MemoryFile>(path);
        entry->name = name; // Any text, with slashes too.
        entry->readable = !rarely();
        entry->file = levels == 0 || data_.ConsumeBool();
        entry->directory = !entry->file != rarely();
        const bool broken = rarely();
        if (broken)
            entry->makeEntries = [path]() -> std::vector<doubles::FilePtr> {
                throw ortelo::ExceptionBase("broken: " + path, false);
            };
        written += " " + fuzz::shown(name) + (entry->file ? "f" : "") +
                   (entry->directory ? "d" : "") + (entry->readable ? "" : "!") +
                   (broken ? "?" : "");
        if (entry->file && path != "/r")
            return entry;
        written += "{";
        for (auto count = data_.ConsumeIntegralInRange<int>(0, 5); count > 0 && remaining_ > 0;
             --count) {
            --remaining_;
            const std::string child = data_.ConsumeRandomLengthString(10);
            entry->children.push_back(node(path + "/" + child, child, levels - 1, written));
        }
        written += "}";
        return entry;
    }

    FuzzedDataProvider& data_;
    int remaining_ = 0;
};

/// What a walk finds. A failure ends it all and becomes the error text.
struct Walk {
    fuzz::Texts files;
    fuzz::Texts folders;
    std::string error;

    explicit Walk(const MemoryFile& root)
    {
        if (!root.present)
            error = "The specified directory does not exist.";
        else if (!root.readable)
            error = "The specified directory is not readable.";
        else
            enter(root, "");
    }

private:
    bool enter(const MemoryFile& folder, const std::string& relative)
    {
        if (folder.directory)
            folders.push_back(folder.path);
        if (folder.makeEntries) { // It is broken.
            error = "broken: " + folder.path;
            return false;
        }
        for (const MemoryFilePtr& entry : folder.children) {
            const std::string path = relative.empty() ? entry->name : relative + "/" + entry->name;
            if (entry->file) {
                files.push_back(path);
            } else if (!entry->readable) {
                error = "The specified path: " + entry->path + " is not readable.";
                return false;
            } else if (!enter(*entry, path)) {
                return false;
            }
        }
        return true;
    }
};

/// Gives the name of the crawler's protected signal.
struct Signals : FolderCrawler {
    using FolderCrawler::processingDirectory;
};

/// A text as the crawler reports it: as C has it, so it ends at a NUL, and read as UTF-8.
std::string reported(const std::string& text)
{
    return QString::fromUtf8(text.c_str()).toStdString();
}

fuzz::Texts reported(const fuzz::Texts& texts)
{
    fuzz::Texts converted;
    for (const std::string& text : texts)
        converted.push_back(reported(text));
    return converted;
}

/// What the validator does, with the matched files in the parser's order.
class Selection {
public:
    explicit Selection(const std::vector<const plain::Record*>& files) : files_(files)
    {
        for (const plain::Record* file : files_)
            candidates_.append(QString::fromStdString(file->path));
    }

    bool acceptsName(const std::string& name)
    {
        if (known_.count(name) != 0)
            return true;
        const bool selects = !doubles::plainFilter(candidates_, name).isEmpty();
        if (selects)
            known_.insert(name);
        return selects;
    }

    bool isValid(const std::vector<AuxFileIdentifier>& identifiers)
    {
        std::set<std::string> visited;
        bool valid = true;
        for (const AuxFileIdentifier& identifier : identifiers) {
            visited.insert(identifier.syntaxName);
            if (identifier.syntaxName.empty() && identifier.tag.empty())
                continue;
            valid = acceptsTag(identifier.tag) && acceptsName(identifier.syntaxName);
            if (!valid)
                break;
        }
        known_ = visited;
        return valid;
    }

    using Collected = std::map<std::pair<std::size_t, std::string>, fuzz::Texts>;

    Collected collect(const std::vector<AuxFileIdentifier>& identifiers)
    {
        Collected collected;
        std::set<const plain::Record*> recorded;
        for (const AuxFileIdentifier& identifier : identifiers) {
            if (!acceptsTag(identifier.tag) || !acceptsName(identifier.syntaxName))
                continue;
            for (const QString& path : doubles::plainFilter(candidates_, identifier.syntaxName)) {
                const plain::Record* const file = lastOf(path);
                if (recorded.insert(file).second)
                    collected[{file->caseIndex, identifier.tag}].push_back(file->path);
            }
        }
        return collected;
    }

private:
    static bool acceptsTag(const std::string& tag) { return tag.find('!') == std::string::npos; }

    const plain::Record* lastOf(const QString& path) const
    {
        const plain::Record* last = nullptr;
        for (std::size_t i = 0; i < files_.size(); ++i) {
            if (candidates_[static_cast<int>(i)].toStdString() == path.toStdString())
                last = files_[i];
        }
        return last;
    }

    std::vector<const plain::Record*> files_;
    QStringList candidates_;
    std::set<std::string> known_;
};

std::string shown(const Selection::Collected& collected)
{
    std::size_t count = 0;
    std::set<std::string> tags;
    for (const auto& entry : collected) {
        count = std::max(count, entry.first.first + 1);
        tags.insert(entry.first.second);
    }
    std::string text = std::to_string(collected.empty()) + " " + std::to_string(count) + " " +
                       fuzz::shown(fuzz::Texts(tags.begin(), tags.end()));
    tags.insert("no such tag");
    for (std::size_t index = 0; index < count; ++index) {
        for (const std::string& tag : tags) {
            const auto found = collected.find({index, tag});
            text += " " + fuzz::shown(found == collected.end() ? fuzz::Texts() : found->second);
        }
    }
    return text;
}

std::string shown(const AuxFileCollectionInterface& collection)
{
    std::set<std::string> tags = collection.tags();
    std::string text = std::to_string(collection.isEmpty()) + " " +
                       std::to_string(collection.indexCount()) + " " +
                       fuzz::shown(fuzz::Texts(tags.begin(), tags.end()));
    tags.insert("no such tag");
    for (std::size_t index = 0; index < collection.indexCount(); ++index) {
        for (const std::string& tag : tags)
            text += " " + fuzz::shown(collection.filePaths(index, tag));
    }
    return text;
}

class Comparison {
public:
    Comparison() : importer_(doubles::makeImporter(new CrawlerBasicImporterParser)) {}

    void take(const MemoryFilePtr& root, const std::string& written)
    {
        input_ += " tree" + written;
        FolderCrawler crawler(root);
        fuzz::Texts folders;
        QObject::connect(&crawler, &Signals::processingDirectory,
                         [&](const QString& folder) { folders.push_back(folder.toStdString()); });
        crawler.run();

        const Walk walk(*root);
        const FolderCrawler::Result& result = crawler.result();
        expectSame("the files", fuzz::shown(fuzz::Texts(result.files.begin(), result.files.end())),
                   fuzz::shown(walk.files));
        expectSame("the folders entered", fuzz::shown(folders),
                   fuzz::shown(reported(walk.folders)));
        expectSame("the error of the walk", fuzz::shown(result.errorString.toStdString()),
                   fuzz::shown(reported(walk.error)));
        intake(result, *root, walk);
    }

    void apply(const fuzz::Patterns& patterns)
    {
        input_ += " apply " + fuzz::shown(patterns);
        std::string seen;
        std::string expected;
        try {
            importer_->setMetadataPatternList(patterns);
        } catch (const std::out_of_range& error) {
            seen = error.what();
        }
        try {
            model_.apply(patterns);
        } catch (const std::out_of_range& error) {
            expected = error.what();
        }
        patterns_ = patterns;
        expectSame("what matching throws", seen, expected);
    }

    void select(const std::vector<AuxFileIdentifier>& identifiers)
    {
        for (const AuxFileIdentifier& identifier : identifiers)
            input_ +=
                " aux " + fuzz::shown(identifier.syntaxName) + "=" + fuzz::shown(identifier.tag);
        doubles::RecordingProvider provider;
        provider.answer({identifiers});
        AuxFileIdentifierValidator validator(provider, importer_->identifiedAuxFiles(),
                                             boost::make_shared<doubles::RecordingTagValidator>());
        Selection selection(matchedFiles());
        const auto names = validator.syntaxNameValidator();

        const std::string before = shown(*validator.auxFiles());
        collected_ = shown(selection.collect(identifiers));
        expectSame("the aux files", before, collected_);
        for (int time = 0; time < 2; ++time) {
            expectSame("whether the identifiers are valid", std::to_string(validator.isValid()),
                       std::to_string(selection.isValid(identifiers)));
            for (const AuxFileIdentifier& identifier : identifiers)
                expectSame("the verdict on " + fuzz::shown(identifier.syntaxName),
                           std::to_string(names->validate(identifier.syntaxName).isValid()),
                           std::to_string(selection.acceptsName(identifier.syntaxName)));
        }
        const boost::shared_ptr<AuxFileCollectionInterface> collection = validator.auxFiles();
        expectSame("the aux files after a judgement", shown(*collection),
                   shown(selection.collect(identifiers)));
        importer_->setAuxFilesToLoad(collection);
    }

    void expectSameImport()
    {
        expectSame("whether there are cases", std::to_string(importer_->hasCases()),
                   std::to_string(!model_.cases.empty()));
        std::string seen;
        for (const auto& file : importer_->identifiedAuxFiles())
            seen += " " + fuzz::shown(file->filePath()) + std::to_string(file->caseIndex());
        std::string expected;
        for (const plain::Record* file : matchedFiles())
            expected += " " + fuzz::shown(file->path) + std::to_string(file->caseIndex);
        expectSame("the matched files", seen, expected);
        for (const auto& file : model_.files)
            expectSame("the infos of " + fuzz::shown(file->record.path),
                       fuzz::shown(importer_->metadataInfoList(file->record.path)),
                       fuzz::shown(file->record.infos));

        doubles::RecordingContext context;
        std::string error;
        try {
            importer_->extract(context);
        } catch (const ortelo::ExceptionBase& exception) {
            error = exception.what();
        }
        expectSame("what the extraction throws", error,
                   accepted_ ? "" : "Folder name not specified.");
        if (!accepted_) {
            expectSame("whether the context was left alone", context.table ? "no" : "yes", "yes");
            return;
        }
        expectSame("the table", fuzz::seenTable(*context.table),
                   fuzz::expectedTable(patterns_, model_.cases));
        expectSame("the aux files given", context.auxFiles ? shown(*context.auxFiles) : "",
                   collected_);
    }

private:
    void expectSame(const std::string& what, const std::string& seen,
                    const std::string& expected) const
    {
        fuzz::expectSame(what, seen, expected, input_);
    }

    void intake(const FolderCrawler::Result& result, const MemoryFile& root, const Walk& walk)
    {
        std::string error;
        try {
            importer_->setCrawlResult(result);
        } catch (const ortelo::ExceptionBase& exception) {
            error = exception.what();
        }
        std::string expected;
        if (!root.present)
            expected = "The specified folder: /r does not exist.";
        else if (!root.directory)
            expected = "The specified path: /r must be a directory.";
        else if (!root.readable)
            expected = "The specified path: /r is not readable.";
        expectSame("what the intake throws", error, expected);
        if (expected.empty()) {
            accepted_ = &root;
            acceptedFiles_ = walk.files;
            for (const std::string& path : walk.files)
                model_.append(path);
        }
        expectSame("the root kept", importer_->folder().get() == accepted_ ? "right" : "wrong",
                   "right");
        expectSame("the files kept",
                   fuzz::shown(fuzz::Texts(importer_->files().begin(), importer_->files().end())),
                   fuzz::shown(acceptedFiles_));
    }

    std::vector<const plain::Record*> matchedFiles() const
    {
        std::vector<const plain::Record*> files;
        for (const auto& file : model_.files) {
            if (file->record.matched)
                files.push_back(&file->record);
        }
        return files;
    }

    std::unique_ptr<MetadataFileCrawler> importer_;
    model::Parser model_;
    fuzz::Patterns patterns_;
    fuzz::Texts acceptedFiles_;
    const FileInfoInterface* accepted_ = nullptr;
    std::string collected_;
    std::string input_;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    FuzzedDataProvider data(bytes, size);
    Forest forest(data);
    Comparison comparison;
    std::string aPath = "T1_Pab";
    for (int steps = 0; steps < 6 && (steps == 0 || data.remaining_bytes() > 0); ++steps) {
        const auto action = steps == 0 ? 0 : data.ConsumeIntegralInRange<int>(0, 3);
        if (action == 0) {
            std::string written;
            const MemoryFilePtr root = forest.tree(written);
            comparison.take(root, written);
            const fuzz::Texts files = Walk(*root).files;
            if (!files.empty())
                aPath = data.ConsumeBool() ? files.front() : files.back();
        } else if (action < 3) {
            comparison.apply(fuzz::patterns(data, aPath, 4));
        } else {
            std::vector<AuxFileIdentifier> identifiers(
                data.ConsumeIntegralInRange<std::size_t>(0, 4));
            for (AuxFileIdentifier& identifier : identifiers) {
                identifier.syntaxName = data.ConsumeRandomLengthString(12);
                identifier.tag = data.ConsumeRandomLengthString(3);
            }
            comparison.select(identifiers);
        }
        comparison.expectSameImport();
    }
    return 0;
}
