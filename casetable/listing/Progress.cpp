#include "casetable/listing/Progress.h"

#include <utility>

namespace casetable {

std::string Progress::text(std::size_t filesSeen) const
{
    const std::lock_guard<std::mutex> lock(mutex_);
    return std::to_string(folders_) + " folders, " + std::to_string(filesSeen) +
           " files: " + current_.toStdString();
}

void Progress::enterFolder(QString folder)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    ++folders_;
    current_ = std::move(folder);
}

} // namespace casetable
