#include <cstddef>
#include <locale>
#include <memory>
#include <new>
#include <random>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include <boost/lexical_cast.hpp>
#include <boost/make_shared.hpp>
#include <boost/shared_ptr.hpp>

#include <vtkAbstractArray.h>
#include <vtkObject.h>
#include <vtkSmartPointer.h>
#include <vtkStringArray.h>
#include <vtkTable.h>
#include <vtkVariant.h>
#include <vtkVariantArray.h>

#include <gtest/gtest.h>

#include "crawler/MetadataFileCrawler.h"
#include "crawler/MetadataPattern.h"
#include "host/ExceptionBase.h"
#include "tests/crawler/Doubles.h"

namespace {

using doubles::Calls;
using doubles::crawlResult;
using doubles::EmptyCollection;
using doubles::FileSystem;
using doubles::makeImporter;
using doubles::ParserRecord;
using doubles::ParserRecordPtr;
using doubles::RecordingContext;

using Cases = std::vector<std::vector<std::string>>;
using Texts = std::vector<std::string>;
using Patterns = std::vector<MetadataPattern>;

constexpr MetadataPattern::ValueType String = MetadataPattern::StringValue;
constexpr MetadataPattern::ValueType Number = MetadataPattern::NumberValue;
/// A value of the field that is neither of the two.
constexpr MetadataPattern::ValueType Unknown = static_cast<MetadataPattern::ValueType>(7);

/// An importer with a root folder, a pattern list and a parser that answers fixed cases.
struct Arrangement {
    Arrangement(const Patterns& patterns, const Cases& cases)
    {
        importer->setCrawlResult(crawlResult(FileSystem().directory("/r")));
        importer->setMetadataPatternList(patterns);
        parser->cases = cases;
        callsBefore = parser->log->calls().size();
    }

    /// What the parser was asked since the arrangement stood.
    Calls parserCalls() const
    {
        const Calls calls = parser->log->calls();
        return Calls(calls.begin() + static_cast<std::ptrdiff_t>(callsBefore), calls.end());
    }

    ParserRecordPtr parser = std::make_shared<ParserRecord>();
    std::unique_ptr<MetadataFileCrawler> importer = makeImporter(parser);
    std::size_t callsBefore = 0;
};

vtkSmartPointer<vtkTable> extractTable(const Patterns& patterns, const Cases& cases)
{
    const Arrangement given(patterns, cases);
    RecordingContext context;
    given.importer->extract(context);
    return context.table;
}

Texts columnNames(vtkTable& table)
{
    Texts names;
    for (vtkIdType column = 0; column < table.GetNumberOfColumns(); ++column)
        names.emplace_back(table.GetColumnName(column));
    return names;
}

/// The table's cells row by row; a cell that is no string shows as its type.
Cases cells(vtkTable& table)
{
    Cases rows;
    for (vtkIdType row = 0; row < table.GetNumberOfRows(); ++row) {
        rows.emplace_back();
        for (vtkIdType column = 0; column < table.GetNumberOfColumns(); ++column) {
            const vtkVariant cell = table.GetValue(row, column);
            rows.back().push_back(cell.GetType() == VTK_STRING
                                      ? std::string(cell.ToString())
                                      : "type " + std::to_string(cell.GetType()));
        }
    }
    return rows;
}

/// One column of one pattern, given a case for each text.
Texts columnOf(MetadataPattern::ValueType valueType, const Texts& texts)
{
    Cases cases;
    for (const std::string& text : texts)
        cases.push_back({text});
    const vtkSmartPointer<vtkTable> table = extractTable({{"T", valueType}}, cases);
    Texts column;
    for (const Texts& row : cells(*table))
        column.push_back(row.at(0));
    return column;
}

} // namespace

