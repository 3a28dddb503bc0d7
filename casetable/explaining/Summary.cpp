#include "casetable/explaining/Summary.h"

#include <filesystem>
#include <numeric>

#include "casetable/explaining/NumberRemarks.h"
#include "casetable/importing/CaseTable.h"
#include "casetable/importing/Missing.h"
#include "casetable/listing/ReadList.h"
#include "casetable/listing/Source.h"
#include "casetable/system/Console.h"

namespace casetable {

namespace {

std::size_t matchedCount(const CaseTable& table)
{
    return std::accumulate(table.fileCounts.begin(), table.fileCounts.end(), std::size_t{0});
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

ExitCode summarize(const CountedImport& import, const Source& source, bool showsUnmatched,
                   Console& console)
{
    const std::string hidden = hiddenRemark(import.hiddenLeftOut);
    if (import.table.caseCount() == 0) {
        const std::string why = import.files == 0
                                    ? noFiles(source)
                                    : import.tally.whyNoneMatched(source.root) +
                                          (showsUnmatched ? "" : "; --unmatched lists them");
        console.error("no file matched: " + why + hidden);
        return ExitCode::NoCases;
    }
    if (!console.showsRemarks())
        return ExitCode::Cases; // What follows takes time for each case.
    const std::size_t matched = matchedCount(import.table);
    const bool lacksSome = matched != import.files && !showsUnmatched;
    console.remark("cases: " + std::to_string(import.table.caseCount()) + ", from " +
                   std::to_string(matched) + " of " + std::to_string(import.files) + " files" +
                   (lacksSome ? "; --unmatched lists the others" : "") + hidden);
    remarkOnGlobs(source.selection, console);
    for (const std::string& remark : import.tally.remarks())
        console.remark(remark);
    for (const std::string& remark : numberRemarks(import.table, import.firstFiles, import.values))
        console.remark(remark);
    const std::string why = lacksSome ? import.tally.whySomeFailed(source.root) : "";
    if (!why.empty())
        console.remark(why);
    return ExitCode::Cases;
}

void remarkOnMissing(const Missing& missing, Console& console)
{
    const std::size_t leftOut = missing.casesLeftOut;
    console.remark("missing: " + std::to_string(missing.report.rowCount) + " of " +
                   std::to_string(missing.combinations) + " combinations" +
                   (leftOut == 0 ? ""
                    : leftOut == 1
                        ? "; 1 case without a value in one of the columns takes no part"
                        : "; " + std::to_string(leftOut) +
                              " cases without a value in one of the columns take no part"));
}

} // namespace casetable
