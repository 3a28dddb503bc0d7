#include <cstdlib>
#include <exception>
#include <new>
#include <optional>
#include <string>
#include <utility>

#include "casetable/explaining/Explain.h"
#include "casetable/explaining/ExplainTemplate.h"
#include "casetable/explaining/LeftOut.h"
#include "casetable/importing/Report.h"
#include "casetable/listing/Listing.h"
#include "casetable/options/Options.h"
#include "casetable/running/Run.h"
#include "casetable/suggesting/Suggest.h"
#include "casetable/system/Console.h"
#include "casetable/system/ExitCode.h"
#include "casetable/system/Interrupt.h"
#include "casetable/system/Output.h"
#include "casetable/system/OutputGuards.h"
#include "casetable/system/Printable.h"
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

ExitCode importTable(const Options& options, Listing& listing, Output& output, Console& console)
{
    ImportedFiles all = importFiles(options, keptFiles(options, formatOf(options, output)),
                                    console.showsRemarks(), listing);
    return finishImport(options, std::move(all), listing.root(), listing.hiddenLeftOut(), output,
                        console);
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
