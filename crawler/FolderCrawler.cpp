#include "crawler/FolderCrawler.h"

#include <utility>

#include "host/ExceptionBase.h"
#include "host/FileInfoInterface.h"

namespace {

// More than 3 KiB for each of 20,000 levels, several times what a level takes even in a build with
// sanitizers. Only address space is reserved; memory is taken as the walk descends.
const unsigned crawlStackBytes = 64U * 1024U * 1024U;

// Takes memory once, and no more than the path needs: a walk keeps the path of every file.
std::string pathBelow(const std::string& relativePath, std::string fileName)
{
    if (relativePath.empty())
        return fileName;
    std::string path;
    path.reserve(relativePath.size() + 1 + fileName.size());
    path.append(relativePath).append(1, '/').append(fileName);
    return path;
}

} // namespace

const std::string FolderCrawler::ROOT_PATH_DOES_NOT_EXIST_ERROR_STRING =
    "The specified directory does not exist.";
const std::string FolderCrawler::ROOT_PATH_IS_NOT_READABLE_ERROR_STRING =
    "The specified directory is not readable.";

FolderCrawler::FolderCrawler(boost::shared_ptr<FileInfoInterface const> root) : aborted_(false)
{
    result_.folder = std::move(root);
    setStackSize(crawlStackBytes);
}

FolderCrawler::~FolderCrawler()
{
    abort();
    wait();
}

void FolderCrawler::run()
{
    result_.files.clear();
    try {
        if (!result_.folder->exists())
            throw ortelo::ExceptionBase(ROOT_PATH_DOES_NOT_EXIST_ERROR_STRING, false);
        if (!result_.folder->isReadable())
            throw ortelo::ExceptionBase(ROOT_PATH_IS_NOT_READABLE_ERROR_STRING, false);
        crawlFolder(*result_.folder, std::string(), result_.files);
    } catch (const ortelo::ExceptionBase& failure) {
        result_.errorString = QString::fromUtf8(failure.what());
    }
}

const FolderCrawler::Result& FolderCrawler::result()
{
    return result_;
}

void FolderCrawler::abort()
{
    aborted_ = true;
}

void FolderCrawler::crawlFolder(const FileInfoInterface& folder, const std::string& relativePath,
                                std::list<std::string>& files)
{
    if (folder.isDirectory())
        emit processingDirectory(QString::fromUtf8(folder.fullPath().c_str()));

    for (const auto& entry : folder.entries(std::string())) {
        if (aborted_)
            return;
        std::string path = pathBelow(relativePath, entry->fileName());
        if (entry->isFile()) {
            files.push_back(std::move(path));
            continue;
        }
        if (!entry->isReadable())
            throw ortelo::ExceptionBase(
                "The specified path: " + entry->fullPath() + " is not readable.", false);
        crawlFolder(*entry, path, files);
    }
}
