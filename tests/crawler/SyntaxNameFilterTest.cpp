#include "crawler/SyntaxNameFilter.h"

#include <atomic>
#include <cstddef>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include <QRegExp>
#include <QString>
#include <QStringList>
#include <gtest/gtest.h>

#include "host/ValidationResult.h"
#include "host/ValidatorInterface.h"
#include "tests/crawler/AuxFileDoubles.h"

namespace {

using doubles::plainFilter;

using Texts = std::vector<std::string>;

QStringList list(const Texts& texts)
{
    QStringList result;
    for (const std::string& text : texts)
        result.append(QString::fromStdString(text));
    return result;
}

Texts texts(const QStringList& list)
{
    Texts result;
    for (const QString& text : list)
        result.push_back(text.toStdString());
    return result;
}

/// What `filter` selects; the answer of its validation must agree.
Texts selected(const SyntaxNameFilter& filter, const std::string& name)
{
    const QStringList selection = filter.filter(name);
    const ortelo::ValidationResult result = filter.validate(name);
    EXPECT_EQ(result.isValid(), !selection.isEmpty()) << name;
    EXPECT_EQ(result.errorString(), selection.isEmpty() ? "Invalid pattern." : "") << name;
    return texts(selection);
}

TEST(SyntaxNameFilter, SelectsOnlyCandidatesAtWhoseEndTheMatchStands)
{
    const SyntaxNameFilter filter(list({"a/b/run1.dat", "a/b/run1.dat.bak"}));

    EXPECT_EQ(selected(filter, "*.dat"), Texts{"a/b/run1.dat"});
}

TEST(SyntaxNameFilter, SelectsByTheEndWithoutWildcards)
{
    const SyntaxNameFilter filter(list({"a/b/run1.dat", "a/b/run1.dat.bak"}));

    EXPECT_EQ(selected(filter, "run1.dat"), Texts{"a/b/run1.dat"});
    EXPECT_EQ(selected(filter, "a/b/run1.dat"), Texts{"a/b/run1.dat"});
    EXPECT_EQ(selected(filter, "a/b"), Texts{});
}

TEST(SyntaxNameFilter, SelectsNothingByAnEmptyNameOrByAsterisksAlone)
{
    const SyntaxNameFilter filter(list({"a/b/run1.dat", "x", "*", ""}));

    for (const std::string& name : Texts{"", "*", "**", "***", std::string(1000, '*')}) {
        SCOPED_TRACE(name);
        EXPECT_TRUE(filter.filter(name).isEmpty());
        EXPECT_FALSE(filter.validate(name).isValid());
        EXPECT_EQ(filter.validate(name).errorString(), "Invalid pattern.");
    }
}

TEST(SyntaxNameFilter, JudgesAsterisksWithAnythingElseByWhatTheySelect)
{
    const SyntaxNameFilter filter(list({"a/run.dat", "a/box", "plain"}));

    EXPECT_EQ(selected(filter, "*.*"), Texts{"a/run.dat"});
    EXPECT_EQ(selected(filter, "*x"), Texts{"a/box"});
    EXPECT_EQ(selected(filter, "**x"), Texts{"a/box"});
    EXPECT_EQ(selected(filter, "*/*"), (Texts{"a/run.dat", "a/box"}));
    EXPECT_EQ(selected(filter, "*y"), Texts{});
}

TEST(SyntaxNameFilter, IsCaseSensitive)
{
    const SyntaxNameFilter filter(list({"x.dat", "\xc3\xa4.dat"}));

    EXPECT_EQ(selected(filter, "*.DAT"), Texts{});
    EXPECT_EQ(selected(filter, "X.dat"), Texts{});
    EXPECT_EQ(selected(filter, "\xc3\x84.dat"), Texts{});
    EXPECT_EQ(selected(filter, "\xc3\xa4.dat"), Texts{"\xc3\xa4.dat"});
}

TEST(SyntaxNameFilter, HoldsOneCandidateWhenBuiltFromAString)
{
    for (const std::string& text : Texts{"a/b/run1.dat", "x", "\xc3\xa4\xe2\x82\xac/T"}) {
        SCOPED_TRACE(text);
        const SyntaxNameFilter filter(text);
        EXPECT_EQ(selected(filter, text), Texts{text});
        EXPECT_EQ(selected(filter, text + "x"), Texts{});
    }
}

TEST(SyntaxNameFilter, ComparesTheMatchWithTheEndInTheSameCase)
{
    const SyntaxNameFilter filter(list({"x.dat/y.DAT", "y.dat"}));

    EXPECT_EQ(selected(filter, "[d]at"), Texts{"y.dat"});
}

TEST(SyntaxNameFilter, ReadsItsOneStringUpToANulAndAListToItsEnd)
{
    const std::string text("a\0b", 3);

    EXPECT_EQ(selected(SyntaxNameFilter(text), "?*"), Texts{"a"});
    EXPECT_EQ(selected(SyntaxNameFilter(list({text})), "?*"), Texts{text});
}

TEST(SyntaxNameFilter, AnswersSeveralThreadsAtOnce)
{
    QStringList candidates;
    QStringList ofA;
    QStringList ofB;
    for (int i = 0; i < 200; ++i) {
        ofA.append(QString::number(i) + ".a");
        ofB.append(QString::number(i) + ".b");
        candidates << ofA.back() << ofB.back();
    }
    const SyntaxNameFilter filter(candidates);
    std::atomic<int> waiting{2};
    std::atomic<int> unfinished{2};
    std::atomic<int> wrong{0};
    // Neither begins alone, and neither ends before the other has asked often enough.
    const auto ask = [&](const std::string& name, const QStringList& expected) {
        --waiting;
        while (waiting != 0)
            std::this_thread::yield();
        const int enough = 300;
        for (int round = 1; unfinished != 0; ++round) {
            if (filter.filter(name) != expected || !filter.validate(name).isValid())
                ++wrong;
            if (round == enough)
                --unfinished;
        }
    };

    // One name is matched as runs of text, the other by an expression.
    std::thread other([&] { ask("*.b", ofB); });
    ask("*.[a]", ofA);
    other.join();

    EXPECT_EQ(wrong, 0);
}

TEST(SyntaxNameFilter, KeepsDuplicatesAndTheOrderOfTheList)
{
    const SyntaxNameFilter filter(list({"b.a", "x", "a.a", "b.a", "c.a", "x", "a.a"}));

    EXPECT_EQ(selected(filter, "*.a"), (Texts{"b.a", "a.a", "b.a", "c.a", "a.a"}));
    EXPECT_EQ(selected(filter, "x"), (Texts{"x", "x"}));
}

TEST(SyntaxNameFilter, CopiesTheListThatItIsGiven)
{
    QStringList candidates = list({"a"});
    const SyntaxNameFilter filter(candidates);
    candidates[0] = "b";
    candidates.append("c");

    EXPECT_EQ(selected(filter, "a"), Texts{"a"});
    EXPECT_EQ(selected(filter, "b"), Texts{});
    EXPECT_EQ(selected(filter, "c"), Texts{});
}

TEST(SyntaxNameFilter, SelectsNothingFromNoCandidates)
{
    const SyntaxNameFilter filter((QStringList()));

    for (const std::string& name : Texts{"a", "*a", "?", "[a]", "", "*"})
        EXPECT_EQ(selected(filter, name), Texts{});
}

TEST(SyntaxNameFilter, ReadsWildcards)
{
    const Texts candidates = {"a/b/run1.dat", "run2.dat", "run10.dat", "run1.da", "b"};
    struct Row {
        std::string name;
        Texts selected;
    };
    const std::vector<Row> rows = {
        {"run?.dat", {"a/b/run1.dat", "run2.dat"}},
        {"run??.dat", {"run10.dat"}},
        {"?", candidates},
        {"??", {"a/b/run1.dat", "run2.dat", "run10.dat", "run1.da"}},
        {"run[12].dat", {"a/b/run1.dat", "run2.dat"}},
        {"run[2-9].dat", {"run2.dat"}},
        {"run[^2].dat", {"a/b/run1.dat"}},
        {"run[^0-9]*", {}},
        {"run*.dat", {"a/b/run1.dat", "run2.dat", "run10.dat"}},
        // An asterisk runs across separators.
        {"a*.dat", {"a/b/run1.dat"}},
        {"a*1.dat", {"a/b/run1.dat"}},
        {"a*t", {"a/b/run1.dat", "run2.dat", "run10.dat"}},
        // A dot is only a dot, and nothing else of other notations has a meaning.
        {"run1.d.", {}},
        {"run1+", {}},
        {"(run2).dat", {}},
        {"run2|b", {}},
        {"b$", {}},
        {"^b", {}},
        {"\\b", {}},
    };
    const SyntaxNameFilter filter(list(candidates));
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(selected(filter, row.name), row.selected);
    }
}

