#include "crawler/AuxFileIdentifierValidator.h"

#include <algorithm>
#include <cstddef>
#include <initializer_list>
#include <limits>
#include <map>
#include <memory>
#include <random>
#include <set>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include <QString>
#include <QStringList>
#include <boost/make_shared.hpp>
#include <boost/shared_ptr.hpp>
#include <boost/weak_ptr.hpp>
#include <gtest/gtest.h>

#include "crawler/CrawlerBasicImporterParser.h"
#include "host/AuxFileCollectionInterface.h"
#include "tests/crawler/AuxFileDoubles.h"

namespace {

using doubles::FixedAuxFile;
using doubles::plainFilter;
using doubles::RecordingProvider;
using doubles::RecordingTagValidator;

using Texts = std::vector<std::string>;
using Tags = std::set<std::string>;
using Files = std::vector<boost::shared_ptr<AuxFileInfoInterface>>;
using Collection = boost::shared_ptr<AuxFileCollectionInterface>;

boost::shared_ptr<FixedAuxFile> file(const std::string& path, std::size_t caseIndex = 0)
{
    return boost::make_shared<FixedAuxFile>(path, caseIndex);
}

/// A validator with all that it is built from.
struct Fixture {
    Fixture(std::initializer_list<AuxFileIdentifier> identifiers, Files files)
        : provider(identifiers), tags(boost::make_shared<RecordingTagValidator>()),
          validator(provider, std::move(files), tags)
    {
    }

    bool acceptsName(const std::string& name) const
    {
        return validator.syntaxNameValidator()->validate(name).isValid();
    }

