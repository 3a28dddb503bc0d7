#include "casetable/writing/Formats.h"

#include <algorithm>
#include <cctype>

#include "casetable/system/Output.h"
#include "casetable/writing/CsvWriter.h"
#include "casetable/writing/JsonWriter.h"
#include "casetable/writing/TableWriter.h"
#include "casetable/writing/TsvWriter.h"
#include "casetable/writing/VttWriter.h"

namespace casetable {

namespace {

template <class Question> const Format* firstFormat(const Question& question)
{
    const auto found = std::find_if(formats().begin(), formats().end(), question);
    return found == formats().end() ? nullptr : &*found;
}

} // namespace

const std::vector<Format>& formats()
{
    static const std::vector<Format> formats = {
        {"table", {".txt"}, writeTable},
        {"csv", {".csv"}, writeCsv},
        {"tsv", {".tsv"}, writeTsv},
        {"json", {".json"}, writeJson},
        {"jsonl", {".jsonl", ".ndjson"}, writeJsonLines},
        {"vtt", {".vtt"}, writeVtt},
        {"sqlite", {".db", ".sqlite", ".sqlite3"}, nullptr}};
    return formats;
}

const Format* formatNamed(std::string_view name)
{
    return firstFormat([name](const Format& format) { return format.name == name; });
}

const Format* formatOfEnding(const std::string& file)
{
    std::string ending = file.substr(std::min(file.rfind('.'), file.size()));
    for (char& c : ending) // The program stays in the "C" locale, which knows only ASCII letters.
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return firstFormat([&ending](const Format& format) {
        return std::find(format.endings.begin(), format.endings.end(), ending) !=
               format.endings.end();
    });
}

const Format& formatFor(const Output& output)
{
    return *formatNamed(output.isTerminal() ? "table" : "csv");
}

} // namespace casetable