TEST(SyntaxNameFilter, ComparesTheTextOfTheLastMatchWithTheEnd)
{
    // The last match of "a*b" begins at the last 'a' that a 'b' follows.
    EXPECT_EQ(selected(SyntaxNameFilter("abab"), "a*b"), Texts{"abab"});
    EXPECT_EQ(selected(SyntaxNameFilter("ab.a"), "a*b"), Texts{});
    // No character follows the last 'b', so the match is an earlier one and not at the end.
    EXPECT_EQ(selected(SyntaxNameFilter("ab.ab"), "b?"), Texts{});
    EXPECT_EQ(selected(SyntaxNameFilter("xbcb"), "b?"), Texts{});
    EXPECT_EQ(selected(SyntaxNameFilter("aaa"), "aa"), Texts{"aaa"});
    EXPECT_EQ(selected(SyntaxNameFilter("a*"), "*?"), Texts{"a*"});
}

TEST(SyntaxNameFilter, RefusesAPatternThatCannotBeCompiled)
{
    for (const std::string& name : Texts{"[", "a[", "[a", "[]", "]", "a]", "[a-"}) {
        SCOPED_TRACE(name);
        ASSERT_FALSE(
            QRegExp(QString::fromStdString(name), Qt::CaseSensitive, QRegExp::Wildcard).isValid());
        const SyntaxNameFilter filter(list({name, "a", "", "]"}));
        EXPECT_EQ(selected(filter, name), Texts{});
    }
}

