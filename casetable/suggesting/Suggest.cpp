#include "casetable/suggesting/Suggest.h"

#include <algorithm>
#include <cstddef>
#include <functional>
#include <mutex>
#include <set>
#include <string>
#include <string_view>
#include <unordered_set>
#include <utility>
#include <vector>

#include "casetable/explaining/Summary.h"
#include "casetable/importing/Import.h"
#include "casetable/importing/ShardImport.h"
#include "casetable/importing/ShardWorkers.h"
#include "casetable/listing/Listing.h"
#include "casetable/options/Options.h"
#include "casetable/options/Templates.h"
#include "casetable/suggesting/TemplateSuggestion.h"
#include "casetable/system/Console.h"
#include "casetable/system/Interrupt.h"
#include "casetable/system/Output.h"
#include "casetable/system/Printable.h"
#include "casetable/system/Processors.h"
#include "casetable/system/Thread.h"
#include "casetable/system/ShellWords.h"
#include "casetable/templates/Matcher.h"
#include "crawler/private/PathReading.h"

namespace casetable {

namespace {

using Texts = std::vector<std::string>;

const std::size_t sampleSize = 5;
const std::size_t cellWidth = 24;

std::string commandLine(const Options& options, const Texts& templates)
{
    Options source;
    source.source = options.source;
    source.source.root.clear();
    std::string line = "casetable";
    for (const std::string& argument : arguments(source))
        line += ' ' + shellWord(argument);
    for (const std::string& text : templates)
        line += " -t " + shellWord(templateValue(text));
    const std::string& root = options.source.root;
    return root.empty() ? line : line + (root.front() == '-' ? " -- " : " ") + shellWord(root);
}

std::string cell(const std::string& bytes)
{
    const std::string text = printable(bytes);
    const std::string_view beginning = fitting(text, cellWidth);
    return beginning.size() == text.size() ? text : std::string(beginning) + "...";
}

// Numbers by value, all else by bytes.
bool standsBefore(const std::string& left, const std::string& right)
{
    double a = 0;
    double b = 0;
    if (reading::convertsToNumber(left, a) && reading::convertsToNumber(right, b) && a != b)
        return a < b;
    return left < right;
}

// The first few values.
std::string sample(const std::set<std::string>& values)
{
    Texts first(std::min(values.size(), sampleSize));
    std::partial_sort_copy(values.begin(), values.end(), first.begin(), first.end(), standsBefore);
    std::string text;
    for (const std::string& value : first)
        text += (text.empty() ? "" : ", ") + (value.empty() ? "''" : cell(value));
    return text + (first.size() < values.size() ? ", ..." : "");
}

// A line for each column, aligned.
std::string columnLines(const CaseTable& table)
{
    std::vector<Texts> rows = {{"column", "type", "values", "sample"}};
    for (std::size_t column = 0; column < table.patterns.size(); ++column) {
        std::set<std::string> values;
        for (std::size_t row = 0; row < table.caseCount(); ++row)
            values.insert(table.cells[row * table.patterns.size() + column]);
        const MetadataPattern& pattern = table.patterns[column];
        const bool isNumber = pattern.valueType == MetadataPattern::NumberValue;
        rows.push_back({pattern.pattern, isNumber ? "number" : "text",
                        std::to_string(values.size()), sample(values)});
    }
    std::vector<std::size_t> widths(rows.front().size(), 0);
    for (const Texts& row : rows) {
        for (std::size_t i = 0; i < row.size(); ++i)
            widths[i] = std::max(widths[i], displayWidth(row[i]));
    }
    std::string lines;
    for (const Texts& row : rows)
        lines += row[0] + std::string(widths[0] - row[0].size() + 2, ' ') + row[1] +
                 std::string(widths[1] - row[1].size() + 2 + widths[2] - row[2].size(), ' ') +
                 row[2] + "  " + row[3] + '\n';
    return lines;
}

std::string counted(std::size_t count, const std::string& one, const std::string& many)
{
    return std::to_string(count) + ' ' + (count == 1 ? one : many);
}

// How many files each template reads; of a single one the counts of all tell.
std::string templateLines(const TemplateList& templates, const FileRows& files)
{
    if (templates.templates().size() == 1)
        return "";
    std::vector<Matcher> matchers(templates.templates().begin(), templates.templates().end());
    std::vector<std::size_t> counts(matchers.size(), 0);
    for (std::size_t i = 0; i < files.count; ++i) {
        const std::string_view path = files.file(i).path;
        const auto matcher = std::find_if(matchers.begin(), matchers.end(),
                                          [path](Matcher& each) { return each.match(path); });
        if (matcher != matchers.end())
            ++counts[static_cast<std::size_t>(matcher - matchers.begin())];
    }
    std::string lines;
    for (std::size_t i = 0; i < counts.size(); ++i)
        lines += counted(counts[i], "file: ", "files: ") +
                 printable(templates.templates()[i].text()) + '\n';
    return lines + '\n';
}

// A file's name with its case: what two files of different runs share where a column is missing.
std::string nameInCase(const FileRow& file)
{
    return std::to_string(file.caseIndex) +
           std::string(file.path.substr(file.path.rfind('/') + 1)) + '/';
}

// A line that names two such files; empty where there are none. Hashes spare the memory of names.
std::string mixedLine(const FileRows& files)
{
    std::unordered_set<std::size_t> hashes;
    for (std::size_t later = 0; later < files.count; ++later) {
        const std::string name = nameInCase(files.file(later));
        if (hashes.insert(std::hash<std::string>()(name)).second)
            continue;
        std::size_t earlier = 0;
        while (earlier < later && nameInCase(files.file(earlier)) != name)
            ++earlier;
        if (earlier != later)
            return "different runs may be one case: " +
                   printable(files.file(earlier).path) + " and " +
                   printable(files.file(later).path) + " are not told apart\n";
    }
    return "";
}

std::string countLine(const Import& import)
{
    const std::size_t files = import.fileCount();
    const FileRows left = import.unmatchedFiles();
    std::string line = "reads " + std::to_string(import.matchedCount()) + " of " +
                       counted(files, "file", "files") + ", " +
                       counted(import.table().caseCount(), "case", "cases");
    if (left.count > 0)
        line += "; not " + printable(left.file(0).path) + (left.count > 1 ? " and others" : "");
    return line + '\n';
}

std::vector<std::string_view> pathsOf(const std::vector<Shard>& shards)
{
    std::vector<std::string_view> paths;
    for (const Shard& shard : shards) {
        const std::vector<std::string_view> more = shard.paths();
        paths.insert(paths.end(), more.begin(), more.end());
    }
    return paths;
}

// On as many threads as the user wants.
Partial importAll(std::vector<Shard> shards, const Options& options, const Reading& reading,
                  const KeptFiles& kept)
{
    Partial all;
    std::mutex mutex; // Guards the result.
    ShardWorkers workers(options.jobs.value_or(availableProcessors()), [&](const Shard& shard) {
        Partial partial = importShard(shard, reading, {}, kept);
        const std::lock_guard<std::mutex> lock(mutex);
        all.merge(std::move(partial));
    });
    runOnThread(
        [&] {
            for (Shard& shard : shards)
                workers.give(std::move(shard));
            workers.finish();
        },
        [] {});
    return all;
}

} // namespace

ExitCode suggest(const Options& options, Listing& listing, Output& output, Console& console)
{
    std::vector<Shard> shards;
    listing.run(ShardSize(), {[&shards](Shard shard) { shards.push_back(std::move(shard)); }});
    // Nothing is half-written yet, so an interrupt may end the program at once.
    releaseInterrupts();
    throwIfInterrupted();
    const std::vector<std::string_view> paths = pathsOf(shards);
    const Texts templates = suggestTemplates(paths);
    if (templates.empty()) {
        const std::string why =
            paths.empty() ? noFiles(options.source)
                          : "no part varies in a regular way in the names of " +
                                counted(paths.size(), "file", "files") +
                                "; --explain tells how a template or marker of yours reads one";
        console.error("no template can be suggested: " + why +
                      hiddenRemark(listing.hiddenLeftOut()));
        return ExitCode::NoCases;
    }
    const TemplateList list(templates);
    const Reading reading(list);
    const KeptFiles kept = {true, true, ""};
    const Import import(importAll(std::move(shards), options, reading, kept), listing.root(),
                        reading, {}, kept);
    const FileRows files = import.matchedFiles();
    const std::string text = commandLine(options, templates) + "\n\n" +
                             columnLines(import.table()) + '\n' + templateLines(list, files) +
                             countLine(import) + mixedLine(files);
    catchInterrupts();
    output.write(text);
    output.commit();
    return ExitCode::Cases;
}

} // namespace casetable
