#include "casetable/listing/PathLines.h"

#include <cstddef>
#include <map>
#include <random>
#include <string>
#include <utility>

#include <gtest/gtest.h>

namespace casetable {
namespace tests {

TEST(PathLines, KeepsWhatWasFirstRecordedOfEachPath)
{
    const unsigned seed = 2;
    std::mt19937 random(seed);
    PathLines lines;
    std::map<std::string, std::pair<PathLines::Kind, std::size_t>> plain;
    for (std::size_t line = 1; line < 200'000; ++line) {
        const std::string path = "p/" + std::to_string(random() % 100'000);
        const auto kind = random() % 2 == 0 ? PathLines::Kind::File : PathLines::Kind::Folder;
        const auto expected = plain.emplace(path, std::make_pair(kind, line)).first->second;

        const PathLines::Entry entry = lines.insert(path, kind, line);

        ASSERT_EQ(std::make_pair(entry.kind, entry.line), expected) << path;
    }
}

TEST(PathLines, IsTheSameWhateverWasExpected)
{
    const unsigned seed = 7;
    std::mt19937 random(seed);
    const auto path = [&random] { return std::to_string(random() % 1'000); };
    PathLines lines;
    std::map<std::string, std::size_t> plain;
    for (std::size_t line = 1; line < 5'000; ++line) {
        lines.expect(path());
        const std::string inserted = path();

        const PathLines::Entry entry = lines.insert(inserted, PathLines::Kind::File, line);

        ASSERT_EQ(entry.line, plain.emplace(inserted, line).first->second) << inserted;
    }
}

TEST(PathLines, TellsLinesApartHoweverLateTheyAre)
{
    const std::size_t late = (std::size_t{1} << 39) - 1;
    PathLines lines;
    lines.insert("a", PathLines::Kind::Folder, late);
    lines.insert("", PathLines::Kind::File, late - 1);

    EXPECT_EQ(lines.insert("a", PathLines::Kind::File, 1).line, late);
    EXPECT_EQ(lines.insert("a", PathLines::Kind::File, 1).kind, PathLines::Kind::Folder);
    EXPECT_EQ(lines.insert("", PathLines::Kind::Folder, 1).line, late - 1);
    EXPECT_EQ(lines.insert("", PathLines::Kind::Folder, 1).kind, PathLines::Kind::File);
}

} // namespace tests
} // namespace casetable
