#include "casetable/listing/Listing.h"

#include <string>

#include <QString>

#include "casetable/listing/Crawl.h"
#include "casetable/listing/ListReader.h"
#include "casetable/listing/Progress.h"
#include "casetable/listing/ReadList.h"
#include "casetable/system/Console.h"
#include "casetable/system/ExitCode.h"
#include "casetable/system/Interrupt.h"
#include "casetable/system/StatusLine.h"
#include "casetable/system/Thread.h"

namespace casetable {

namespace {

// The thread that lists ends at the next entry. A system that does not answer may make that wait
// for ever; so a second signal ends the program at once, which does no harm, as nothing is
// half-written yet.
void letGoIfInterrupted()
{
    if (isInterrupted())
        releaseInterrupts();
    throwIfInterrupted();
}

// The crawler's error text does not name the root.
std::string failureText(std::string error, FileSystem::Refused refused, const std::string& root)
{
    if (refused == FileSystem::Refused::Root)
        error = root + ": " + error;
    if (refused == FileSystem::Refused::Folder)
        error += " --keep-going leaves such folders out.";
    return error;
}

} // namespace

Listing::Listing(const Source& source, Console& console) : source_(source), console_(console)
{
    if (source.list) {
        root_ = shardRoot(noPaths_, listName(*source.list));
        return;
    }
    fileSystem_.followLinks = source.follow;
    fileSystem_.leaveOutUnreadable = source.keepGoing;
    fileSystem_.selection = source.selection;
    fileSystem_.warn = [&console](const std::string& text) { console.warning(text); };
    root_ = fileSystemRoot(fileSystem_, source.root);
}

void Listing::run(const ShardSize& size, const Taker& taker)
{
    ShardCutter cutter(size, taker.take);
    if (source_.list)
        runList(cutter, taker);
    else
        runTree(cutter, taker);
    throwIfInterrupted();
}

void Listing::runList(ShardCutter& cutter, const Taker& taker)
{
    StatusLine status(console_);
    ListFile file(*source_.list);
    ListReader reader(
        {listName(*source_.list), source_.nullSeparated, source_.selection, file.reread()},
        [&cutter](std::string_view path) { cutter.take(path); });
    runOnThread(
        [&] {
            file.readInto(reader);
            for (const std::string& warning : reader.warnings())
                console_.warning(warning);
            cutter.finish();
            taker.finish();
        },
        [&] {
            letGoIfInterrupted();
            status.update([&reader] {
                return std::to_string(reader.pathCount()) + " paths: " + reader.name();
            });
        });
}

void Listing::runTree(ShardCutter& cutter, const Taker& taker)
{
    StatusLine status(console_);
    Progress progress;
    CrawlVisitor visitor;
    visitor.file = [&cutter](std::string_view path) {
        throwIfInterrupted();
        cutter.take(path);
    };
    visitor.folder = [&progress](const std::string& path) {
        throwIfInterrupted();
        progress.enterFolder(QString::fromUtf8(path.c_str()));
    };
    runOnThread(
        [&] {
            const std::string error = crawl(root_, visitor);
            if (!error.empty())
                throw Failure(ExitCode::ImportFailed,
                              failureText(error, fileSystem_.refused, source_.root));
            cutter.finish();
            taker.finish();
        },
        [&] {
            letGoIfInterrupted();
            status.update([&] { return progress.text(fileSystem_.filesSeen); });
        });
}

} // namespace casetable