TEST(SyntaxNameFilter, IsAValidatorOfStrings)
{
    const SyntaxNameFilter filter("x.dat");
    const ortelo::ValidatorInterface<std::string>& validator = filter;

    EXPECT_TRUE(validator.validate("*.dat").isValid());
    EXPECT_EQ(validator.validate("*.dat").errorString(), "");
    EXPECT_FALSE(validator.validate("*.bak").isValid());
    EXPECT_EQ(validator.validate("*.bak").errorString(), "Invalid pattern.");
}

TEST(SyntaxNameFilter, CanBeOverriddenThroughItsVirtualFilter)
{
    struct Everything : public SyntaxNameFilter {
        using SyntaxNameFilter::SyntaxNameFilter;
        QStringList filter(const std::string&) const override { return {"everything"}; }
    };
    const Everything everything("x");
    const SyntaxNameFilter& filter = everything;

    EXPECT_EQ(texts(filter.filter("*")), Texts{"everything"});
}

TEST(SyntaxNameFilter, ReadsBytesThatAreNotUtf8AsReplacementCharacters)
{
    const std::string replaced = QString::fromStdString("\xff.a").toStdString();
    ASSERT_EQ(replaced, "\xef\xbf\xbd.a");

    EXPECT_EQ(selected(SyntaxNameFilter("\xff.a"), "\xff.a"), Texts{replaced});
    EXPECT_EQ(selected(SyntaxNameFilter("\xff.a"), "\xfe.a"), Texts{replaced});
    EXPECT_EQ(selected(SyntaxNameFilter("\xff.a"), "\xef\xbf\xbd.a"), Texts{replaced});
    EXPECT_EQ(selected(SyntaxNameFilter("\xff.a"), "?.a"), Texts{replaced});
    EXPECT_EQ(selected(SyntaxNameFilter("\xff.a"), "x.a"), Texts{});
}

TEST(SyntaxNameFilter, TakesACharacterBeyondSixteenBitsForTwo)
{
    const std::string text = "a\xf0\x9f\x98\x80";
    EXPECT_EQ(selected(SyntaxNameFilter(text), "a??"), Texts{text});
    EXPECT_EQ(selected(SyntaxNameFilter(text), "a?"), Texts{});
    EXPECT_EQ(selected(SyntaxNameFilter(text), text), Texts{text});
}

/// Every text of exactly `length` letters.
Texts allTexts(const std::string& alphabet, std::size_t length)
{
    Texts result = {""};
    for (std::size_t i = 0; i < length; ++i) {
        Texts longer;
        for (const std::string& text : result)
            for (const char letter : alphabet)
                longer.push_back(text + letter);
        result = longer;
    }
    return result;
}

Texts textsUpTo(const std::string& alphabet, std::size_t length)
{
    Texts result;
    for (std::size_t i = 0; i <= length; ++i)
        for (const std::string& text : allTexts(alphabet, i))
            result.push_back(text);
    return result;
}

/// The number of candidates selected; stops the test at the first difference from the rule.
void expectTheRule(const Texts& names, const Texts& candidates, std::size_t& selections)
{
    const QStringList candidateList = list(candidates);
    const SyntaxNameFilter filter(candidateList);
    for (const std::string& name : names) {
        const QStringList expected = plainFilter(candidateList, name);
        ASSERT_EQ(texts(filter.filter(name)), texts(expected)) << name;
        const ortelo::ValidationResult result = filter.validate(name);
        ASSERT_EQ(result.isValid(), !expected.isEmpty()) << name;
        ASSERT_EQ(result.errorString(), expected.isEmpty() ? "Invalid pattern." : "") << name;
        selections += static_cast<std::size_t>(expected.size());
    }
}