    RecordingProvider provider;
    boost::shared_ptr<RecordingTagValidator> tags;
    AuxFileIdentifierValidator validator;
};

/// Everything that a collection holds: per tag and case the paths.
std::map<std::string, std::map<std::size_t, Texts>>
contents(const AuxFileCollectionInterface& files)
{
    std::map<std::string, std::map<std::size_t, Texts>> result;
    for (const std::string& tag : files.tags())
        for (std::size_t i = 0; i < files.indexCount(); ++i)
            if (!files.filePaths(i, tag).empty())
                result[tag][i] = files.filePaths(i, tag);
    return result;
}

using Contents = decltype(contents(std::declval<AuxFileCollectionInterface>()));

TEST(AuxFileIdentifierValidator, AcceptsNoIdentifiersAndCollectsNothingForThem)
{
    Fixture fixture({}, {file("x.a")});

    EXPECT_TRUE(fixture.validator.isValid());
    const Collection collection = fixture.validator.auxFiles();
    ASSERT_TRUE(collection);
    EXPECT_TRUE(collection->isEmpty());
    EXPECT_EQ(collection->indexCount(), 0u);
    EXPECT_EQ(collection->tags(), Tags{});
    EXPECT_TRUE(fixture.tags->validated.empty());
}

TEST(AuxFileIdentifierValidator, AcceptsIdentifiersThatSelectFilesUnderGoodTags)
{
    Fixture fixture({{"*.a", "T1"}, {"y.b", "T2"}}, {file("x.a"), file("y.b")});

    EXPECT_TRUE(fixture.validator.isValid());
    EXPECT_EQ(fixture.tags->validated, (Texts{"T1", "T2"}));
}

TEST(AuxFileIdentifierValidator, IgnoresRowsThatAreWhollyEmpty)
{
    Fixture fixture({{"", ""}, {"*.a", "T"}, {"", ""}}, {file("x.a")});

    EXPECT_TRUE(fixture.validator.isValid());
    EXPECT_EQ(fixture.tags->validated, Texts{"T"});
}

TEST(AuxFileIdentifierValidator, LetsTheTagValidatorJudgeAnEmptyTagBesideASyntaxName)
{
    Fixture fixture({{"*.a", ""}}, {file("x.a")});

    EXPECT_TRUE(fixture.validator.isValid());
    EXPECT_EQ(fixture.tags->validated, Texts{""});
    EXPECT_EQ(contents(*fixture.validator.auxFiles()), (Contents{{"", {{0, {"x.a"}}}}}));
}

TEST(AuxFileIdentifierValidator, RefusesAnEmptySyntaxNameBesideATag)
{
    Fixture fixture({{"", "T"}}, {file("x.a")});

    EXPECT_FALSE(fixture.validator.isValid());
    EXPECT_EQ(fixture.tags->validated, Texts{"T"});
}

TEST(AuxFileIdentifierValidator, RefusesABadTagAndABadSyntaxName)
{
    const std::vector<AuxFileIdentifier> bad = {
        {"*.a", "T!"}, {"*.b", "T"}, {"*", "T"}, {"**", "T"}, {"[", "T"}, {"*.A", "T"}, {"", "!"}};
    for (const AuxFileIdentifier& identifier : bad) {
        SCOPED_TRACE("\"" + identifier.syntaxName + "\", \"" + identifier.tag + "\"");
        Fixture fixture({{"*.a", "T"}, identifier, {"x.a", "T"}}, {file("x.a")});

        EXPECT_FALSE(fixture.validator.isValid());
        EXPECT_EQ(fixture.tags->validated, (Texts{"T", identifier.tag})) << "stops at the first";
    }
}

TEST(AuxFileIdentifierValidator, ValidatesTheTagBeforeTheSyntaxName)
{
    Fixture fixture({{"nothing", "T"}}, {file("x.a")});
    EXPECT_FALSE(fixture.validator.isValid());
    EXPECT_EQ(fixture.tags->validated, Texts{"T"}) << "although the syntax name is bad";
}

TEST(AuxFileIdentifierValidator, AsksTheProviderTwiceToValidateAndOnceWhenThereIsNothing)
{
    Fixture fixture({{"*.a", "T"}}, {file("x.a")});
    fixture.validator.isValid();
    EXPECT_EQ(fixture.provider.asked, 2u);

    fixture.provider.answer({{}});
    fixture.validator.isValid();
    EXPECT_EQ(fixture.provider.asked, 1u);
}

TEST(AuxFileIdentifierValidator, AsksTheProviderOnceForTheFilesAndForTheIdentifiers)
{
    Fixture fixture({{"*.a", "T"}, {"y", "U"}}, {file("x.a")});
    EXPECT_EQ(fixture.provider.asked, 0u) << "nothing is asked at construction";

    fixture.validator.auxFiles();
    EXPECT_EQ(fixture.provider.asked, 1u);

    const std::vector<AuxFileIdentifier> identifiers = fixture.validator.identifiers();
    EXPECT_EQ(fixture.provider.asked, 2u);
    ASSERT_EQ(identifiers.size(), 2u);
    EXPECT_EQ(identifiers[0].syntaxName, "*.a");
    EXPECT_EQ(identifiers[0].tag, "T");
    EXPECT_EQ(identifiers[1].syntaxName, "y");
    EXPECT_EQ(identifiers[1].tag, "U");
}

TEST(AuxFileIdentifierValidator, JudgesTheSecondAnswerOfTheProvider)
{
    Fixture fixture({}, {file("x.a")});
    fixture.provider.answer({{{"bad", "T"}}, {{"*.a", "T"}}});
    EXPECT_TRUE(fixture.validator.isValid());
    EXPECT_FALSE(fixture.acceptsName("bad")) << "the first answer was not visited";

    fixture.provider.answer({{{"*.a", "T"}}, {{"bad", "T"}}});
    EXPECT_FALSE(fixture.validator.isValid());

    fixture.provider.answer({{{"bad", "T"}}, {}});
    EXPECT_TRUE(fixture.validator.isValid());
    EXPECT_FALSE(fixture.acceptsName("bad"));

    fixture.provider.answer({{}, {{"bad", "T"}}});
    EXPECT_TRUE(fixture.validator.isValid());
    EXPECT_EQ(fixture.provider.asked, 1u);
}

TEST(AuxFileIdentifierValidator, FollowsTheProviderFromCallToCall)
{
    Fixture fixture({{"*.a", "T"}}, {file("x.a"), file("y.b")});
    EXPECT_EQ(contents(*fixture.validator.auxFiles()), (Contents{{"T", {{0, {"x.a"}}}}}));

    fixture.provider.answer({{{"*.b", "U"}}});

    EXPECT_EQ(contents(*fixture.validator.auxFiles()), (Contents{{"U", {{0, {"y.b"}}}}}));
    EXPECT_EQ(fixture.validator.identifiers().at(0).tag, "U");
}

TEST(AuxFileIdentifierValidator, AcceptsABadSyntaxNameOnceIsValidHasVisitedIt)
{
    Fixture fixture({{"bad", "T"}}, {file("x.a")});
    EXPECT_FALSE(fixture.acceptsName("bad"));

    EXPECT_FALSE(fixture.validator.isValid());

    EXPECT_TRUE(fixture.acceptsName("bad"));
    EXPECT_TRUE(fixture.validator.isValid()) << "and so does the next validation";
}

TEST(AuxFileIdentifierValidator, AcceptsEveryNameThatWasVisitedAndNoOther)
{
    struct Row {
        std::vector<AuxFileIdentifier> identifiers;
        bool valid;
        Texts accepted;
        Texts refused;
    };
    const std::vector<Row> rows = {
        // A name whose tag failed first, and none of those behind it.
        {{{"bad1", "!"}, {"bad2", "T"}}, false, {"bad1", "x.a"}, {"bad2", ""}},
        {{{"*.a", "T"}, {"bad1", "T"}, {"bad2", "T"}}, false, {"*.a", "bad1"}, {"bad2"}},
        // A blank row, and what is otherwise never acceptable.
        {{{"", ""}}, true, {"", "*.a"}, {"*", "bad1"}},
        {{{"*", "T"}}, false, {"*"}, {"**", ""}},
        {{{"[", "T"}}, false, {"["}, {"[["}},
        {{{"", "!"}}, false, {""}, {"*"}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.identifiers[0].syntaxName);
        Fixture fixture({}, {file("x.a")});
        fixture.provider.answer({row.identifiers});

        EXPECT_EQ(fixture.validator.isValid(), row.valid);

        for (const std::string& name : row.accepted)
            EXPECT_TRUE(fixture.acceptsName(name)) << name;
        for (const std::string& name : row.refused)
            EXPECT_FALSE(fixture.acceptsName(name)) << name;
    }
}

TEST(AuxFileIdentifierValidator, AnswersAVisitedNameWithoutMatching)
{
    Fixture fixture({{"zzz", "T"}}, {file("x.a")});
    fixture.validator.isValid();

    const ortelo::ValidationResult result =
        fixture.validator.syntaxNameValidator()->validate("zzz");

    EXPECT_TRUE(result.isValid());
    EXPECT_EQ(result.errorString(), "");
    EXPECT_TRUE(fixture.validator.auxFiles()->isEmpty()) << "it still selects nothing";
}

TEST(AuxFileIdentifierValidator, KeepsAValidNameValidAndJudgesABadOneAgainEveryTime)
{
    Fixture fixture({}, {file("x.a")});
    const auto validator = fixture.validator.syntaxNameValidator();

    for (int i = 0; i < 3; ++i) {
        EXPECT_TRUE(validator->validate("*.a").isValid());
        EXPECT_FALSE(validator->validate("bad").isValid());
        EXPECT_EQ(validator->validate("bad").errorString(), "Invalid pattern.");
        EXPECT_EQ(validator->validate("").errorString(), "Invalid pattern.");
        EXPECT_EQ(validator->validate("*").errorString(), "Invalid pattern.");
    }
}

TEST(AuxFileIdentifierValidator, ReplacesTheVisitedNamesWithEachValidation)
{
    Fixture fixture({{"bad1", "T"}}, {file("x.a")});
    fixture.validator.isValid();
    fixture.provider.answer({{{"bad2", "T"}}});

    EXPECT_FALSE(fixture.validator.isValid());

    EXPECT_FALSE(fixture.acceptsName("bad1"));
    EXPECT_TRUE(fixture.acceptsName("bad2"));
}

TEST(AuxFileIdentifierValidator, ForgetsTheVisitedNamesWhenThereAreNoIdentifiers)
{
    Fixture fixture({{"bad", "T"}}, {file("x.a")});
    fixture.validator.isValid();
    fixture.provider.answer({{}});

    EXPECT_TRUE(fixture.validator.isValid());

    EXPECT_FALSE(fixture.acceptsName("bad"));
    EXPECT_TRUE(fixture.acceptsName("*.a"));
}

TEST(AuxFileIdentifierValidator, AcceptsOneMoreBadNameWithEachValidationOfTheSameRows)
{
    Fixture fixture({{"bad1", "T"}, {"bad2", "T"}}, {file("x.a")});

    EXPECT_FALSE(fixture.validator.isValid());
    EXPECT_FALSE(fixture.validator.isValid());
    EXPECT_TRUE(fixture.validator.isValid());
}

TEST(AuxFileIdentifierValidator, LeavesTheVisitedNamesAloneWhenItCollects)
{
    Fixture fixture({{"bad1", "T"}}, {file("x.a")});
    fixture.validator.isValid();
    fixture.provider.answer({{{"bad2", "T"}, {"*.a", "T"}}});

    fixture.validator.auxFiles();

    EXPECT_TRUE(fixture.acceptsName("bad1"));
    EXPECT_FALSE(fixture.acceptsName("bad2"));
    EXPECT_TRUE(fixture.acceptsName("*.a"));
}

TEST(AuxFileIdentifierValidator, CollectsEachFileOnceUnderTheFirstIdentifierThatSelectsIt)
{
    Fixture fixture({{"*.a", "T1"}, {"*.a", "T2"}}, {file("x.a", 0), file("y.a", 2)});

    const Collection collection = fixture.validator.auxFiles();

    EXPECT_FALSE(collection->isEmpty());
    EXPECT_EQ(collection->tags(), Tags{"T1"});
    EXPECT_EQ(collection->indexCount(), 3u);
    EXPECT_EQ(collection->filePaths(0, "T1"), Texts{"x.a"});
    EXPECT_EQ(collection->filePaths(1, "T1"), Texts{});
    EXPECT_EQ(collection->filePaths(2, "T1"), Texts{"y.a"});
}

TEST(AuxFileIdentifierValidator, AnswersNoPathsForATagThatItNeverSaw)
{
    Fixture fixture({{"x.a", "T"}, {"y.a", "U"}}, {file("x.a", 0), file("y.a", 2)});

    const Collection collection = fixture.validator.auxFiles();

    EXPECT_EQ(collection->tags(), (Tags{"T", "U"}));
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(collection->filePaths(i, "V"), Texts{}) << i;
        EXPECT_EQ(collection->filePaths(i, ""), Texts{}) << i;
    }
    EXPECT_EQ(collection->filePaths(0, "U"), Texts{});
    EXPECT_EQ(collection->filePaths(2, "T"), Texts{});
    EXPECT_EQ(collection->tags(), (Tags{"T", "U"})) << "asking adds no tag";
}

