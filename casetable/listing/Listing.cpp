#include "casetable/listing/Listing.h"

#include <string>
#include <utility>

#include "casetable/listing/ReadList.h"
#include "casetable/listing/Source.h"
#include "casetable/listing/Walk.h"
#include "casetable/system/Console.h"

namespace casetable {

Listing::Listing(const Source& source, Console& console)
    : fileSystem_(std::make_shared<FileSystem>()),
      list_(source.list ? listName(*source.list) : "", source.nullSeparated)
{
    if (source.list) {
        list_.selection = source.selection;
        readList(*source.list, list_, console);
        crawler_ = walk(list_, console);
    } else {
        fileSystem_->followLinks = source.follow;
        fileSystem_->leaveOutUnreadable = source.keepGoing;
        fileSystem_->selection = source.selection;
        fileSystem_->warn = [&console](const std::string& text) { console.warning(text); };
        crawler_ = walk(fileSystem_, source.root, console);
    }
}

std::unique_ptr<FolderCrawler> Listing::takeCrawler()
{
    return std::move(crawler_);
}

} // namespace casetable
