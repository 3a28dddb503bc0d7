#include <cstddef>
#include <exception>
#include <filesystem>
#include <new>
#include <optional>
#include <string>
#include <utility>

#include "casetable/explaining/Explain.h"
#include "casetable/explaining/LeftOut.h"
#include "casetable/explaining/Summary.h"
#include "casetable/explaining/Unmatched.h"
#include "casetable/importing/Import.h"
#include "casetable/importing/Report.h"
#include "casetable/listing/Listing.h"
#include "casetable/listing/Source.h"
#include "casetable/options/Options.h"
#include "casetable/suggesting/SuggestMarkers.h"
#include "casetable/system/Console.h"
#include "casetable/system/ExitCode.h"
#include "casetable/system/Interrupt.h"
#include "casetable/system/Output.h"
#include "casetable/system/OutputGuards.h"
#include "casetable/system/Text.h"
#include "casetable/writing/CsvWriter.h"
#include "casetable/writing/JsonWriter.h"
#include "casetable/writing/TableWriter.h"
#include "casetable/writing/TsvWriter.h"
#include "casetable/writing/VttWriter.h"

namespace casetable {

namespace {

void write(const Report& report, Format format, Output& output)
{
    if (format == Format::Json)
        writeJson(report, output);
    else if (format == Format::Tsv)
        writeTsv(report, output);
    else if (format == Format::Vtt)
        writeVtt(report, output);
    else if (format == Format::Table || (format == Format::Auto && output.isTerminal()))
        writeTable(report, output);
    else
        writeCsv(report, output);
    output.commit();
}

ExitCode explainPath(const Options& options, Output& output)
{
    const Explanation explanation =
        explain(*options.explain, options.patterns, output.showsColours());
    output.write(explanation.text);
    const std::string leftOut = whyLeftOut(options.selection, *options.explain);
    if (!leftOut.empty())
        output.write("an import does not look at it: " + printable(leftOut) + '\n');
    output.commit();
    return explanation.isMatched && leftOut.empty() ? ExitCode::Cases : ExitCode::NoCases;
}

Report makeReport(const Options& options, const Import& import)
{
    switch (options.rows) {
    case Rows::Files:
        return fileReport(import.table(), import.importer().identifiedAuxFiles());
    case Rows::Unmatched:
        return unmatchedReport(import.importer(), import.table().patterns);
    case Rows::Cases:
        break;
    }
    return caseReport(import.table());
}

ExitCode importTable(const Options& options, Listing& listing, Output& output, Console& console)
{
    const Import import(listing.takeCrawler(), options.patterns, options.identifiers);
    throwIfInterrupted();
    if (options.output && !options.list)
        spareMatchedFile(*options.output, options.root,
                         [&import](const std::string& path) { return import.isMatched(path); });
    write(makeReport(options, import), options.format, output);
    if (options.output && options.format == Format::Auto && !output.isTerminal() &&
        std::filesystem::path(*options.output).has_extension())
        console.note(*options.output + ": written as CSV, as no format goes by that ending");
    return summarize(import, sourceOf(options), listing.hiddenLeftOut(),
                     options.rows == Rows::Unmatched, console);
}

ExitCode run(const Options& options, Console& console)
{
    if (options.quiet)
        console.beQuiet();
    Output output(options.output);
    catchInterrupts();
    if (options.explain)
        return explainPath(options, output);

    if (options.list && options.output)
        spareList(*options.output, *options.list);
    Listing listing(sourceOf(options), console);
    if (options.suggest)
        return suggestMarkers(options, listing.takeCrawler()->result().files,
                              listing.hiddenLeftOut(), output, console);
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
        console.error(failure.what());
        return static_cast<int>(failure.code);
    } catch (const Interrupted& interrupted) {
        return 128 + interrupted.signal;
    } catch (const std::bad_alloc&) {
        console.error("not enough memory");
    } catch (const std::exception& failure) {
        console.error(failure.what());
    }
    return static_cast<int>(ExitCode::ImportFailed);
}