TEST(MetadataFileCrawlerExtract, RefusesToWorkWithoutAFolderAndLeavesTheContextUntouched)
{
    const ParserRecordPtr parser = std::make_shared<ParserRecord>();
    const auto importer = makeImporter(parser);
    importer->setAuxFilesToLoad(boost::make_shared<EmptyCollection>());
    RecordingContext context;

    try {
        importer->extract(context);
        ADD_FAILURE() << "nothing was thrown";
    } catch (const ortelo::ExceptionBase& exception) {
        EXPECT_STREQ("Folder name not specified.", exception.what());
        EXPECT_FALSE(exception.flag());
    }
    EXPECT_EQ(Calls{}, context.log.calls());
    EXPECT_EQ(Calls{}, parser->log->calls());
}

TEST(MetadataFileCrawlerExtract, RefusesToWorkWhenTheOnlyResultWasRefused)
{
    const FileSystem disk;
    const auto root = disk.directory("/r");
    root->present = false;
    const auto importer = makeImporter(std::make_shared<ParserRecord>());
    EXPECT_THROW(importer->setCrawlResult(crawlResult(root)), ortelo::ExceptionBase);
    RecordingContext context;

    EXPECT_THROW(importer->extract(context), ortelo::ExceptionBase);
    EXPECT_EQ(Calls{}, context.log.calls());
}

TEST(MetadataFileCrawlerExtract, GivesAnEmptyTableThenTheAuxFilesWhenThereIsNoCase)
{
    const Arrangement given({{"T", Number}, {"P", String}}, {});
    const auto auxFiles = boost::make_shared<EmptyCollection>();
    given.importer->setAuxFilesToLoad(auxFiles);
    RecordingContext context;

    given.importer->extract(context);

    EXPECT_EQ((Calls{"setMetadataTable", "setAuxFiles"}), context.log.calls());
    ASSERT_TRUE(context.table);
    EXPECT_EQ(0, context.table->GetNumberOfColumns());
    EXPECT_EQ(0, context.table->GetNumberOfRows());
    EXPECT_EQ(auxFiles, context.auxFiles);
    EXPECT_EQ((Calls{"numDefinedCases()"}), given.parserCalls());
}

TEST(MetadataFileCrawlerExtract, GivesATableWithoutColumnsForAnEmptyPatternList)
{
    const vtkSmartPointer<vtkTable> table = extractTable({}, {{}, {}});

    ASSERT_TRUE(table);
    EXPECT_EQ(0, table->GetNumberOfColumns());
}

TEST(MetadataFileCrawlerExtract, GivesAnEmptyPointerWhenNoAuxFilesWereChosen)
{
    const Arrangement given({{"T", Number}}, {{"1"}});
    RecordingContext context;
    context.auxFiles = boost::make_shared<EmptyCollection>();

    given.importer->extract(context);

    EXPECT_EQ((Calls{"setMetadataTable", "setAuxFiles"}), context.log.calls());
    EXPECT_FALSE(context.auxFiles);
}

TEST(MetadataFileCrawlerExtract, AsksTheParserForTheCountAndTheValuesInAFixedOrder)
{
    const Arrangement given({{"T", Number}, {"P", String}}, {{"1", "a"}, {"2", "b"}});
    RecordingContext context;

    given.importer->extract(context);

    const std::string count = "numDefinedCases()";
    const Calls expected{count,
                         count,
                         count,
                         count,
                         "caseMetadataSValue(0,0)",
                         "caseMetadataSValue(0,1)",
                         count,
                         "caseMetadataSValue(1,0)",
                         "caseMetadataSValue(1,1)",
                         count};
    EXPECT_EQ(expected, given.parserCalls());
}

TEST(MetadataFileCrawlerExtract, StopsTheRowsWhenTheParserNoLongerHasThem)
{
    const Arrangement given({{"T", String}}, {{"a"}, {"b"}, {"c"}});
    given.parser->hook = [&](const std::string& call) {
        if (call == "caseMetadataSValue(1,0)")
            given.parser->cases.resize(2);
    };
    RecordingContext context;

    given.importer->extract(context);

    const std::string count = "numDefinedCases()";
    EXPECT_EQ((Calls{count, count, count, "caseMetadataSValue(0,0)", count,
                     "caseMetadataSValue(1,0)", count}),
              given.parserCalls());
}

