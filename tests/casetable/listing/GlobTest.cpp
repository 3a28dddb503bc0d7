#include "casetable/listing/Glob.h"

#include <cstddef>
#include <random>
#include <regex>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace casetable {
namespace tests {

namespace {

using Texts = std::vector<std::string>;

bool matchesFile(const std::string& glob, const std::string& path)
{
    return Glob(glob).matches(path, false);
}

bool matchesFolder(const std::string& glob, const std::string& path)
{
    return Glob(glob).matches(path, true);
}

std::string refusal(const std::string& glob)
{
    try {
        static_cast<void>(Glob(glob));
    } catch (const std::invalid_argument& failure) {
        return failure.what();
    }
    return "no refusal";
}

} // namespace

TEST(Glob, WithoutSlashIsMatchedAgainstNamesAtAnyDepth)
{
    for (const char* const path : {"x.log", "a/x.log", "a/b/.log", "a.log/x.log", "./x.log"})
        EXPECT_TRUE(matchesFile("*.log", path)) << path;
    for (const char* const path : {"x.logs", "x.log/a", "a/log", "x.LOG"})
        EXPECT_FALSE(matchesFile("*.log", path)) << path;
    EXPECT_FALSE(Glob("*.log").needsPath());
    EXPECT_FALSE(Glob("log/").needsPath());
}

TEST(Glob, WithASlashInFrontOrInsideIsMatchedAgainstPaths)
{
    for (const char* const glob : {"/a/*.log", "a/*.log", "./a/*.log", "/./a/./*.log"}) {
        EXPECT_TRUE(Glob(glob).needsPath()) << glob;
        EXPECT_TRUE(matchesFile(glob, "a/x.log")) << glob;
        EXPECT_FALSE(matchesFile(glob, "b/a/x.log")) << glob;
        EXPECT_FALSE(matchesFile(glob, "a/b/x.log")) << glob;
        EXPECT_FALSE(matchesFile(glob, "x.log")) << glob;
    }
    EXPECT_TRUE(matchesFile("/x", "x"));
    EXPECT_FALSE(matchesFile("/x", "a/x"));
    EXPECT_TRUE(Glob("/x").needsPath());
}

TEST(Glob, CrossesNoSlashByItsWildcards)
{
    EXPECT_FALSE(matchesFile("/a*c", "a/c"));
    EXPECT_FALSE(matchesFile("/a?c", "a/c"));
    EXPECT_FALSE(matchesFile("/a[!x]c", "a/c"));
    EXPECT_FALSE(matchesFile("/a[.-0]c", "a/c"));
    EXPECT_FALSE(matchesFile("/a**c", "a/c"));
    EXPECT_TRUE(matchesFile("/a**c", "abc"));
}

TEST(Glob, TakesTwoStarsForAnyNumberOfComponents)
{
    for (const char* const path : {"a/z", "a/b/z", "a/b/c/z", "a/z/z", "a/z/b/z"})
        EXPECT_TRUE(matchesFile("a/**/z", path)) << path;
    for (const char* const path : {"a", "z", "az", "b/a/z", "a/z/b", "a/b"})
        EXPECT_FALSE(matchesFile("a/**/z", path)) << path;
    for (const char* const path : {"z", "a/z", "a/b/z", "z/z"})
        EXPECT_TRUE(matchesFile("**/z", path)) << path;
    EXPECT_FALSE(matchesFile("**/z", "z/a"));
    for (const char* const path : {"a/b", "a/b/c"})
        EXPECT_TRUE(matchesFile("a/**", path)) << path;
    for (const char* const path : {"a", "b/a"})
        EXPECT_FALSE(matchesFile("a/**", path)) << path;
    EXPECT_TRUE(matchesFile("/**/a/**/b/**", "x/a/a/y/b/b/z"));
    EXPECT_FALSE(matchesFile("/**/a/**/b/**", "x/b/y/a/z"));
    EXPECT_TRUE(matchesFile("/**/**", "a"));
}

TEST(Glob, WithASlashAtItsEndMeansFoldersOnly)
{
    EXPECT_TRUE(matchesFolder("log/", "a/log"));
    EXPECT_FALSE(matchesFile("log/", "a/log"));
    EXPECT_TRUE(matchesFolder("a/*/", "a/b"));
    EXPECT_FALSE(matchesFile("a/*/", "a/b"));
    EXPECT_TRUE(matchesFolder("log", "log"));
}

TEST(Glob, KnowsBracketsAndBackslashes)
{
    EXPECT_TRUE(matchesFile("[a-c]x", "bx"));
    EXPECT_FALSE(matchesFile("[a-c]x", "dx"));
    EXPECT_TRUE(matchesFile("[!a-c]x", "dx"));
    EXPECT_FALSE(matchesFile("[!a-c]x", "bx"));
    EXPECT_TRUE(matchesFile("\\*", "*"));
    EXPECT_FALSE(matchesFile("\\*", "a"));
    EXPECT_TRUE(matchesFile("\\\\", "\\"));
    EXPECT_TRUE(matchesFile("[a", "[a"));
}

TEST(Glob, TakesBytesAndALeadingDotLikeAnyOther)
{
    EXPECT_TRUE(matchesFile("*", ".x"));
    EXPECT_TRUE(matchesFile("?x", ".x"));
    EXPECT_TRUE(matchesFile("a?b", "a\xff"
                                   "b"));
    EXPECT_TRUE(matchesFile("[\x80-\xff]", "\xc3"));
    EXPECT_FALSE(matchesFile("?", "\xc3\xa4"));
    EXPECT_TRUE(matchesFile("a*b", "a\n\nb"));
    EXPECT_TRUE(matchesFile("!x", "!x"));
    EXPECT_TRUE(matchesFile("#x", "#x"));
}

TEST(Glob, NeverMatchesTheFolderDotOfAList)
{
    for (const char* const glob : {"*", "?", ".*", "/*", "/**", "**/.*", "[.]"})
        EXPECT_FALSE(matchesFolder(glob, ".")) << glob;
    EXPECT_TRUE(matchesFile("/a", "./a"));
    EXPECT_TRUE(matchesFile("a/b", "a/./b"));
}

TEST(Glob, IsRefusedWhereItCouldNeverMatch)
{
    for (const char* const glob : {"", "/", "//", "a//b", "//a", "a//", "a///"})
        EXPECT_EQ(refusal(glob), "a component is empty") << glob;
    for (const char* const glob : {".", "./", "/.", "/./", "././."})
        EXPECT_EQ(refusal(glob), "it names no entry") << glob;
    for (const char* const glob : {"\\", "a\\", "a\\/b", "a\\\\\\", "a\\/"})
        EXPECT_EQ(refusal(glob), "nothing follows the backslash at the end of a component") << glob;
    EXPECT_EQ(refusal("a\\\\"), "no refusal");
}

TEST(Glob, KeepsItsText)
{
    EXPECT_EQ(Glob("./a/**/").text(), "./a/**/");
}

namespace {

class Random {
public:
    explicit Random(unsigned seed) : engine_(seed) {}