TEST(AuxFileIdentifierValidator, RecordsPathsByIdentifierAndThenInFileOrder)
{
    Fixture fixture({{"c*", "T"}, {"*.a", "U"}, {"*.b", "T"}},
                    {file("z.b"), file("b.a"), file("a.a"), file("c.a"), file("cc.b")});

    const Collection collection = fixture.validator.auxFiles();

    EXPECT_EQ(collection->filePaths(0, "T"), (Texts{"c.a", "cc.b", "z.b"}));
    EXPECT_EQ(collection->filePaths(0, "U"), (Texts{"b.a", "a.a"}));
}

TEST(AuxFileIdentifierValidator, CollectsUnderATagOfMoreThanOneIdentifier)
{
    Fixture fixture({{"x.a", "T"}, {"y.a", "U"}, {"z.a", "T"}},
                    {file("z.a", 1), file("y.a", 1), file("x.a", 1)});

    EXPECT_EQ(contents(*fixture.validator.auxFiles()),
              (Contents{{"T", {{1, {"x.a", "z.a"}}}}, {"U", {{1, {"y.a"}}}}}));
}

TEST(AuxFileIdentifierValidator, KeepsManyTagsApart)
{
    Files files;
    std::vector<AuxFileIdentifier> identifiers;
    Contents expected;
    for (int i = 1000; i < 1600; ++i) {
        const std::string path = std::to_string(i) + ".a";
        const std::string tag = "T" + std::to_string(i);
        files.push_back(file(path, 1));
        identifiers.push_back({path, tag});
        expected[tag][1] = {path};
    }
    Fixture fixture({}, files);
    fixture.provider.answer({identifiers});

    EXPECT_EQ(contents(*fixture.validator.auxFiles()), expected);
}

