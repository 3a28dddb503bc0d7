// Makes the manual page and the completions of shells from their templates, when these are built:
// copies standard input to standard output, and puts what the table of options says in place of
// names such as @ZSH_OPTIONS@. With an argument, those of casetable-mpi.

#include <algorithm>
#include <cstddef>
#include <iostream>
#include <iterator>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "casetable/options/OptionTable.h"

namespace casetable {

namespace {

using Texts = std::vector<std::string>;

std::string joined(const Texts& texts, const std::string& between)
{
    std::string all;
    for (const std::string& text : texts)
        all += (all.empty() ? "" : between) + text;
    return all;
}

// `text` with a backslash before each byte that is among `letters`.
std::string escaped(const std::string& text, std::string_view letters)
{
    std::string result;
    for (const char c : text) {
        if (letters.find(c) != std::string_view::npos)
            result += '\\';
        result += c;
    }
    return result;
}

Texts namesOf(const Option& option)
{
    if (option.letter == '\0')
        return {option.name};
    return {std::string("-") + option.letter, option.name};
}

// Those of one program. ROOT is not among them, which each shell completes in its own way.
std::vector<Option> options(Program program = Program::Casetable)
{
    std::vector<Option> found;
    for (const Option& option : optionTable()) {
        if (option.id != OptionId::Root && option.isOf(program))
            found.push_back(option);
    }
    return found;
}

std::string manualOf(Program program, OptionGroup group)
{
    std::string text;
    for (const Option& option : options(program)) {
        if (option.group != group)
            continue;
        Texts names = namesOf(option);
        for (std::string& name : names)
            name = "\\fB" + escaped(name, "-") + "\\fR";
        text += ".TP\n" + joined(names, ", ");
        if (takesValue(option))
            text += std::string(" \\fI") + option.argument + "\\fR";
        text += '\n' + option.manual;
    }
    return text;
}

std::string bashNames()
{
    Texts names;
    for (const Option& option : options()) {
        for (const std::string& name : namesOf(option))
            names.push_back(name);
    }
    return joined(names, " ");
}

// The names of the options whose value is completed so, as a pattern of bash's `case`.
std::string bashPattern(Completion completion)
{
    Texts names;
    for (const Option& option : options()) {
        if (takesValue(option) && option.completion == completion)
            names.push_back(joined(namesOf(option), " | "));
    }
    return joined(names, " | ");
}

std::string bashWords()
{
    std::string text;
    for (const Option& option : options()) {
        if (option.completion == Completion::Words)
            text += "        " + joined(namesOf(option), " | ") +
                    ")\n            mapfile -t COMPREPLY < <(compgen -W '" +
                    joined(option.words, " ") + "' -- \"$current\")\n            return\n" +
                    "            ;;\n";
    }
    return text;
}

bool excludeEachOther(const Option& one, const Option& two)
{
    const auto excludes = [](const Option& option, OptionId id) {
        return std::find(option.excludes.begin(), option.excludes.end(), id) !=
               option.excludes.end();
    };
    return excludes(one, two.id) || excludes(two, one.id);
}

// What may not follow the option, as zsh takes it: also the option itself, unless it is repeatable.
std::string zshExclusions(const Option& option)
{
    Texts names;
    for (const Option& other : optionTable()) {
        if (other.id == option.id ? option.repeatable : !excludeEachOther(option, other))
            continue;
        for (const std::string& name : namesOf(other))
            names.push_back(other.id == OptionId::Root ? "1" : name);
    }
    return joined(names, " ");
}

// `text` as it is written within single quotes.
std::string zshQuoted(const std::string& text)
{
    std::string result;
    for (const char c : text)
        result += c == '\'' ? "'\\''" : std::string(1, c);
    return result;
}

std::string zshOptions()
{
    Texts lines;
    for (const Option& option : options()) {
        const bool ends = option.id == OptionId::Help || option.id == OptionId::Version;
        const std::string exclusions = ends ? "- *" : zshExclusions(option);
        std::string rest = "[" + zshQuoted(escaped(option.help, "[]:\\")) + ']';
        if (takesValue(option)) {
            rest += std::string(":") + escaped(option.argument, ":") + ':';
            rest += option.completion == Completion::Files   ? "_files"
                    : option.completion == Completion::Words ? '(' + joined(option.words, " ") + ')'
                                                             : " ";
        }
        const std::string name = option.name + std::string(takesValue(option) ? "=" : "");
        const std::string before =
            (exclusions.empty() ? "" : '(' + exclusions + ')') + (option.repeatable ? "*" : "");
        lines.push_back("    '" + before +
                        (option.letter == '\0'
                             ? name + rest
                             : std::string("'{-") + option.letter + ',' + name + "}'" + rest) +
                        "' \\\n");
    }
    return joined(lines, "");
}

std::string fishOptions()
{
    std::string text;
    for (const Option& option : options()) {
        text += "complete -c casetable";
        if (option.letter != '\0')
            text += std::string(" -s ") + option.letter;
        text += std::string(" -l ") + (option.name + 2);
        if (option.completion == Completion::Words)
            text += " -x -a '" + joined(option.words, " ") + '\'';
        else if (option.completion == Completion::Files)
            text += " -r -F";
        else if (takesValue(option))
            text += " -x";
        text += " -d '" + escaped(option.help, "\\'") + "'\n";
    }
    return text;
}

void complete(Program program, std::istream& in, std::ostream& out)
{
    const std::map<std::string, std::string> texts = {
        {"VERSION", CASETABLE_VERSION},
        {"MANUAL_MARKERS", manualOf(program, OptionGroup::Markers)},
        {"MANUAL_SOURCE", manualOf(program, OptionGroup::Source)},
        {"MANUAL_OUTPUT", manualOf(program, OptionGroup::Output)},
        {"MANUAL_OTHER", manualOf(program, OptionGroup::Other)},
        {"BASH_NAMES", bashNames()},
        {"BASH_WORDS", bashWords()},
        {"BASH_FILES", bashPattern(Completion::Files)},
        {"BASH_OTHERS", bashPattern(Completion::Nothing)},
        {"ZSH_OPTIONS", zshOptions()},
        {"FISH_OPTIONS", fishOptions()}};
    std::string text{std::istreambuf_iterator<char>(in), {}};
    for (const auto& [name, replacement] : texts) {
        const std::string place = '@' + name + '@';
        for (std::size_t at = 0; (at = text.find(place, at)) != std::string::npos;
             at += replacement.size())
            text.replace(at, place.size(), replacement);
    }
    out << text;
}

} // namespace

} // namespace casetable

int main(int argc, char** /*argv*/)
{
    using casetable::Program;
    casetable::complete(argc > 1 ? Program::CasetableMpi : Program::Casetable, std::cin, std::cout);
    return std::cout.flush() ? 0 : 1;
}
