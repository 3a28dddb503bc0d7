#include "window/model/Copying.h"

#include <utf8.h>

#include "casetable/importing/Report.h"
#include "casetable/system/ExitCode.h"
#include "casetable/system/Printable.h"
#include "casetable/system/ShellWords.h"

namespace casetable {

namespace {

// Qt counts in int, and twice the bytes of a text must fit into memory beside it.
const std::size_t mostBytes = std::size_t{1} << 30U;

QString textOf(const std::string& utf8)
{
    if (utf8.size() > mostBytes)
        throw Failure(ExitCode::OutputFailed, "this is too much to be copied; it can be saved");
    return QString::fromUtf8(utf8.data(), static_cast<int>(utf8.size()));
}

// A path as it is copied; `asWords` counts it where it becomes a word of a shell.
std::string copied(const std::string& path, std::size_t& asWords)
{
    if (printable(path) == path)
        return path;
    ++asWords;
    return shellWord(path);
}

// A cell as spreadsheets take a field that is pasted.
std::string field(const std::string& cell, std::size_t& asWords)
{
    const bool isText = utf8::is_valid(cell.begin(), cell.end());
    asWords += isText ? 0 : 1;
    std::string text = isText ? cell : shellWord(cell);
    if (text.find_first_of("\t\n\r\"") == std::string::npos)
        return text;
    std::string quoted = "\"";
    for (const char c : text)
        quoted += c == '"' ? std::string("\"\"") : std::string(1, c);
    return quoted + '"';
}

std::string lineOf(const std::vector<std::string>& cells, std::size_t& asWords)
{
    std::string line;
    for (std::size_t i = 0; i < cells.size(); ++i)
        line += (i > 0 ? "\t" : "") + field(cells[i], asWords);
    return line + '\n';
}

} // namespace

Copy copyOfBytes(const std::string& bytes)
{
    Copy copy;
    copy.text = textOf(copied(bytes, copy.asWords));
    return copy;
}

Copy copyOfPaths(const Files& files, const std::vector<std::uint32_t>& indices)
{
    Copy copy;
    std::string text;
    for (const std::uint32_t index : indices)
        text += (text.empty() ? "" : "\n") + copied(std::string(files.path(index)), copy.asWords);
    copy.text = textOf(text);
    return copy;
}

Copy copyOfCases(const CaseTable& table, const std::vector<std::uint32_t>& indices)
{
    const Report report = caseReport(table);
    Copy copy;
    std::string text = lineOf(uniqueHeader(report.columns), copy.asWords);
    for (const std::uint32_t index : indices)
        text += lineOf(report.row(index).cells, copy.asWords);
    copy.text = textOf(text);
    return copy;
}

} // namespace casetable
