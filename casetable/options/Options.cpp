#include "casetable/options/Options.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cstddef>
#include <functional>
#include <sstream>
#include <stdexcept>
#include <string_view>
#include <system_error>

#include <CLI/CLI.hpp>

#include "casetable/importing/PlainTagValidator.h"
#include "casetable/system/ExitCode.h"
#include "casetable/system/Output.h"

namespace casetable {

namespace {

const char* const description =
    "Groups the files below ROOT into cases by the values in their paths.";

const char* const footer = R"(Exit codes:
  0  a table with cases    1  no file matched, or nothing could be suggested
  2  wrong usage           3  the walk, the list, the matching or --aux failed
  4  the output failed     130  interrupted

Examples:
  casetable --suggest results
  casetable -s wing -n Mach -n AoA results
  casetable -n Mach --aux '*.log=log' -o cases.json results
)";

[[noreturn]] void failUsage(const std::string& message)
{
    throw Failure(ExitCode::WrongUsage, message);
}

std::string quoted(const std::string& option, const std::string& value)
{
    return option + " '" + value + "'";
}

// Null for "auto".
const Format* parseFormat(const std::string& name)
{
    const Format* const format = formatNamed(name);
    if (format == nullptr && name != "auto")
        failUsage(quoted("--format", name) +
                  ": unknown format; choose auto, table, csv, tsv, json or vtt");
    return format;
}

// `path` without the slashes and the components "." that it begins with.
std::string_view withoutDots(std::string_view path)
{
    while (!path.empty()) {
        const std::size_t end = std::min(path.find('/'), path.size());
        if (end > 0 && path.substr(0, end) != ".")
            break;
        path.remove_prefix(std::min(end + 1, path.size()));
    }
    return path;
}

// The path as an import of `root` sees it. A shell that completes one of them, or its user, may
// write the same folders in another way.
std::string belowRoot(const std::string& path, std::string_view root)
{
    if (root.empty() || path.empty() || (root.front() == '/') != (path.front() == '/'))
        return path;
    std::string_view rest = withoutDots(path);
    for (root = withoutDots(root); !root.empty(); root = withoutDots(root)) {
        const std::size_t end = std::min(root.find('/'), root.size());
        if (rest.substr(0, rest.find('/')) != root.substr(0, end))
            return path;
        rest = withoutDots(rest.substr(end));
        root.remove_prefix(end);
    }
    // What is called like the root may be an entry of it, but not with a slash behind.
    return rest.empty() && path.back() != '/' ? path : std::string(rest);
}

MetadataPattern parseMarker(const std::string& option, const std::string& marker,
                            MetadataPattern::ValueType type)
{
    if (marker.empty())
        failUsage(option + ": the marker is empty");
    return MetadataPattern(marker, type);
}

// A tag holds no "=", while a syntax name may, as in key=value folders: the last one divides them.
AuxFileIdentifier parseIdentifier(const std::string& text)
{
    const std::size_t divider = text.rfind('=');
    if (divider == std::string::npos)
        failUsage(quoted("--aux", text) + ": expected SYNTAX=TAG");
    AuxFileIdentifier identifier{text.substr(0, divider), text.substr(divider + 1)};
    const ortelo::ValidationResult result = PlainTagValidator().validate(identifier.tag);
    if (!result.isValid())
        failUsage(quoted("--aux", text) + ": " + result.errorString());
    return identifier;
}

Glob parseGlob(const std::string& text)
{
    try {
        return Glob(text);
    } catch (const std::invalid_argument& failure) {
        failUsage(quoted("--exclude", text) + ": " + failure.what());
    }
}

std::size_t parseDepth(const std::string& text)
{
    std::size_t depth = 0;
    const char* const end = text.data() + text.size();
    const std::from_chars_result read = std::from_chars(text.data(), end, depth);
    if (read.ec != std::errc() || read.ptr != end || depth == 0)
        failUsage(quoted("--max-depth", text) + ": expected a whole number from 1");
    return depth;
}

// The names of the options of a command line.
struct OptionNames {
    explicit OptionNames(const CLI::App& app)
    {
        for (const CLI::Option* option : app.get_options()) {
            const bool takesValue = option->get_items_expected_max() > 0;
            for (const std::string& letter : option->get_snames())
                (takesValue ? shortWithValue : shortFlags) += letter;
            for (const std::string& name : option->get_lnames())
                (takesValue ? longWithValue : longFlags).push_back("--" + name);
        }
    }

