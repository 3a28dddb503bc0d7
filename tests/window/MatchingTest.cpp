#include "window/model/Matching.h"

#include <atomic>
#include <map>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/window/Kept.h"
#include "window/model/PathReader.h"

namespace casetable {
namespace tests {

namespace {

using Texts = std::vector<std::string>;

Texts randomPaths(std::mt19937& random)
{
    Texts paths;
    for (std::size_t n = random() % 30; n > 0; --n)
        paths.push_back("r" + std::to_string(random() % 4) + "/" +
                        (random() % 4 == 0 ? "x" : "T" + std::to_string(random() % 3)) + ".dat");
    return paths;
}

} // namespace

TEST(Matching, KnowsTheCaseOfEachFile)
{
    const auto matching = matched({"a1/x", "a1/y", "a2/x", "z"}, {"a{n:number}/*"});
    EXPECT_EQ(matching->caseOf, std::vector<std::uint32_t>({0, 0, 1, Matching::none}));
    EXPECT_EQ(matching->filesByCase, std::vector<std::uint32_t>({0, 1, 2}));
    EXPECT_EQ(matching->caseBegins, std::vector<std::size_t>({0, 2, 3}));
    ASSERT_NE(matching->table(), nullptr);
    EXPECT_EQ(matching->table()->cell(1, 0), "2");
}

// What is told of a path when it is seen must be what the import made of it.
TEST(Matching, AgreesWithWhatIsReadOfEachPathAlone)
{
    std::mt19937 random(11);
    const Reading readings[] = {
        Reading(TemplateList({"r{r:digits}/T{T:number}*", "r{r:digits}/x[.{end}]"})),
        Reading({{"r", MetadataPattern::NumberValue}, {"T", MetadataPattern::NumberValue}})};
    for (int i = 0; i < 100; ++i) {
        const Reading& reading = readings[i % 2];
        const auto matching =
            matchFiles(filesOf(randomPaths(random)), reading, {}, "root", 1, notCancelled());
        PathReader reader(std::make_shared<const Reading>(reading));
        for (std::size_t file = 0; file < matching->files.count(); ++file) {
            const std::string path(matching->files.path(file));
            const PathRead read = reader.read(path);
            ASSERT_EQ(read.isMatched, matching->caseOf[file] != Matching::none) << path;
            ASSERT_EQ(read.isMatched, read.reason.empty());
            for (const PathPiece& piece : read.pieces) {
                if (!read.isMatched || piece.kind != PathPiece::Kind::Value)
                    continue;
                EXPECT_EQ(path.substr(piece.begin, piece.length),
                          matching->table()->cell(matching->caseOf[file], piece.column));
            }
        }
    }
}

TEST(Matching, CountsTheFilesOfEachRowOfAuxiliaryFiles)
{
    const auto matching = matched({"a1/x.log", "a1/y.dat", "a2/x.log", "z.log"}, {"a{n:number}/*"},
                                  {{"*.log", "log"}, {"", ""}, {"*.dat", "data"}});
    EXPECT_EQ(matching->aux[0].fileCount, 2U);
    EXPECT_EQ(matching->aux[2].fileCount, 1U);
    EXPECT_EQ(matching->auxOf, std::vector<std::uint32_t>({0, 2, 0, Matching::none}));
    EXPECT_EQ(matching->table()->tags, Texts({"log", "data"}));
}

TEST(Matching, TellsWhatIsWrongWithARowAndLeavesItOut)
{
    const auto matching = matched({"a1/x.log", "a2/x.log"}, {"a{n:number}/*"},
                                  {{"*.vtu", "field"}, {"*.log", ""}, {"*.log", "log"}});
    EXPECT_EQ(matching->aux[0].error, "Invalid pattern.");
    EXPECT_FALSE(matching->aux[0].isTagWrong);
    EXPECT_NE(matching->aux[1].error, "");
    EXPECT_TRUE(matching->aux[1].isTagWrong);
    EXPECT_EQ(matching->aux[2].fileCount, 2U);
    EXPECT_EQ(matching->table()->tags, Texts({"log"}));
}

TEST(Matching, TellsWhyItFailed)
{
    const Reading overlapping(
        {{".ab", MetadataPattern::StringValue}, {"b", MetadataPattern::StringValue}});
    const auto matching = matchFiles(filesOf({"y.ab"}), overlapping, {}, "root", 1, notCancelled());
    EXPECT_EQ(matching->table(), nullptr);
    EXPECT_EQ(matching->failure.find("y.ab: the markers overlap"), 0U) << matching->failure;
}

TEST(Matching, ComesToNothingWhenItIsCancelled)
{
    const std::atomic<bool> isCancelled(true);
    EXPECT_EQ(
        matchFiles(filesOf({"a"}), Reading(TemplateList({"{a}"})), {}, "root", 1, isCancelled),
        nullptr);
}

TEST(PathReader, SaysWhatEachByteIsToATemplate)
{
    PathReader reader(std::make_shared<const Reading>(TemplateList({"a{n:number}[_{x}]/*"})));
    const PathRead read = reader.read("a12/foo");
    ASSERT_TRUE(read.isMatched);
    std::map<std::size_t, PathPiece::Kind> kinds;
    for (const PathPiece& piece : read.pieces) {
        if (piece.kind == PathPiece::Kind::LeftOut) {
            EXPECT_EQ(piece.begin, 3U);
            continue;
        }
        kinds[piece.begin] = piece.kind;
    }
    EXPECT_EQ(kinds, (std::map<std::size_t, PathPiece::Kind>{{0, PathPiece::Kind::Quiet},
                                                             {1, PathPiece::Kind::Value},
                                                             {3, PathPiece::Kind::Quiet}}));
    EXPECT_EQ(read.pieces.size(), 4U);
}

TEST(PathReader, SaysWhyAPathIsUnmatched)
{
    PathReader reader(std::make_shared<const Reading>(TemplateList({"a{n:number}/*"})));
    const PathRead read = reader.read("ab/foo");
    EXPECT_EQ(read.reason, "'{n:number}' does not fit behind 'a'");
    EXPECT_EQ(read.fitting, std::optional<std::size_t>(1));
    PathReader byMarkers(
        std::make_shared<const Reading>(Reading({{"T", MetadataPattern::NumberValue}})));
    EXPECT_EQ(byMarkers.read("ab/foo").reason, "'T': not found");
}

} // namespace tests
} // namespace casetable
