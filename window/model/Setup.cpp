#include "window/model/Setup.h"

#include <algorithm>
#include <tuple>
#include <utility>

#include "casetable/options/CommandLine.h"
#include "casetable/options/OptionTable.h"
#include "casetable/options/Templates.h"
#include "casetable/system/ShellWords.h"

namespace casetable {

namespace {

bool isBlank(const std::string& text)
{
    return text.find_first_not_of(" \t") == std::string::npos;
}

bool counts(const Setup::AuxRow& row)
{
    return !row.wildcard.empty() || !row.tag.empty();
}

auto sourceOf(const Setup& setup)
{
    return std::tie(setup.root, setup.list, setup.nullSeparated, setup.excluded, setup.hidden,
                    setup.maxDepth, setup.follow, setup.keepGoing);
}

bool areSame(const std::vector<Setup::Marker>& left, const std::vector<Setup::Marker>& right)
{
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](const Setup::Marker& a, const Setup::Marker& b) {
                          return a.text == b.text && a.isNumber == b.isNumber;
                      });
}

bool areSame(const std::vector<Setup::AuxRow>& left, const std::vector<Setup::AuxRow>& right)
{
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](const Setup::AuxRow& a, const Setup::AuxRow& b) {
                          return a.wildcard == b.wildcard && a.tag == b.tag;
                      });
}

// The texts for which a value of --template stands. That of no file is not judged, so that a
// template with an error comes back as it was typed.
std::vector<std::string> templateTexts(const std::string& value)
{
    if (!templateFile(value))
        return {value.substr(0, 2) == "@@" ? value.substr(1) : value};
    std::vector<std::string> texts;
    const TemplateList list = parseTemplates({value});
    for (const Template& each : list.templates())
        texts.push_back(each.text());
    return texts;
}

Setup::AuxRow auxRow(const std::string& value)
{
    const std::size_t divider = value.rfind('=');
    if (divider == std::string::npos)
        failUsage("--aux '" + value + "': expected SYNTAX=TAG");
    return {value.substr(0, divider), value.substr(divider + 1)};
}

std::size_t depthOf(const std::string& value)
{
    const bool isNumber = !value.empty() && value.size() < 10 &&
                          value.find_first_not_of("0123456789") == std::string::npos;
    const std::size_t depth = isNumber ? std::stoul(value) : 0;
    if (depth == 0)
        failUsage("--max-depth '" + value + "': expected a whole number from 1");
    return depth;
}

// Enters what one option means; returns whether it means anything here. arguments() does the
// reverse.
bool take(Setup& setup, const CommandLine::Item& item)
{
    switch (item.option->id) {
    case OptionId::String:
    case OptionId::Number:
        setup.by = Setup::By::Markers;
        setup.markers.push_back({item.value, item.option->id == OptionId::Number});
        return true;
    case OptionId::Template:
        for (std::string& text : templateTexts(item.value))
            setup.templates.push_back(std::move(text));
        return true;
    case OptionId::Aux:
        setup.auxRows.push_back(auxRow(item.value));
        return true;
    case OptionId::FromList:
        setup.list = item.value;
        return true;
    case OptionId::Null:
        return setup.nullSeparated = true;
    case OptionId::Exclude:
        setup.excluded.push_back(item.value);
        return true;
    case OptionId::Hidden:
        return setup.hidden = true;
    case OptionId::MaxDepth:
        setup.maxDepth = depthOf(item.value);
        return true;
    case OptionId::Sort:
        setup.sort.push_back(item.value);
        return true;
    case OptionId::KeepGoing:
        return setup.keepGoing = true;
    case OptionId::Follow:
        return setup.follow = true;
    case OptionId::Root:
        if (!setup.root.empty())
            failUsage("there is more than one ROOT: '" + setup.root + "' and '" + item.value +
                      "'; blanks and wildcards need quotes");
        setup.root = item.value;
        return true;
    default:
        return false;
    }
}

// Refuses a source for which there is no command line.
void refuseContradictions(const Setup& setup)
{
    if (setup.list && !setup.root.empty())
        failUsage("--from-list and ROOT exclude each other");
    if (setup.by == Setup::By::Markers && !setup.templates.empty())
        failUsage("--template and markers exclude each other");
}

Options parsed(const std::vector<std::string>& words)
{
    std::vector<const char*> argv = {"casetable"};
    for (const std::string& word : words)
        argv.push_back(word.c_str());
    return parseOptions(static_cast<int>(argv.size()), argv.data()).value();
}

} // namespace

