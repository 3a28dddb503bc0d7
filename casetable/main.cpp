#include <cstdlib>
#include <exception>
#include <new>
#include <optional>
#include <string>

#include "casetable/explaining/Explain.h"
#include "casetable/explaining/ExplainTemplate.h"
#include "casetable/explaining/LeftOut.h"
#include "casetable/explaining/Summary.h"
#include "casetable/explaining/TemplateFailure.h"
#include "casetable/explaining/Unmatched.h"
#include "casetable/importing/Import.h"
#include "casetable/importing/Report.h"
#include "casetable/listing/Listing.h"
#include "casetable/options/Options.h"
#include "casetable/suggesting/Suggest.h"
#include "casetable/system/Console.h"
#include "casetable/system/ExitCode.h"
#include "casetable/system/Interrupt.h"
#include "casetable/system/Output.h"
#include "casetable/system/OutputGuards.h"
#include "casetable/system/Printable.h"

namespace casetable {

namespace {

ExitCode explainPath(const Options& options, Output& output)
{
    const Reading& reading = options.reading;
    const bool inColour = output.showsColours();
    const Explanation explanation = reading.templates()
                                        ? explain(options.explained, *reading.templates(), inColour)
                                        : explain(options.explained, reading.patterns(), inColour);
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
        return fileReport(import.table(), import.importer().identifiedAuxFiles());
    case Rows::Unmatched:
        return options.reading.templates()
                   ? unmatchedReport(import.importer(), *options.reading.templates())
                   : unmatchedReport(import.importer(), options.reading.patterns());
    case Rows::Cases:
        break;
    }
    return caseReport(import.table());
}

ExitCode importTable(const Options& options, Listing& listing, Output& output, Console& console)
{
    const Import import(listing.takeCrawler(), options.reading, options.identifiers);
    throwIfInterrupted();
    if (options.output && !options.source.list)
        spareMatchedFile(*options.output, options.source.root,
                         [&import](const std::string& path) { return import.isMatched(path); });
    const Format& format = options.format != nullptr ? *options.format : formatFor(output);
    format.write(makeReport(options, import), output);
    output.commit();
    if (options.output && options.format == nullptr && !output.isTerminal())
        remarkOnEnding(*options.output, console);
    return summarize(import, options.reading, options.source, listing.hiddenLeftOut(),
                     options.rows == Rows::Unmatched, console);
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
        spareList(*options.output, *options.source.list);
    Listing listing(options.source, console);
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
