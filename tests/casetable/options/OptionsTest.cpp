#include "casetable/options/Options.h"

#include <algorithm>
#include <cstring>
#include <numeric>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "casetable/importing/CaseTable.h"
#include "casetable/importing/Report.h"
#include "casetable/system/ExitCode.h"
#include "tests/casetable/support/TemporaryTree.h"

namespace casetable {
namespace tests {

namespace {

std::optional<Options> parse(std::vector<const char*> arguments)
{
    arguments.insert(arguments.begin(), "casetable");
    return parseOptions(static_cast<int>(arguments.size()), arguments.data());
}

std::optional<Options> parseTexts(const std::vector<std::string>& arguments)
{
    std::vector<const char*> texts;
    for (const std::string& argument : arguments)
        texts.push_back(argument.c_str());
    return parse(texts);
}

// All that options hold, as texts that can be compared.
std::vector<std::string> parts(const Options& options)
{
    const Source& source = options.source;
    std::vector<std::string> texts = {
        "mode " + std::to_string(static_cast<int>(options.mode)),
        "root " + source.root,
        source.list ? "list " + *source.list : "no list",
        source.nullSeparated ? "NULs" : "lines",
        source.selection.hidden ? "hidden" : "not hidden",
        "depth " + std::to_string(source.selection.maxDepth),
        source.follow ? "follow" : "stay",
        source.keepGoing ? "keep going" : "stop",
        options.format == nullptr ? "no format" : std::string("format ") + options.format->name,
        options.output ? "output " + *options.output : "standard output",
        "rows " + std::to_string(static_cast<int>(options.rows)),
        "explained " + options.explained,
        options.quiet ? "quiet" : "not quiet",
        "jobs " + std::to_string(options.jobs.value_or(0))};
    for (const Glob& glob : source.selection.excluded)
        texts.push_back("exclude " + glob.text());
    for (const MetadataPattern& pattern : options.reading.patterns())
        texts.push_back("pattern " + std::to_string(static_cast<int>(pattern.valueType)) + ' ' +
                        pattern.pattern);
    if (options.reading.templates()) {
        for (const Template& each : options.reading.templates()->templates())
            texts.push_back("template " + each.text());
    }
    for (const AuxFileIdentifier& identifier : options.identifiers)
        texts.push_back("syntax " + identifier.syntaxName + " tag " + identifier.tag);
    for (const std::size_t column : options.missingColumns)
        texts.push_back("missing " + std::to_string(column));
    for (const SortKey& key : options.sortKeys)
        texts.push_back((key.isDescending ? "descending " : "ascending ") +
                        std::to_string(key.column));
    return texts;
}

// Options that a command line may mean.
class RandomOptions {
public:
    Options next()
    {
        Options options;
        options.mode = static_cast<Mode>(below(3));
        Source& source = options.source;
        source.selection.hidden = false;
        if (options.mode != Mode::Explain && below(3) == 0) {
            source.list = text();
            source.nullSeparated = oneOfTwo();
        } else {
            if (options.mode != Mode::Explain || oneOfTwo())
                source.root = text();
            source.follow = oneOfTwo();
            source.keepGoing = oneOfTwo();
        }
        source.selection.hidden = source.list || oneOfTwo();
        if (oneOfTwo())
            source.selection.maxDepth = 1 + below(9);
        for (std::size_t k = below(3); k > 0; --k)
            source.selection.excluded.emplace_back("x/" + text() + "x");
        options.quiet = oneOfTwo();
        if (oneOfTwo())
            options.jobs = 1 + below(9);
        if (oneOfTwo())
            options.output = text() + (oneOfTwo() ? ".json" : "x");
        if (options.mode == Mode::Table && oneOfTwo())
            options.format = &formats()[below(formats().size())];
        else if (options.output)
            options.format = formatOfEnding(*options.output);
        if (options.format != nullptr && options.format->isDatabase() && !options.output)
            options.output = text() + "x";
        if (options.mode == Mode::Suggest)
            return options;

        options.reading = oneOfTwo() ? Reading(markers()) : Reading(TemplateList(templates()));
        if (options.mode == Mode::Explain) {
            options.explained = explained(source.root);
            return options;
        }
        options.rows = static_cast<Rows>(below(4));
        const bool isDatabase = options.format != nullptr && options.format->isDatabase();
        if (options.rows == Rows::Missing && isDatabase)
            options.rows = Rows::Cases;
        if (options.rows == Rows::Missing)
            chooseMissing(options);
        const bool hasTags = options.rows == Rows::Cases || options.rows == Rows::Files;
        for (std::size_t k = below(3); k > 0 && hasTags; --k)
            options.identifiers.push_back({text(), "tag"});
        if (options.rows != Rows::Unmatched && !isDatabase)
            chooseKeys(options);
        return options;
    }

private:
    std::size_t below(std::size_t end) { return generator_() % end; }
    bool oneOfTwo() { return below(2) == 0; }

    std::vector<MetadataPattern> markers()
    {
        std::vector<MetadataPattern> markers;
        for (std::size_t k = 1 + below(3); k > 0; --k)
            markers.emplace_back(text(), oneOfTwo() ? MetadataPattern::NumberValue
                                                    : MetadataPattern::StringValue);
        return markers;
    }

    // All columns in a random order; without two of them, cases instead.
    void chooseMissing(Options& options)
    {
        const std::size_t count = options.reading.patterns().size();
        if (count < 2) {
            options.rows = Rows::Cases;
            return;
        }
        options.missingColumns.resize(count);
        std::iota(options.missingColumns.begin(), options.missingColumns.end(), std::size_t{0});
        std::shuffle(options.missingColumns.begin(), options.missingColumns.end(), generator_);
    }

