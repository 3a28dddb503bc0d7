#include "casetable/suggesting/Suggest.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <functional>
#include <mutex>
#include <set>
#include <string>
#include <string_view>
#include <tuple>
#include <unordered_map>
#include <utility>
#include <vector>

#include "casetable/explaining/Summary.h"
#include "casetable/importing/Import.h"
#include "casetable/importing/Report.h"
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
#include "casetable/system/ShellWords.h"
#include "casetable/system/Thread.h"
#include "casetable/templates/Matcher.h"
#include "casetable/writing/TableWriter.h"
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

// Nothing, then numbers by value, then all else.
bool standsBefore(const std::string& left, const std::string& right)
{
    const auto rank = [](const std::string& text) {
        double value = 0;
        const bool isNumber = reading::convertsToNumber(text, value) && !std::isnan(value);
        return std::make_tuple(!text.empty(), !isNumber, isNumber ? value : 0,
                               std::string_view(text));
    };
    return rank(left) < rank(right);
}

// The first few values, cut where they are long.
std::string sample(const std::set<std::string>& values)
{
    Texts first(std::min(values.size(), sampleSize));
    std::partial_sort_copy(values.begin(), values.end(), first.begin(), first.end(), standsBefore);
    std::string text;
    for (const std::string& value : first) {
        const std::string shown = value.empty() ? "''" : printable(value);
        const std::string_view cut = fitting(shown, cellWidth);
        text += (text.empty() ? "" : ", ") + std::string(cut) +
                (cut.size() < shown.size() ? "..." : "");
    }
    return text + (first.size() < values.size() ? ", ..." : "");
}

// A row for each column, of its name, type, number of values, and sample.
std::vector<Row> columnRows(const CaseTable& table)
{
    std::vector<Row> rows;
    for (std::size_t column = 0; column < table.patterns.size(); ++column) {
        const MetadataPattern& pattern = table.patterns[column];
        const bool isNumber = pattern.valueType == MetadataPattern::NumberValue;
        std::set<std::string> values;
        for (std::size_t i = column; i < table.cells.size(); i += table.patterns.size())
            values.insert(table.cells[i]);
        rows.push_back({{pattern.pattern, isNumber ? "number" : "text",
                         std::to_string(values.size()), sample(values)},
                        {}});
    }
    return rows;
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

// A line that names two files of one name in one case, as different runs have where a column is
// missing; empty where there are none. Hashes spare the memory of names.
std::string mixedLine(const FileRows& files)
{
    const auto nameInCase = [](const FileRow& file) {
        return std::to_string(file.caseIndex) +
               std::string(file.path.substr(file.path.rfind('/') + 1)) + '/';
    };
    std::unordered_map<std::size_t, std::size_t> seen;
    seen.reserve(files.count);
    for (std::size_t index = 0; index < files.count; ++index) {
        const FileRow file = files.file(index);
        const std::string name = nameInCase(file);
        const auto [place, isNew] = seen.emplace(std::hash<std::string>()(name), index);
        const FileRow other = files.file(place->second);
        if (!isNew && nameInCase(other) == name)
            return "different runs may be one case: " + printable(other.path) + " and " +
                   printable(file.path) + " are not told apart\n";
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
    const std::vector<Row> rows = columnRows(import.table());
    Report report;
    report.columns = {{"column", Column::Kind::Text},
                      {"type", Column::Kind::Text},
                      {"values", Column::Kind::Count},
                      {"sample", Column::Kind::Text}};
    report.rowCount = rows.size();
    report.row = [&rows](std::size_t index) { return rows[index]; };
    const std::string counts = templateLines(list, files) + countLine(import) + mixedLine(files);
    catchInterrupts();
    output.write(commandLine(options, templates) + "\n\n");
    writeTable(report, output);
    output.write('\n' + counts);
    output.commit();
    return ExitCode::Cases;
}

} // namespace casetable
