#include "casetable/running/Run.h"

#include <ctime>
#include <mutex>
#include <string>
#include <utility>

#include "casetable/explaining/LeftOut.h"
#include "casetable/explaining/Summary.h"
#include "casetable/explaining/Unmatched.h"
#include "casetable/importing/Report.h"
#include "casetable/importing/ShardImport.h"
#include "casetable/importing/ShardWorkers.h"
#include "casetable/importing/Sorting.h"
#include "casetable/listing/Listing.h"
#include "casetable/listing/ReadList.h"
#include "casetable/system/Console.h"
#include "casetable/system/Interrupt.h"
#include "casetable/system/Output.h"
#include "casetable/system/OutputGuards.h"
#include "casetable/system/Processors.h"
#include "casetable/system/ShellWords.h"
#include "casetable/writing/SqliteWriter.h"

namespace casetable {

namespace {

Report makeReport(const Options& options, const Import& import)
{
    switch (options.rows) {
    case Rows::Files:
        return fileReport(import.table(), import.matchedFiles());
    case Rows::Unmatched:
        return unmatchedReport(import.unmatchedFiles(), options.reading);
    case Rows::Missing: // writeImport() has it already.
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

} // namespace

const Format& formatOf(const Options& options, const Output& output)
{
    return options.format != nullptr ? *options.format : formatFor(output);
}

KeptFiles keptFiles(const Options& options, const Format& format)
{
    KeptFiles kept;
    kept.matched = format.isDatabase() || options.rows == Rows::Files;
    kept.unmatched = options.rows == Rows::Unmatched;
    if (options.output && !options.source.list)
        kept.watched = pathBelow(options.source.root, *options.output);
    return kept;
}

ImportedFiles importFiles(const Options& options, const KeptFiles& kept, bool showsRemarks,
                          Listing& listing)
{
    const bool showsUnmatched = options.rows == Rows::Unmatched;
    ImportedFiles all = {Partial(), Tally(options.reading)};
    std::mutex mutex; // Guards the results.
    ShardWorkers workers(options.jobs.value_or(availableProcessors()), [&](const Shard& shard) {
        throwIfInterrupted();
        Tally tally(options.reading);
        Partial partial = importShard(shard, options.reading, options.identifiers, kept,
                                      visitorOf(tally, showsRemarks, showsUnmatched));
        const std::lock_guard<std::mutex> lock(mutex);
        all.partial.merge(std::move(partial));
        all.tally.merge(std::move(tally));
    });
    listing.run(ShardSize(), {[&workers](Shard shard) { workers.give(std::move(shard)); },
                              [&workers] { workers.finish(); }});
    return all;
}

std::optional<Missing> writeImport(const Options& options, const Import& import,
                                   const Format& format, Output& output)
{
    std::optional<Missing> missing;
    if (options.rows == Rows::Missing)
        missing = findMissing(import.table(), options.missingColumns);
    if (format.isDatabase())
        writeDatabase(makeDatabase(options, import), output);
    else
        format.write(
            sorted(missing ? missing->report : makeReport(options, import), options.sortKeys),
            output);
    return missing;
}

ExitCode finishImport(const Options& options, ImportedFiles all,
                      const boost::shared_ptr<FileInfoInterface const>& root,
                      std::size_t hiddenLeftOut, Output& output, Console& console)
{
    const Format& format = formatOf(options, output);
    // Nothing is half-written yet, so an interrupt may end the program at once.
    releaseInterrupts();
    throwIfInterrupted();
    const Import import(std::move(all.partial), root, options.reading, options.identifiers,
                        keptFiles(options, format));
    if (options.output)
        spareMatchedFile(*options.output, import.isWatchedMatched());
    catchInterrupts();
    const std::optional<Missing> missing = writeImport(options, import, format, output);
    output.commit();
    if (options.output && options.format == nullptr && !output.isTerminal())
        remarkOnEnding(*options.output, console);
    const auto values = options.reading.makeValues();
    const ExitCode code = summarize({import.fileCount(), hiddenLeftOut, import.table(),
                                     import.firstFiles(), *values, std::move(all.tally)},
                                    options.source, options.rows == Rows::Unmatched, console);
    if (missing && code == ExitCode::Cases)
        remarkOnMissing(*missing, console);
    return code;
}

} // namespace casetable
