#include "casetable/explaining/Summary.h"

#include <filesystem>
#include <vector>

#include "casetable/explaining/NumberRemarks.h"
#include "casetable/explaining/Remarks.h"
#include "casetable/explaining/TemplateFailure.h"
#include "casetable/explaining/TemplateRemarks.h"
#include "casetable/explaining/Unmatched.h"
#include "casetable/importing/Import.h"
#include "casetable/importing/Reading.h"
#include "casetable/listing/ReadList.h"
#include "casetable/listing/Source.h"
#include "casetable/system/Console.h"
#include "host/AuxFileInfoInterface.h"

namespace casetable {

namespace {

std::string whyNoneMatched(const Import& import, const Reading& reading, const Source& source)
{
    if (reading.templates())
        return failureSummary(import.importer(), *reading.templates());
    const std::string reason = likelyReason(import.importer(), reading.patterns(), source.root);
    return failureSummary(import.importer(), reading.patterns()) +
           (reason.empty() ? "" : "; " + reason);
}

std::string whySomeFailed(const Import& import, const Reading& reading, const Source& source)
{
    return reading.templates() ? failureSummary(import.importer(), *reading.templates())
                               : likelyReason(import.importer(), reading.patterns(), source.root);
}

// The first file of each case.
std::vector<std::string> firstFiles(const Import& import)
{
    std::vector<std::string> paths(import.table().caseCount());
    std::size_t next = 0; // Cases are numbered in the order of their first files.
    for (const auto& file : import.importer().identifiedAuxFiles()) {
        if (file->caseIndex() == next)
            paths[next++] = file->filePath();
    }
    return paths;
}

void remarkOnGlobs(const Selection& selection, Console& console)
{
    for (const Glob& glob : selection.excluded) {
        if (!glob.hasMatched())
            console.remark("--exclude '" + glob.text() + "' left nothing out");
    }
}

} // namespace

std::string noFiles(const Source& source)
{
    const std::string where = source.list ? "in " + listName(*source.list) : "below " + source.root;
    const bool limited = source.selection.maxDepth != Selection().maxDepth;
    const bool excluded = !source.selection.excluded.empty();
    return "there is no file " + where +
           (limited && excluded ? ", with --exclude and --max-depth"
            : excluded          ? ", with --exclude"
            : limited           ? ", with --max-depth"
                                : "");
}

std::string hiddenRemark(std::size_t hiddenLeftOut)
{
    if (hiddenLeftOut == 0)
        return "";
    return hiddenLeftOut == 1 ? "; 1 hidden entry left out, --hidden takes it"
                              : "; " + std::to_string(hiddenLeftOut) +
                                    " hidden entries left out, --hidden takes them";
}

void remarkOnEnding(const std::string& output, Console& console)
{
    if (std::filesystem::path(output).has_extension())
        console.remark(output + ": written as CSV, as no format goes by that ending");
}

ExitCode summarize(const Import& import, const Reading& reading, const Source& source,
                   std::size_t hiddenLeftOut, bool showsUnmatched, Console& console)
{
    const std::size_t files = import.importer().files().size();
    if (!import.importer().hasCases()) {
        const std::string why = files == 0 ? noFiles(source)
                                           : whyNoneMatched(import, reading, source) +
                                                 (showsUnmatched ? "" : "; --unmatched lists them");
        console.error("no file matched: " + why + hiddenRemark(hiddenLeftOut));
        return ExitCode::NoCases;
    }
    if (!console.showsRemarks())
        return ExitCode::Cases; // What follows takes time and memory for each file.
    const std::size_t matched = import.importer().identifiedAuxFiles().size();
    const bool lacksSome = matched != files && !showsUnmatched;
    console.remark("cases: " + std::to_string(import.table().caseCount()) + ", from " +
                   std::to_string(matched) + " of " + std::to_string(files) + " files" +
                   (lacksSome ? "; --unmatched lists the others" : "") +
                   hiddenRemark(hiddenLeftOut));
    remarkOnGlobs(source.selection, console);
    for (const std::string& remark : reading.templates()
                                         ? remarks(import.importer(), *reading.templates())
                                         : remarks(import.importer(), reading.patterns()))
        console.remark(remark);
    for (const std::string& remark :
         numberRemarks(import.table(), firstFiles(import), import.importer()))
        console.remark(remark);
    const std::string why = lacksSome ? whySomeFailed(import, reading, source) : "";
    if (!why.empty())
        console.remark(why);
    return ExitCode::Cases;
}

} // namespace casetable