TEST(AuxFileIdentifierValidator, LeavesOutBadIdentifiersAndGoesOn)
{
    Fixture fixture({{"*.a", "T!"}, {"", ""}, {"bad", "T"}, {"*", "T"}, {"[", "T"}, {"*.b", "U"}},
                    {file("x.a"), file("y.b", 1)});

    const Collection collection = fixture.validator.auxFiles();

    EXPECT_EQ(contents(*collection), (Contents{{"U", {{1, {"y.b"}}}}}));
    EXPECT_EQ(collection->tags(), Tags{"U"});
    EXPECT_EQ(fixture.tags->validated, (Texts{"T!", "", "T", "T", "T", "U"}));
}

TEST(AuxFileIdentifierValidator, CollectsNothingForABadNameThatIsAcceptedOnlyBecauseItWasVisited)
{
    for (const std::string& name : Texts{"bad", "*", "", "["}) {
        SCOPED_TRACE(name);
        Fixture fixture({{name, "T"}}, {file("x.a")});
        EXPECT_FALSE(fixture.validator.isValid());

        const Collection collection = fixture.validator.auxFiles();

        EXPECT_TRUE(collection->isEmpty());
        EXPECT_EQ(collection->tags(), Tags{});
    }
}

TEST(AuxFileIdentifierValidator, RecordsOnlyTheLaterOfTwoFilesWithTheSamePath)
{
    Fixture fixture({{"*.a", "T"}, {"x.a", "U"}}, {file("x.a", 0), file("y.a", 1), file("x.a", 3)});

    const Collection collection = fixture.validator.auxFiles();

    EXPECT_EQ(contents(*collection), (Contents{{"T", {{1, {"y.a"}}, {3, {"x.a"}}}}}));
    EXPECT_EQ(collection->indexCount(), 4u);
}

