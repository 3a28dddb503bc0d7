#include <cstdlib>
#include <ctime>
#include <exception>
#include <mutex>
#include <new>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "casetable/explaining/Explain.h"
#include "casetable/explaining/ExplainTemplate.h"
#include "casetable/explaining/LeftOut.h"
#include "casetable/explaining/Summary.h"
#include "casetable/explaining/Tally.h"
#include "casetable/explaining/Unmatched.h"
#include "casetable/importing/Import.h"
#include "casetable/importing/Missing.h"
#include "casetable/importing/Report.h"
#include "casetable/importing/ShardImport.h"
#include "casetable/importing/ShardWorkers.h"
#include "casetable/importing/Sorting.h"
#include "casetable/listing/Listing.h"
#include "casetable/listing/ReadList.h"
#include "casetable/options/Options.h"
#include "casetable/suggesting/Suggest.h"
#include "casetable/system/Console.h"
#include "casetable/system/ExitCode.h"
#include "casetable/system/Interrupt.h"
#include "casetable/system/Output.h"
#include "casetable/system/OutputGuards.h"
#include "casetable/system/Printable.h"
#include "casetable/system/Processors.h"
#include "casetable/system/ShellWords.h"
#include "casetable/writing/SqliteWriter.h"

namespace casetable {

namespace {

ExitCode explainPath(const Options& options, Output& output)
{
    const bool inColour = output.showsColours();
    const Explanation explanation = options.reading.visit(
        [&](const auto& by) { return explain(options.explained, by, inColour); });
    output.write(explanation.text);
    const std::string leftOut = whyLeftOut(options.source.selection, options.explained);
    if (!leftOut.empty())
        output.write("an import does not look at it: " + printable(leftOut) + '\n');
    output.commit();
    return explanation.isMatched && leftOut.empty() ? ExitCode::Cases : ExitCode::NoCases;
}

Report makeReport(const Options& options, const Import& import)
{
    switch (options.rows) {
    case Rows::Files:
        return fileReport(import.table(), import.matchedFiles());
    case Rows::Unmatched:
        return unmatchedReport(import.unmatchedFiles(), options.reading);
    case Rows::Missing: // importTable() has it already.
    case Rows::Cases:
        break;
    }
    return caseReport(import.table());
}

// The time by ISO 8601, in UTC.
std::string now()
{
    const std::time_t seconds = std::time(nullptr);
    std::tm parts = {};
    char text[32];
    ::gmtime_r(&seconds, &parts);
    return {text, std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &parts)};
}

Database makeDatabase(const Options& options, const Import& import)
{
    const Source& source = options.source;
    Database database;
    database.cases = caseReport(import.table());
    database.files = import.matchedFiles();
    if (options.rows == Rows::Unmatched)
        database.unmatched = unmatchedReport(import.unmatchedFiles(), options.reading);
    std::string commandLine = "casetable";
    for (const std::string& word : options.words)
        commandLine += ' ' + shellWord(word);
    database.about = {{"program", "casetable"},
                      {"version", CASETABLE_VERSION},
                      {"command line", commandLine},
                      {"root", source.list ? listName(*source.list) : source.root},
                      {"time", now()}};
    return database;
}

// The files that the output needs one by one.
KeptFiles keptFiles(const Options& options, bool isDatabase)
{
    KeptFiles kept;
    kept.matched = isDatabase || options.rows == Rows::Files;
    kept.unmatched = options.rows == Rows::Unmatched;
    if (options.output && !options.source.list)
        kept.watched = pathBelow(options.source.root, *options.output);
    return kept;
}

// What the tally is told: the matched files if remarks are shown; of the others those that are not
// listed by the output, and all where it may turn out that there are no cases.
FileVisitor visitorOf(Tally& tally, bool showsRemarks, bool showsUnmatched)
{
    FileVisitor visitor;
    if (showsRemarks) {
        visitor.matched = [&tally](const std::string& path,
                                   const MetadataInfoProviderInterface& values) {
            tally.countMatched(path, values);
        };
    }
    visitor.unmatched = [&tally](const std::string& path) { tally.countUnmatched(path); };
    visitor.unmatchedOnlyWithoutCases = !showsRemarks || showsUnmatched;
    return visitor;
}

// Lists and imports all files, on as many threads as the user wants, and counts them in `tally`.
Partial importShards(const Options& options, Listing& listing, const KeptFiles& kept,
                     const Console& console, Tally& tally)
{
    const bool showsRemarks = console.showsRemarks();
    const bool showsUnmatched = options.rows == Rows::Unmatched;
    Partial all;
    std::mutex mutex; // Guards the results.
    ShardWorkers workers(options.jobs.value_or(availableProcessors()), [&](const Shard& shard) {
        throwIfInterrupted();
        Tally ownTally(options.reading);
        Partial partial = importShard(shard, options.reading, options.identifiers, kept,
                                      visitorOf(ownTally, showsRemarks, showsUnmatched));
        const std::lock_guard<std::mutex> lock(mutex);
        all.merge(std::move(partial));
        tally.merge(std::move(ownTally));
    });
    listing.run(ShardSize(), {[&workers](Shard shard) { workers.give(std::move(shard)); },
                              [&workers] { workers.finish(); }});
    return all;
}

ExitCode importTable(const Options& options, Listing& listing, Output& output, Console& console)
{
    const Format& format = options.format != nullptr ? *options.format : formatFor(output);
    const KeptFiles kept = keptFiles(options, format.isDatabase());
    Tally tally(options.reading);
    const Import import(importShards(options, listing, kept, console, tally), listing.root(),
                        options.reading, options.identifiers, kept);
    throwIfInterrupted();
    if (options.output)
        spareMatchedFile(*options.output, import.isWatchedMatched());
    std::optional<Missing> missing;
    if (options.rows == Rows::Missing)
        missing = findMissing(import.table(), options.missingColumns);
    if (format.isDatabase())
        writeDatabase(makeDatabase(options, import), output);
    else
        format.write(
            sorted(missing ? missing->report : makeReport(options, import), options.sortKeys),
            output);
    output.commit();
    if (options.output && options.format == nullptr && !output.isTerminal())
        remarkOnEnding(*options.output, console);
    const bool showsUnmatched = options.rows == Rows::Unmatched;
    const auto values = options.reading.makeValues();
    const ExitCode code = summarize({import.fileCount(), listing.hiddenLeftOut(), import.table(),
                                     import.firstFiles(), *values, std::move(tally)},
                                    options.source, showsUnmatched, console);
    if (missing && code == ExitCode::Cases)
        remarkOnMissing(*missing, console);
    return code;
}

ExitCode run(const Options& options, Console& console)
{
    if (options.quiet)
        console.beQuiet();
    Output output(options.output);
    catchInterrupts();
    if (options.mode == Mode::Explain)
        return explainPath(options, output);

    if (options.source.list && options.output)
        spareInput(*options.output, *options.source.list, "the list itself");
    if (options.mode == Mode::Table && options.format != nullptr && options.format->isDatabase())
        checkDatabase(caseColumns(options.reading.patterns(), {}), output);
    Listing listing(options.source, console, options.jobs != 1); // One job is one thread.
    if (options.mode == Mode::Suggest)
        return suggest(options, listing, output, console);
    return importTable(options, listing, output, console);
}

} // namespace

} // namespace casetable

int main(int argc, char** argv)
{
    using namespace casetable;

    takeBrokenWritesAsFailures();
    Console console;
    try {
        const std::optional<Options> options = parseOptions(argc, argv);
        return options ? static_cast<int>(run(*options, console)) : 0;
    } catch (const Failure& failure) {
        console.error(failure.what(), failure.excerpt);
        return static_cast<int>(failure.code);
    } catch (const Interrupted& interrupted) {
        if (interrupted.leavesThreads)
            std::_Exit(128 + interrupted.signal);
        return 128 + interrupted.signal;
    } catch (const std::bad_alloc&) {
        console.error("not enough memory");
    } catch (const std::exception& failure) {
        console.error(failure.what());
    }
    return static_cast<int>(ExitCode::ImportFailed);
}