TEST(SyntaxNameFilter, EqualsTheRuleForAllShortNamesAndTexts)
{
    const std::string alphabet = "ab*?[]^\\-./";
    std::size_t selections = 0;

    expectTheRule(textsUpTo(alphabet, 3), textsUpTo(alphabet, 3), selections);
    expectTheRule(allTexts(alphabet, 4), textsUpTo(alphabet, 2), selections);

    EXPECT_GT(selections, 20000u);
}

TEST(SyntaxNameFilter, EqualsTheRuleForAllNamesOfLettersAndWildcards)
{
    std::size_t selections = 0;

    expectTheRule(textsUpTo("ab*?", 5), textsUpTo("ab", 5), selections);
    expectTheRule(textsUpTo("a*?", 7), textsUpTo("ab", 4), selections);

    EXPECT_GT(selections, 20000u);
}

TEST(SyntaxNameFilter, EqualsTheRuleForCharactersThatOtherNotationsUse)
{
    std::size_t selections = 0;

    expectTheRule(textsUpTo("a*$()+{|}^", 3), textsUpTo("a$()+{|}^", 2), selections);

    EXPECT_GT(selections, 1000u);
}

TEST(SyntaxNameFilter, EqualsTheRuleForNamesWithPeculiarCharacters)
{
    const Texts pieces = {std::string(1, '\0'),
                          "\xef\xbb\xbf",
                          "\xef\xbf\xbd",
                          "\xf0\x9f\x98\x80",
                          "*",
                          "?",
                          "a",
                          "\n"};
    Texts all = {""};
    for (std::size_t i = 0; all.size() < 8 * 8 * 8; ++i)
        for (const std::string& piece : pieces)
            all.push_back(all[i] + piece);
    std::size_t selections = 0;

    expectTheRule(all, all, selections);

    EXPECT_GT(selections, 1000u);
}

std::string randomText(std::mt19937& random, const Texts& letters, std::size_t maxLength)
{
    std::string text;
    for (std::size_t length = random() % (maxLength + 1); length > 0; --length)
        text += letters[random() % letters.size()];
    return text;
}

TEST(SyntaxNameFilter, EqualsTheRuleForRandomLongerNamesAndTexts)
{
    const unsigned seed = 99;
    std::mt19937 random(seed);
    const Texts letters = {"a", "b", "c", ".",        "/",    "\\",   "-",
                           "^", "]", "*", "\xc3\xa4", "\xff", "\xc3", "\xf0\x9f\x98\x80"};
    const Texts wildcards = {"*", "?", "[ab]", "[^a]", "[a-c]", "[", "]", "[^-a]", "[]a]", "**"};
    std::size_t selections = 0;
    for (int round = 0; round < 1500; ++round) {
        Texts candidates(1 + random() % 5);
        for (std::string& candidate : candidates)
            candidate = randomText(random, letters, 12);
        Texts names;
        for (const std::string& candidate : candidates) {
            // The end of a candidate with a few wildcards in it, so that it often selects.
            std::string name = candidate.substr(random() % (candidate.size() + 1));
            for (std::size_t count = random() % 4; count > 0; --count)
                name.replace(random() % (name.size() + 1), random() % 2,
                             wildcards[random() % wildcards.size()]);
            names.push_back(name);
            names.push_back(randomText(random, letters, 6));
        }
        SCOPED_TRACE("seed " + std::to_string(seed) + ", round " + std::to_string(round) +
                     ", candidates " + testing::PrintToString(candidates));
        expectTheRule(names, candidates, selections);
        if (HasFatalFailure())
            return;
    }
    EXPECT_GT(selections, 1000u);
}

TEST(SyntaxNameFilter, EqualsTheRuleForNamesMadeFromLongPaths)
{
    const unsigned seed = 3;
    std::mt19937 random(seed);
    const Texts letters = {"a", "b", "/", ".", "aa", "ab"};
    std::size_t selections = 0;
    for (int round = 0; round < 800; ++round) {
        Texts candidates(1 + random() % 4);
        for (std::string& candidate : candidates)
            candidate = randomText(random, letters, 60);
        Texts names;
        for (const std::string& candidate : candidates) {
            // Pieces of a candidate in their order, with wildcards for what is left out.
            std::string name;
            for (std::size_t i = random() % 20; i < candidate.size();) {
                const std::size_t length = 1 + random() % 12;
                name += candidate.substr(i, length);
                i += length;
                if (random() % 2 == 0) {
                    name += "*";
                    i += random() % 9;
                } else if (random() % 2 == 0) {
                    name += "?";
                    ++i;
                }
            }
            names.push_back(name);
        }
        SCOPED_TRACE("seed " + std::to_string(seed) + ", round " + std::to_string(round) +
                     ", candidates " + testing::PrintToString(candidates));
        expectTheRule(names, candidates, selections);
        if (HasFatalFailure())
            return;
    }
    EXPECT_GT(selections, 500u);
}

} // namespace
