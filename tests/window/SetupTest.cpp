#include "window/model/Setup.h"

#include <cstddef>
#include <random>
#include <string>
#include <tuple>
#include <vector>

#include <gtest/gtest.h>

#include "casetable/system/ExitCode.h"
#include "casetable/system/ShellWords.h"
#include "window/model/CommandText.h"

namespace casetable {
namespace tests {

namespace {

using Texts = std::vector<std::string>;

class RandomSetup {
public:
    explicit RandomSetup(std::mt19937& random) : random_(random) {}

    Setup make()
    {
        Setup setup;
        if (choose(4) == 0)
            setup.list = text(false);
        else
            setup.root = text(false);
        setup.nullSeparated = setup.list && choose(2) == 0;
        setup.hidden = choose(2) == 0;
        setup.follow = choose(2) == 0;
        setup.keepGoing = choose(2) == 0;
        if (choose(2) == 0)
            setup.maxDepth = 1 + choose(99);
        for (std::size_t n = choose(3); n > 0; --n)
            setup.excluded.push_back(text(false));
        setup.by = choose(2) == 0 ? Setup::By::Templates : Setup::By::Markers;
        for (std::size_t n = 1 + choose(3); n > 0; --n) {
            if (setup.by == Setup::By::Templates)
                setup.templates.push_back(text(false));
            else
                setup.markers.push_back({text(false), choose(2) == 0});
        }
        for (std::size_t n = choose(3); n > 0; --n)
            setup.auxRows.push_back({text(true), "tag"});
        for (std::size_t n = choose(3); n > 0; --n)
            setup.sort.push_back(text(false));
        return setup;
    }

private:
    std::size_t choose(std::size_t count) { return random_() % count; }

    // Never blank, as what is blank does not count.
    std::string text(bool isEmptyAllowed)
    {
        const std::string bytes = "aB0.-@='\"\\ $*?[]{}/\n\t\x01\xff\xc3\xa9#";
        std::string text = isEmptyAllowed ? "" : std::string(1, "x-@=\xff"[choose(5)]);
        for (std::size_t n = choose(6); n > 0; --n)
            text += bytes[choose(bytes.size())];
        return text;
    }