TEST(AuxFileIdentifierValidator, RecordsTheLaterFileWhereTheEarlierOneStood)
{
    // Both are candidates: the first stands before "y.a" and is answered by the second.
    Fixture fixture({{"*.a", "T"}}, {file("x.a", 1), file("y.a", 0), file("x.a", 0)});

    EXPECT_EQ(contents(*fixture.validator.auxFiles()), (Contents{{"T", {{0, {"x.a", "y.a"}}}}}));
}

TEST(AuxFileIdentifierValidator, RecordsAFileOnceThatIsGivenTwice)
{
    const auto twice = file("x.a", 1);
    Fixture fixture({{"*.a", "T"}}, {twice, file("y.a", 1), twice});

    EXPECT_EQ(contents(*fixture.validator.auxFiles()), (Contents{{"T", {{1, {"x.a", "y.a"}}}}}));
}

TEST(AuxFileIdentifierValidator, TakesFilesOfOneOwnerForOneFile)
{
    struct Pair {
        FixedAuxFile first{"x.a", 0};
        FixedAuxFile second{"y.a", 1};
    };
    const auto owner = boost::make_shared<Pair>();
    Fixture fixture({{"*.a", "T"}}, {boost::shared_ptr<FixedAuxFile>(owner, &owner->first),
                                     boost::shared_ptr<FixedAuxFile>(owner, &owner->second)});

    EXPECT_EQ(contents(*fixture.validator.auxFiles()), (Contents{{"T", {{0, {"x.a"}}}}}));
}

TEST(AuxFileIdentifierValidator, RecordsThePathOfTheFileItselfWhenItIsNotUtf8)
{
    Fixture fixture({{"?.a", "T"}}, {file("\xff.a", 1)});

    EXPECT_TRUE(fixture.validator.isValid());
    EXPECT_EQ(contents(*fixture.validator.auxFiles()), (Contents{{"T", {{1, {"\xff.a"}}}}}));
}

