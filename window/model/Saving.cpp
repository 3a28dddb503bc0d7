#include "window/model/Saving.h"

#include <algorithm>
#include <filesystem>
#include <stdexcept>
#include <utility>

#include "casetable/listing/ListRoot.h"
#include "casetable/listing/Shard.h"
#include "casetable/options/ColumnNames.h"
#include "casetable/options/OptionTable.h"
#include "casetable/running/Run.h"
#include "casetable/system/ExitCode.h"
#include "casetable/system/Output.h"
#include "casetable/system/OutputGuards.h"
#include "casetable/system/ReadFile.h"
#include "window/model/CommandText.h"

namespace casetable {

namespace {

const std::string setupEnding = ".casetable";

// Of a file of a setup.
const std::size_t mostBytes = std::size_t{16} * 1024 * 1024;

// Whether the file at `path` is there and in a case.
bool isMatched(const Matching& matching, const std::string& path)
{
    std::size_t begin = 0;
    std::size_t end = matching.files.count();
    while (begin < end) {
        const std::size_t middle = begin + (end - begin) / 2;
        if (matching.files.path(middle) < path)
            begin = middle + 1;
        else
            end = middle;
    }
    return begin < matching.files.count() && matching.files.path(begin) == path &&
           matching.caseOf[begin] != Matching::none;
}

// An order by a column that the rows do not have is none.
Options parsedWithOrder(Setup setup, const std::vector<std::string>& words)
{
    try {
        return checked(setup, words);
    } catch (const Failure&) {
        if (setup.sort.empty())
            throw;
        setup.sort.clear();
        return checked(setup, words);
    }
}

std::vector<std::string> wordsOf(const Setup& setup, const SavedRows& rows)
{
    switch (rows.rows) {
    case Rows::Files:
        return {optionOf(OptionId::Files).name};
    case Rows::Unmatched:
        return {optionOf(OptionId::Unmatched).name};
    case Rows::Missing: {
        Options options = checked(setup);
        options.missingColumns = rows.missingColumns;
        std::vector<std::string> words;
        for (const std::string& value : missingValues(options))
            words.push_back(std::string(optionOf(OptionId::Missing).name) + '=' + value);
        return words;
    }
    case Rows::Cases:
        break;
    }
    return {};
}

// Writes the files in no case, of which the matching keeps only which they are.
void writeUnmatched(const Options& options, const Matching& matching, const Format& format,
                    Output& output)
{
    const KeptFiles kept = keptFiles(options, format);
    ImportedFiles all = importFiles(options, kept, false, [&matching](const Listing::Taker& taker) {
        for (const auto& shard : matching.files.shards())
            taker.take(Shard(*shard));
        taker.finish();
    });
    const Import import(std::move(all.partial), listRoot(options.source.root), options.reading,
                        options.identifiers, kept);
    writeImport(options, import, format, output);
}

std::string absolute(const std::string& path)
{
    return path.empty() || path == "-" ? path : std::filesystem::absolute(path).string();
}

} // namespace

Options savingOptions(const Setup& setup, const SavedRows& rows, const std::string& file)
{
    Setup plain = setup;
    if (rows.rows == Rows::Unmatched || rows.rows == Rows::Missing)
        plain.auxRows.clear();
    Setup unsorted = plain;
    unsorted.sort.clear();
    std::vector<std::string> words = wordsOf(unsorted, rows);
    words.push_back(std::string(optionOf(OptionId::Output).name) + '=' + file);
    return parsedWithOrder(plain, words);
}

void saveTable(const Options& options, const Matching& matching)
{
    const std::string& file = *options.output;
    Output output(file);
    checkOutput(options, output);
    if (!options.source.list)
        spareMatchedFile(file, isMatched(matching, pathBelow(options.source.root, file)));
    const Format& format = options.format != nullptr ? *options.format : *formatNamed("csv");
    if (options.rows == Rows::Unmatched)
        writeUnmatched(options, matching, format, output);
    else
        writeImport(options, *matching.import, format, output);
    output.commit();
}

void saveSetup(const Setup& setup, const std::string& file)
{
    // A value of --aux has its tag behind the last '='.
    for (const Setup::AuxRow& row : setup.auxRows) {
        if (row.tag.find('=') != std::string::npos)
            throw Failure(ExitCode::WrongUsage, "the tag '" + row.tag + "' has a '='");
    }
    Output output(file);
    output.write(commandLine(withAbsolutePaths(setup)) + '\n');
    output.commit();
}

ReadSetup readSetupFile(const std::string& file)
{
    try {
        std::vector<std::string> words = commandWords(readFile(file, mostBytes));
        if (!words.empty() && words.front() == "casetable")
            words.erase(words.begin());
        return readSetup(words);
    } catch (const std::exception& failure) {
        const std::string reason = failure.what();
        const bool namesFile = reason.find(file) != std::string::npos;
        throw Failure(ExitCode::WrongUsage, namesFile ? reason : file + ": " + reason);
    }
}

bool isSetupFile(const std::string& file)
{
    return file.size() > setupEnding.size() &&
           file.compare(file.size() - setupEnding.size(), setupEnding.size(), setupEnding) == 0;
}

Setup withAbsolutePaths(Setup setup)
{
    setup.root = absolute(setup.root);
    if (setup.list)
        setup.list = absolute(*setup.list);
    return setup;
}

} // namespace casetable
