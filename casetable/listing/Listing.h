#ifndef CASETABLE_LISTING_LISTING_H
#define CASETABLE_LISTING_LISTING_H

#include <cstddef>
#include <memory>

#include "casetable/listing/FileList.h"
#include "casetable/listing/FileSystem.h"
#include "crawler/FolderCrawler.h"

namespace casetable {

class Console;
struct Source;

/// The files of a source, listed. Must outlive the crawler that takeCrawler() hands over.
class Listing {
public:
    /// Lists all files, with progress and warnings on `console`. Throws what readList() and walk()
    /// throw.
    Listing(const Source& source, Console& console);

    /// Hands over the finished crawler, whose result is the files; to be called once.
    std::unique_ptr<FolderCrawler> takeCrawler();

    /// The number of entries that were left out only because they are hidden.
    std::size_t hiddenLeftOut() const { return fileSystem_->hiddenLeftOut; }

private:
    const std::shared_ptr<FileSystem> fileSystem_;
    FileList list_;
    std::unique_ptr<FolderCrawler> crawler_;
};

} // namespace casetable

#endif
