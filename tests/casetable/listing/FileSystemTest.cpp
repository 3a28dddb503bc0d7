#include "casetable/listing/FileSystem.h"

#include <algorithm>
#include <cstdio>
#include <list>
#include <map>
#include <random>
#include <set>
#include <string>
#include <vector>

#include <dirent.h>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "crawler/FolderCrawler.h"
#include "host/ExceptionBase.h"
#include "tests/casetable/support/ListingCalls.h"
#include "tests/casetable/support/OrdinaryUser.h"
#include "tests/casetable/support/TemporaryTree.h"
#include "tests/support/Sanitizer.h"

namespace casetable {
namespace tests {

namespace {

using EntryPtr = boost::shared_ptr<FileInfoInterface const>;

std::map<std::string, EntryPtr> entriesByName(const FileInfoInterface& folder)
{
    std::map<std::string, EntryPtr> entries;
    for (const EntryPtr& entry : folder.entries(std::string()))
        EXPECT_TRUE(entries.emplace(entry->fileName(), entry).second) << entry->fileName();
    return entries;
}

std::string failureOf(const FileInfoInterface& folder)
{
    try {
        folder.entries(std::string());
    } catch (const ortelo::ExceptionBase& failure) {
        EXPECT_FALSE(failure.flag());
        return failure.what();
    }
    return "no failure";
}

std::size_t openDescriptors()
{
    DIR* listing = opendir("/proc/self/fd");
    std::size_t count = 0;
    while (listing != nullptr && readdir(listing) != nullptr)
        ++count;
    if (listing != nullptr)
        closedir(listing);
    return count;
}

} // namespace

TEST(FileSystem, TellsFilesFromFolders)
{
    const TemporaryTree tree;
    tree.file("file");
    tree.folder("folder");
    tree.link("link", "file");
    FileSystem fileSystem;

    const auto entries = entriesByName(*fileSystemRoot(fileSystem, tree.path()));

    ASSERT_EQ(entries.size(), 3u);
    for (const char* name : {"file", "link"}) {
        EXPECT_TRUE(entries.at(name)->isFile()) << name;
        EXPECT_FALSE(entries.at(name)->isDirectory()) << name;
    }
    EXPECT_FALSE(entries.at("folder")->isFile());
    EXPECT_TRUE(entries.at("folder")->isDirectory());
    for (const auto& entry : entries) {
        EXPECT_TRUE(entry.second->exists()) << entry.first;
        EXPECT_TRUE(entry.second->isReadable()) << entry.first;
        EXPECT_EQ(entry.second->fullPath(), tree.path(entry.first));
    }
}

TEST(FileSystem, LeavesOutWhatIsNeitherFileNorFolder)
{
    const TemporaryTree tree;
    tree.link("broken", "missing");
    tree.link("device", "/dev/null");
    tree.pipe("pipe");
    tree.link("link to pipe", "pipe");
    tree.socket("socket");
    tree.folder("folder");
    tree.link("link to folder", "folder");
    FileSystem fileSystem;

    const auto entries = entriesByName(*fileSystemRoot(fileSystem, tree.path()));

    ASSERT_EQ(entries.size(), 1u);
    EXPECT_EQ(entries.begin()->first, "folder");
}

TEST(FileSystem, ListsInByteOrderOfThePathsBelow)
{
    const TemporaryTree tree;
    for (const char* const file : {"b", "a.txt", "a!", "A", "a0", "ab", "\xff", "a/x"})
        tree.file(file);

    FileSystem fileSystem;

    std::vector<std::string> names;
    for (const EntryPtr& entry : fileSystemRoot(fileSystem, tree.path())->entries(std::string()))
        names.push_back(entry->fileName());

    // The folder stands where its path goes on with a separator: behind '!' and '.', before '0'.
    EXPECT_EQ(names, (std::vector<std::string>{"A", "a!", "a.txt", "a", "a0", "ab", "b", "\xff"}));
}

TEST(FileSystem, GivesAWalkInByteOrderOfItsPaths)
{
    const TemporaryTree tree;
    const unsigned seed = 7;
    std::mt19937 random(seed);
    const std::string letters = "a!.0\xff";
    for (int i = 0; i < 300; ++i) {
        std::string path = "d";
        for (auto length = random() % 5; length > 0; --length)
            path += random() % 4 == 0 && path.back() != '/' ? '/' : letters[random() % 5];
        tree.file(path + "f" + std::to_string(i));
    }
    FileSystem fileSystem;
    FolderCrawler crawler(fileSystemRoot(fileSystem, tree.path()));

    crawler.run();

    const std::list<std::string>& files = crawler.result().files;
    EXPECT_EQ(files.size(), 300u);
    EXPECT_TRUE(std::is_sorted(files.begin(), files.end())) << testing::PrintToString(files);
}

TEST(FileSystem, LeavesOutHiddenEntriesWhenToldToAndCountsThem)
{
    const TemporaryTree tree;
    for (const char* const file : {"a", ".a", ".folder/b", "folder/.b", "folder/b", ".log", "a."})
        tree.file(file);
    tree.link(".link", "missing");
    tree.pipe(".pipe");
    tree.socket(".socket");
    FileSystem fileSystem;
    fileSystem.selection.hidden = false;
    fileSystem.selection.excluded = {Glob("*.log")};

    const auto entries = entriesByName(*fileSystemRoot(fileSystem, tree.path()));

    ASSERT_EQ(entries.size(), 3u);
    EXPECT_EQ(entries.count("a") + entries.count("a.") + entries.count("folder"), 3u);
    EXPECT_EQ(fileSystem.hiddenLeftOut, 3u) << ".a, .folder and .link";
    EXPECT_EQ(entriesByName(*entries.at("folder")).size(), 1u);
    EXPECT_EQ(fileSystem.hiddenLeftOut, 4u);
    EXPECT_EQ(fileSystem.filesListed, 3u);
}

TEST(FileSystem, CountsNoHiddenEntriesWhereTheyAreTaken)
{
    const TemporaryTree tree;
    tree.file(".a");
    FileSystem fileSystem;

    EXPECT_EQ(entriesByName(*fileSystemRoot(fileSystem, tree.path())).count(".a"), 1u);
    EXPECT_EQ(fileSystem.hiddenLeftOut, 0u);
}

TEST(FileSystem, JudgesNoRoot)
{
    const TemporaryTree tree;
    tree.file(".root/a");
    FileSystem fileSystem;
    fileSystem.selection.hidden = false;
    fileSystem.selection.excluded = {Glob(".root")};

    for (const char* const root : {".root", ".root/.", ".root/../.root"}) {
        EXPECT_EQ(entriesByName(*fileSystemRoot(fileSystem, tree.path(root))).count("a"), 1u)
            << root;
    }
}

TEST(FileSystem, JudgesPathsBelowTheRoot)
{
    const TemporaryTree tree;
    tree.file("a/b/c/x");
    tree.file("a/x");
    FileSystem fileSystem;
    fileSystem.selection.excluded = {Glob("/b"), Glob("c/x"), Glob("a/b/c/x"), Glob("/x")};

    const auto root = entriesByName(*fileSystemRoot(fileSystem, tree.path("a")));
    ASSERT_EQ(root.size(), 0u);

    const auto a = entriesByName(*fileSystemRoot(fileSystem, tree.path())).at("a");
    const auto b = entriesByName(*a).at("b");
    EXPECT_EQ(entriesByName(*a).count("x"), 1u);
    EXPECT_EQ(entriesByName(*entriesByName(*b).at("c")).count("x"), 0u);
}

TEST(FileSystem, TakesAFollowedLinkForAFolder)
{
    const TemporaryTree tree;
    tree.folder("target");
    tree.file("root/T/x");
    tree.link("root/link", "../target");
    FileSystem fileSystem;
    fileSystem.followLinks = true;
    EXPECT_EQ(entriesByName(*fileSystemRoot(fileSystem, tree.path("root"))).count("link"), 1u);

    fileSystem.selection.excluded = {Glob("link/")};
    EXPECT_EQ(entriesByName(*fileSystemRoot(fileSystem, tree.path("root"))).count("link"), 0u);

    fileSystem.selection.excluded.clear();
    fileSystem.selection.maxDepth = 1;
    EXPECT_EQ(entriesByName(*fileSystemRoot(fileSystem, tree.path("root"))).size(), 0u);
}

TEST(FileSystem, TakesNamesAsBytes)
{
    const TemporaryTree tree;
    std::set<std::string> names;
    for (int byte = 1; byte < 256; ++byte) {
        const char c = static_cast<char>(byte);
        if (c != '/' && c != '.')
            names.insert({std::string(1, c), std::string("\xff\n") + c});
    }
    for (const std::string& name : names)
        tree.file(name + "/" + name);
    FileSystem fileSystem;

    const auto entries = entriesByName(*fileSystemRoot(fileSystem, tree.path()));

    EXPECT_EQ(entries.size(), names.size());
    for (const std::string& name : names) {
        SCOPED_TRACE(testing::PrintToString(name));
        ASSERT_EQ(entries.count(name), 1u);
        const auto inner = entriesByName(*entries.at(name));
        ASSERT_EQ(inner.count(name), 1u);
        EXPECT_EQ(inner.at(name)->fullPath(), tree.path(name + "/" + name));
    }
}

TEST(FileSystem, HasARootUnderThePathGiven)
{
    const TemporaryTree tree;
    tree.file("folder/file");
    tree.link("link", "folder");
    FileSystem fileSystem;

    for (const std::string& path : {tree.path("folder"), tree.path("folder/"), tree.path("link")}) {
        SCOPED_TRACE(path);
        const EntryPtr root = fileSystemRoot(fileSystem, path);
        EXPECT_TRUE(root->exists());
        EXPECT_TRUE(root->isDirectory());
        EXPECT_FALSE(root->isFile());
        EXPECT_TRUE(root->isReadable());
        EXPECT_EQ(root->fullPath(), path);
        const auto entries = entriesByName(*root);
        ASSERT_EQ(entries.count("file"), 1u);
        EXPECT_EQ(entries.at("file")->fullPath(), path + (path.back() == '/' ? "" : "/") + "file");
    }
}

TEST(FileSystem, AnswersForARootThatDoesNotExist)
{
    const TemporaryTree tree;
    FileSystem fileSystem;
    const EntryPtr root = fileSystemRoot(fileSystem, tree.path("missing"));

    EXPECT_FALSE(root->exists());
    EXPECT_FALSE(root->isDirectory());
    EXPECT_FALSE(root->isFile());
    EXPECT_FALSE(root->isReadable());
    EXPECT_EQ(failureOf(*root), tree.path("missing") + ": No such file or directory");
}

TEST(FileSystem, AnswersForARootThatIsAFile)
{
    const TemporaryTree tree;
    tree.file("file");
    FileSystem fileSystem;
    const EntryPtr root = fileSystemRoot(fileSystem, tree.path("file"));

    EXPECT_TRUE(root->exists());
    EXPECT_FALSE(root->isDirectory());
    EXPECT_TRUE(root->isFile());
    EXPECT_EQ(failureOf(*root), tree.path("file") + ": Not a directory");
}

TEST(FileSystem, AnswersForARootThatIsNeitherFileNorFolder)
{
    const TemporaryTree tree;
    tree.pipe("pipe");
    tree.socket("socket");
    FileSystem fileSystem;

    for (const std::string& path :
         {tree.path("pipe"), tree.path("socket"), std::string("/dev/null")}) {
        SCOPED_TRACE(path);
        const EntryPtr root = fileSystemRoot(fileSystem, path);
        EXPECT_TRUE(root->exists());
        EXPECT_FALSE(root->isDirectory());
        EXPECT_FALSE(root->isFile());
        EXPECT_EQ(failureOf(*root), path + ": Not a directory");
    }
}

TEST(FileSystem, RaisesWhyAFolderCannotBeListed)
{
    const TemporaryTree tree;
    for (const char* name : {"gone", "now a file", "now a link"})
        tree.folder(std::string("sub/") + name);
    tree.file("target/file");
    FileSystem fileSystem;
    const auto sub = entriesByName(*fileSystemRoot(fileSystem, tree.path())).at("sub");
    const auto entries = entriesByName(*sub);
    for (const char* name : {"gone", "now a file", "now a link"})
        tree.remove(std::string("sub/") + name);
    tree.file("sub/now a file");
    tree.link("sub/now a link", "../target");

    EXPECT_EQ(failureOf(*entries.at("gone")), tree.path("sub/gone: No such file or directory"));
    EXPECT_EQ(failureOf(*entries.at("now a file")), tree.path("sub/now a file: Not a directory"));
    EXPECT_EQ(failureOf(*entries.at("now a link")), tree.path("sub/now a link: Not a directory"));
    EXPECT_FALSE(entries.at("gone")->exists());
}

TEST(FileSystem, WarnsOfAFolderThatWentAwayWhenUnreadableOnesAreLeftOut)
{
    const TemporaryTree tree;
    tree.folder("gone");
    FileSystem fileSystem;
    fileSystem.leaveOutUnreadable = true;
    std::vector<std::string> warnings;
    fileSystem.warn = [&warnings](const std::string& text) { warnings.push_back(text); };
    const auto entries = entriesByName(*fileSystemRoot(fileSystem, tree.path()));
    tree.remove("gone");

    EXPECT_TRUE(entries.at("gone")->entries(std::string()).empty());

    EXPECT_EQ(warnings,
              std::vector<std::string>({tree.path("gone") + ": No such file or directory"}));
}

TEST(FileSystem, ListsAnUnreadableFolderAsSuch)
{
    SKIP_UNLESS_ORDINARY_USER_IS_POSSIBLE();
    const TemporaryTree tree;
    for (const mode_t mode : {0000, 0333, 0444}) {
        tree.folder("folder");
        tree.setMode("folder", mode);
        asOrdinaryUser([&tree, mode] {
            FileSystem fileSystem;
            const auto entries = entriesByName(*fileSystemRoot(fileSystem, tree.path()));
            EXPECT_TRUE(entries.at("folder")->isDirectory());
            EXPECT_TRUE(entries.at("folder")->exists());
            EXPECT_FALSE(entries.at("folder")->isReadable()) << mode;
            EXPECT_FALSE(fileSystemRoot(fileSystem, tree.path("folder"))->isReadable()) << mode;
            if (mode != 0444) {
                EXPECT_EQ(failureOf(*entries.at("folder")),
                          tree.path("folder") + ": Permission denied");
            }
        });
    }
}

TEST(FileSystem, LeavesOutUnreadableFoldersWithAWarningEach)
{
    SKIP_UNLESS_ORDINARY_USER_IS_POSSIBLE();
    const TemporaryTree tree;
    tree.file("open/file");
    for (const char* name : {"a", "b"}) {
        tree.folder(name);
        tree.setMode(name, 0);
    }
    asOrdinaryUser([&tree] {
        FileSystem fileSystem;
        fileSystem.leaveOutUnreadable = true;
        std::set<std::string> warnings;
        fileSystem.warn = [&warnings](const std::string& text) { warnings.insert(text); };

        const auto entries = entriesByName(*fileSystemRoot(fileSystem, tree.path()));

        EXPECT_EQ(entries.size(), 1u);
        EXPECT_TRUE(entries.at("open")->isReadable());
        EXPECT_EQ(warnings, std::set<std::string>({tree.path("a") + ": Permission denied",
                                                   tree.path("b") + ": Permission denied"}));
    });
}

TEST(FileSystem, RaisesForAnUnreadableRootEvenWhenSuchFoldersAreLeftOut)
{
    SKIP_UNLESS_ORDINARY_USER_IS_POSSIBLE();
    const TemporaryTree tree;
    tree.folder("root");
    tree.setMode("root", 0);
    asOrdinaryUser([&tree] {
        FileSystem fileSystem;
        fileSystem.leaveOutUnreadable = true;
        EXPECT_EQ(failureOf(*fileSystemRoot(fileSystem, tree.path("root"))),
                  tree.path("root") + ": Permission denied");
    });
}

TEST(FileSystem, RaisesALackOfDescriptorsWhetherUnreadableFoldersAreLeftOutOrNot)
{
    SKIP_WHERE_SANITIZERS_NEED_DESCRIPTORS();
    const TemporaryTree tree;
    tree.file("folder/file");
    for (const bool leaveOut : {false, true}) {
        inOwnProcess([&tree, leaveOut] {
            FileSystem fileSystem;
            fileSystem.leaveOutUnreadable = leaveOut;
            fileSystem.warn = [](const std::string& text) { ADD_FAILURE() << text; };
            const auto entries = entriesByName(*fileSystemRoot(fileSystem, tree.path()));
            const rlimit none = {0, 0};
            ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);

            EXPECT_EQ(failureOf(*entries.at("folder")),
                      tree.path("folder") + ": Too many open files");
        });
    }
}

TEST(FileSystem, WarnsOfALinkWhoseTargetMayNotBeLookedAt)
{
    SKIP_UNLESS_ORDINARY_USER_IS_POSSIBLE();
    const TemporaryTree tree;
    tree.file("closed/file");
    tree.setMode("closed", 0);
    tree.link("root/link", "../closed/file");
    asOrdinaryUser([&tree] {
        FileSystem fileSystem;
        std::vector<std::string> warnings;
        fileSystem.warn = [&warnings](const std::string& text) { warnings.push_back(text); };

        EXPECT_TRUE(entriesByName(*fileSystemRoot(fileSystem, tree.path("root"))).empty());

        EXPECT_EQ(warnings,
                  std::vector<std::string>({tree.path("root/link") + ": Permission denied"}));
    });
}

TEST(FileSystem, TakesARootThatMayNotBeLookedAtToExistUnreadable)
{
    SKIP_UNLESS_ORDINARY_USER_IS_POSSIBLE();
    const TemporaryTree tree;
    tree.folder("closed/root");
    tree.setMode("closed", 0);
    asOrdinaryUser([&tree] {
        FileSystem fileSystem;
        const EntryPtr root = fileSystemRoot(fileSystem, tree.path("closed/root"));
        EXPECT_TRUE(root->exists());
        EXPECT_FALSE(root->isReadable());
        EXPECT_EQ(failureOf(*root), tree.path("closed/root") + ": Permission denied");
    });
}

TEST(FileSystem, CountsTheFilesListed)
{
    const TemporaryTree tree;
    for (const char* file : {"a", "b", "folder/c"})
        tree.file(file);
    tree.pipe("pipe");
    FileSystem fileSystem;
    const auto entries = entriesByName(*fileSystemRoot(fileSystem, tree.path()));

    EXPECT_EQ(fileSystem.filesListed, 2u);
    EXPECT_EQ(entriesByName(*entries.at("folder")).size(), 1u);
    EXPECT_EQ(fileSystem.filesListed, 3u);
}

TEST(FileSystem, CountsTheFilesOfALargeFolderWhileItIsListed)
{
    const TemporaryTree tree;
    const std::size_t files = 2000;
    for (std::size_t i = 0; i < files; ++i)
        tree.file(std::string(50, 'x') + std::to_string(i));
    FileSystem fileSystem;
    std::vector<std::size_t> counts;
    beforeListing = [&] { counts.push_back(fileSystem.filesListed); };

    fileSystemRoot(fileSystem, tree.path())->entries("");

    beforeListing = nullptr;
    ASSERT_GT(counts.size(), 2u);
    EXPECT_EQ(counts.front(), 0u);
    EXPECT_GT(counts[1], 0u);
    EXPECT_LT(counts[1], files);
    EXPECT_EQ(counts.back(), files);
    EXPECT_EQ(fileSystem.filesListed, files);
}

TEST(FileSystem, ReachesFoldersOfAnyDepthWithFewDescriptors)
{
    const TemporaryTree tree;
    const int levels = 1000;
    tree.chain("chain", levels, "folder", "file");
    FileSystem fileSystem;
    const std::size_t before = openDescriptors();
    std::vector<EntryPtr> folders = {fileSystemRoot(fileSystem, tree.path("chain"))};
    for (int level = 0; level < levels; ++level)
        folders.push_back(entriesByName(*folders.back()).at("folder"));

    const auto last = entriesByName(*folders.back());

    ASSERT_EQ(last.count("file"), 1u);
    EXPECT_TRUE(last.at("file")->exists());
    EXPECT_TRUE(last.at("file")->isReadable());
    EXPECT_LT(openDescriptors() - before, 200u);
    for (const int level : {127, 128, 129, 191, 192, 193, 999})
        EXPECT_EQ(entriesByName(*folders[level]).count("folder"), 1u) << level;
}

TEST(FileSystem, ClosesItsDescriptorsWithTheEntries)
{
    const TemporaryTree tree;
    tree.chain("chain", 200, "folder", "file");
    FileSystem fileSystem;
    const std::size_t before = openDescriptors();
    {
        EntryPtr folder = fileSystemRoot(fileSystem, tree.path("chain"));
        for (int level = 0; level < 200; ++level)
            folder = entriesByName(*folder).at("folder");
        EXPECT_GT(openDescriptors(), before);
    }

    EXPECT_EQ(openDescriptors(), before);
}

TEST(FileSystem, TakesAnyDescriptorThatTheSystemGives)
{
    const TemporaryTree tree;
    tree.file("folder/inner/file");
    inOwnProcess([&tree] {
        // The next to be opened gets the number of standard input.
        ASSERT_EQ(close(STDIN_FILENO), 0);
        FileSystem fileSystem;
        {
            const auto entries = entriesByName(*fileSystemRoot(fileSystem, tree.path()));
            EXPECT_NE(fcntl(STDIN_FILENO, F_GETFD), -1);
            ASSERT_EQ(entries.count("folder"), 1u);
            EXPECT_EQ(entriesByName(*entries.at("folder")).count("inner"), 1u);
        }
        EXPECT_EQ(fcntl(STDIN_FILENO, F_GETFD), -1) << "it is closed with the entries";
    });
}

TEST(FileSystem, KeepsToTheFoldersListedWhenTheyAreRenamed)
{
    const TemporaryTree tree;
    tree.file("before/inner/file");
    FileSystem fileSystem;
    const auto entries = entriesByName(*fileSystemRoot(fileSystem, tree.path("before")));
    ASSERT_EQ(rename(tree.path("before").c_str(), tree.path("after").c_str()), 0);

    EXPECT_EQ(entriesByName(*entries.at("inner")).count("file"), 1u);
}

} // namespace tests
} // namespace casetable
