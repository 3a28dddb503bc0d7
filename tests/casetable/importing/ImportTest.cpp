#include "casetable/importing/Import.h"

#include <algorithm>
#include <map>
#include <mutex>
#include <random>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "casetable/importing/ShardImport.h"
#include "casetable/importing/ShardWorkers.h"
#include "casetable/listing/ListRoot.h"
#include "casetable/listing/Shard.h"
#include "casetable/system/ExitCode.h"
#include "host/AuxFileInfoInterface.h"
#include "tests/casetable/support/Importing.h"
#include "tests/casetable/support/WholeImport.h"
#include "tests/support/MemoryFile.h"

namespace casetable {
namespace tests {

namespace {

using Texts = std::vector<std::string>;
using Identifiers = std::vector<AuxFileIdentifier>;

// What an import comes to, in a form that can be compared.
struct Outcome {
    std::string failure;
    Texts cells;
    std::vector<std::size_t> fileCounts;
    Texts tags;
    std::vector<Texts> auxFiles; // Of each case, and in it of each tag.
    bool hasAuxFiles = false;
    std::size_t auxIndexCount = 0;
    std::set<std::string> auxTags;
    Texts firstFiles;
    std::vector<Texts> rows; // The path, the case and the tag of each file.
    Texts unmatched;