    std::size_t below(std::size_t end)
    {
        return std::uniform_int_distribution<std::size_t>(0, end - 1)(engine_);
    }

private:
    std::mt19937 engine_;
};

// A random pattern, and the same as a regular expression of a path that has a "/" behind each of
// its components.
struct Sample {
    std::string glob;
    std::string expression;
    bool foldersOnly = false;

    explicit Sample(Random& random)
    {
        struct Piece {
            const char* glob;
            const char* expression;
        };
        static const std::vector<Piece> pieces = {{"a", "a"},         {"b", "b"},
                                                  {"*", "[^/]*"},     {"?", "[^/]"},
                                                  {"[ab]", "[ab]"},   {"[!a]", "[^a/]"},
                                                  {"\\*", "\\*"},     {"\\a", "a"},
                                                  {"[]*]", "[\\]*]"}, {"[^b-c]", "[^b-c/]"},
                                                  {"\xff", "\xff"},   {"\n", "\n"},
                                                  {"[a-b]", "[a-b]"}, {"**", "[^/]*"}};
        const std::size_t count = 1 + random.below(4);
        const bool anchored = random.below(4) == 0;
        glob = anchored ? "/" : "";
        for (std::size_t i = 0; i < count; ++i) {
            if (i > 0)
                glob += '/';
            if (random.below(8) == 0 && count > 1) {
                glob += "./";
            }
            if (random.below(3) == 0 && (count > 1 || anchored)) {
                glob += "**";
                expression += i + 1 < count ? "(?:[^/]+/)*" : "(?:[^/]+/)+";
                continue;
            }
            std::string component;
            for (std::size_t k = 1 + random.below(3); k > 0; --k) {
                const Piece& piece = pieces[random.below(pieces.size())];
                component += piece.glob;
                expression += piece.expression;
            }
            // A component of stars alone would be another thing.
            if (component.find_first_not_of('*') == std::string::npos) {
                component += 'a';
                expression += 'a';
            }
            glob += component;
            expression += '/';
        }
        if (count == 1 && !anchored)
            expression.insert(0, "(?:[^/]+/)*");
        foldersOnly = random.below(4) == 0;
        if (foldersOnly)
            glob += '/';
    }
};

Texts randomPath(Random& random)
{
    static const std::string letters = "aaabbc*]\xff\n";
    Texts path(1 + random.below(4));
    for (std::string& component : path) {
        for (std::size_t k = 1 + random.below(3); k > 0; --k)
            component += letters[random.below(letters.size())];
    }
    return path;
}

} // namespace

TEST(Glob, MatchesAsARegularExpressionThatSaysTheSame)
{
    const unsigned seed = 11;
    Random random(seed);
    std::size_t matches = 0;
    for (int i = 0; i < 4000; ++i) {
        const Sample sample(random);
        SCOPED_TRACE(testing::PrintToString(sample.glob));
        const Glob glob(sample.glob);
        const std::regex expression(sample.expression);
        for (int k = 0; k < 8; ++k) {
            std::string plain; // With a "/" behind each component.
            std::string path;
            for (const std::string& component : randomPath(random)) {
                plain += component + "/";
                path += (path.empty() ? "" : "/") + std::string(random.below(8) == 0 ? "./" : "") +
                        component;
            }
            const bool isFolder = random.below(2) == 0;
            const bool expected =
                std::regex_match(plain, expression) && (isFolder || !sample.foldersOnly);
            EXPECT_EQ(glob.matches(path, isFolder), expected)
                << testing::PrintToString(path) << isFolder;
            matches += expected;
        }
    }
    EXPECT_GT(matches, 1000u) << "hardly anything matched";
}

TEST(Glob, TellsWhetherItOrACopyHasMatched)
{
    const Glob glob("*.tmp");
    const Glob copy = glob;
    EXPECT_FALSE(copy.matches("a.txt", false));
    EXPECT_FALSE(glob.hasMatched());

    EXPECT_TRUE(copy.matches("b/a.tmp", false));

    EXPECT_TRUE(copy.hasMatched());
    EXPECT_TRUE(glob.hasMatched());
    EXPECT_FALSE(Glob("*.tmp").hasMatched());
}

} // namespace tests
} // namespace casetable