    std::vector<std::string> longWithValue;
    std::vector<std::string> longFlags;
    std::string shortWithValue; // The letters.
    std::string shortFlags;
};

// True when the value of the option in `argument` is the argument after it.
bool takesNextArgument(const OptionNames& names, const std::string& argument)
{
    if (argument.size() < 2 || argument[0] != '-')
        return false;
    if (argument[1] == '-')
        return std::find(names.longWithValue.begin(), names.longWithValue.end(), argument) !=
               names.longWithValue.end();
    return argument.find_first_of(names.shortWithValue, 1) == argument.size() - 1;
}

// True for -suggest, which would be -s with the marker "uggest".
bool isLongNameWithOneDash(const OptionNames& names, const std::string& argument)
{
    const std::string name = '-' + argument.substr(0, argument.find('='));
    const auto isName = [&name](const std::string& known) { return known == name; };
    return std::any_of(names.longWithValue.begin(), names.longWithValue.end(), isName) ||
           std::any_of(names.longFlags.begin(), names.longFlags.end(), isName);
}

// True for flags in one argument, such as -qL, with something behind them that is no letter.
bool hasOtherBehindFlags(const OptionNames& names, const std::string& argument)
{
    if (argument.size() < 2 || argument[0] != '-')
        return false;
    const std::size_t behind = argument.find_first_not_of(names.shortFlags, 1);
    return behind != std::string::npos && behind > 1 &&
           std::isalpha(static_cast<unsigned char>(argument[behind])) == 0;
}

// The library reads some arguments in ways that nobody would expect. It takes the value of
// "--option=" from the next argument; here it is an empty value. It takes flags with a value, some
// of which turn them off. And what stands behind flags it reads as an argument of its own, which
// may even be the folder.
void refuseSurprises(const CLI::App& app, int argc, const char* const* argv)
{
    const OptionNames names(app);
    for (int i = 1; i < argc && std::string(argv[i]) != "--"; ++i) {
        const std::string argument = argv[i];
        if (hasOtherBehindFlags(names, argument))
            failUsage("The following argument was not expected: " + argument);
        for (const std::string& option : names.longWithValue) {
            if (argument == option + "=")
                failUsage(option + ": the value is empty");
        }
        if (isLongNameWithOneDash(names, argument))
            failUsage(argument + ": it takes two dashes, as in -" + argument);
        for (const std::string& flag : names.longFlags) {
            if (argument.compare(0, flag.size() + 1, flag + "=") == 0)
                failUsage(flag + ": takes no value");
        }
        if (takesNextArgument(names, argument))
            ++i;
    }
}

// The library may complain of what is missing before, or beside, what it did not expect.
void refuseUnexpected(const CLI::App& app)
{
    const std::vector<std::string> remaining = app.remaining();
    if (std::find(remaining.begin(), remaining.end(), "--") != remaining.end())
        return;
    for (const std::string& argument : remaining) {
        if (argument.size() > 1 && argument.front() == '-')
            failUsage(argument + ": there is no such option; --help lists those that there are");
    }
    if (!remaining.empty())
        failUsage("there is more than one ROOT: '" + app.get_option("ROOT")->results().front() +
                  "' and '" + remaining.front() + "'; blanks and wildcards need quotes");
}

// Prints what --help or --version asked for.
void print(const std::string& text)
{
    Output output(std::nullopt);
    output.write(text);
    output.commit();
}

} // namespace