    void takeTable(const CaseTable& table)
    {
        cells = table.cells;
        fileCounts = table.fileCounts;
        tags = table.tags;
        for (std::size_t index = 0; index < table.caseCount(); ++index) {
            for (std::size_t tag = 0; tag < table.tags.size(); ++tag)
                auxFiles.push_back(table.auxFilesOf(index, tag));
        }
        hasAuxFiles = table.auxFiles != nullptr;
        if (hasAuxFiles) {
            auxIndexCount = table.auxFiles->indexCount();
            auxTags = table.auxFiles->tags();
            EXPECT_EQ(table.auxFiles->isEmpty(), auxIndexCount == 0);
        }
    }
};

void expectEqual(const Outcome& outcome, const Outcome& expected)
{
    EXPECT_EQ(outcome.failure, expected.failure);
    EXPECT_EQ(outcome.cells, expected.cells);
    EXPECT_EQ(outcome.fileCounts, expected.fileCounts);
    EXPECT_EQ(outcome.tags, expected.tags);
    EXPECT_EQ(outcome.auxFiles, expected.auxFiles);
    EXPECT_EQ(outcome.hasAuxFiles, expected.hasAuxFiles);
    EXPECT_EQ(outcome.auxIndexCount, expected.auxIndexCount);
    EXPECT_EQ(outcome.auxTags, expected.auxTags);
    EXPECT_EQ(outcome.firstFiles, expected.firstFiles);
    EXPECT_EQ(outcome.rows, expected.rows);
    EXPECT_EQ(outcome.unmatched, expected.unmatched);
}

// The tree of the folders in the paths, which are in byte order.
doubles::MemoryFilePtr treeOf(const Texts& sorted)
{
    const doubles::MemoryFilePtr root = doubles::memoryFolder("root");
    for (const std::string& path : sorted) {
        doubles::MemoryFilePtr folder = root;
        std::size_t begin = 0;
        for (std::size_t end = 0; (end = path.find('/', begin)) != std::string::npos;
             begin = end + 1) {
            const std::string name = path.substr(begin, end - begin);
            if (folder->children.empty() || folder->children.back()->name != name)
                folder->children.push_back(doubles::memoryFolder(name));
            folder = folder->children.back();
        }
        folder->children.push_back(doubles::memoryFile(path.substr(begin)));
        folder->children.back()->name = path.substr(begin);
    }
    return root;
}

std::map<std::string, std::string> tagsByPath(const CaseTable& table)
{
    std::map<std::string, std::string> tagOf;
    for (std::size_t index = 0; index < table.caseCount(); ++index) {
        for (std::size_t tag = 0; tag < table.tags.size(); ++tag) {
            for (const std::string& path : table.auxFilesOf(index, tag))
                tagOf[path] = table.tags[tag];
        }
    }
    return tagOf;
}

// With one importer for all files, in byte order of path.
Outcome wholeImport(const Texts& sorted, const Reading& reading, const Identifiers& identifiers)
{
    Outcome outcome;
    FolderCrawler crawler(treeOf(sorted));
    crawler.run();
    try {
        const WholeImport import(crawler, reading, identifiers);
        outcome.takeTable(import.table());
        const std::map<std::string, std::string> tags = tagsByPath(import.table());
        for (const auto& file : import.importer().identifiedAuxFiles()) {
            const std::string path = file->filePath();
            const std::size_t index = file->caseIndex();
            const auto tag = tags.find(path);
            outcome.rows.push_back(
                {path, std::to_string(index), tag == tags.end() ? "" : tag->second});
            if (index == outcome.firstFiles.size())
                outcome.firstFiles.push_back(path);
        }
        outcome.unmatched = unmatchedPaths(import.importer());
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.code, ExitCode::ImportFailed);
        outcome.failure = failure.what();
    }
    return outcome;
}

// In shards of so many files in the order of `paths`, on so many threads.
Partial importedInShards(const Texts& paths, std::size_t files, std::size_t jobs,
                         const Reading& reading, const Identifiers& identifiers,
                         const KeptFiles& keptFiles)
{
    Partial all;
    std::mutex mutex;
    ShardWorkers workers(jobs, [&](const Shard& shard) {
        Partial partial = importShard(shard, reading, identifiers, keptFiles);
        const std::lock_guard<std::mutex> lock(mutex);
        all.merge(std::move(partial));
    });
    ShardCutter cutter({files, 1'000'000}, [&](Shard shard) { workers.give(std::move(shard)); });
    for (const std::string& path : paths)
        cutter.take(path);
    cutter.finish();
    workers.finish();
    return all;
}

Outcome mergedImport(const Texts& paths, std::size_t files, std::size_t jobs,
                     const Reading& reading, const Identifiers& identifiers)
{
    Outcome outcome;
    try {
        KeptFiles kept;
        kept.matched = true;
        kept.unmatched = true;
        const Import import(importedInShards(paths, files, jobs, reading, identifiers, kept),
                            listRoot("root"), reading, identifiers, kept);
        outcome.takeTable(import.table());
        EXPECT_EQ(import.fileCount(), paths.size());
        EXPECT_EQ(import.matchedCount(), import.matchedFiles().count);
        outcome.firstFiles.assign(import.firstFiles().begin(), import.firstFiles().end());
        const FileRows matched = import.matchedFiles();
        for (std::size_t index = 0; index < matched.count; ++index) {
            const FileRow file = matched.file(index);
            outcome.rows.push_back(
                {std::string(file.path), std::to_string(file.caseIndex), std::string(file.tag)});
        }
        const FileRows unmatched = import.unmatchedFiles();
        for (std::size_t index = 0; index < unmatched.count; ++index)
            outcome.unmatched.emplace_back(unmatched.file(index).path);
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.code, ExitCode::ImportFailed);
        outcome.failure = failure.what();
    }
    return outcome;
}

MetadataPattern number(const std::string& marker)
{
    return {marker, MetadataPattern::NumberValue};
}

MetadataPattern text(const std::string& marker)
{
    return {marker, MetadataPattern::StringValue};
}

// Some of the paths are no UTF-8, and some of those are the same to the validator of identifiers.
Texts randomPaths(std::mt19937& random)
{
    const Texts folders = {"T1",
                           "T2",
                           "T10",
                           "P5_x",
                           "P5",
                           "ab",
                           "T1e9",
                           "T.5",
                           "Tx",
                           "\xff",
                           "\xef\xbb\xbf"
                           "b"};
    const Texts names = {"a.log", "b.dat", "\xfe.log", "\xff.log", "\xef\xbf\xbd.log",
                         "x.ab",  "T3",    "log",      "c"};
    std::set<std::string> paths;
    for (auto count = random() % 40; count > 0; --count) {
        std::string path;
        for (auto depth = random() % 4; depth > 0; --depth)
            path += folders[random() % folders.size()] + "/";
        paths.insert(path + "f_" + names[random() % names.size()]); // No folder has such a name.
    }
    return {paths.begin(), paths.end()};
}

Reading randomReading(std::mt19937& random)
{
    switch (random() % 6) {
    case 0:
        return Reading({number("T"), text("P")});
    case 1:
        return Reading({number("T")});
    case 2:
        return Reading({text("T"), number("T")});
    case 3:
        return Reading({text(".ab"), text("b")}); // These overlap.
    case 4:
        return Reading(TemplateList({"**/T{T:number}/**{rest}", "{a}/**"}));
    default:
        return Reading({text("T")});
    }
}

Identifiers randomIdentifiers(std::mt19937& random)
{
    const Identifiers all = {{"*.log", "log"}, {"*T*", "T"}, {"?.dat", "log"},
                             {"*?", "rest"},   {"[", "no"},  {"*", "all"},
                             {"", ""},         {"none", ""}, {"*_a.log", "log"}};
    Identifiers some;
    for (auto count = random() % 4; count > 0; --count)
        some.push_back(all[random() % (random() % 8 == 0 ? all.size() : 4)]);
    return some;
}

} // namespace