TEST(AuxFileIdentifierValidator, MatchesAndRecordsAPathToItsEndAlsoBehindANul)
{
    const std::string path("x\0.a", 4);
    Fixture fixture({{"*.a", "T"}, {"x", "U"}}, {file(path, 1)});

    EXPECT_EQ(contents(*fixture.validator.auxFiles()), (Contents{{"T", {{1, {path}}}}}));
}

TEST(AuxFileIdentifierValidator, TakesPathsForTheSameThatConvertToTheSameText)
{
    ASSERT_EQ(QString::fromStdString("\xff.a"), QString::fromStdString("\xfe.a"));
    Fixture fixture({{"\xfd.a", "T"}, {"*.a", "U"}},
                    {file("\xff.a", 0), file("y.a", 1), file("\xfe.a", 2)});

    EXPECT_EQ(contents(*fixture.validator.auxFiles()),
              (Contents{{"T", {{2, {"\xfe.a"}}}}, {"U", {{1, {"y.a"}}}}}));
}

TEST(AuxFileIdentifierValidator, ReadsTheCaseOfAFileWhenItCollects)
{
    const auto moving = file("x.a", 7);
    Fixture fixture({{"*.a", "T"}}, {moving});
    moving->setCaseIndex(1);
    const Collection first = fixture.validator.auxFiles();
    moving->setCaseIndex(3);
    const Collection second = fixture.validator.auxFiles();

    EXPECT_EQ(contents(*first), (Contents{{"T", {{1, {"x.a"}}}}}));
    EXPECT_EQ(first->indexCount(), 2u);
    EXPECT_EQ(contents(*second), (Contents{{"T", {{3, {"x.a"}}}}}));
    EXPECT_EQ(second->indexCount(), 4u);
}

/// A file that belongs to no case, and still has the index of an earlier one.
struct UnmatchedFile : FixedAuxFile {
    using FixedAuxFile::FixedAuxFile;
    bool isMatched() const override { return ++matchedAsked, false; }
    mutable int matchedAsked = 0;
};

TEST(AuxFileIdentifierValidator, CollectsAFileWithoutAskingWhetherItIsMatched)
{
    const auto unmatched = boost::make_shared<UnmatchedFile>("x.a", 1);
    Fixture fixture({{"*.a", "T"}}, {unmatched});

    EXPECT_TRUE(fixture.validator.isValid());
    EXPECT_EQ(contents(*fixture.validator.auxFiles()), (Contents{{"T", {{1, {"x.a"}}}}}));
    EXPECT_EQ(unmatched->matchedAsked, 0);
}

TEST(AuxFileIdentifierValidator, RefusesACaseIndexThatNoCollectionCanHold)
{
    const auto lost = file("x.a", std::numeric_limits<std::size_t>::max());
    Fixture fixture({{"*.a", "T"}}, {file("w.a", 1), lost});

    try {
        fixture.validator.auxFiles();
        ADD_FAILURE() << "nothing was thrown";
    } catch (const std::length_error& error) {
        EXPECT_STREQ(error.what(), "case index too large");
    }

    lost->setCaseIndex(0);
    EXPECT_EQ(contents(*fixture.validator.auxFiles()),
              (Contents{{"T", {{0, {"x.a"}}, {1, {"w.a"}}}}}));
}

TEST(AuxFileIdentifierValidator, CollectsTheFilesOfAParser)
{
    CrawlerBasicImporterParser parser;
    for (const std::string& path : Texts{"T2/x.a", "T1/y.a", "T2/y.a", "z.a"})
        parser.appendRawFilePath(path);
    Fixture fixture({{"*.a", "T"}}, parser.crawlerFilePathList());
    parser.applyMetadataPatternList({{"T", MetadataPattern::NumberValue}});

    EXPECT_EQ(contents(*fixture.validator.auxFiles()),
              (Contents{{"T", {{0, {"T1/y.a", "z.a"}}, {1, {"T2/x.a", "T2/y.a"}}}}}));
}

TEST(AuxFileIdentifierValidator, BuildsANewCollectionOnEveryCall)
{
    Fixture fixture({{"*.a", "T"}}, {file("x.a")});
    const Collection first = fixture.validator.auxFiles();
    fixture.provider.answer({{{"*.a", "U"}}});
    const Collection second = fixture.validator.auxFiles();
    fixture.validator.isValid();

    EXPECT_NE(first, second);
    EXPECT_EQ(contents(*first), (Contents{{"T", {{0, {"x.a"}}}}}));
    EXPECT_EQ(contents(*second), (Contents{{"U", {{0, {"x.a"}}}}}));
}