/// Keeps the toolkit's own complaints off standard error until the end of the scope.
struct WithoutToolkitWarnings {
    WithoutToolkitWarnings() { vtkObject::GlobalWarningDisplayOff(); }
    ~WithoutToolkitWarnings() { vtkObject::GlobalWarningDisplayOn(); }
    WithoutToolkitWarnings(const WithoutToolkitWarnings&) = delete;
    WithoutToolkitWarnings& operator=(const WithoutToolkitWarnings&) = delete;
};

TEST(MetadataFileCrawlerExtract, FillsTheColumnsThatTheTableTookWhenItRefusedOne)
{
    const WithoutToolkitWarnings quiet;
    const Cases cases = {{"a", "1", "x"}, {"b", "2", "y"}, {"c", "3", "z"}};
    // The column whose count differs from those of the others.
    for (const int refused : {1, 2}) {
        for (const std::size_t otherCount : {2U, 4U}) {
            SCOPED_TRACE(testing::Message() << refused << " " << otherCount);
            const Arrangement given({{"A", String}, {"B", Number}, {"C", String}}, cases);
            int counts = 0;
            given.parser->hook = [&](const std::string& call) {
                if (call == "numDefinedCases()") {
                    const bool differs = ++counts == refused + 2;
                    given.parser->cases = cases;
                    given.parser->cases.resize(differs ? otherCount : cases.size());
                }
            };
            RecordingContext context;

            given.importer->extract(context);

            EXPECT_EQ((refused == 1 ? Texts{"A", "C"} : Texts{"A", "B"}),
                      columnNames(*context.table));
            EXPECT_EQ((Cases{{"a", "1"}, {"b", "2"}, {"c", "3"}}), cells(*context.table));
        }
    }
}

TEST(MetadataFileCrawlerExtract, HasNoRowForACaseThatComesAfterTheColumns)
{
    const Arrangement given({{"T", String}, {"P", Number}}, {{"a", "1"}, {"b", "2"}});
    given.parser->hook = [&](const std::string& call) {
        if (call == "caseMetadataSValue(0,0)")
            given.parser->cases.push_back({"c", "3"});
    };
    RecordingContext context;

    given.importer->extract(context);

    EXPECT_EQ((Cases{{"a", "1"}, {"b", "2"}}), cells(*context.table));
    EXPECT_EQ("caseMetadataSValue(2,1)", given.parserCalls().at(given.parserCalls().size() - 2));
}

TEST(MetadataFileCrawlerExtract, HasNoRowForACaseThatComesAfterARefusedColumn)
{
    const WithoutToolkitWarnings quiet;
    const Cases cases = {{"a", "x"}, {"b", "y"}, {"c", "z"}};
    const Arrangement given({{"A", String}, {"B", String}}, cases);
    int counts = 0;
    given.parser->hook = [&](const std::string& call) {
        if (call == "numDefinedCases()") {
            given.parser->cases = cases;
            given.parser->cases.resize(++counts == 2 ? 2 : 3);
        }
    };
    RecordingContext context;

    given.importer->extract(context);

    EXPECT_EQ((Texts{"A"}), columnNames(*context.table));
    EXPECT_EQ((Cases{{"a"}, {"b"}}), cells(*context.table));
}

TEST(MetadataFileCrawlerExtract, ChecksNumbersAlsoInAColumnThatWasMadeForText)
{
    const Arrangement given({{"T", String}, {"P", Number}}, {{"a", "1"}, {"2", "b"}});
    int counts = 0;
    given.parser->hook = [&](const std::string& call) {
        if (call == "numDefinedCases()" && ++counts == 2)
            given.importer->setMetadataPatternList({{"T", Number}, {"P", String}});
    };
    RecordingContext context;

    given.importer->extract(context);

    ASSERT_NE(nullptr, vtkStringArray::SafeDownCast(context.table->GetColumn(0)));
    ASSERT_NE(nullptr, vtkVariantArray::SafeDownCast(context.table->GetColumn(1)));
    EXPECT_EQ((Cases{{"NULL", "1"}, {"2", "b"}}), cells(*context.table));
}