TEST(Import, IsThatOfOneImporterWhateverTheShardsAre)
{
    const unsigned seed = 7;
    std::mt19937 random(seed);
    std::size_t failed = 0;
    std::size_t collected = 0;
    for (int i = 0; i < 1500; ++i) {
        SCOPED_TRACE(i);
        Texts paths = randomPaths(random);
        const Reading reading = randomReading(random);
        const Identifiers identifiers = randomIdentifiers(random);
        const Outcome expected = wholeImport(paths, reading, identifiers);
        if (random() % 2 == 0)
            std::shuffle(paths.begin(), paths.end(), random); // As the lines of a list.

        expectEqual(mergedImport(paths, 1 + random() % 9, 1, reading, identifiers), expected);

        failed += expected.failure.empty() ? 0 : 1;
        collected += expected.auxIndexCount == 0 ? 0 : 1;
    }
    EXPECT_GT(failed, 50u);
    EXPECT_GT(collected, 200u);
}

TEST(Import, IsTheSameOnAnyNumberOfThreads)
{
    const unsigned seed = 9;
    std::mt19937 random(seed);
    for (int i = 0; i < 60; ++i) {
        SCOPED_TRACE(i);
        const Texts paths = randomPaths(random);
        const Reading reading = randomReading(random);
        const Identifiers identifiers = randomIdentifiers(random);
        const Outcome expected = mergedImport(paths, 2, 1, reading, identifiers);
        for (const std::size_t jobs : {2, 8})
            expectEqual(mergedImport(paths, 2, jobs, reading, identifiers), expected);
    }
}

TEST(Import, NamesTheLeastPathThatCannotBeMatched)
{
    const Reading reading({text(".ab"), text("b")});
    for (const Texts& paths : {Texts{"z.ab", "y.ab", "w"}, Texts{"w", "y.ab", "z.ab"}}) {
        EXPECT_EQ(mergedImport(paths, 1, 1, reading, {}).failure,
                  "y.ab: the markers overlap: invalid string position");
    }
}

TEST(Import, NamesTheLeastPathOnWhichTheEngineGivesUp)
{
    const Reading reading{TemplateList({"{a,(x+x+)+y}{b:word}"})};
    const std::string least = std::string(60, 'x') + "-y-";
    const Texts paths = {least + "-a", least, "b", least + "-"};
    const std::string expected = wholeImport({"b", least}, reading, {}).failure;

    EXPECT_EQ(expected.find(least + ": "), 0u) << expected;
    EXPECT_EQ(mergedImport(paths, 1, 1, reading, {}).failure, expected);
    EXPECT_EQ(mergedImport(paths, 3, 1, reading, {}).failure, expected);
}

