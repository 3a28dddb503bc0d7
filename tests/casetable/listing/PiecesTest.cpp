#include "casetable/listing/Pieces.h"

#include <algorithm>
#include <cstdint>
#include <random>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "casetable/listing/Listing.h"
#include "casetable/system/Console.h"
#include "casetable/system/ExitCode.h"
#include "tests/casetable/support/OrdinaryUser.h"
#include "tests/casetable/support/RandomTree.h"
#include "tests/casetable/support/TemporaryTree.h"

namespace casetable {
namespace tests {

namespace {

// What listing a source tells, in the order in which it does.
struct Told {
    std::vector<std::string> files;
    std::vector<std::string> warnings;
    std::size_t hiddenLeftOut = 0;
    std::string failure;
};

bool operator==(const Told& a, const Told& b)
{
    return a.files == b.files && a.warnings == b.warnings && a.hiddenLeftOut == b.hiddenLeftOut &&
           a.failure == b.failure;
}

std::ostream& operator<<(std::ostream& stream, const Told& told)
{
    return stream << testing::PrintToString(told.files) << testing::PrintToString(told.warnings)
                  << told.hiddenLeftOut << told.failure;
}

std::vector<std::string> warningsIn(const std::string& errors)
{
    const std::string beginning = "casetable: warning: ";
    std::vector<std::string> warnings;
    for (std::size_t begin = 0; begin < errors.size();) {
        const std::size_t end = errors.find('\n', begin);
        warnings.push_back(errors.substr(begin + beginning.size(), end - begin - beginning.size()));
        begin = end + 1;
    }
    return warnings;
}

Told toldByListing(const Source& source, bool readsAhead)
{
    Told told;
    testing::internal::CaptureStderr();
    Console console;
    Listing listing(source, console, readsAhead);
    try {
        listing.run({1, 1}, {[&told](const Shard& shard) {
                        for (const std::string_view path : shard.paths())
                            told.files.emplace_back(path);
                    }});
    } catch (const Failure& failure) {
        told.failure = failure.what();
    }
    told.hiddenLeftOut = listing.hiddenLeftOut();
    told.warnings = warningsIn(testing::internal::GetCapturedStderr());
    return told;
}

// By several that have divided the source each, and list a random piece of the order in turn.
Told toldByPieces(const Source& source, std::size_t wanted, bool readsAhead, std::mt19937& random)
{
    std::vector<std::unique_ptr<Pieces>> several;
    for (int i = 0; i < 3; ++i)
        several.push_back(source.list ? divideList(source, wanted)
                                      : divideTree(source, wanted, readsAhead));
    Told told;
    try {
        for (std::size_t piece = 0; piece < several.front()->count(); ++piece) {
            PieceReport report;
            const auto add = [&] {
                told.hiddenLeftOut += report.hiddenLeftOut;
                told.warnings.insert(told.warnings.end(), report.warnings.begin(),
                                     report.warnings.end());
            };
            try {
                several[random() % several.size()]->list(
                    piece, [&told](std::string_view path) { told.files.emplace_back(path); },
                    report);
            } catch (const Failure&) {
                add();
                throw;
            }
            add();
        }
    } catch (const Failure& failure) {
        told.failure = failure.what();
    }
    return told;
}

Source randomSource(const TemporaryTree& tree, std::mt19937& random)
{
    Source source;
    source.root = tree.path("root");
    source.follow = random() % 3 == 0;
    source.keepGoing = random() % 3 != 0;
    source.selection.hidden = random() % 2 == 0;
    if (random() % 3 == 0)
        source.selection.maxDepth = 1 + random() % 4;
    if (random() % 3 == 0)
        source.selection.excluded.emplace_back(random() % 2 == 0 ? "e1*" : "*/e2*/");
    return source;
}

} // namespace

TEST(TreePieces, TellTogetherWhatAWholeWalkTells)
{
    std::mt19937 random(11);
    for (int i = 0; i < 150; ++i) {
        const TemporaryTree tree;
        makeRandomTree(tree, random, 50, false);
        const Source source = randomSource(tree, random);
        const bool readsAhead = random() % 2 == 0;
        const Told expected = toldByListing(source, readsAhead);
        for (const std::size_t wanted : {1, 3, 10, 1000})
            EXPECT_EQ(toldByPieces(source, wanted, readsAhead, random), expected) << i << wanted;
    }
}

TEST(TreePieces, TellTogetherOfWhatCannotBeRead)
{
    SKIP_UNLESS_ORDINARY_USER_IS_POSSIBLE();
    std::mt19937 random(12);
    for (int i = 0; i < 60; ++i) {
        const TemporaryTree tree;
        makeRandomTree(tree, random, 50, true);
        const Source source = randomSource(tree, random);
        asOrdinaryUser([&] {
            Told expected = toldByListing(source, false);
            Told seen = toldByPieces(source, 1 + random() % 20, false, random);
            if (!expected.failure.empty())
                seen.hiddenLeftOut = expected.hiddenLeftOut = 0; // Then nobody asks.
            EXPECT_EQ(seen, expected) << i;
        });
        random.discard(1);
    }
}

TEST(TreePieces, AreTheSameForAllWhoDivide)
{
    const TemporaryTree tree({"root/a/1/x", "root/a/2/x", "root/b/x", "root/c", "root/d/x"});
    Source source;
    source.root = tree.path("root");
    const auto one = divideTree(source, 4, false);
    const auto other = divideTree(source, 4, true);

    ASSERT_EQ(one->sights().size(), other->sights().size());
    EXPECT_EQ(one->count(), 4u) << "a/1, a/2, b and d";
    EXPECT_EQ(other->count(), 4u);
    for (std::size_t k = 0; k < one->sights().size(); ++k) {
        EXPECT_EQ(one->sights()[k].path, other->sights()[k].path);
        EXPECT_EQ(one->sights()[k].hash, other->sights()[k].hash);
    }
    EXPECT_EQ(one->sights()[0].path, tree.path("root"));
}

TEST(TreePieces, ShowWhatIsElsewhereAtTheTopLevels)
{
    const TemporaryTree tree({"root/a/x", "root/b/x"});
    Source source;
    source.root = tree.path("root");
    const auto before = divideTree(source, 2, false);
    tree.file("root/c");
    const auto after = divideTree(source, 2, false);

    EXPECT_NE(before->sights()[0].hash, after->sights()[0].hash);
}

TEST(TreePieces, ShowWhatCannotBeReadElsewhere)
{
    SKIP_UNLESS_ORDINARY_USER_IS_POSSIBLE();
    const TemporaryTree tree({"root/a/x/y", "root/b/x/y", "root/c/x/y"});
    Source source;
    source.root = tree.path("root");
    for (const unsigned mode : {0U, 0444U}) {
        tree.setMode("root/b", 0755);
        const auto here = divideTree(source, 100, false);
        tree.setMode("root/b", mode);
        asOrdinaryUser([&] {
            const auto there = divideTree(source, 100, false);
            std::size_t k = 0;
            ASSERT_GT(there->sights().size(), 2u);
            while (k < 2 && here->sights()[k].hash == there->sights()[k].hash)
                ++k;
            EXPECT_EQ(here->sights()[k].path, tree.path("root/b"));
            EXPECT_EQ(there->sights()[k].path, tree.path("root/b"));
        });
    }
}

TEST(TreePieces, AreNoMoreThanThereAreFolders)
{
    const TemporaryTree tree({"root/a", "root/b", "root/c/d"});
    Source source;
    source.root = tree.path("root");
    EXPECT_EQ(divideTree(source, 100, false)->count(), 1u);
    source.root = tree.path("root/c");
    EXPECT_EQ(divideTree(source, 100, false)->count(), 1u);
    source.root = tree.path("missing");
    EXPECT_EQ(divideTree(source, 100, false)->count(), 1u);
}

TEST(TreePieces, AreNotSoughtWhereThatWouldListTheWholeTree)
{
    const TemporaryTree tree;
    tree.chain("root", 100, "level", "file");
    Source source;
    source.root = tree.path("root");
    EXPECT_LT(divideTree(source, 100, false)->sights().size(), 10u);
    for (int i = 0; i < 2100; ++i)
        tree.file("wide/a/" + std::to_string(i));
    tree.folder("wide/b/c");
    source.root = tree.path("wide");
    EXPECT_EQ(divideTree(source, 2, false)->sights().size(), 1u) << "two are enough";
    EXPECT_EQ(divideTree(source, 3, false)->count(), 2u);
}

TEST(ListPieces, TellTogetherWhatTheListHolds)
{
    std::mt19937 random(13);
    int accepted = 0;
    for (int i = 0; i < 200; ++i) {
        const TemporaryTree tree;
        std::multiset<std::string> paths;
        for (auto count = random() % (1 + i / 3); count > 0; --count) {
            std::string path(1, "a!b"[random() % 3]);
            for (auto length = random() % 6; length > 0; --length)
                path += "a!b/"[path.back() == '/' ? random() % 3 : random() % 4];
            paths.insert(path.back() == '/' ? path + "a" : path);
        }
        Source source;
        source.nullSeparated = random() % 2 == 0;
        std::string text;
        for (const std::string& path : paths)
            text += path + (source.nullSeparated ? '\0' : '\n');
        tree.file("list", text.substr(0, text.size() - (paths.size() > 1 ? random() % 2 : 0)));
        source.list = tree.path("list");
        const Told expected = toldByListing(source, false);
        if (!expected.failure.empty())
            continue;
        ++accepted;
        for (const std::size_t wanted : {1, 2, 7, 1000}) {
            const Told seen = toldByPieces(source, wanted, false, random);
            EXPECT_EQ(seen.failure, "") << i << ' ' << wanted;
            EXPECT_EQ(seen.files, expected.files) << i << ' ' << wanted;
        }
    }
    EXPECT_GT(accepted, 50);
}

// Whether parts of a list in byte order, read by several, are found to contradict each other.
TEST(ListPieces, FindAFileThatIsAFolderElsewhereAsTheWholeListWould)
{
    std::mt19937 random(14);
    int refused = 0;
    for (int i = 0; i < 2000; ++i) {
        const TemporaryTree tree;
        std::set<std::string> paths;
        for (auto count = 1 + random() % 12; count > 0; --count) {
            std::string path(1, "ab"[random() % 2]);
            for (auto length = random() % 4; length > 0; --length)
                path += path.back() == '/' ? 'a' : "a!/"[random() % 3];
            paths.insert(path.back() == '/' ? path + "a" : path);
        }
        std::string text;
        for (const std::string& path : paths)
            text += path + '\n';
        tree.file("list", text);
        Source source;
        source.list = tree.path("list");
        const bool isRefused = !toldByListing(source, false).failure.empty();
        refused += isRefused ? 1 : 0;
        for (const std::size_t wanted : {2, 5, 1000}) {
            const auto pieces = divideList(source, wanted);
            JoinedEdges edges;
            bool isFound = false;
            for (std::size_t piece = 0; piece < pieces->count(); ++piece) {
                PieceReport report;
                try {
                    pieces->list(
                        piece, [](std::string_view) {}, report);
                } catch (const Failure&) {
                    isFound = true;
                }
                isFound = isFound || !edges.join(report.edges);
            }
            EXPECT_EQ(isFound, isRefused) << text;
        }
        if (isRefused) {
            EXPECT_THROW(refuseList(source), Failure) << text;
        } else {
            EXPECT_NO_THROW(refuseList(source)) << text;
        }
    }
    EXPECT_GT(refused, 200);
}

TEST(ListPieces, ShowAnotherListOfTheSameSize)
{
    const TemporaryTree tree;
    Source source;
    source.list = tree.path("list");
    std::string text;
    for (int i = 10000; i < 30000; ++i)
        text += "P" + std::to_string(i) + "\n";
    const auto hashOf = [&](const std::string& content) {
        tree.file("list", content);
        return divideList(source, 4)->sights()[0].hash;
    };
    const std::string whole = text.substr(0, 4 * 4096); // No more than is compared.
    for (const std::string& list : {whole, text}) {
        const std::uint64_t hash = hashOf(list);
        EXPECT_EQ(hashOf(list), hash);
        EXPECT_NE(hashOf(list.substr(7)), hash);
        for (std::size_t k = 0; k < list.size(); k += list.size() / 4) {
            std::string other = list;
            ++other[k];
            EXPECT_NE(hashOf(other), hash) << k;
        }
    }
    for (std::size_t back = 1; back <= whole.size(); back += 50) {
        std::string other = whole;
        ++other[whole.size() - back];
        EXPECT_NE(hashOf(other), hashOf(whole)) << back;
    }
}

TEST(ListPieces, RefuseWhatIsNoRegularFile)
{
    const TemporaryTree tree;
    Source source;
    const auto failure = [&](const std::string& list) -> std::string {
        source.list = list;
        try {
            divideList(source, 3);
        } catch (const Failure& failure) {
            return failure.what();
        }
        return "";
    };
    tree.pipe("pipe");
    tree.folder("folder");
    const std::string reason = ": is not a regular file, of which each process could read a part";

    EXPECT_EQ(failure(tree.path("pipe")), tree.path("pipe") + reason);
    EXPECT_EQ(failure(tree.path("folder")), tree.path("folder") + reason);
    EXPECT_EQ(failure(tree.path("none")), tree.path("none") + ": No such file or directory");
}

TEST(ListPieces, TellWhatTheirMakerHasNotMeantOnlyTogether)
{
    Source source;
    source.list = "list";
    ListReader::Oddities oddities;
    EXPECT_EQ(listWarnings(source, oddities, 0).size(), 0u);
    EXPECT_EQ(listWarnings(source, oddities, 1).size(), 1u) << "all lines end in CR";
    oddities = {true, false, true};
    EXPECT_EQ(listWarnings(source, oddities, 1).size(), 2u);
}

} // namespace tests
} // namespace casetable
