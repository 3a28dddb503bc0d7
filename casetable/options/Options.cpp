#include "casetable/options/Options.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <filesystem>
#include <stdexcept>
#include <string_view>
#include <system_error>

#include "casetable/importing/PlainTagValidator.h"
#include "casetable/options/ColumnNames.h"
#include "casetable/options/CommandLine.h"
#include "casetable/options/Help.h"
#include "casetable/options/Templates.h"
#include "casetable/system/Output.h"
#include "casetable/system/OutputGuards.h"

namespace casetable {

namespace {

// The option and its value as error messages name them.
std::string typed(const Option& option, const std::string& value)
{
    return std::string(option.name) + " '" + value + "'";
}

MetadataPattern parseMarker(const Option& option, const std::string& marker,
                            MetadataPattern::ValueType type)
{
    if (marker.empty())
        failUsage(std::string(option.name) + ": the marker is empty");
    return MetadataPattern(marker, type);
}

// A syntax name may hold "=", as in the names of folders such as key=value. So the last "=" divides
// it from the tag, which can hold none.
AuxFileIdentifier parseIdentifier(const Option& option, const std::string& text)
{
    const std::size_t divider = text.rfind('=');
    if (divider == std::string::npos)
        failUsage(typed(option, text) + ": expected SYNTAX=TAG");
    AuxFileIdentifier identifier{text.substr(0, divider), text.substr(divider + 1)};
    const ortelo::ValidationResult result = PlainTagValidator().validate(identifier.tag);
    if (!result.isValid())
        failUsage(typed(option, text) + ": " + result.errorString());
    return identifier;
}

// The format of that name; null for "auto".
const Format* parseFormat(const Option& option, const std::string& name)
{
    if (std::find(option.words.begin(), option.words.end(), name) == option.words.end())
        failUsage(typed(option, name) + ": unknown format; choose " + choice(option.words));
    return formatNamed(name);
}

std::string parseFile(const Option& option, const std::string& file)
{
    if (file.empty())
        failUsage(std::string(option.name) + ": the file name is empty");
    return file;
}

Glob parseGlob(const Option& option, const std::string& text)
{
    try {
        return Glob(text);
    } catch (const std::invalid_argument& failure) {
        failUsage(typed(option, text) + ": " + failure.what());
    }
}

std::size_t parseCount(const Option& option, const std::string& text)
{
    std::size_t count = 0;
    const char* const end = text.data() + text.size();
    const std::from_chars_result read = std::from_chars(text.data(), end, count);
    if (read.ec != std::errc() || read.ptr != end || count == 0)
        failUsage(typed(option, text) + ": expected a whole number from 1");
    return count;
}

// The markers or the templates, in the order in which they were typed.
Reading readingOf(const CommandLine& line)
{
    std::vector<MetadataPattern> markers;
    for (const CommandLine::Item& item : line.items) {
        if (item.option->id == OptionId::String)
            markers.push_back(parseMarker(*item.option, item.value, MetadataPattern::StringValue));
        else if (item.option->id == OptionId::Number)
            markers.push_back(parseMarker(*item.option, item.value, MetadataPattern::NumberValue));
    }
    const std::vector<std::string> templates = line.valuesOf(OptionId::Template);
    return templates.empty() ? Reading(markers) : Reading(parseTemplates(templates));
}

// Each process reads the files of templates by itself, so they must be files.
void refuseStreams(const CommandLine& line)
{
    for (const std::string& value : line.valuesOf(OptionId::Template)) {
        const std::optional<std::string> file = templateFile(value);
        std::error_code error; // What is not there is told of by whoever reads it.
        if (file && std::filesystem::exists(*file, error) &&
            !std::filesystem::is_regular_file(*file, error))
            failUsage(typed(optionOf(OptionId::Template), value) +
                      ": is not a regular file, which each process could read");
    }
}

// Enters what one option means into `options`; arguments() does the reverse.
void take(Options& options, const Option& option, const std::string& value)
{
    switch (option.id) {
    case OptionId::Help: // parseOptions() answers these two itself.
    case OptionId::Version:
    case OptionId::String: // readingOf() takes these three together.
    case OptionId::Number:
    case OptionId::Template:
    case OptionId::Sort: // takeColumns() takes this.
        break;
    case OptionId::Aux:
        options.identifiers.push_back(parseIdentifier(option, value));
        break;
    case OptionId::Format:
        options.format = parseFormat(option, value);
        break;
    case OptionId::Output:
        options.output = parseFile(option, value);
        if (value == "-")
            options.output.reset();
        break;
    case OptionId::FromList:
        options.source.list = parseFile(option, value);
        break;
    case OptionId::Null:
        options.source.nullSeparated = true;
        break;
    case OptionId::NoDuplicates:
        options.source.noDuplicates = true;
        break;
    case OptionId::Exclude:
        options.source.selection.excluded.push_back(parseGlob(option, value));
        break;
    case OptionId::Hidden:
        options.source.selection.hidden = true;
        break;
    case OptionId::MaxDepth:
        options.source.selection.maxDepth = parseCount(option, value);
        break;
    case OptionId::Suggest:
        options.mode = Mode::Suggest;
        break;
    case OptionId::Files:
        options.rows = Rows::Files;
        break;
    case OptionId::Unmatched:
        options.rows = Rows::Unmatched;
        break;
    case OptionId::Missing: // takeColumns() takes its value.
        options.rows = Rows::Missing;
        break;
    case OptionId::Explain:
        options.mode = Mode::Explain;
        options.explained = value;
        break;
    case OptionId::KeepGoing:
        options.source.keepGoing = true;
        break;
    case OptionId::Follow:
        options.source.follow = true;
        break;
    case OptionId::Jobs:
        options.jobs = parseCount(option, value);
        break;
    case OptionId::Quiet:
        options.quiet = true;
        break;
    case OptionId::Root:
        options.source.root = value;
        break;
    }
}

// The columns that are named, once it is known which there are.
void takeColumns(Options& options, const CommandLine& line)
{
    options.missingColumns = parseMissing(line.valuesOf(OptionId::Missing), options);
    options.sortKeys = parseSort(line.valuesOf(OptionId::Sort), options);
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

// The path relative to `root`: without that if it begins with it, as after a shell has completed
// it. The two may write the same folders differently, with more slashes or components ".".
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
    // A path that is the root itself may be meant as an entry of the same name in it, unless it
    // ends in a slash.
    return rest.empty() && path.back() != '/' ? path : std::string(rest);
}

void refuseUnknown(const CommandLine& line)
{
    if (!line.unknown.empty())
        failUsage(line.unknown + ": there is no such option; --help lists those that there are");
}

void refuseOfOtherProgram(const CommandLine& line, Program program)
{
    for (const CommandLine::Item& item : line.items) {
        if (!item.option->isOf(program))
            failUsage(std::string(item.option->name) + ": only " + nameOf(*item.option->only) +
                      " has this option");
    }
}

void refuseAnythingButOneRoot(const CommandLine& line)
{
    const std::vector<std::string> roots = line.valuesOf(OptionId::Root);
    if (roots.size() > 1)
        failUsage("there is more than one ROOT: '" + roots[0] + "' and '" + roots[1] +
                  "'; blanks and wildcards need quotes");
    if (roots.empty() && !line.has(OptionId::FromList) && !line.has(OptionId::Explain))
        failUsage("ROOT, the folder to import, is missing; --help shows examples");
}

// Refuses options of the group that were typed with one that they exclude, or without the one that
// they need.
void refuseContradictions(const CommandLine& line, OptionGroup group)
{
    for (const Option& option : optionTable()) {
        if (option.group != group || !line.has(option.id))
            continue;
        for (const OptionId id : option.excludes) {
            if (!line.has(id))
                continue;
            // Options that replace the table, --suggest and --explain, are named first.
            std::string first = option.name;
            std::string second = optionOf(id).name;
            if (option.id != OptionId::Suggest && option.id != OptionId::Explain)
                first.swap(second);
            failUsage(first + " and " + second + " exclude each other");
        }
        if (option.needs && !line.has(*option.needs))
            failUsage(std::string(option.name) + ": there is no " + optionOf(*option.needs).name);
    }
}

// Refuses an output that is one of the files of templates.
void spareTemplateFiles(const Options& options, const CommandLine& line)
{
    for (const std::string& value : line.valuesOf(OptionId::Template)) {
        const std::optional<std::string> file = templateFile(value);
        if (options.output && file)
            spareInput(*options.output, *file, "a file of templates");
    }
}

// Each process reads a part of a list, so it must be a file. A launcher may show its processes a
// terminal where there is none, so that is not asked.
void takeForManyProcesses(Options& options)
{
    if (options.source.list && *options.source.list == "-")
        failUsage("--from-list: standard input has but one reader; name a file, of which each "
                  "process reads a part");
    if (options.format == nullptr)
        options.format = formatNamed("csv");
}

// Refuses what a database cannot be asked for, if the format is one: it is a file, whose rows have
// no order, of cases.
void refuseWithDatabase(const Options& options)
{
    if (options.format == nullptr || !options.format->isDatabase())
        return;
    const std::string format = std::string("--format ") + options.format->name;
    if (!options.output)
        failUsage(format + ": there is no --output; a database cannot go to standard output");
    if (!options.sortKeys.empty())
        failUsage("--sort: " + *options.output +
                  " is a database, whose rows have no order; its queries have ORDER BY");
    if (options.rows == Rows::Missing)
        failUsage("--missing: " + *options.output +
                  " is a database, which holds all cases; write a table");
}

// Prints what --help or --version asked for.
void print(const std::string& text)
{
    Output output(std::nullopt);
    output.write(text);
    output.commit();
}

} // namespace

std::optional<Options> parseOptions(int argc, const char* const* argv, Program program)
{
    std::vector<std::string> words;
    for (int i = 1; i < argc; ++i)
        words.emplace_back(argv[i]);
    const CommandLine line = readCommandLine(words, program);
    Options options;
    options.source.selection.hidden = false;
    for (const CommandLine::Item& item : line.items)
        take(options, *item.option, item.value);
    if (program == Program::CasetableMpi)
        refuseStreams(line);
    options.reading = readingOf(line);
    if (line.has(OptionId::Version)) {
        print(std::string(nameOf(program)) + " " CASETABLE_VERSION "\n");
        return std::nullopt;
    }
    if (line.has(OptionId::Help)) {
        print(help(program));
        return std::nullopt;
    }

    refuseUnknown(line);
    refuseOfOtherProgram(line, program);
    refuseAnythingButOneRoot(line);
    refuseContradictions(line, OptionGroup::Source);
    if (options.source.root.empty() && line.has(OptionId::Root))
        failUsage("ROOT: the path is empty");
    // That --suggest takes no marker must be said before one is asked for.
    if (line.has(OptionId::Suggest))
        refuseContradictions(line, OptionGroup::Markers);
    else if (options.reading.patterns().empty())
        failUsage("no marker and no template is given; use --string, --number or --template, or "
                  "find some with --suggest");
    refuseContradictions(line, OptionGroup::Output);
    refuseContradictions(line, OptionGroup::Markers);
    takeColumns(options, line);

    if (options.mode == Mode::Explain) {
        options.explained = belowRoot(options.explained, options.source.root);
        if (options.explained.empty())
            failUsage("--explain: the path is empty");
    }
    // A list is taken with its hidden files: whoever made it has chosen.
    if (options.source.list)
        options.source.selection.hidden = true;
    if (options.format == nullptr && options.output)
        options.format = formatOfEnding(*options.output);
    if (program == Program::CasetableMpi)
        takeForManyProcesses(options);
    refuseWithDatabase(options);
    spareTemplateFiles(options, line);
    options.words = words;
    return options;
}

std::vector<std::string> arguments(const Options& options)
{
    std::vector<std::string> list;
    const auto add = [&list](OptionId id, const std::string& value) {
        list.push_back(std::string(optionOf(id).name) + '=' + value);
    };
    const auto addIf = [&list](OptionId id, bool isGiven) {
        if (isGiven)
            list.emplace_back(optionOf(id).name);
    };
    const Source& source = options.source;

    addIf(OptionId::Suggest, options.mode == Mode::Suggest);
    addIf(OptionId::KeepGoing, source.keepGoing);
    addIf(OptionId::Follow, source.follow);
    addIf(OptionId::Hidden, source.selection.hidden && !source.list);
    if (source.selection.maxDepth != Selection().maxDepth)
        add(OptionId::MaxDepth, std::to_string(source.selection.maxDepth));
    for (const Glob& glob : source.selection.excluded)
        add(OptionId::Exclude, glob.text());
    if (source.list)
        add(OptionId::FromList, *source.list);
    addIf(OptionId::Null, source.nullSeparated);
    addIf(OptionId::NoDuplicates, source.noDuplicates);
    if (options.reading.templates()) {
        for (const Template& each : options.reading.templates()->templates())
            add(OptionId::Template, templateValue(each.text()));
    } else {
        for (const MetadataPattern& pattern : options.reading.patterns()) {
            const bool isNumber = pattern.valueType == MetadataPattern::NumberValue;
            add(isNumber ? OptionId::Number : OptionId::String, pattern.pattern);
        }
    }
    for (const AuxFileIdentifier& identifier : options.identifiers)
        add(OptionId::Aux, identifier.syntaxName + '=' + identifier.tag);
    addIf(OptionId::Files, options.rows == Rows::Files);
    addIf(OptionId::Unmatched, options.rows == Rows::Unmatched);
    for (const std::string& value : missingValues(options))
        add(OptionId::Missing, value);
    for (const std::string& value : sortValues(options))
        add(OptionId::Sort, value);
    if (options.output)
        add(OptionId::Output, *options.output);
    // The format that the ending stands for need not be asked for, and beside --explain must not
    // be.
    if (options.format != nullptr &&
        !(options.output && options.format == formatOfEnding(*options.output)))
        add(OptionId::Format, options.format->name);
    addIf(OptionId::Quiet, options.quiet);
    if (options.jobs)
        add(OptionId::Jobs, std::to_string(*options.jobs));
    if (options.mode == Mode::Explain) {
        // A path that would lose its beginning, as that looks like the root, gets the root in
        // front.
        const bool isPlain = belowRoot(options.explained, source.root) == options.explained;
        add(OptionId::Explain, (isPlain ? "" : source.root + '/') + options.explained);
    }
    if (!source.root.empty() && source.root.front() == '-')
        list.emplace_back("--");
    if (!source.root.empty())
        list.push_back(source.root);
    return list;
}

} // namespace casetable
