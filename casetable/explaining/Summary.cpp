#include "casetable/explaining/Summary.h"

#include <filesystem>
#include <vector>

#include "casetable/explaining/Remarks.h"
#include "casetable/explaining/Unmatched.h"
#include "casetable/importing/Import.h"
#include "casetable/listing/ReadList.h"
#include "casetable/listing/Source.h"
#include "casetable/system/Console.h"

namespace casetable {

namespace {

std::string whyNoneMatched(const Import& import, const Source& source, bool showsUnmatched)
{
    const std::vector<MetadataPattern>& patterns = import.table().patterns;
    const std::string cause = likelyCause(import.importer(), patterns, source.root);
    return failureSummary(import.importer(), patterns) + (cause.empty() ? "" : "; " + cause) +
           (showsUnmatched ? "" : "; --unmatched lists them");
}

void remarkOnGlobs(const Selection& selection, Console& console)
{
    for (const Glob& glob : selection.excluded) {
        if (!glob.hasMatched())
            console.note("--exclude '" + glob.text() + "' left nothing out");
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
        console.note(output + ": written as CSV, as no format goes by that ending");
}

ExitCode summarize(const Import& import, const Source& source, std::size_t hiddenLeftOut,
                   bool showsUnmatched, Console& console)
{
    const std::size_t files = import.importer().files().size();
    if (!import.importer().hasCases()) {
        console.error(
            "no file matched: " +
            (files == 0 ? noFiles(source) : whyNoneMatched(import, source, showsUnmatched)) +
            hiddenRemark(hiddenLeftOut));
        return ExitCode::NoCases;
    }
    if (!console.showsNotes())
        return ExitCode::Cases; // Counting takes memory for as many files as there are.
    const std::size_t matched = import.importer().identifiedAuxFiles().size();
    const bool lacksSome = matched != files && !showsUnmatched;
    console.note("cases: " + std::to_string(import.table().caseCount) + ", from " +
                 std::to_string(matched) + " of " + std::to_string(files) + " files" +
                 (lacksSome ? "; --unmatched lists the others" : "") + hiddenRemark(hiddenLeftOut));
    remarkOnGlobs(source.selection, console);
    const std::vector<MetadataPattern>& patterns = import.table().patterns;
    for (const std::string& remark : remarks(import.importer(), patterns))
        console.note(remark);
    if (lacksSome) {
        const std::string cause = likelyCause(import.importer(), patterns, source.root);
        if (!cause.empty())
            console.note(cause);
    }
    return ExitCode::Cases;
}

} // namespace casetable
