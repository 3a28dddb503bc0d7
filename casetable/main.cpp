#include <algorithm>
#include <csignal>
#include <cstddef>
#include <exception>
#include <filesystem>
#include <list>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "casetable/explaining/Explain.h"
#include "casetable/explaining/Remarks.h"
#include "casetable/explaining/Unmatched.h"
#include "casetable/importing/Import.h"
#include "casetable/importing/Report.h"
#include "casetable/listing/FileList.h"
#include "casetable/listing/FileSystem.h"
#include "casetable/listing/ReadList.h"
#include "casetable/listing/Walk.h"
#include "casetable/options/Options.h"
#include "casetable/suggesting/RootAbove.h"
#include "casetable/suggesting/Suggest.h"
#include "casetable/system/Console.h"
#include "casetable/system/ExitCode.h"
#include "casetable/system/Interrupt.h"
#include "casetable/system/Output.h"
#include "casetable/system/Text.h"
#include "casetable/writing/Formats.h"

namespace casetable {

namespace {

std::vector<std::string> tagsOf(const std::vector<AuxFileIdentifier>& identifiers)
{
    std::vector<std::string> tags;
    for (const AuxFileIdentifier& identifier : identifiers) {
        if (std::find(tags.begin(), tags.end(), identifier.tag) == tags.end())
            tags.push_back(identifier.tag);
    }
    return tags;
}

Report makeReport(const Options& options, const Import& import)
{
    switch (options.rows) {
    case Rows::Files:
        return fileReport(import, options.patterns, tagsOf(options.identifiers));
    case Rows::Unmatched:
        return unmatchedReport(import, options.patterns);
    case Rows::Cases:
        break;
    }
    return caseReport(import, options.patterns, tagsOf(options.identifiers));
}

std::string noFiles(const Options& options)
{
    const std::string where = options.source.list ? "in " + listName(*options.source.list)
                                                  : "below " + options.source.root;
    const bool limited = options.source.selection.maxDepth != Selection().maxDepth;
    const bool excluded = !options.source.selection.excluded.empty();
    return "there is no file " + where +
           (limited && excluded ? ", with --exclude and --max-depth"
            : excluded          ? ", with --exclude"
            : limited           ? ", with --max-depth"
                                : "");
}

// What was left out though the user may not expect it.
std::string hiddenRemark(std::size_t count)
{
    if (count == 0)
        return "";
    return count == 1
               ? "; 1 hidden entry left out, --hidden takes it"
               : "; " + std::to_string(count) + " hidden entries left out, --hidden takes them";
}

std::string whyNoneMatched(const Options& options, const Import& import)
{
    const std::string cause = likelyCause(import.importer(), options.patterns, options.source.root);
    return failureSummary(import.importer(), options.patterns) +
           (cause.empty() ? "" : "; " + cause) +
           (options.rows == Rows::Unmatched ? "" : "; --unmatched lists them");
}

// Tells how it went; the exit code depends on whether there are cases, whatever the rows are.
ExitCode conclude(const Options& options, const Import& import, std::size_t hiddenLeftOut,
                  Console& console)
{
    const std::size_t files = import.importer().files().size();
    if (!import.importer().hasCases()) {
        console.error("no file matched: " +
                      (files == 0 ? noFiles(options) : whyNoneMatched(options, import)) +
                      hiddenRemark(hiddenLeftOut));
        return ExitCode::NoCases;
    }
    if (!console.showsNotes())
        return ExitCode::Cases; // Counting takes memory for as many files as there are.
    const std::size_t matched = import.importer().identifiedAuxFiles().size();
    const bool mention = matched != files && options.rows != Rows::Unmatched;
    console.note("cases: " + std::to_string(import.table().GetNumberOfRows()) + ", from " +
                 std::to_string(matched) + " of " + std::to_string(files) + " files" +
                 (mention ? "; --unmatched lists the others" : "") + hiddenRemark(hiddenLeftOut));
    for (const Glob& glob : options.source.selection.excluded) {
        if (!glob.hasMatched())
            console.note("--exclude '" + glob.text() + "' left nothing out");
    }
    for (const std::string& remark : remarks(import.importer(), options.patterns))
        console.note(remark);
    if (mention) {
        const std::string cause =
            likelyCause(import.importer(), options.patterns, options.source.root);
        if (!cause.empty())
            console.note(cause);
    }
    return ExitCode::Cases;
}

// Why an import does not even look at the file at `path`; empty where it does.
std::string whyLeftOut(const Selection& selection, const std::string& path)
{
    if (path.front() == '/')
        return "the path is absolute; name it as it stands below ROOT";
    std::string entry; // The path so far, as an import meets it.
    std::size_t depth = 0;
    for (std::size_t begin = 0, end = 0; end < path.size(); begin = end + 1) {
        end = std::min(path.find('/', begin), path.size());
        const std::string name = path.substr(begin, end - begin);
        if (name.empty() || name == ".")
            continue;
        if (name == "..")
            return "the path climbs out by \"..\"";
        entry += (entry.empty() ? "" : "/") + name;
        const bool isFolder = end < path.size();
        switch (selection.judge(entry, ++depth, isFolder)) {
        case Selection::Verdict::Hidden:
            return name + " is hidden; --hidden takes it";
        case Selection::Verdict::LeftOut:
            return (isFolder && depth >= selection.maxDepth ? "--max-depth" : "--exclude") +
                   (" leaves " + name) + " out";
        case Selection::Verdict::Taken:
            break;
        }
    }
    return "";
}

ExitCode explainPath(const Options& options, Output& output)
{
    const Explanation explanation =
        explain(options.explained, options.patterns, output.showsColours());
    output.write(explanation.text);
    const std::string leftOut = whyLeftOut(options.source.selection, options.explained);
    if (!leftOut.empty())
        output.write("an import does not look at it: " + printable(leftOut) + '\n');
    output.commit();
    return explanation.isMatched && leftOut.empty() ? ExitCode::Cases : ExitCode::NoCases;
}

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

ExitCode suggestMarkers(const Options& options, const std::list<std::string>& files,
                        std::size_t hiddenLeftOut, Output& output, Console& console)
{
    // Nothing is half-written yet, so an interrupt may end the program at once.
    releaseInterrupts();
    throwIfInterrupted();
    const SuggestedRun run{suggest(files), argumentsFor(options.source), options.source.root};
    const std::optional<RunAbove> above = suggestAbove(options, files, run.suggestion);
    catchInterrupts();
    if (run.suggestion.patterns.empty() && !above) {
        console.error("no marker can be suggested: " +
                      (files.empty() ? noFiles(options) : suggestionText(run)) +
                      hiddenRemark(hiddenLeftOut));
        return ExitCode::NoCases;
    }
    output.write(suggestionText(run, above));
    output.commit();
    return ExitCode::Cases;
}

// Nobody wants a table in place of one of the files that it tells of.
void spareMatchedFile(const Options& options, const Import& import)
{
    std::error_code failure;
    const std::filesystem::path file = std::filesystem::canonical(*options.output, failure);
    if (failure)
        return; // There is no such file yet.
    const std::filesystem::path folder = std::filesystem::canonical(options.source.root, failure);
    if (failure)
        return;
    const std::string path = file.lexically_relative(folder).string();
    // Only a file that is matched has a value for each marker.
    if (import.importer().metadataInfoList(path).size() == options.patterns.size())
        throw Failure(ExitCode::OutputFailed,
                      *options.output + ": is one of the matched files, and is not replaced");
}

void spareList(const std::string& list, const std::string& output)
{
    std::error_code failure;
    if (list != "-" && std::filesystem::is_regular_file(output, failure) &&
        std::filesystem::equivalent(output, list, failure))
        throw Failure(ExitCode::OutputFailed, output + ": is the list itself, and is not replaced");
}

ExitCode run(const Options& options, Console& console)
{
    if (options.quiet)
        console.beQuiet();
    Output output(options.output);
    catchInterrupts();
    if (options.mode == Mode::Explain)
        return explainPath(options, output);

    FileSystem fileSystem;
    fileSystem.followLinks = options.source.follow;
    fileSystem.leaveOutUnreadable = options.source.keepGoing;
    fileSystem.selection = options.source.selection;
    fileSystem.warn = [&console](const std::string& text) { console.warning(text); };
    FileList list(options.source.list ? listName(*options.source.list) : "",
                  options.source.nullSeparated);
    list.selection = options.source.selection;
    if (options.source.list && options.output)
        spareList(*options.source.list, *options.output);
    if (options.source.list)
        readList(*options.source.list, list, console);
    std::unique_ptr<FolderCrawler> crawler =
        options.source.list ? walk(list, console) : walk(fileSystem, options.source.root, console);
    if (options.mode == Mode::Suggest)
        return suggestMarkers(options, crawler->result().files, fileSystem.hiddenLeftOut, output,
                              console);
    const Import import(std::move(crawler), options.patterns, options.identifiers);
    throwIfInterrupted();
    if (options.output && !options.source.list)
        spareMatchedFile(options, import);
    const Format& format = options.format != nullptr ? *options.format : formatFor(output);
    format.write(makeReport(options, import), output);
    output.commit();
    if (options.output && options.format == nullptr && !output.isTerminal() &&
        std::filesystem::path(*options.output).has_extension())
        console.note(*options.output + ": written as CSV, as no format goes by that ending");
    return conclude(options, import, fileSystem.hiddenLeftOut, console);
}

} // namespace

} // namespace casetable

int main(int argc, char** argv)
{
    using namespace casetable;

    // A reader that goes away, or a file that may not grow, is a failed write, not a sudden end.
    static_cast<void>(std::signal(SIGPIPE, SIG_IGN));
    static_cast<void>(std::signal(SIGXFSZ, SIG_IGN));
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
