#include "casetable/listing/Crawl.h"

#include <cstddef>
#include <exception>
#include <utility>
#include <vector>

#include <boost/make_shared.hpp>

#include "crawler/FolderCrawler.h"
#include "host/ExceptionBase.h"

namespace casetable {

namespace {

using EntryPtr = boost::shared_ptr<FileInfoInterface const>;

// The answers that stopped a walk. FolderCrawler is stopped by them in the same way, so the text of
// the failure is its own.
struct Answers : public FileInfoInterface {
    bool isDirectory() const override { return false; }
    bool isReadable() const override { return readable; }
    bool isFile() const override { return false; }
    bool exists() const override { return existing; }
    std::string fullPath() const override { return path; }
    std::string fileName() const override { return std::string(); }

    std::vector<EntryPtr> entries(const std::string& /*filter*/) const override
    {
        if (thrown)
            std::rethrow_exception(thrown);
        return {unreadable};
    }

    bool existing = true;
    bool readable = true;
    std::string path;
    std::exception_ptr thrown;
    EntryPtr unreadable; // An entry of the root.
};

std::string errorText(const boost::shared_ptr<Answers const>& root)
{
    FolderCrawler crawler(root);
    crawler.run();
    return crawler.result().errorString.toStdString();
}

// A folder on the way from the root to where the walk is.
struct Level {
    EntryPtr folder;
    std::vector<EntryPtr> entries;
    std::size_t next = 0;
    std::size_t pathLength; // Of the folder, relative to the root.
};

Level enter(const EntryPtr& folder, std::size_t pathLength, const CrawlVisitor& visitor)
{
    if (folder->isDirectory())
        visitor.folder(folder->fullPath());
    return {folder, folder->entries(std::string()), 0, pathLength};
}

// `path` is that of the folder. Returns the folder below it that cannot be read; nothing if there
// is none.
EntryPtr crawlBelow(const EntryPtr& folder, std::string path, const CrawlVisitor& visitor)
{
    std::vector<Level> levels;
    levels.push_back(enter(folder, path.size(), visitor));
    while (!levels.empty()) {
        Level& level = levels.back();
        if (level.next == level.entries.size()) {
            levels.pop_back();
            continue;
        }
        EntryPtr entry = std::move(level.entries[level.next++]);
        path.resize(level.pathLength);
        if (!path.empty())
            path += '/';
        path += entry->fileName();
        if (entry->isFile()) {
            visitor.file(path);
            continue;
        }
        if (!entry->isReadable())
            return entry;
        levels.push_back(enter(entry, path.size(), visitor));
    }
    return nullptr;
}

// The error text where `act` throws, or returns a folder that cannot be read; otherwise empty.
template <class Act> std::string errorTextOf(const Act& act)
{
    const auto answers = boost::make_shared<Answers>();
    try {
        const EntryPtr failed = act();
        if (!failed)
            return std::string();
        const auto unreadable = boost::make_shared<Answers>();
        unreadable->readable = false;
        unreadable->path = failed->fullPath();
        answers->unreadable = unreadable;
    } catch (const ortelo::ExceptionBase&) {
        answers->thrown = std::current_exception();
    }
    return errorText(answers);
}

} // namespace

std::string crawl(const EntryPtr& root, const CrawlVisitor& visitor)
{
    const auto answers = boost::make_shared<Answers>();
    const std::string error = errorTextOf([&]() -> EntryPtr {
        answers->existing = root->exists();
        answers->readable = !answers->existing || root->isReadable();
        return answers->existing && answers->readable ? crawlBelow(root, "", visitor) : nullptr;
    });
    return answers->existing && answers->readable ? error : errorText(answers);
}

std::string crawlEntry(const EntryPtr& entry, const std::string& path, const CrawlVisitor& visitor)
{
    return errorTextOf([&]() -> EntryPtr {
        if (entry->isFile()) {
            visitor.file(path);
            return nullptr;
        }
        return entry->isReadable() ? crawlBelow(entry, path, visitor) : entry;
    });
}

} // namespace casetable