    void chooseKeys(Options& options)
    {
        const std::vector<MetadataPattern>& patterns = options.reading.patterns();
        const std::vector<std::string> tags = tagsOf(options.identifiers);
        const std::vector<std::string> header =
            uniqueHeader(options.rows == Rows::Files ? fileColumns(patterns, tags)
                                                     : caseColumns(patterns, tags));
        for (std::size_t k = below(4); k > 0; --k) {
            const std::size_t column = below(header.size());
            // In the table of cases, of which the missing have a part, "case" stands in front.
            const bool isMissing = options.rows == Rows::Missing;
            if (isMissing && column >= options.missingColumns.size())
                continue;
            const std::string& name =
                header[isMissing ? options.missingColumns[column] + 1 : column];
            // A column of the name with a dash in front takes the place of a descending one.
            const bool isTaken =
                std::find(header.begin(), header.end(), '-' + name) != header.end();
            options.sortKeys.push_back({column, !isTaken && oneOfTwo()});
        }
    }

    // With text of any bytes around a column, and often a beginning that might mean something else.
    std::vector<std::string> templates()
    {
        static const std::vector<std::string> beginnings = {"",  "@",  "@@", "#",
                                                            "-", "--", " ",  "="};
        std::vector<std::string> templates(1 + below(3));
        for (std::string& text : templates) {
            text = beginnings[below(beginnings.size())];
            for (std::size_t k = below(4); k > 0; --k)
                text += escaped(static_cast<char>(1 + below(255)));
            text += "{column}";
            for (std::size_t k = below(4); k > 0; --k)
                text += escaped(static_cast<char>(1 + below(255)));
        }
        return templates;
    }

    static std::string escaped(char byte)
    {
        const bool isSpecial = std::string("\\*?[]{}").find(byte) != std::string::npos;
        return (isSpecial ? "\\" : "") + std::string(1, byte);
    }

    // As a command line with that root gives it: often it begins with the root once more.
    std::string explained(const std::string& root)
    {
        std::string path = text();
        for (std::size_t k = below(3); k > 0; --k)
            path.insert(0, root + '/');
        if (root.empty())
            return path;
        return parseTexts({"-nT", "--explain", path, "--", root})->explained;
    }

    // Not empty, no glob of its own, and often like an option.
    std::string text()
    {
        static const std::vector<std::string> pieces = {
            "-", "--", "a", "b/a", ".", " ", "=", "\n", "n", "T", "\xff", "'", "--files", "*"};
        std::string text;
        for (std::size_t k = 1 + below(3); k > 0; --k)
            text += pieces[below(pieces.size())];
        return text == "-" ? "-x" : text; // As an output, "-" is none.
    }