TEST(AuxFileIdentifierValidator, LeavesItsCollectionsAndValidatorsBehindWhenItIsGone)
{
    Collection collection;
    boost::shared_ptr<ortelo::ValidatorInterface<std::string>> names;
    boost::shared_ptr<ortelo::ValidatorInterface<std::string>> tags;
    boost::weak_ptr<AuxFileInfoInterface> shared;
    {
        Fixture fixture({{"*.a", "T"}}, {file("x.a", 1)});
        collection = fixture.validator.auxFiles();
        names = fixture.validator.syntaxNameValidator();
        tags = fixture.validator.tagValidator();
    }
    {
        const auto kept = file("y.a");
        shared = kept;
        Fixture fixture({}, {kept});
    }

    EXPECT_EQ(contents(*collection), (Contents{{"T", {{1, {"x.a"}}}}}));
    EXPECT_TRUE(names->validate("x.a").isValid());
    EXPECT_EQ(names->validate("y.a").errorString(), "Invalid pattern.");
    EXPECT_TRUE(tags->validate("T").isValid());
    EXPECT_EQ(tags->validate("!").errorString(), "Bad tag.");
    EXPECT_TRUE(shared.expired()) << "a validator that is gone holds no file";
}

TEST(AuxFileIdentifierValidator, HoldsItsFilesAndTagValidatorItself)
{
    const RecordingProvider provider{{"*.a", "T"}};
    auto tags = boost::make_shared<RecordingTagValidator>();
    Files files = {file("x.a", 1)};
    AuxFileIdentifierValidator validator(provider, files, tags);
    const boost::weak_ptr<RecordingTagValidator> heldTags = tags;
    files.clear();
    tags.reset();

    EXPECT_FALSE(heldTags.expired());
    EXPECT_EQ(contents(*validator.auxFiles()), (Contents{{"T", {{1, {"x.a"}}}}}));
}

TEST(AuxFileIdentifierValidator, SharesOneValidatorOfNamesAndTheGivenOneOfTags)
{
    const Fixture fixture({}, {file("x.a")});
    const ortelo::ValidatorInterface<std::string>* given = fixture.tags.get();

    EXPECT_EQ(fixture.validator.syntaxNameValidator(), fixture.validator.syntaxNameValidator());
    EXPECT_EQ(fixture.validator.tagValidator().get(), given);
    EXPECT_FALSE(fixture.validator.tagValidator().owner_before(fixture.tags));
    EXPECT_FALSE(fixture.tags.owner_before(fixture.validator.tagValidator()));
}

TEST(AuxFileIdentifierValidator, CanBeDestroyedThroughADerivedClass)
{
    struct Derived : public AuxFileIdentifierValidator {
        Derived(const IdentifierProviderInterface& provider, bool& isGone)
            : AuxFileIdentifierValidator(provider, {}, boost::make_shared<RecordingTagValidator>()),
              gone(isGone)
        {
        }
        ~Derived() override { gone = true; }
        bool& gone;
    };
    const RecordingProvider provider;
    bool gone = false;
    std::unique_ptr<AuxFileIdentifierValidator> validator(new Derived(provider, gone));

    validator.reset();

    EXPECT_TRUE(gone);
}

/// The rules of the validator, without an index and with lists that are searched from end to end.
struct Model {
    std::vector<boost::shared_ptr<FixedAuxFile>> files;
    std::vector<AuxFileIdentifier> identifiers;
    Tags accepted;

    QStringList candidates() const
    {
        QStringList list;
        for (const auto& file : files)
            list.append(QString::fromStdString(file->path));
        return list;
    }

    static bool goodTag(const std::string& tag) { return tag.find('!') == std::string::npos; }

    bool goodName(const std::string& name)
    {
        if (accepted.count(name) == 0 && plainFilter(candidates(), name).isEmpty())
            return false;
        accepted.insert(name);
        return true;
    }