TEST(MetadataFileCrawlerExtract, FillsItsRowsByThePatternsThatItHadWhenItBeganThem)
{
    const Arrangement given({{"T", Number}, {"P", String}}, {{"a", "b"}, {"1", "c"}});
    given.parser->hook = [&](const std::string& call) {
        if (call == "caseMetadataSValue(0,0)")
            given.importer->setMetadataPatternList({{"T", String}, {"P", Number}});
    };
    RecordingContext context;

    given.importer->extract(context);

    EXPECT_EQ((Cases{{"NULL", "b"}, {"1", "c"}}), cells(*context.table));
}

TEST(MetadataFileCrawlerExtract, PutsTheCasesInRowsAndThePatternsInColumns)
{
    const vtkSmartPointer<vtkTable> table =
        extractTable({{"T", Number}, {"P", String}, {"_", Unknown}},
                     {{"10", "a", "x"}, {"2", "b", "y"}, {"-3.5e2", "c", "z"}});

    EXPECT_EQ((Texts{"T", "P", "_"}), columnNames(*table));
    EXPECT_EQ((Cases{{"10", "a", "x"}, {"2", "b", "y"}, {"-3.5e2", "c", "z"}}), cells(*table));
}

TEST(MetadataFileCrawlerExtract, ChoosesTheArrayByTheKindOfValue)
{
    const vtkSmartPointer<vtkTable> table = extractTable(
        {{"s", String}, {"n", Number}, {"u", Unknown}}, {{"a", "1", "b"}, {"c", "2", "d"}});

    EXPECT_STREQ("vtkStringArray", table->GetColumn(0)->GetClassName());
    EXPECT_STREQ("vtkVariantArray", table->GetColumn(1)->GetClassName());
    EXPECT_STREQ("vtkVariantArray", table->GetColumn(2)->GetClassName());
    for (vtkIdType column = 0; column < 3; ++column) {
        EXPECT_EQ(1, table->GetColumn(column)->GetNumberOfComponents());
        EXPECT_EQ(2, table->GetColumn(column)->GetNumberOfTuples());
    }
}