    std::mt19937 generator_{20240607};
};

} // namespace

TEST(Options, HaveDefaults)
{
    const std::optional<Options> options = parse({"-n", "T", "root"});

    ASSERT_TRUE(options);
    EXPECT_EQ(options->source.root, "root");
    EXPECT_TRUE(options->identifiers.empty());
    EXPECT_EQ(options->format, nullptr);
    EXPECT_FALSE(options->output);
    EXPECT_EQ(options->rows, Rows::Cases);
    EXPECT_FALSE(options->source.keepGoing);
    EXPECT_FALSE(options->source.follow);
    EXPECT_FALSE(options->quiet);
    EXPECT_EQ(options->mode, Mode::Table);
    EXPECT_EQ(options->explained, "");
    EXPECT_FALSE(options->source.list);
    EXPECT_FALSE(options->source.nullSeparated);
    EXPECT_FALSE(options->source.selection.hidden);
    EXPECT_TRUE(options->source.selection.excluded.empty());
    EXPECT_EQ(options->source.selection.maxDepth, Selection().maxDepth);
}

TEST(Options, KeepTheOrderOfMarkersAndIdentifiers)
{
    const std::optional<Options> options =
        parse({"-s", "a", "-a", "*.x=X", "--number=b", "-s", "c", "--aux", "k=v=Y", "root", "-nd"});

    ASSERT_TRUE(options);
    ASSERT_EQ(options->reading.patterns().size(), 4u);
    const std::vector<std::string> markers = {"a", "b", "c", "d"};
    for (std::size_t k = 0; k < markers.size(); ++k) {
        EXPECT_EQ(options->reading.patterns()[k].pattern, markers[k]);
        EXPECT_EQ(options->reading.patterns()[k].valueType,
                  k % 2 == 0 ? MetadataPattern::StringValue : MetadataPattern::NumberValue);
    }
    ASSERT_EQ(options->identifiers.size(), 2u);
    EXPECT_EQ(options->identifiers[0].syntaxName, "*.x");
    EXPECT_EQ(options->identifiers[0].tag, "X");
    EXPECT_EQ(options->identifiers[1].syntaxName, "k=v");
    EXPECT_EQ(options->identifiers[1].tag, "Y");
}

TEST(Options, KnowShortAndLongNames)
{
    for (const std::vector<const char*>& arguments :
         {std::vector<const char*>{"-s", "m", "-f", "json", "-o", "file", "-L", "-q", "root"},
          std::vector<const char*>{"--string", "m", "--format", "json", "--output", "file",
                                   "--follow", "--quiet", "root"},
          std::vector<const char*>{"-qLsm", "-fjson", "--output=file", "--", "root"}}) {
        const std::optional<Options> options = parse(arguments);
        ASSERT_TRUE(options);
        EXPECT_EQ(options->reading.patterns().at(0).pattern, "m");
        EXPECT_EQ(options->format, formatNamed("json"));
        EXPECT_EQ(options->output, std::string("file"));
        EXPECT_TRUE(options->source.follow);
        EXPECT_TRUE(options->quiet);
        EXPECT_EQ(options->source.root, "root");
    }
}

TEST(Options, AskForMarkersToBeSuggested)
{
    const std::optional<Options> options = parse({"--suggest", "-Lq", "-d2", "root"});

    ASSERT_TRUE(options);
    EXPECT_EQ(options->mode, Mode::Suggest);
    EXPECT_EQ(options->source.root, "root");
    EXPECT_EQ(options->source.selection.maxDepth, 2u);
    EXPECT_TRUE(options->source.follow);
    EXPECT_TRUE(options->quiet);
    EXPECT_TRUE(options->reading.patterns().empty());
    EXPECT_EQ(parse({"--suggest", "--from-list", "-"})->source.list, std::string("-"));
}

TEST(Options, ChooseTheRows)
{
    EXPECT_EQ(parse({"-n", "T", "--files", "root"})->rows, Rows::Files);
    EXPECT_EQ(parse({"-n", "T", "--unmatched", "root"})->rows, Rows::Unmatched);
    EXPECT_TRUE(parse({"-n", "T", "--keep-going", "root"})->source.keepGoing);
}

TEST(Options, ChooseTheFormat)
{
    EXPECT_EQ(parse({"-n", "T", "-f", "auto", "root"})->format, nullptr);
    EXPECT_EQ(parse({"-n", "T", "-f", "table", "root"})->format, formatNamed("table"));
    EXPECT_EQ(parse({"-n", "T", "-f", "csv", "root"})->format, formatNamed("csv"));
    EXPECT_EQ(parse({"-n", "T", "-f", "tsv", "root"})->format, formatNamed("tsv"));
    EXPECT_EQ(parse({"-n", "T", "-f", "json", "root"})->format, formatNamed("json"));
    EXPECT_EQ(parse({"-n", "T", "-f", "vtt", "root"})->format, formatNamed("vtt"));
}

TEST(Options, GuessTheFormatFromTheEndingOfTheOutput)
{
    struct Row {
        const char* output;
        const char* format; // Null where the ending says nothing.
    };
    for (const Row& row :
         {Row{"a.csv", "csv"}, Row{"a.tsv", "tsv"}, Row{"a.json", "json"}, Row{"a.vtt", "vtt"},
          Row{"a.txt", "table"}, Row{"a.VtT", "vtt"}, Row{"A.JSON", "json"},
          Row{"a.csv.tsv", "tsv"}, Row{"b/.csv", "csv"}, Row{"a", nullptr}, Row{"csv", nullptr},
          Row{"a.csv/b", nullptr}, Row{"a.csv.gz", nullptr}, Row{"a.", nullptr},
          Row{"a.csv ", nullptr}, Row{"a.c\xc3\x9fv", nullptr}, Row{"-", nullptr}}) {
        SCOPED_TRACE(row.output);
        const Format* const format = row.format == nullptr ? nullptr : formatNamed(row.format);
        EXPECT_EQ(parse({"-n", "T", "-o", row.output, "root"})->format, format);
        EXPECT_EQ(parse({"-n", "T", "-o", row.output, "-f", "auto", "root"})->format, format);
        EXPECT_EQ(parse({"-n", "T", "-f", "json", "-o", row.output, "root"})->format,
                  formatNamed("json"));
    }
}

TEST(Options, TakeADatabaseOnlyOfAllCasesInNoOrder)
{
    struct Row {
        const char* option;
        const char* value;
        const char* message;
    };
    for (const Row& row :
         {Row{"--sort", "T",
              "--sort: a.db is a database, whose rows have no order; its queries have ORDER BY"},
          Row{"--missing", "T,P",
              "--missing: a.db is a database, which holds all cases; write a table"}}) {
        try {
            parse({"-n", "T", "-n", "P", row.option, row.value, "-o", "a.db", "root"});
            ADD_FAILURE() << "no failure";
        } catch (const Failure& failure) {
            EXPECT_EQ(failure.code, ExitCode::WrongUsage);
            EXPECT_STREQ(failure.what(), row.message);
        }
    }
}

TEST(Options, TakeADatabaseOnlyWithAFile)
{
    EXPECT_EQ(parse({"-n", "T", "-o", "a.db", "root"})->format, formatNamed("sqlite"));
    EXPECT_EQ(parse({"-n", "T", "-f", "sqlite", "-o", "a", "root"})->format, formatNamed("sqlite"));
    for (const std::vector<const char*>& arguments :
         {std::vector<const char*>{"-n", "T", "-f", "sqlite", "root"},
          std::vector<const char*>{"-n", "T", "-f", "sqlite", "-o", "-", "root"},
          std::vector<const char*>{"-n", "T", "-o", "a.db", "-f", "sqlite", "-o-", "root"}}) {
        try {
            parse(arguments);
            ADD_FAILURE() << "no failure";
        } catch (const Failure& failure) {
            EXPECT_EQ(failure.code, ExitCode::WrongUsage);
            EXPECT_STREQ(failure.what(), "--format sqlite: there is no --output; a database "
                                         "cannot go to standard output");
        }
    }
}

TEST(Options, KeepTheWordsAsTheyWereTyped)
{
    EXPECT_EQ(parse({"-nT", "--output=a b", "-o", "x", "root"})->words,
              std::vector<std::string>({"-nT", "--output=a b", "-o", "x", "root"}));
}

TEST(Options, TakeAPathToExplainWithAndWithoutRoot)
{
    EXPECT_EQ(parse({"-n", "T", "--explain", "a/T1"})->mode, Mode::Explain);
    EXPECT_EQ(parse({"-n", "T", "--explain", "a/T1"})->explained, std::string("a/T1"));
    EXPECT_EQ(parse({"-n", "T", "--explain=a/T1", "root"})->explained, std::string("a/T1"));
    EXPECT_EQ(parse({"--explain", "-x", "-n", "T"})->explained, std::string("-x"));
    EXPECT_EQ(parse({"--explain", "--explain=", "-n", "T"})->explained, std::string("--explain="));
}

TEST(Options, LeaveTheRootOffThePathToExplain)
{
    struct Row {
        const char* root;
        const char* path;
        const char* explained;
    };
    for (const Row& row :
         {Row{"a/b", "a/b/T1", "T1"}, Row{"a/b/", "a/b/T1", "T1"}, Row{"/", "/a/T1", "a/T1"},
          Row{".", "./T1", "T1"}, Row{"a", "a/a/T1", "a/T1"}, Row{"a", "ab/T1", "ab/T1"},
          Row{"a", "b/a/T1", "b/a/T1"}, Row{"a", "a", "a"}, Row{"a", "a//T1", "T1"},
          Row{"\xff", "\xff/T1", "T1"}, Row{"./a//b/.", "a/b/T1", "T1"},
          Row{"a/b", "./a/./b//T1/.", "T1/."}, Row{"..", "../T1", "T1"}, Row{"//", "/./T1", "T1"},
          Row{"a", "/a/T1", "/a/T1"}, Row{"/a", "a/T1", "a/T1"}, Row{"a/b", "a/T1", "a/T1"},
          Row{"a/b", "./a/b", "./a/b"}, Row{".", "a/T1", "a/T1"}})
        EXPECT_EQ(parse({"-n", "T", row.root, "--explain", row.path})->explained,
                  std::string(row.explained))
            << row.root;
}

TEST(Options, SelectFiles)
{
    for (const std::vector<const char*>& arguments :
         {std::vector<const char*>{"-n", "T", "-E", "*.log", "-H", "-d", "7", "-E", "/a/b/",
                                   "root"},
          std::vector<const char*>{"-n", "T", "--exclude=*.log", "--hidden", "--max-depth", "3",
                                   "--exclude", "/a/b/", "--max-depth=7", "root"},
          std::vector<const char*>{"-HnT", "-E*.log", "-qHE/a/b/", "-d07", "root"}}) {
        SCOPED_TRACE(testing::PrintToString(arguments));
        const std::optional<Options> options = parse(arguments);
        ASSERT_TRUE(options);
        ASSERT_EQ(options->source.selection.excluded.size(), 2u);
        EXPECT_EQ(options->source.selection.excluded[0].text(), "*.log");
        EXPECT_EQ(options->source.selection.excluded[1].text(), "/a/b/");
        EXPECT_TRUE(options->source.selection.hidden);
        EXPECT_EQ(options->source.selection.maxDepth, 7u);
        EXPECT_EQ(options->source.root, "root");
    }
    // Values may look like options.
    EXPECT_EQ(parse({"-n", "T", "-E", "-0", "--exclude", "--", "root"})
                  ->source.selection.excluded.at(1)
                  .text(),
              "--");
}

TEST(Options, TakeAListInPlaceOfTheRoot)
{
    for (const std::vector<const char*>& arguments :
         {std::vector<const char*>{"-n", "T", "--from-list", "-", "-0"},
          std::vector<const char*>{"--null", "--from-list=-", "-nT"},
          std::vector<const char*>{"-q0nT", "--from-list", "file", "--from-list", "-"}}) {
        SCOPED_TRACE(testing::PrintToString(arguments));
        const std::optional<Options> options = parse(arguments);
        ASSERT_TRUE(options);
        EXPECT_EQ(options->source.list, std::string("-"));
        EXPECT_TRUE(options->source.nullSeparated);
        EXPECT_TRUE(options->source.selection.hidden) << "whoever made the list has chosen";
        EXPECT_EQ(options->source.root, "");
    }
    EXPECT_FALSE(parse({"-n", "T", "--from-list", "-0"})->source.nullSeparated);
    EXPECT_EQ(parse({"-n", "T", "--", "-0"})->source.root, "-0");
}

TEST(Options, TurnBackIntoArguments)
{
    RandomOptions random;
    for (int round = 0; round < 5000; ++round) {
        const Options options = random.next();
        const std::vector<std::string> texts = arguments(options);
        SCOPED_TRACE(testing::PrintToString(texts));
        ASSERT_EQ(parts(*parseTexts(texts)), parts(options));
    }
}

TEST(Options, ThatAreIncompleteGiveIncompleteArguments)
{
    Options options;
    EXPECT_EQ(arguments(options), std::vector<std::string>({"--hidden"}));
    options.source.selection.hidden = false;
    EXPECT_EQ(arguments(options), std::vector<std::string>());
    options.source.list = "-";
    options.source.nullSeparated = true;
    EXPECT_EQ(arguments(options), std::vector<std::string>({"--from-list=-", "--null"}));
}

TEST(Options, ThatAreWrongAreRefusedInTheseWords)
{
    struct Row {
        std::vector<const char*> arguments;
        std::string message;
    };
    const std::string noSuch = ": there is no such option; --help lists those that there are";
    const std::string noRoot = "ROOT, the folder to import, is missing; --help shows examples";
    const std::string noMarker =
        "no marker and no template is given; use --string, --number or --template, or find some "
        "with --suggest";
    const std::string exclude = " exclude each other";
    const std::vector<Row> rows = {
        // The number of roots.
        {{}, noRoot},
        {{"-n", "T"}, noRoot},
        {{"-n", "T", "--"}, noRoot},
        {{"--suggest"}, noRoot},
        {{"--suggest", "-n", "T"}, noRoot},
        {{"-n", "T", "root", "more"},
         "there is more than one ROOT: 'root' and 'more'; blanks and wildcards need quotes"},
        {{"-n", "T", "root", "more", "third"},
         "there is more than one ROOT: 'root' and 'more'; blanks and wildcards need quotes"},
        {{"", "-n", "T", ""},
         "there is more than one ROOT: '' and ''; blanks and wildcards need quotes"},
        {{"-n", "T", "root", "-"},
         "there is more than one ROOT: 'root' and '-'; blanks and wildcards need quotes"},
        {{"-n", "T", "--from-list", "x", "a", "b"},
         "there is more than one ROOT: 'a' and 'b'; blanks and wildcards need quotes"},
        {{"-n", "T", "--explain", "x", "a", "b"},
         "there is more than one ROOT: 'a' and 'b'; blanks and wildcards need quotes"},
        {{"-n", "T", "root", "--", "-x"},
         "there is more than one ROOT: 'root' and '-x'; blanks and wildcards need quotes"},
        {{"-n", "T", "--", "a", "--"},
         "there is more than one ROOT: 'a' and '--'; blanks and wildcards need quotes"},
        {{"-n", "T", ""}, "ROOT: the path is empty"},
        {{"-n", "T", "--explain", "T1", ""}, "ROOT: the path is empty"},
        {{"--suggest", "-n", "T", ""}, "ROOT: the path is empty"},

        // Options that there are not.
        {{"-n", "T", "--what", "root"}, "--what" + noSuch},
        {{"-n", "T", "--what"}, "--what" + noSuch},
        {{"-n", "T", "--what=x", "root"}, "--what=x" + noSuch},
        {{"-n", "T", "root", "more", "--what", "-x"}, "--what" + noSuch},
        {{"-n", "T", "--from-list", "x", "--what"}, "--what" + noSuch},
        {{"-n", "T", "--strin", "m", "root"}, "--strin" + noSuch},
        {{"-n", "T", "--String=m", "root"}, "--String=m" + noSuch},
        {{"-n", "T", "--ROOT=x"}, "--ROOT=x" + noSuch},
        {{"-n", "T", "--=x", "root"}, "--=x" + noSuch},
        {{"-n", "T", "-=", "root"}, "-=" + noSuch},
        {{"-n", "T", "-x", "root"}, "-x" + noSuch},
        {{"-n", "T", "-x5", "root"}, "-x5" + noSuch},
        {{"-n", "T", "-xq", "root"}, "-xq" + noSuch},
        {{"-xnT", "root"}, "-xnT" + noSuch},
        {{"-n", "T", "-ROOT"}, "-ROOT" + noSuch},
        {{"-n", "T", "-qx", "root"}, "-x" + noSuch},
        {{"-n", "T", "-qxL", "root"}, "-xL" + noSuch},
        {{"-n", "T", "-qx-", "root"}, "-x-" + noSuch},
        {{"-n", "T", "-5"}, "-5" + noSuch},
        {{"-n", "T", "---"}, "---" + noSuch},
        {{"-n", "T", "-q5", "root"}, "-q5: -q takes no value"},
        {{"-n", "T", "-q=", "root"}, "-q=: -q takes no value"},
        {{"-n", "T", "-hL5"}, "-hL5: -L takes no value"},
        {{"-n", "T", "-q-x", "root"}, "-q-x: -q takes no value"},

        // Values that are missing or not asked for.
        {{"root", "-s"}, "--string: its MARKER is missing"},
        {{"root", "--string"}, "--string: its MARKER is missing"},
        {{"root", "-qn"}, "--number: its MARKER is missing"},
        {{"root", "-qt"}, "--template: its TEMPLATE is missing"},
        {{"-n", "T", "root", "-a"}, "--aux: its SYNTAX=TAG is missing"},
        {{"-n", "T", "root", "-f"}, "--format: its FORMAT is missing"},
        {{"-n", "T", "root", "--output"}, "--output: its FILE is missing"},
        {{"-n", "T", "--from-list"}, "--from-list: its FILE is missing"},
        {{"-n", "T", "root", "-E"}, "--exclude: its GLOB is missing"},
        {{"-n", "T", "root", "-d"}, "--max-depth: its N is missing"},
        {{"-n", "T", "--explain"}, "--explain: its PATH is missing"},
        {{"--help", "-n"}, "--number: its MARKER is missing"},
        {{"--string=", "root"}, "--string: the value is empty"},
        {{"--number=", "root"}, "--number: the value is empty"},
        {{"--template=", "root"}, "--template: the value is empty"},
        {{"-n", "T", "--aux=", "root"}, "--aux: the value is empty"},
        {{"-n", "T", "--format=", "root"}, "--format: the value is empty"},
        {{"-n", "T", "--output=", "root"}, "--output: the value is empty"},
        {{"-n", "T", "--from-list="}, "--from-list: the value is empty"},
        {{"-n", "T", "--exclude=", "root"}, "--exclude: the value is empty"},
        {{"-n", "T", "--max-depth=", "root"}, "--max-depth: the value is empty"},
        {{"-n", "T", "--explain="}, "--explain: the value is empty"},
        {{"-n", "T", "-f", "xml", "--string=", "root"}, "--string: the value is empty"},
        {{"--help=1"}, "--help: takes no value"},
        {{"--version="}, "--version: takes no value"},
        {{"--suggest=true", "root"}, "--suggest: takes no value"},
        {{"-n", "T", "--files=", "root"}, "--files: takes no value"},
        {{"-n", "T", "--unmatched=1", "root"}, "--unmatched: takes no value"},
        {{"-n", "T", "--null=1"}, "--null: takes no value"},
        {{"-n", "T", "--hidden=1", "root"}, "--hidden: takes no value"},
        {{"-n", "T", "--keep-going=1", "root"}, "--keep-going: takes no value"},
        {{"-n", "T", "--follow=1", "root"}, "--follow: takes no value"},
        {{"-n", "T", "--quiet=0", "root"}, "--quiet: takes no value"},
        {{"-h", "--quiet=0"}, "--quiet: takes no value"},

        // Long names with one dash.
        {{"-suggest", "root"}, "-suggest: it takes two dashes, as in --suggest"},
        {{"-string=T", "root"}, "-string=T: it takes two dashes, as in --string=T"},
        {{"-help"}, "-help: it takes two dashes, as in --help"},
        {{"-version"}, "-version: it takes two dashes, as in --version"},
        {{"-n", "T", "-null"}, "-null: it takes two dashes, as in --null"},
        {{"-n", "T", "-keep-going", "root"},
         "-keep-going: it takes two dashes, as in --keep-going"},

        // Values that cannot be used.
        {{"-s", "", "root"}, "--string: the marker is empty"},
        {{"-n", "", "root"}, "--number: the marker is empty"},
        {{"-n", "T", "-a", "x", "root"}, "--aux 'x': expected SYNTAX=TAG"},
        {{"-n", "T", "-a", "", "root"}, "--aux '': expected SYNTAX=TAG"},
        {{"-n", "T", "-a", "x=y", "-a", "=", "root"}, "--aux '=': the tag is empty"},
        {{"-n", "T", "-a", "x=a\nb", "root"}, "--aux 'x=a\nb': the tag holds a control character"},
        {{"-n", "T", "-f", "xml", "root"},
         "--format 'xml': unknown format; choose auto, table, csv, tsv, json, jsonl, vtt or "
         "sqlite"},
        {{"-n", "T", "-f", "", "root"},
         "--format '': unknown format; choose auto, table, csv, tsv, json, jsonl, vtt or sqlite"},
        {{"-n", "T", "-f", "CSV", "--what", "root"},
         "--format 'CSV': unknown format; choose auto, table, csv, tsv, json, jsonl, vtt or "
         "sqlite"},
        {{"-f", "xml", "--help"},
         "--format 'xml': unknown format; choose auto, table, csv, tsv, json, jsonl, vtt or "
         "sqlite"},
        {{"-n", "T", "-o", "", "root"}, "--output: the file name is empty"},
        {{"-n", "T", "--from-list", ""}, "--from-list: the file name is empty"},
        {{"-n", "T", "-E", "", "root"}, "--exclude '': a component is empty"},
        {{"-n", "T", "-E", "a//b", "root"}, "--exclude 'a//b': a component is empty"},
        {{"-n", "T", "-E", ".", "root"}, "--exclude '.': it names no entry"},
        {{"-n", "T", "-E", "a\\", "root"},
         "--exclude 'a\\': nothing follows the backslash at the end of a component"},
        {{"-n", "T", "-d", "0", "root"}, "--max-depth '0': expected a whole number from 1"},
        {{"-n", "T", "-d", "", "root"}, "--max-depth '': expected a whole number from 1"},
        {{"-n", "T", "-j0", "root"}, "--jobs '0': expected a whole number from 1"},
        {{"-n", "T", "-d", "-1", "root"}, "--max-depth '-1': expected a whole number from 1"},
        {{"-n", "T", "a", "b", "-d1x"}, "--max-depth '1x': expected a whole number from 1"},
        {{"-n", "T", "--explain", ""}, "--explain: the path is empty"},
        {{"-n", "T", "--explain", "root/", "root"}, "--explain: the path is empty"},

        // What is given must go together, and is asked for in this order.
        {{"-n", "T", "--from-list", "x", "root"}, "ROOT and --from-list" + exclude},
        {{"-n", "T", "--from-list", "x", ""}, "ROOT and --from-list" + exclude},
        {{"-n", "T", "--from-list", "x", "-L", "root"}, "ROOT and --from-list" + exclude},
        {{"-n", "T", "--from-list", "x", "--keep-going", "-L"},
         "--follow and --from-list" + exclude},
        {{"-n", "T", "--from-list", "x", "--keep-going"}, "--keep-going and --from-list" + exclude},
        {{"-n", "T", "--explain", "x", "--from-list", "x", "root"},
         "ROOT and --from-list" + exclude},
        {{"-n", "T", "-0", "root"}, "--null: there is no --from-list"},
        {{"-n", "T", "-0", ""}, "--null: there is no --from-list"},
        {{"--suggest", "-n", "T", "-0", "root"}, "--null: there is no --from-list"},
        {{"--suggest", "-s", "T", "root"}, "--suggest and --string" + exclude},
        {{"--suggest", "-n", "T", "root"}, "--suggest and --number" + exclude},
        {{"--suggest", "-t", "{a}", "root"}, "--suggest and --template" + exclude},
        {{"--suggest", "-a", "x=y", "root"}, "--suggest and --aux" + exclude},
        {{"--suggest", "-f", "auto", "root"}, "--suggest and --format" + exclude},
        {{"--suggest", "--files", "root"}, "--suggest and --files" + exclude},
        {{"--suggest", "--unmatched", "root"}, "--suggest and --unmatched" + exclude},
        {{"--suggest", "--explain", "x"}, "--suggest and --explain" + exclude},
        {{"--explain", "", "--suggest", "root"}, "--suggest and --explain" + exclude},
        {{"--unmatched", "--files", "-f", "csv", "--suggest", "root"},
         "--suggest and --format" + exclude},
        {{"--explain", "x", "--unmatched", "--files", "--suggest"},
         "--suggest and --files" + exclude},
        {{"root"}, noMarker},
        {{"--explain", "T1"}, noMarker},
        {{"--explain", ""}, noMarker},
        {{"-a", "*.log=log", "root"}, noMarker},
        {{"--files", "--unmatched", "root"}, noMarker},
        {{"--explain", "T1", "--files"}, noMarker},
        {{"-s", "x", "-t", "{a}", "root"}, "--string and --template" + exclude},
        {{"-t", "{a}", "-n", "x", "root"}, "--number and --template" + exclude},
        {{"-t", "{a}", "-n", "x", "--explain", "x"}, "--number and --template" + exclude},
        {{"-n", "T", "--files", "--unmatched", "root"}, "--files and --unmatched" + exclude},
        {{"-n", "T", "--files", "--unmatched", "-a", "x=y", "root"},
         "--files and --unmatched" + exclude},
        {{"-n", "T", "--unmatched", "-a", "x=y", "root"}, "--aux and --unmatched" + exclude},
        {{"-n", "T", "--explain", "x", "--unmatched", "--files"},
         "--files and --unmatched" + exclude},
        {{"-n", "T", "--explain", "x", "-a", "x=y", "--files"}, "--explain and --aux" + exclude},
        {{"-n", "T", "--explain", "x", "-f", "csv", "--files"}, "--explain and --files" + exclude},
        {{"-n", "T", "--explain", "x", "-f", "csv", "--unmatched"},
         "--explain and --unmatched" + exclude},
        {{"-n", "T", "--explain", "x", "-f", "auto"}, "--explain and --format" + exclude},
        {{"-n", "T", "--explain", "x", "--from-list", "x", "-f", "csv"},
         "--explain and --format" + exclude},
        {{"-n", "T", "--explain", "x", "--from-list", "x"}, "--explain and --from-list" + exclude},
        {{"-n", "T", "--explain", "", "--from-list", "x"}, "--explain and --from-list" + exclude},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(testing::PrintToString(row.arguments));
        try {
            parse(row.arguments);
            ADD_FAILURE();
        } catch (const Failure& failure) {
            EXPECT_EQ(failure.code, ExitCode::WrongUsage);
            EXPECT_EQ(failure.what(), row.message);
        }
    }
}

TEST(Options, ThatHoldATemplateThatIsWrongAreRefusedInTheseWords)
{
    struct Row {
        std::vector<std::string> templates;
        std::string message;
    };
    const std::string onlyBefore = "a backslash stands only before one of \\ * ? [ ] { }";
    const std::string name = "a column's name is a letter or _, then letters, digits and _";
    const std::string type = "unknown type; types are text, word, digits, number and path, and "
                             "with a number of bytes text3, word3 and digits3";
    for (const Row& row : {
             Row{{""}, "the template has no columns"},
             Row{{"T*/**"}, "the template has no columns"},
             Row{{"{a}]"}, "this ] closes nothing"},
             Row{{"{a}}"}, "this } closes nothing"},
             Row{{"[{a}"}, "this [ is not closed"},
             Row{{"{a"}, "this { is not closed"},
             Row{{"{a}\\/"}, onlyBefore},
             Row{{"{a}***"}, "more than two asterisks have no meaning"},
             Row{{"{1}"}, name},
             Row{{"{case}"}, "the table has a column of that name itself"},
             Row{{"{a:int}"}, type},
             Row{{"{a:word0}"}, "a width is from 1 to 65535 bytes"},
             Row{{"{a:word,x}"}, "a column with an expression is a number or has no type"},
             Row{{"{a}{a:word}"},
                 "a column has its type or expression where its name stands first"},
             Row{{"{a,(}"}, "missing closing parenthesis"},
             Row{{"{a,x\\Ky}"}, "an expression in a template has no \\K"},
             Row{{"{a}", "{a:number}"}, "another template has this column as a text"},
             Row{{"{a:number}", "x", "{a}"}, "the template has no columns"},
             Row{{"{a:number}", "{b}{a}"}, "another template has this column as a number"},
             Row{{std::string(101, '[')}, "parts are nested more than 100 deep"},
             Row{{"{a}" + std::string(65536, 'x')}, "the template is longer than 65536 bytes"},
         }) {
        SCOPED_TRACE(testing::PrintToString(row.templates));
        std::vector<std::string> arguments = {"root"};
        for (const std::string& text : row.templates)
            arguments.insert(arguments.end(), {"-t", text});
        try {
            parseTexts(arguments);
            ADD_FAILURE();
        } catch (const Failure& failure) {
            EXPECT_EQ(failure.code, ExitCode::WrongUsage);
            EXPECT_EQ(failure.what(), "--template: " + row.message);
        }
    }
}

TEST(Options, TakeTemplatesFromTheCommandLineAndFromFilesInTheirOrder)
{
    const TemporaryTree tree;
    tree.file("some", "# Runs.\n\n{b}_x\n  #{c} \n");
    tree.file("other", "\\[{d}"); // No line end.

    const std::optional<Options> options =
        parseTexts({"-t{a:number}", "--template=@" + tree.path("some"), "root", "-t",
                    "@" + tree.path("other"), "-t", "@@{e}", "--template",
                    "-t"
                    "{f}"});

    ASSERT_TRUE(options && options->reading.templates());
    std::vector<std::string> texts;
    for (const Template& each : options->reading.templates()->templates())
        texts.push_back(each.text());
    EXPECT_EQ(texts, std::vector<std::string>(
                         {"{a:number}", "{b}_x", "  #{c} ", "\\[{d}", "@{e}", "-t{f}"}));
    EXPECT_EQ(options->reading.patterns().size(), 6u);
    EXPECT_EQ(options->source.root, "root");
}

TEST(Options, RefuseAFileThatGivesNoTemplate)
{
    const TemporaryTree tree({"empty", "folder/"});
    tree.file("comments", "# {a}\n\n#{b}");
    struct Row {
        std::string file;
        std::string reason;
    };
    for (const Row& row :
         {Row{tree.path("empty"), "there is no template in it"},
          Row{tree.path("comments"), "there is no template in it"},
          Row{tree.path("missing"), "No such file or directory"},
          Row{tree.path("folder"), "Is a directory"}, Row{tree.path("empty/x"), "Not a directory"},
          Row{"", "No such file or directory"}}) {
        try {
            parseTexts({"-t", "@" + row.file, "root"});
            ADD_FAILURE() << row.file;
        } catch (const Failure& failure) {
            EXPECT_EQ(failure.code, ExitCode::WrongUsage);
            EXPECT_EQ(failure.what(), "--template '@" + row.file + "': " + row.reason);
        }
    }
}

TEST(Options, RefuseAnythingButLettersBehindFlagsInOneArgument)
{
    for (const char* const argument :
         {"-q--X", "-q5", "-q-", "-q-files", "-q-version", "-q-output=", "-qL-", "-L=x", "-h5",
          "-q!", "-q ", "-q\n", "-05", "-0.5", "-H=", "-0-", "-L\xc3\xa4"}) {
        SCOPED_TRACE(argument);
        for (const std::vector<const char*>& arguments :
             {std::vector<const char*>{"-n", "T", argument},
              std::vector<const char*>{"-nT", argument, "root"}}) {
            try {
                parse(arguments);
                ADD_FAILURE() << testing::PrintToString(arguments);
            } catch (const Failure& failure) {
                EXPECT_EQ(failure.code, ExitCode::WrongUsage);
                EXPECT_NE(std::string(failure.what()).find(argument), std::string::npos);
            }
        }
    }
    // Values may look like that.
    EXPECT_EQ(parse({"-n", "-q5", "--", "-q5"})->source.root, "-q5");
    EXPECT_EQ(parse({"-qn-5", "root"})->reading.patterns().at(0).pattern, "-5");
}

TEST(Options, TakeAnyNextArgumentAsTheValue)
{
    for (const char* const value : {"-q5=x", "-L!=x", "-qL-=x"}) {
        SCOPED_TRACE(value);
        for (const char* const option : {"-s", "-n", "--string", "--number", "-qs", "-Lqn"})
            EXPECT_EQ(parse({option, value, "root"})->reading.patterns().at(0).pattern, value)
                << option;
        for (const char* const option : {"-a", "--aux", "-qa"})
            EXPECT_EQ(parse({"-nT", option, value, "root"})->identifiers.size(), 1u) << option;
        for (const char* const option : {"-o", "--output", "-Lo"})
            EXPECT_EQ(parse({"-nT", option, value, "root"})->output, std::string(value)) << option;
        for (const char* const option : {"-f", "--format", "-qf"}) {
            try {
                parse({"-nT", option, value, "root"});
                ADD_FAILURE() << option;
            } catch (const Failure& failure) {
                EXPECT_EQ(failure.what(), "--format '" + std::string(value) +
                                              "': unknown format; choose auto, table, csv, tsv, "
                                              "json, jsonl, vtt or sqlite");
            }
        }
    }
}

TEST(Options, AreThoseOfTheProgramThatReadsThem)
{
    const auto messageOf = [](std::vector<const char*> arguments, Program program) -> std::string {
        arguments.insert(arguments.begin(), nameOf(program));
        try {
            parseOptions(static_cast<int>(arguments.size()), arguments.data(), program);
        } catch (const Failure& failure) {
            EXPECT_EQ(failure.code, ExitCode::WrongUsage);
            return failure.what();
        }
        return "";
    };
    const std::vector<const char*> trusting = {"-n", "P", "--from-list", "list", "--no-duplicates"};

    EXPECT_EQ(messageOf(trusting, Program::CasetableMpi), "");
    EXPECT_EQ(messageOf(trusting, Program::Casetable),
              "--no-duplicates: only casetable-mpi has this option");
    EXPECT_EQ(messageOf({"--suggest", "root"}, Program::CasetableMpi),
              "--suggest: only casetable has this option");
    EXPECT_EQ(messageOf({"-t", "@/dev/null", "root"}, Program::CasetableMpi),
              "--template '@/dev/null': is not a regular file, which each process could read");
    EXPECT_EQ(messageOf({"-t", "@/dev/null", "root"}, Program::Casetable),
              "--template '@/dev/null': there is no template in it");
    EXPECT_EQ(messageOf({"-no-duplicates", "root"}, Program::Casetable), "") << "a marker";
    EXPECT_EQ(messageOf({"-n", "P", "root", "--no-duplicates"}, Program::CasetableMpi),
              "--no-duplicates: there is no --from-list");
}

TEST(Options, OfSeveralProcessesAskForCsvWhereNothingElseIsSaid)
{
    const auto formatOf = [](std::vector<const char*> arguments) -> std::string {
        arguments.insert(arguments.begin(), {"casetable-mpi", "-n", "P", "root"});
        return parseOptions(static_cast<int>(arguments.size()), arguments.data(),
                            Program::CasetableMpi)
            ->format->name;
    };
    EXPECT_EQ(formatOf({}), "csv");
    EXPECT_EQ(formatOf({"-f", "auto"}), "csv");
    EXPECT_EQ(formatOf({"-o", "out.json"}), "json");
    EXPECT_EQ(formatOf({"-f", "tsv", "-o", "out.json"}), "tsv");
}

TEST(Options, RefuseAnEmptyValueAlsoBehindAValueThatLooksLikeAnOption)
{
    // The letters behind the first are the marker; it takes no further argument.
    for (const char* const marker : {"-nn", "-sao", "-qnf", "-nLs"}) {
        for (const char* const option :
             {"--string=", "--number=", "--aux=", "--format=", "--output="}) {
            SCOPED_TRACE(std::string(marker) + " " + option);
            try {
                parse({marker, option, "csv"});
                ADD_FAILURE();
            } catch (const Failure& failure) {
                EXPECT_EQ(failure.what(),
                          std::string(option, std::strlen(option) - 1) + ": the value is empty");
            }
        }
    }
}

} // namespace tests
} // namespace casetable