std::optional<Options> parseOptions(int argc, const char* const* argv)
{
    Options options;
    CLI::App app(description, "casetable");
    app.footer(footer);
    app.get_formatter()->column_width(24);
    app.get_formatter()->label("REQUIRED", "");
    app.set_help_flag("-h,--help", "Print this help and exit");
    app.set_version_flag("--version", "casetable " CASETABLE_VERSION, "Print the version and exit");

    // Called for each occurrence, in order: the order of -s and -n is the order of the columns. The
    // raw texts are taken, because the library gives some of them a meaning of their own.
    const auto addText = [&app](const char* names, const char* type, const char* help,
                                const std::function<void(const std::string&)>& take) {
        app.add_option(
               names,
               [take](const CLI::results_t& values) {
                   take(values.front());
                   return true;
               },
               help)
            ->type_name(type)
            ->type_size(1)
            ->trigger_on_parse();
    };
    addText("-s,--string", "MARKER", "A column of the text right behind MARKER",
            [&options](const std::string& marker) {
                options.patterns.push_back(
                    parseMarker("--string", marker, MetadataPattern::StringValue));
            });
    addText("-n,--number", "MARKER", "A column of the numbers right behind MARKER",
            [&options](const std::string& marker) {
                options.patterns.push_back(
                    parseMarker("--number", marker, MetadataPattern::NumberValue));
            });
    addText("-a,--aux", "SYNTAX=TAG", "Collect matched files under TAG, by wildcard",
            [&options](const std::string& text) {
                options.identifiers.push_back(parseIdentifier(text));
            });
    addText("-f,--format", "FORMAT",
            "auto, table, csv, tsv, json or vtt; auto goes by FILE,\n"
            "or is a table on a terminal and CSV elsewhere",
            [&options](const std::string& name) { options.format = parseFormat(name); });
    addText("-o,--output", "FILE", "Write to FILE, replaced once all is written",
            [&options](const std::string& file) {
                if (file.empty())
                    failUsage("--output: the file name is empty");
                options.output = file == "-" ? std::nullopt : std::make_optional(file);
            });

    addText("--from-list", "FILE", "Paths, one a line, in place of ROOT; - is standard input",
            [&options, &app](const std::string& file) {
                if (file.empty())
                    failUsage("--from-list: the file name is empty");
                options.source.list = file;
                app.get_option("ROOT")->required(false);
            });
    app.add_flag("-0,--null", options.source.nullSeparated, "The paths in the list end with NUL");
    addText("-E,--exclude", "GLOB", "Leave out what GLOB matches, as in ignore files",
            [&options](const std::string& text) {
                options.source.selection.excluded.push_back(parseGlob(text));
            });
    bool hidden = false;
    bool suggest = false;
    app.add_flag("-H,--hidden", hidden, "Also take names that begin with a dot");
    addText("-d,--max-depth", "N", "Go no deeper than N; the files in ROOT have depth 1",
            [&options](const std::string& text) {
                options.source.selection.maxDepth = parseDepth(text);
            });

    app.add_flag("--suggest", suggest, "Propose the markers, as a command line to run");
    bool files = false;
    bool unmatched = false;
    app.add_flag("--files", files, "A row for each matched file instead of each case");
    app.add_flag("--unmatched", unmatched,
                 "The files in no case, each with the marker that failed");
    addText("--explain", "PATH", "How one path is read, and why not; needs no ROOT",
            [&options, &app](const std::string& path) {
                options.mode = Mode::Explain;
                options.explained = path;
                app.get_option("ROOT")->required(false);
            });
    app.add_flag("--keep-going", options.source.keepGoing,
                 "Leave unreadable folders out, with a warning each");
    app.add_flag("-L,--follow", options.source.follow, "Follow links to folders");
    app.add_flag("-q,--quiet", options.quiet, "No progress, warnings or remarks");
    app.add_option(
           "ROOT",
           [&options](const CLI::results_t& values) {
               options.source.root = values.front();
               return true;
           },
           "The folder to import")
        ->type_name("")
        ->type_size(1)
        ->required();

    refuseSurprises(app, argc, argv);
    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& request) {
        std::ostringstream text;
        app.exit(request, text, text);
        print(text.str());
        return std::nullopt;
    } catch (const CLI::RequiredError&) {
        refuseUnexpected(app);
        failUsage("ROOT, the folder to import, is missing; --help shows examples");
    } catch (const CLI::ParseError& error) {
        refuseUnexpected(app);
        failUsage(error.what());
    }

    if (options.source.list && app.count("ROOT") > 0)
        failUsage("ROOT and --from-list exclude each other");
    if (options.source.list && options.source.follow)
        failUsage("--follow and --from-list exclude each other");
    if (options.source.list && options.source.keepGoing)
        failUsage("--keep-going and --from-list exclude each other");
    if (options.source.nullSeparated && !options.source.list)
        failUsage("--null: there is no --from-list");
    if (options.source.root.empty() && app.count("ROOT") > 0)
        failUsage("ROOT: the path is empty");
    // Whoever made a list has chosen.
    options.source.selection.hidden = hidden || options.source.list;
    if (suggest) {
        options.mode = Mode::Suggest;
        for (const char* option :
             {"--string", "--number", "--aux", "--format", "--files", "--unmatched", "--explain"}) {
            if (app.count(option) > 0)
                failUsage("--suggest and " + std::string(option) + " exclude each other");
        }
        return options;
    }
    if (options.patterns.empty())
        failUsage("no marker is given; use --string or --number, or find some with --suggest");
    if (files && unmatched)
        failUsage("--files and --unmatched exclude each other");
    if (unmatched && !options.identifiers.empty())
        failUsage("--aux and --unmatched exclude each other");
    if (options.mode == Mode::Explain) {
        for (const std::string other :
             {"--aux", "--files", "--unmatched", "--format", "--from-list"}) {
            if (app.count(other) > 0)
                failUsage("--explain and " + other + " exclude each other");
        }
        options.explained = belowRoot(options.explained, options.source.root);
        if (options.explained.empty())
            failUsage("--explain: the path is empty");
    }
    if (options.format == nullptr && options.output)
        options.format = formatOfEnding(*options.output);
    options.rows = files ? Rows::Files : unmatched ? Rows::Unmatched : Rows::Cases;
    return options;
}

std::vector<std::string> walkArguments(const Options& options)
{
    std::vector<std::string> arguments;
    if (options.source.keepGoing)
        arguments.emplace_back("--keep-going");
    if (options.source.follow)
        arguments.emplace_back("--follow");
    if (options.source.selection.hidden && !options.source.list)
        arguments.emplace_back("--hidden");
    if (options.source.selection.maxDepth != Selection().maxDepth)
        arguments.push_back("--max-depth=" + std::to_string(options.source.selection.maxDepth));
    for (const Glob& glob : options.source.selection.excluded)
        arguments.push_back("--exclude=" + glob.text());
    if (options.source.list)
        arguments.push_back("--from-list=" + *options.source.list);
    if (options.source.nullSeparated)
        arguments.emplace_back("--null");
    return arguments;
}

} // namespace casetable
