#include <algorithm>
#include <cstdio>
#include <string_view>
#include <utility>

#include "casetable/suggesting/Suggest.h"
#include "casetable/system/Printable.h"

namespace casetable {

namespace {

const std::size_t cellWidth = 24;

// Safe to stand in a command line without quotes, and no beginning of a pattern or an assignment.
bool isPlain(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
           std::string_view("_-+./=,:@%").find(c) != std::string_view::npos;
}

// What is shown as escapes, and so is no exact text, goes as numbers.
std::string shellWord(const std::string& bytes)
{
    // Some shells look a word that begins with "=" up as a command.
    if (!bytes.empty() && bytes.front() != '=' && std::all_of(bytes.begin(), bytes.end(), isPlain))
        return bytes;
    if (printable(bytes) == bytes) {
        std::string word = "'";
        for (const char c : bytes)
            word += c == '\'' ? std::string("'\\''") : std::string(1, c);
        return word + "'";
    }
    std::string word = "$'";
    for (const char c : bytes) {
        char octal[8];
        const auto byte = static_cast<unsigned char>(c);
        static_cast<void>(
            std::snprintf(octal, sizeof octal, "\\%03o", static_cast<unsigned>(byte)));
        if (byte < 0x20 || byte > 0x7e || c == '\'' || c == '\\')
            word += octal;
        else
            word += c;
    }
    return word + "'";
}

std::string markerWords(const MetadataPattern& pattern)
{
    const bool number = pattern.valueType == MetadataPattern::NumberValue;
    if (pattern.pattern.front() == '-')
        return shellWord((number ? "--number=" : "--string=") + pattern.pattern);
    return (number ? "-n " : "-s ") + shellWord(pattern.pattern);
}

std::string cell(const std::string& bytes)
{
    const std::string text = printable(bytes);
    const std::string_view beginning = fitting(text, cellWidth);
    return beginning.size() == text.size() ? text : std::string(beginning) + "...";
}

std::string list(const std::vector<std::string>& values, bool goesOn)
{
    std::string text;
    for (const std::string& value : values) {
        const bool plain = !value.empty() && value.find(',') == std::string::npos;
        text += (text.empty() ? "" : ", ") + (plain ? cell(value) : '\'' + cell(value) + '\'');
    }
    return text + (goesOn ? ", ..." : "");
}

std::string counted(std::size_t count, const std::string& one, const std::string& many)
{
    return std::to_string(count) + ' ' + (count == 1 ? one : many);
}

std::string table(const std::vector<SuggestedPattern>& patterns)
{
    std::size_t markerWidth = std::string_view("marker").size();
    std::size_t countWidth = std::string_view("values").size();
    for (const SuggestedPattern& suggested : patterns) {
        markerWidth = std::max(markerWidth, displayWidth(printable(suggested.pattern.pattern)));
        countWidth = std::max(countWidth, std::to_string(suggested.valueCount).size());
    }
    const auto line = [&](const std::string& marker, const std::string& type,
                          const std::string& count, const std::string& sample) {
        return marker + std::string(markerWidth - displayWidth(marker) + 2, ' ') + type +
               std::string(8 - type.size() + countWidth - count.size(), ' ') + count + "  " +
               sample + '\n';
    };
    std::string text = line("marker", "type", "values", "sample");
    for (const SuggestedPattern& suggested : patterns)
        text +=
            line(printable(suggested.pattern.pattern),
                 suggested.pattern.valueType == MetadataPattern::NumberValue ? "number" : "text",
                 std::to_string(suggested.valueCount),
                 list(suggested.sample, suggested.sample.size() < suggested.valueCount));
    return text;
}

std::string counts(const Suggestion& suggestion)
{
    return "matches " + std::to_string(suggestion.matchedFiles) + " of " +
           counted(suggestion.files, "file", "files") + ", " +
           counted(suggestion.cases, "case", "cases");
}

std::string unmarkedHint(const Suggestion& suggestion)
{
    return "the paths differ at their beginning (" + list(suggestion.unmarked, false) +
           "), where no marker can stand";
}

// Empty where there is nothing to say.
std::string mixedHint(const MixedFiles& mixed)
{
    const auto both = [](const std::pair<std::string, std::string>& files) {
        return printable(files.first) + " and " + printable(files.second);
    };
    if (!mixed.sameName.first.empty())
        return "different runs may be one case: " + both(mixed.sameName) + " are not told apart";
    if (!mixed.likeNames.first.empty())
        return "a case holds files of like names, such as " + both(mixed.likeNames) +
               "; if these are different runs, a marker is missing";
    return "";
}

std::string lineOf(const std::string& text)
{
    return text.empty() ? text : text + '\n';
}

std::string commandAndTable(const SuggestedRun& run)
{
    return commandLine(run) + "\n\n" + table(run.suggestion.patterns) + '\n';
}

// The first marker mostly holds the name of the root.
std::string besideRoot(const RunAbove& above)
{
    const bool named = above.run.suggestion.patterns.front().pattern.pattern != "/";
    return "the other folders beside " + cell(above.name) + " are read as well, and their files " +
           (named ? "seldom match" : "may be in the table");
}

} // namespace

std::string commandLine(const SuggestedRun& run)
{
    std::string line = "casetable";
    for (const std::string& argument : run.given)
        line += ' ' + shellWord(argument);
    for (const SuggestedPattern& suggested : run.suggestion.patterns)
        line += ' ' + markerWords(suggested.pattern);
    if (run.root.empty())
        return line;
    return line + (run.root.front() == '-' ? " -- " : " ") + shellWord(run.root);
}

std::string suggestionText(const SuggestedRun& run, const std::optional<RunAbove>& above)
{
    const Suggestion& suggestion = run.suggestion;
    if (suggestion.patterns.empty() && above)
        return commandAndTable(above->run) + counts(above->run.suggestion) + '\n' +
               lineOf(mixedHint(above->run.suggestion.mixed)) + "ROOT is the folder above: below " +
               cell(above->name) + ' ' + unmarkedHint(suggestion) + "; " + besideRoot(*above) +
               '\n';
    if (suggestion.patterns.empty())
        return "no text is followed by varying values in most paths " +
               (run.root.empty() ? "in the list" : "below " + run.root) +
               (suggestion.unmarked.empty() ? "" : "; " + unmarkedHint(suggestion));
    std::string text = commandAndTable(run) + counts(suggestion) + '\n';
    const std::string mixed = mixedHint(suggestion.mixed);
    if (!above)
        return text + lineOf(mixed) +
               (suggestion.unmarked.empty() ? "" : unmarkedHint(suggestion) + '\n');
    // Where values cannot be read at the beginning, that is mostly the reason.
    text += suggestion.unmarked.empty() ? mixed : unmarkedHint(suggestion);
    return text + "; the folder above as ROOT makes room:\n\n" + commandLine(above->run) + "\n\n" +
           counts(above->run.suggestion) + "; " + besideRoot(*above) + '\n' +
           lineOf(mixedHint(above->run.suggestion.mixed));
}

} // namespace casetable