    bool isValid()
    {
        Tags visited;
        bool valid = true;
        for (const AuxFileIdentifier& identifier : identifiers) {
            visited.insert(identifier.syntaxName);
            if (identifier.syntaxName.empty() && identifier.tag.empty())
                continue;
            valid = goodTag(identifier.tag) && goodName(identifier.syntaxName);
            if (!valid)
                break;
        }
        accepted = visited;
        return valid;
    }

    Contents auxFiles(std::size_t& indexCount)
    {
        Contents contents;
        std::set<const FixedAuxFile*> recorded;
        indexCount = 0;
        for (const AuxFileIdentifier& identifier : identifiers) {
            if (!goodTag(identifier.tag) || !goodName(identifier.syntaxName))
                continue;
            for (const QString& selected : plainFilter(candidates(), identifier.syntaxName)) {
                const FixedAuxFile* last = nullptr;
                for (const auto& file : files)
                    if (QString::fromStdString(file->path) == selected)
                        last = file.get();
                if (!recorded.insert(last).second)
                    continue;
                contents[identifier.tag][last->index].push_back(last->path);
                indexCount = std::max(indexCount, last->index + 1);
            }
        }
        return contents;
    }
};

std::string randomText(std::mt19937& random, const Texts& letters, std::size_t maxLength)
{
    std::string text;
    for (std::size_t length = random() % (maxLength + 1); length > 0; --length)
        text += letters[random() % letters.size()];
    return text;
}

Tags keys(const Contents& contents)
{
    Tags tags;
    for (const auto& entry : contents)
        tags.insert(entry.first);
    return tags;
}

TEST(AuxFileIdentifierValidator, EqualsTheNaiveModelForRandomFilesAndIdentifiers)
{
    const unsigned seed = 31337;
    std::mt19937 random(seed);
    const Texts letters = {"a", "b", ".", "/", "\xff", "\xfe", "\xc3\xa4"};
    const Texts wildcards = {"a", "b", ".", "*", "*", "?", "\xff", "[ab]", "*."};
    const Texts tags = {"", "T", "T", "U", "V", "T!"};
    std::size_t collected = 0;
    std::size_t refused = 0;
    for (int round = 0; round < 400; ++round) {
        Model model;
        std::string history = "seed " + std::to_string(seed) + ", round " + std::to_string(round);
        for (std::size_t count = random() % 9; count > 0; --count) {
            const std::string path = randomText(random, letters, 4);
            model.files.push_back(file(path, random() % 5));
            history += "\nfile \"" + path + "\" in " + std::to_string(model.files.back()->index);
        }
        Fixture fixture({}, Files(model.files.begin(), model.files.end()));
        for (int step = 0; step < 8; ++step) {
            model.identifiers.clear();
            for (std::size_t count = random() % 4; count > 0; --count) {
                model.identifiers.push_back(
                    {randomText(random, wildcards, 3), tags[random() % tags.size()]});
                history += "\nidentifier \"" + model.identifiers.back().syntaxName + "\", \"" +
                           model.identifiers.back().tag + "\"";
            }
            fixture.provider.answer({model.identifiers});
            const bool validates = random() % 2 == 0;
            history += validates ? "\nvalidate" : "\ncollect";
            SCOPED_TRACE(history);
            if (validates) {
                const bool valid = model.isValid();
                ASSERT_EQ(fixture.validator.isValid(), valid);
                refused += valid ? 0 : 1;
            }
            if (!model.files.empty())
                model.files[random() % model.files.size()]->setCaseIndex(random() % 5);
            std::size_t indexCount = 0;
            const Contents expected = model.auxFiles(indexCount);
            const Collection collection = fixture.validator.auxFiles();
            ASSERT_EQ(contents(*collection), expected);
            ASSERT_EQ(collection->tags(), keys(expected));
            ASSERT_EQ(collection->indexCount(), indexCount);
            ASSERT_EQ(collection->isEmpty(), expected.empty());
            const std::string name = randomText(random, wildcards, 2);
            ASSERT_EQ(fixture.acceptsName(name), model.goodName(name)) << name;
            collected += expected.size();
        }
    }
    EXPECT_GT(collected, 500u);
    EXPECT_GT(refused, 300u);
}

} // namespace