    std::mt19937& random_;
};

std::string refusal(const Texts& words)
{
    try {
        readSetup(words);
    } catch (const Failure& failure) {
        return failure.what();
    }
    return "no refusal";
}

} // namespace

TEST(Setup, ComesBackFromItsArguments)
{
    std::mt19937 random(17);
    for (int i = 0; i < 2000; ++i) {
        const casetable::Setup setup = RandomSetup(random).make();
        const ReadSetup read = readSetup(arguments(setup));
        EXPECT_TRUE(read.setup == setup) << commandLine(setup);
        EXPECT_EQ(read.leftOut, Texts());
    }
}

TEST(Setup, ComesBackFromItsCommandLine)
{
    std::mt19937 random(18);
    for (int i = 0; i < 2000; ++i) {
        const casetable::Setup setup = RandomSetup(random).make();
        Texts words = commandWords(commandLine(setup));
        ASSERT_EQ(words.front(), "casetable");
        words.erase(words.begin());
        EXPECT_TRUE(readSetup(words).setup == setup) << commandLine(setup);
    }
}

TEST(Setup, IsShownAsPeopleTypeIt)
{
    casetable::Setup setup;
    setup.root = "results";
    setup.templates = {"Mach{Mach:number}/**"};
    setup.auxRows = {{"*.log", "log"}};
    setup.sort = {"-Mach"};
    EXPECT_EQ(commandLine(setup),
              "casetable -t 'Mach{Mach:number}/**' -a '*.log=log' --sort=-Mach results");
}

TEST(Setup, LeavesOutWhatDoesNotCount)
{
    casetable::Setup setup;
    setup.root = "results";
    setup.templates = {"", "  ", "{a}"};
    setup.auxRows = {{"", ""}};
    setup.markers = {{"T", true}};
    EXPECT_EQ(arguments(setup), Texts({"-t", "{a}", "results"}));
}

TEST(Setup, TellsWhichOptionsSayNothingAboutReading)
{
    const ReadSetup read = readSetup({"-n", "T", "-o", "out.csv", "--quiet", "results"});
    EXPECT_EQ(read.leftOut, Texts({"--output", "--quiet"}));
    EXPECT_EQ(arguments(read.setup), Texts({"-n", "T", "results"}));
}

TEST(Setup, RefusesWhatNoCommandLineSays)
{
    EXPECT_EQ(refusal({"--nonsense"}),
              "--nonsense: there is no such option; --help lists those that there are");
    EXPECT_EQ(refusal({"a", "b"}),
              "there is more than one ROOT: 'a' and 'b'; blanks and wildcards need quotes");
    EXPECT_EQ(refusal({"--from-list", "a", "b"}), "--from-list and ROOT exclude each other");
    EXPECT_EQ(refusal({"-n", "T", "-t", "{a}"}), "--template and markers exclude each other");
    EXPECT_EQ(refusal({"--aux", "x"}), "--aux 'x': expected SYNTAX=TAG");
    EXPECT_EQ(refusal({"--max-depth", "0"}), "--max-depth '0': expected a whole number from 1");
}

TEST(Setup, IsCheckedByTheProgramsOwnRules)
{
    casetable::Setup setup;
    setup.root = "results";
    setup.excluded = {"a//b"};
    EXPECT_THROW(checkedSource(setup), Failure);
    setup.excluded = {"a"};
    EXPECT_EQ(checkedSource(setup).root, "results");
    EXPECT_FALSE(checkedSource(setup).selection.hidden);
    EXPECT_THROW(checked(setup), Failure);
    setup.templates = {"{a}/{b:number}"};
    EXPECT_EQ(checked(setup).reading.patterns().size(), 2U);
}

TEST(CommandText, DividesALineAsAShellDoes)
{
    const std::vector<std::pair<std::string, Texts>> rows = {
        {"", {}},
        {"  a \t b\nc ", {"a", "b", "c"}},
        {"a\\ b 'c d'e\"f g\"", {"a b", "c def g"}},
        {"'' \"\"", {"", ""}},
        {"'it'\\''s'", {"it's"}},
        {R"("a\"b\\c\d$'x'")", {R"(a"b\c\d$'x')"}},
        {R"($'a\'b\n\x41\101\q\\')", {"a'b\nAAq\\"}},
        {"a \\\n b", {"a", "b"}},
    };
    for (const auto& [line, words] : rows)
        EXPECT_EQ(commandWords(line), words) << line;
}

TEST(CommandText, RefusesAQuoteThatIsNotClosed)
{
    for (const std::string line : {"'a", "\"a", "$'a", "a b 'c"})
        EXPECT_THROW(commandWords(line), std::invalid_argument) << line;
}

TEST(CommandText, GivesBackAnyWordThatWasQuoted)
{
    std::mt19937 random(3);
    for (int i = 0; i < 5000; ++i) {
        std::string word;
        for (std::size_t n = random() % 8; n > 0; --n)
            word += static_cast<char>(1 + random() % 255);
        EXPECT_EQ(commandWords(shellWord(word)), Texts({word}));
    }
}

TEST(Setup, IsForTheOpenFilesWithoutARootOrAList)
{
    casetable::Setup open;
    open.root = "campaign";
    open.hidden = true;
    open.excluded = {"*.log"};
    open.templates = {"{a}"};
    casetable::Setup list;
    list.list = "list";
    list.nullSeparated = true;
    const std::vector<std::tuple<std::string, casetable::Setup, std::string>> rows = {
        {"-n T", open, "casetable --hidden -E '*.log' -n T campaign"},
        {"--max-depth=2 -n T", open, "casetable -d 2 -n T campaign"},
        {"-n T other", open, "casetable -n T other"},
        {"-n T", list, "casetable --from-list=list --null -n T"},
        {"--exclude x -n T", list, "casetable -E x --from-list=list --null -n T"},
        {"--from-list=other -n T", open, "casetable --from-list=other -n T"},
        {"-n T", casetable::Setup(), "casetable -n T"}};
    for (const auto& [words, before, after] : rows)
        EXPECT_EQ(commandLine(forOpenFiles(readSetup(commandWords(words)).setup, before)), after)
            << words;
}

} // namespace tests
} // namespace casetable