TEST(MetadataFileCrawlerExtract, MakesColumnNamesUnique)
{
    struct Row {
        Texts markers;
        Texts names;
    };
    const Row rows[] = {
        {{"Date", "Date", "Date"}, {"Date", "Date(2)", "Date(3)"}},
        {{"Date", "Date(2)", "Date"}, {"Date", "Date(2)", "Date(3)"}},
        {{"Date(2)", "Date", "Date"}, {"Date(2)", "Date", "Date(3)"}},
        {{"Date", "Date", "Date(2)"}, {"Date", "Date(2)", "Date(2)(2)"}},
        {{"Date", "date", "DATE"}, {"Date", "date", "DATE"}},
        {{"a", "b", "a", "b", "a"}, {"a", "b", "a(2)", "b(2)", "a(3)"}},
        {{"%1%", "%1%", "100%"}, {"%1%", "%1%(2)", "100%"}},
        {{"", "", ""}, {"", "(2)", "(3)"}},
        {{"\xc3\xa4", "\xc3\xa4"}, {"\xc3\xa4", "\xc3\xa4(2)"}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(testing::PrintToString(row.markers));
        Patterns patterns;
        for (const std::string& marker : row.markers)
            patterns.emplace_back(marker, String);
        const vtkSmartPointer<vtkTable> table =
            extractTable(patterns, {Texts(row.markers.size(), "v")});
        EXPECT_EQ(row.names, columnNames(*table));
    }
}

TEST(MetadataFileCrawlerExtract, MakesNamesUniqueAsFarAsTheyReach)
{
    const std::string withNul("Date\0x", 6);

    EXPECT_EQ((Texts{"Date", "Date(2)", "Date(3)"}),
              columnNames(*extractTable({{"Date", String}, {withNul, String}, {withNul, Number}},
                                        {{"a", "b", "1"}})));
}

TEST(MetadataFileCrawlerExtract, RefusesNumbersWithMoreBehindANul)
{
    const Texts texts = {std::string("5\0", 2), std::string("5\0x", 3), std::string("\0", 1),
                         std::string("1e5\0", 4)};

    EXPECT_EQ(Texts(texts.size(), "NULL"), columnOf(Number, texts));
}

TEST(MetadataFileCrawlerExtract, CountsANamesRepetitionsPastTen)
{
    const vtkSmartPointer<vtkTable> table =
        extractTable(Patterns(12, MetadataPattern("T", Number)), {Texts(12, "1")});

    EXPECT_STREQ("T(9)", table->GetColumnName(8));
    EXPECT_STREQ("T(12)", table->GetColumnName(11));
}

TEST(MetadataFileCrawlerExtract, ShowsANumberThatDoesNotConvertAsNull)
{
    EXPECT_EQ((Texts{"12.5", "1e5", "nan", "NULL", "NULL", "NULL"}),
              columnOf(Number, {"12.5", "1e5", "nan", "abc", "1e", ""}));
}

TEST(MetadataFileCrawlerExtract, KeepsEveryTextOfAnyOtherKindAsItStands)
{
    const Texts texts{"", "NULL", "abc", "1e", "12.5", " a b ", "\xff\xfe", "\xe6\x97\xa5", "NaN"};

    EXPECT_EQ(texts, columnOf(String, texts));
    EXPECT_EQ(texts, columnOf(Unknown, texts));
}

TEST(MetadataFileCrawlerExtract, EndsAnyOtherTextAtANul)
{
    const Texts texts = {std::string("a\0b", 3), std::string("\0", 1), "c"};
    const Texts ended = {"a", "", "c"};

    EXPECT_EQ(ended, columnOf(String, texts));
    EXPECT_EQ(ended, columnOf(Unknown, texts));
}

TEST(MetadataFileCrawlerExtract, EndsATextAtANulAlsoWhenTheTableRefusedAColumn)
{
    const WithoutToolkitWarnings quiet;
    const Cases cases = {{std::string("a\0b", 3), "x"}, {"c", "y"}};
    const Arrangement given({{"A", String}, {"B", String}}, cases);
    int counts = 0;
    given.parser->hook = [&](const std::string& call) {
        if (call == "numDefinedCases()") {
            given.parser->cases = cases;
            given.parser->cases.resize(++counts == 3 ? 1 : 2);
        }
    };
    RecordingContext context;

    given.importer->extract(context);

    EXPECT_EQ((Texts{"A"}), columnNames(*context.table));
    EXPECT_EQ((Cases{{"a"}, {"c"}}), cells(*context.table));
}

TEST(MetadataFileCrawlerExtract, AcceptsTheNumbersThatLexicalCastAcceptsAndKeepsTheirText)
{
    const Texts texts{"0",
                      "-0",
                      "+5",
                      "5.",
                      ".5",
                      ".",
                      "-.5",
                      "+.",
                      "-",
                      "+",
                      "",
                      " ",
                      " 1",
                      "1 ",
                      "1 2",
                      "1\n",
                      "00012",
                      "1,5",
                      "12.5",
                      "1e5",
                      "1E5",
                      "1e",
                      "1E",
                      "1e+",
                      "1e-",
                      "1e+5",
                      "1e-05",
                      "1.e5",
                      ".5e1",
                      ".e1",
                      "e5",
                      "1D5",
                      "1d5",
                      "1D+07",
                      "0x10",
                      "0x1p3",
                      "1f",
                      "1.0f",
                      "1L",
                      "1..2",
                      "1.2.3",
                      "--1",
                      "+-1",
                      "1-",
                      "1e5.5",
                      "nan",
                      "NaN",
                      "NAN",
                      "-nan",
                      "+nan",
                      "nan(1)",
                      "nan()",
                      "nanx",
                      "na",
                      "inf",
                      "Inf",
                      "INF",
                      "-inf",
                      "+inf",
                      "infinity",
                      "INFINITY",
                      "Infinity",
                      "-infinity",
                      "infi",
                      "infx",
                      "1e400",
                      "-1e400",
                      "1e-400",
                      "1e308",
                      "1e309",
                      "4.9e-324",
                      "1.#QNAN",
                      "NULL",
                      "abc",
                      "1abc",
                      "\xd9\xa1",
                      "1_000",
                      "123456789012345678901234567890",
                      "0.1234567890123456789012345678901234567890"};
    Texts expected;
    for (const std::string& text : texts) {
        try {
            boost::lexical_cast<double>(text);
            expected.push_back(text);
        } catch (const boost::bad_lexical_cast&) {
            expected.emplace_back("NULL");
        }
    }

    const Texts column = columnOf(Number, texts);

    ASSERT_EQ(texts.size(), column.size());
    for (std::size_t i = 0; i < texts.size(); ++i)
        EXPECT_EQ(expected[i], column[i]) << "for the text \"" << texts[i] << "\"";
}

TEST(MetadataFileCrawlerExtract, AgreesWithLexicalCastOnRandomNumberTexts)
{
    const std::string alphabet = "0159+-..eEdDxnainfty \t";
    for (unsigned seed = 1; seed <= 20; ++seed) {
        std::mt19937 random(seed);
        Texts texts;
        Texts expected;
        for (int i = 0; i < 200; ++i) {
            std::string text;
            for (auto length = random() % 6; length > 0; --length)
                text += alphabet[random() % alphabet.size()];
            double number = 0;
            texts.push_back(text);
            expected.push_back(boost::conversion::try_lexical_convert(text, number) ? text
                                                                                    : "NULL");
        }
        SCOPED_TRACE("seed " + std::to_string(seed) + " " + testing::PrintToString(texts));

        ASSERT_EQ(expected, columnOf(Number, texts));
    }
}

/// Every text of up to `length` letters of `alphabet`.
Texts allTexts(const std::string& alphabet, std::size_t length)
{
    Texts texts = {""};
    std::size_t shorter = 0;
    for (std::size_t i = 0; i < length; ++i) {
        const std::size_t end = texts.size();
        for (; shorter < end; ++shorter) {
            for (const char letter : alphabet)
                texts.push_back(texts[shorter] + letter);
        }
    }
    return texts;
}

/// The cells that the definition gives for number texts, and how many of them are kept.
Texts cellsByLexicalCast(const Texts& texts, std::size_t& kept)
{
    Texts cells;
    for (const std::string& text : texts) {
        double number = 0;
        const bool converts = boost::conversion::try_lexical_convert(text, number);
        kept += converts ? 1 : 0;
        cells.push_back(converts ? text : "NULL");
    }
    return cells;
}

TEST(MetadataFileCrawlerExtract, AgreesWithLexicalCastOnAllShortNumberTexts)
{
    const Texts texts = allTexts("019+-.eEDnaifx", 4);
    std::size_t kept = 0;
    const Texts expected = cellsByLexicalCast(texts, kept);

    const Texts column = columnOf(Number, texts);

    ASSERT_EQ(41371u, texts.size());
    ASSERT_GT(kept, 500u);
    for (std::size_t i = 0; i < texts.size(); ++i)
        ASSERT_EQ(expected[i], column[i]) << "for the text \"" << texts[i] << "\"";
}

TEST(MetadataFileCrawlerExtract, AgreesWithLexicalCastOnLongDigitStringsAndLargeExponents)
{
    Texts texts;
    for (const std::size_t length : {1,   15,  30,  59,  60,  61,  62,  63,  64,  65,  66,
                                     150, 200, 208, 209, 210, 211, 250, 300, 308, 309, 400}) {
        for (const char* const sign : {"", "-", "+"}) {
            for (const std::string& digits :
                 {std::string(length, '9'), std::string(length, '0'),
                  "1" + std::string(length - 1, '0'), "0." + std::string(length, '0') + "1",
                  std::string(length, '9') + ".", std::string(length, '1') + "." + "5"}) {
                for (const char* const exponent : {"",      "e",           "e5",
                                                   "E+05",  "e-5",         "e99",
                                                   "e-99",  "e100",        "e-100",
                                                   "e245",  "e250",        "e307",
                                                   "e308",  "e309",        "e-307",
                                                   "e-308", "e-323",       "e-324",
                                                   "e-400", "e0000000099", "e99999999999999999999",
                                                   "D5"})
                    texts.push_back(sign + digits + exponent);
            }
        }
    }
    std::size_t kept = 0;
    const Texts expected = cellsByLexicalCast(texts, kept);

    const Texts column = columnOf(Number, texts);

    ASSERT_GT(kept, texts.size() / 3);
    ASSERT_LT(kept, texts.size());
    for (std::size_t i = 0; i < texts.size(); ++i)
        ASSERT_EQ(expected[i], column[i]) << "for the text \"" << texts[i] << "\"";
}

/// A host that writes numbers with a decimal comma everywhere, until the end of the scope.
class GlobalDecimalComma {
public:
    GlobalDecimalComma()
        : previous_(std::locale::global(std::locale(std::locale::classic(), new Comma)))
    {
    }
    ~GlobalDecimalComma() { std::locale::global(previous_); }
    GlobalDecimalComma(const GlobalDecimalComma&) = delete;
    GlobalDecimalComma& operator=(const GlobalDecimalComma&) = delete;

private:
    struct Comma : std::numpunct<char> {
        char do_decimal_point() const override { return ','; }
    };

    std::locale previous_;
};

TEST(MetadataFileCrawlerExtract, AgreesWithLexicalCastUnderTheGlobalLocaleOfItsHost)
{
    const Texts texts = allTexts("15.,e-", 4);
    std::size_t kept = 0;
    const GlobalDecimalComma host;
    const Texts expected = cellsByLexicalCast(texts, kept);

    const Texts column = columnOf(Number, texts);

    EXPECT_EQ((Texts{"1,5", "NULL"}), columnOf(Number, {"1,5", "1.5"}));
    ASSERT_GT(kept, 100u);
    for (std::size_t i = 0; i < texts.size(); ++i)
        ASSERT_EQ(expected[i], column[i]) << "for the text \"" << texts[i] << "\"";
}

TEST(MetadataFileCrawlerExtract, GivesTwoDistinctTablesOfTheSameContentForTwoCalls)
{
    const Arrangement given({{"T", Number}, {"T", String}}, {{"1", "a"}, {"x", "b"}});
    RecordingContext first;
    RecordingContext second;

    given.importer->extract(first);
    given.importer->extract(second);

    EXPECT_NE(first.table, second.table);
    EXPECT_EQ((Cases{{"1", "a"}, {"NULL", "b"}}), cells(*first.table));
    EXPECT_EQ(cells(*first.table), cells(*second.table));
    EXPECT_EQ(columnNames(*first.table), columnNames(*second.table));
    EXPECT_NE(first.table->GetColumn(0), second.table->GetColumn(0));
}

TEST(MetadataFileCrawlerExtract, GivesTheSameAuxFilesInEveryCall)
{
    const Arrangement given({{"T", Number}}, {{"1"}});
    const auto auxFiles = boost::make_shared<EmptyCollection>();
    given.importer->setAuxFilesToLoad(auxFiles);

    for (int call = 0; call < 2; ++call) {
        RecordingContext context;
        given.importer->extract(context);
        EXPECT_EQ(auxFiles, context.auxFiles) << call;
    }
}

TEST(MetadataFileCrawlerExtract, LeavesTheTableToTheContextAlone)
{
    Arrangement given({{"T", Number}, {"P", String}}, {{"1", "a"}});
    RecordingContext context;

    given.importer->extract(context);
    EXPECT_EQ(1, context.table->GetReferenceCount());
    EXPECT_EQ(1, context.table->GetColumn(0)->GetReferenceCount());
    EXPECT_EQ(1, context.table->GetColumn(1)->GetReferenceCount());

    given.importer.reset();
    EXPECT_EQ((Texts{"T", "P"}), columnNames(*context.table));
    EXPECT_EQ((Cases{{"1", "a"}}), cells(*context.table));
}

TEST(MetadataFileCrawlerExtract, LeavesTheContextUntouchedWhenTheParserFails)
{
    // The calls are the count, one count for the column, and count and value for each row.
    for (int failing = 1; failing <= 7; ++failing) {
        SCOPED_TRACE("call " + std::to_string(failing));
        const Arrangement given({{"T", String}}, {{"a"}, {"b"}});
        int calls = 0;
        given.parser->hook = [&](const std::string& call) {
            if (++calls == failing)
                throw std::out_of_range(call);
        };
        RecordingContext context;

        EXPECT_THROW(given.importer->extract(context), std::out_of_range);

        EXPECT_EQ(failing, calls);
        EXPECT_EQ(Calls{}, context.log.calls());
    }
}

TEST(MetadataFileCrawlerExtract, LetsTheContextKeepItsTableWhenItRefusesTheAuxFiles)
{
    struct RefusingContext : RecordingContext {
        void setAuxFiles(const boost::shared_ptr<AuxFileCollectionInterface>&) override
        {
            throw ortelo::ExceptionBase("no room", true);
        }
    };
    const Arrangement given({{"T", String}}, {{"a"}});
    RefusingContext context;

    EXPECT_THROW(given.importer->extract(context), ortelo::ExceptionBase);

    ASSERT_TRUE(context.table);
    EXPECT_EQ((Cases{{"a"}}), cells(*context.table));
    EXPECT_EQ(1, context.table->GetReferenceCount());
}

TEST(MetadataFileCrawlerExtract, HandsOnTheParsersMetadataInfos)
{
    const Arrangement given({}, {});
    MetadataInfo info;
    info.patternPosition = 5;
    info.valuePosition = 6;
    info.valueLength = 2;
    info.value = "20";
    given.parser->infos = {info, MetadataInfo()};

    const std::vector<MetadataInfo> infos = given.importer->metadataInfoList("data/T20/x.dat");

    EXPECT_EQ((Calls{"metadataInfoList(data/T20/x.dat)"}), given.parserCalls());
    ASSERT_EQ(2U, infos.size());
    EXPECT_EQ(5U, infos[0].patternPosition);
    EXPECT_EQ(6U, infos[0].valuePosition);
    EXPECT_EQ(2U, infos[0].valueLength);
    EXPECT_EQ("20", infos[0].value);
    EXPECT_EQ("", infos[1].value);
}

TEST(MetadataFileCrawlerExtract, AnswersMetadataInfosWithoutAFolder)
{
    const ParserRecordPtr parser = std::make_shared<ParserRecord>();
    const auto importer = makeImporter(parser);

    EXPECT_TRUE(importer->metadataInfoList("x").empty());
    EXPECT_EQ((Calls{"metadataInfoList(x)"}), parser->log->calls());
}

TEST(MetadataFileCrawlerExtract, BuildsRandomTablesAsTheRulesSay)
{
    const Texts markers{"Date", "Date(2)", "Date(3)", "T", "Date(2)(2)"};
    const Texts values{"1", "2.5", "x", "", "nan", "1e", "NULL"};
    for (unsigned seed = 1; seed <= 200; ++seed) {
        std::mt19937 random(seed);
        Patterns patterns;
        Texts names;
        std::set<std::string> taken;
        for (auto count = random() % 7; count > 0; --count) {
            const std::string& marker = markers[random() % markers.size()];
            const MetadataPattern::ValueType types[] = {String, Number, Unknown};
            patterns.emplace_back(marker, types[random() % 3]);
            std::string name = marker;
            for (int suffix = 2; !taken.insert(name).second; ++suffix)
                name = marker + "(" + std::to_string(suffix) + ")";
            names.push_back(name);
        }
        Cases cases(1 + random() % 5);
        Cases expected(patterns.empty() ? 0 : cases.size());
        for (std::size_t row = 0; row < cases.size(); ++row)
            for (const MetadataPattern& pattern : patterns) {
                const std::string& value = values[random() % values.size()];
                double number = 0;
                const bool isNull = pattern.valueType == Number &&
                                    !boost::conversion::try_lexical_convert(value, number);
                cases[row].push_back(value);
                expected[row].push_back(isNull ? "NULL" : value);
            }
        SCOPED_TRACE("seed " + std::to_string(seed) + " " + testing::PrintToString(names) + " " +
                     testing::PrintToString(cases));

        const vtkSmartPointer<vtkTable> table = extractTable(patterns, cases);

        ASSERT_EQ(names, columnNames(*table));
        ASSERT_EQ(expected, cells(*table));
    }
}
