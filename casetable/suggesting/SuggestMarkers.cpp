#include "casetable/suggesting/SuggestMarkers.h"

#include <list>
#include <optional>
#include <string>
#include <vector>

#include "casetable/explaining/Summary.h"
#include "casetable/listing/Listing.h"
#include "casetable/options/Options.h"
#include "casetable/suggesting/RootAbove.h"
#include "casetable/suggesting/Suggest.h"
#include "casetable/system/Console.h"
#include "casetable/system/Interrupt.h"
#include "casetable/system/Output.h"

namespace casetable {

namespace {

// The arguments by which another run sees the same files below its root.
std::vector<std::string> argumentsFor(const Source& source)
{
    Options options;
    options.source = source;
    options.source.root.clear();
    return arguments(options);
}

// What can be said with the folder above as ROOT, if that is more.
std::optional<RunAbove> suggestAbove(const Options& options, const std::list<std::string>& files,
                                     const Suggestion& suggestion)
{
    const bool lacksValues =
        !suggestion.unmarked.empty() || !suggestion.mixed.sameName.first.empty();
    const std::optional<RootAbove> above = lacksValues ? rootAbove(options) : std::nullopt;
    if (!above)
        return std::nullopt;
    std::list<std::string> paths;
    for (const std::string& file : files)
        paths.push_back(above->name + '/' + file);
    RunAbove run{{suggest(paths), argumentsFor(above->options.source), above->options.source.root},
                 above->name};
    const Suggestion& more = run.run.suggestion;
    if (more.patterns.size() <= suggestion.patterns.size() && more.cases <= suggestion.cases)
        return std::nullopt;
    return run;
}

} // namespace

ExitCode suggestMarkers(const Options& options, Listing& listing, Output& output, Console& console)
{
    const std::list<std::string> files = listing.takeCrawler()->result().files;
    // Nothing is half-written yet, so an interrupt may end the program at once.
    releaseInterrupts();
    throwIfInterrupted();
    const SuggestedRun run{suggest(files), argumentsFor(options.source), options.source.root};
    const std::optional<RunAbove> above = suggestAbove(options, files, run.suggestion);
    catchInterrupts();
    if (run.suggestion.patterns.empty() && !above) {
        console.error("no marker can be suggested: " +
                      (files.empty() ? noFiles(options.source) : suggestionText(run)) +
                      hiddenRemark(listing.hiddenLeftOut()));
        return ExitCode::NoCases;
    }
    output.write(suggestionText(run, above));
    output.commit();
    return ExitCode::Cases;
}

} // namespace casetable