bool Setup::hasReading() const
{
    if (by == By::Templates)
        return !std::all_of(templates.begin(), templates.end(), isBlank);
    return std::any_of(markers.begin(), markers.end(),
                       [](const Marker& marker) { return !marker.text.empty(); });
}

bool haveSameSource(const Setup& left, const Setup& right)
{
    return sourceOf(left) == sourceOf(right);
}

bool operator==(const Setup& left, const Setup& right)
{
    return haveSameSource(left, right) && left.by == right.by &&
           left.templates == right.templates && areSame(left.markers, right.markers) &&
           areSame(left.auxRows, right.auxRows) && left.sort == right.sort;
}

Setup withSourceOf(Setup setup, const Setup& source)
{
    Setup result = source;
    result.by = setup.by;
    result.templates = std::move(setup.templates);
    result.markers = std::move(setup.markers);
    result.auxRows = std::move(setup.auxRows);
    result.sort = std::move(setup.sort);
    return result;
}

Setup forOpenFiles(Setup setup, const Setup& open)
{
    if (setup.hasSource())
        return setup;
    if (haveSameSource(setup, Setup()))
        return withSourceOf(std::move(setup), open);
    setup.root = open.root;
    setup.list = open.list;
    setup.nullSeparated = setup.nullSeparated || open.nullSeparated;
    return setup;
}

ReadSetup readSetup(const std::vector<std::string>& arguments)
{
    const CommandLine line = readCommandLine(arguments);
    if (!line.unknown.empty())
        failUsage(line.unknown + ": there is no such option; --help lists those that there are");
    ReadSetup read;
    for (const CommandLine::Item& item : line.items) {
        if (!take(read.setup, item))
            read.leftOut.emplace_back(item.option->name);
    }
    refuseContradictions(read.setup);
    return read;
}

std::vector<std::string> arguments(const Setup& setup)
{
    std::vector<std::string> words;
    // Short where there is a letter, as people type it.
    const auto add = [&words](OptionId id, const std::string& value) {
        const Option& option = optionOf(id);
        if (option.letter != '\0' && !value.empty()) {
            words.push_back(std::string("-") + option.letter);
            words.push_back(value);
        } else {
            words.push_back(std::string(option.name) + '=' + value);
        }
    };
    const auto addIf = [&words](OptionId id, bool isGiven) {
        if (isGiven)
            words.emplace_back(optionOf(id).name);
    };

    addIf(OptionId::KeepGoing, setup.keepGoing);
    addIf(OptionId::Follow, setup.follow);
    addIf(OptionId::Hidden, setup.hidden);
    if (setup.maxDepth)
        add(OptionId::MaxDepth, std::to_string(*setup.maxDepth));
    for (const std::string& glob : setup.excluded)
        add(OptionId::Exclude, glob);
    if (setup.list)
        add(OptionId::FromList, *setup.list);
    addIf(OptionId::Null, setup.nullSeparated);
    if (setup.by == Setup::By::Templates) {
        for (const std::string& text : setup.templates) {
            if (!isBlank(text))
                add(OptionId::Template, templateValue(text));
        }
    } else {
        for (const Setup::Marker& marker : setup.markers) {
            if (!marker.text.empty())
                add(marker.isNumber ? OptionId::Number : OptionId::String, marker.text);
        }
    }
    for (const Setup::AuxRow& row : setup.auxRows) {
        if (counts(row))
            add(OptionId::Aux, row.wildcard + '=' + row.tag);
    }
    for (const std::string& value : setup.sort)
        add(OptionId::Sort, value);
    if (!setup.root.empty() && setup.root.front() == '-')
        words.emplace_back("--");
    if (!setup.root.empty())
        words.push_back(setup.root);
    return words;
}

std::string commandLine(const Setup& setup)
{
    std::string line = "casetable";
    for (const std::string& word : arguments(setup))
        line += ' ' + shellWord(word);
    return line;
}

Options checked(const Setup& setup, const std::vector<std::string>& more)
{
    std::vector<std::string> words = more;
    for (std::string& word : arguments(setup))
        words.push_back(std::move(word));
    return parsed(words);
}

// --suggest is the mode that takes a source and no reading.
Source checkedSource(const Setup& setup)
{
    std::vector<std::string> words = arguments(withSourceOf(Setup(), setup));
    words.insert(words.begin(), optionOf(OptionId::Suggest).name);
    return parsed(words).source;
}

} // namespace casetable