TEST(Import, TellsWhetherTheWatchedFileIsInACase)
{
    const Reading reading({number("T")});
    const auto isMatched = [&](const std::string& watched) {
        KeptFiles kept;
        kept.watched = watched;
        const Import import(importedInShards({"T1", "T2", "x"}, 1, 1, reading, {}, kept),
                            listRoot("root"), reading, {}, kept);
        EXPECT_EQ(import.matchedFiles().count + import.unmatchedFiles().count, 0u);
        return import.isWatchedMatched();
    };

    EXPECT_TRUE(isMatched("T1"));
    EXPECT_TRUE(isMatched("T2"));
    EXPECT_FALSE(isMatched("x"));
    EXPECT_FALSE(isMatched("T3"));
    EXPECT_FALSE(isMatched(""));
}

TEST(Import, FailsFirstOfAllWhereTheImporterRefusesTheRoot)
{
    const Reading reading({number("T")});
    Partial all;
    all.matchFailure = Partial::MatchFailure{"x", "failure"};
    const auto root = doubles::memoryFolder("r", {});
    root->present = false;
    try {
        Import(std::move(all), root, reading, {}, {});
        ADD_FAILURE() << "no failure";
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.code, ExitCode::ImportFailed);
        EXPECT_STREQ(failure.what(), "The specified folder: r does not exist.");
    }
}

TEST(Import, HasTheCellsOfMoreCasesThanTheModuleMakesAtOnce)
{
    Texts paths;
    Texts cells;
    for (int i = 100'000; i < 125'000; ++i) {
        paths.push_back("T" + std::to_string(i));
        cells.push_back(std::to_string(i));
    }
    EXPECT_EQ(mergedImport(paths, 3000, 1, Reading({number("T")}), {}).cells, cells);
}

namespace {

// What a visitor is told, of shards of two files.
std::multiset<std::string> visited(const Texts& paths, bool onlyWithoutCases)
{
    const Reading reading({number("T")});
    std::multiset<std::string> met;
    FileVisitor visitor;
    visitor.matched = [&met](const std::string& path, const MetadataInfoProviderInterface& values) {
        met.insert(path + " has " + values.metadataInfoList(path).at(0).value);
    };
    visitor.unmatched = [&met](const std::string& path) { met.insert(path); };
    visitor.unmatchedOnlyWithoutCases = onlyWithoutCases;
    ShardCutter cutter({2, 1000},
                       [&](const Shard& shard) { importShard(shard, reading, {}, {}, visitor); });
    for (const std::string& path : paths)
        cutter.take(path);
    cutter.finish();
    return met;
}

} // namespace

TEST(Import, HasAuxiliaryFilesOnlyWhereTheyAreAskedForAndThereAreCases)
{
    const Texts paths = {"T1/a.log", "T2/b.dat"};
    const Reading reading({number("T")});

    EXPECT_FALSE(mergedImport(paths, 1, 1, reading, {}).hasAuxFiles);
    EXPECT_FALSE(mergedImport({"x"}, 1, 1, reading, {{"*.log", "log"}}).hasAuxFiles);
    EXPECT_EQ(mergedImport(paths, 1, 1, reading, {{"*.log", "log"}}).auxFiles,
              std::vector<Texts>({{"T1/a.log"}, {}}));
}

TEST(Import, LooksAtIdentifiersOnlyWhereThereAreCases)
{
    const Texts paths = {"T1/a.log", "T2/b.dat"};
    const Identifiers identifiers = {{"*.dat", "data"}, {"[", "log"}, {"{", "log"}};

    EXPECT_EQ(mergedImport(paths, 1, 1, Reading({number("none")}), identifiers).failure, "");
    EXPECT_EQ(mergedImport(paths, 1, 1, Reading({number("T")}), identifiers).failure,
              "--aux '[=log': Invalid pattern. It selects none of the matched files.");
}

TEST(ShardImport, TellsAVisitorOfEachFile)
{
    EXPECT_EQ(visited({"T1", "x", "y", "z"}, false),
              (std::multiset<std::string>{"T1 has 1", "x", "y", "z"}));
    EXPECT_EQ(visited({"T1", "x", "y", "z"}, true),
              (std::multiset<std::string>{"T1 has 1", "y", "z"}));
}

} // namespace tests
} // namespace casetable
