#include "casetable/suggesting/MixedFiles.h"

#include <algorithm>
#include <cstddef>
#include <string_view>
#include <tuple>
#include <vector>

#include "casetable/suggesting/NameTokens.h"
#include "host/AuxFileInfoInterface.h"

namespace casetable {

namespace {

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

// Where the number or word at `begin` ends; only what joins numbers, as in 0.5 or 2024-01-31, and
// has digits behind it belongs to a number too. No further than `begin` for other bytes.
std::size_t endOfValue(std::string_view name, std::size_t begin)
{
    std::size_t end = begin;
    if (!isDigit(name[begin])) {
        while (end < name.size() && isWordByte(name[end]))
            ++end;
        return end;
    }
    while (end < name.size() &&
           (isDigit(name[end]) ||
            (std::string_view(".,-:").find(name[end]) != std::string_view::npos &&
             end + 1 < name.size() && isDigit(name[end + 1]))))
        ++end;
    return end;
}

// What is the same for all like names: all but the words and numbers before the last extension.
std::string shapeOf(std::string_view name)
{
    std::string_view stem = name.substr(0, name.rfind('.'));
    if (std::all_of(name.begin() + static_cast<std::ptrdiff_t>(stem.size()), name.end(),
                    [](char c) { return c == '.' || isDigit(c); }))
        stem = name;
    std::string shape;
    for (std::size_t begin = 0; begin < stem.size();) {
        const std::size_t end = endOfValue(stem, begin);
        if (end == begin)
            shape += stem[begin++];
        else
            shape += isDigit(stem[begin]) ? '\1' : '\2';
        begin = std::max(begin, end);
    }
    return shape.append(name.substr(stem.size()));
}

// Where two names of one shape differ.
struct Difference {
    bool inWords = false;
    bool inNumbers = false; // Others than padded ones, which mostly count the files of a run.
};

Difference difference(std::string_view a, std::string_view b)
{
    Difference difference;
    const auto isPadded = [](std::string_view number) {
        return number.size() > 1 && number[0] == '0' && isDigit(number[1]);
    };
    for (std::size_t i = 0, k = 0; i < a.size() && k < b.size();) {
        const std::size_t endOfA = std::max(endOfValue(a, i), i + 1);
        const std::size_t endOfB = std::max(endOfValue(b, k), k + 1);
        const std::string_view inA = a.substr(i, endOfA - i);
        const std::string_view inB = b.substr(k, endOfB - k);
        if (inA != inB && !isDigit(inA.front()))
            difference.inWords = true;
        else if (inA != inB && !isPadded(inA) && !isPadded(inB))
            difference.inNumbers = true;
        i = endOfA;
        k = endOfB;
    }
    return difference;
}

struct File {
    std::size_t caseIndex;
    std::string path;
    std::size_t nameAt;
    std::string shape; // Left empty where only equal names are looked for.

    std::string_view name() const { return std::string_view(path).substr(nameAt); }
    std::string_view folder() const { return std::string_view(path).substr(0, nameAt); }
};

std::vector<File> matchedFiles(const CrawlerBasicImporterParser& parser)
{
    std::vector<File> files;
    for (const auto& file : parser.crawlerFilePathList()) {
        if (file->isMatched()) {
            const std::string path = file->filePath();
            files.push_back({file->caseIndex(), path, path.rfind('/') + 1, ""});
        }
    }
    return files;
}

// Where runs are mixed, each name occurs several times in a case; a few that do may be in folders
// of one run.
std::pair<std::string, std::string> filesOfOneName(std::vector<File>& files)
{
    std::sort(files.begin(), files.end(), [](const File& a, const File& b) {
        return std::make_tuple(a.caseIndex, a.name(), std::string_view(a.path)) <
               std::make_tuple(b.caseIndex, b.name(), std::string_view(b.path));
    });
    std::pair<std::string, std::string> first;
    std::size_t mixed = 0;
    for (std::size_t f = 1; f < files.size(); ++f) {
        if (files[f].caseIndex != files[f - 1].caseIndex || files[f].name() != files[f - 1].name())
            continue;
        if (mixed++ == 0)
            first = {files[f - 1].path, files[f].path};
    }
    return mixed * 2 < files.size() ? std::make_pair(std::string(), std::string()) : first;
}

// Words mostly tell what is in a file. They may be values where the name holds other values.
bool readsName(const CrawlerBasicImporterParser& parser, const File& file)
{
    return parser.metadataInfoList(file.path).back().valuePosition >= file.nameAt;
}

std::pair<std::string, std::string> filesOfLikeNames(std::vector<File>& files,
                                                     const CrawlerBasicImporterParser& parser)
{
    for (File& file : files)
        file.shape = shapeOf(file.name());
    const auto place = [](const File& file) {
        return std::make_tuple(file.caseIndex, file.folder(), std::string_view(file.shape));
    };
    std::sort(files.begin(), files.end(), [place](const File& a, const File& b) {
        return std::make_pair(place(a), a.name()) < std::make_pair(place(b), b.name());
    });
    std::pair<std::string, std::string> first;
    std::size_t like = 0;
    std::size_t last = files.size(); // The last one that was counted.
    for (std::size_t f = 1; f < files.size(); ++f) {
        if (place(files[f]) != place(files[f - 1]))
            continue;
        const Difference differ = difference(files[f - 1].name(), files[f].name());
        if (differ.inWords ? !readsName(parser, files[f]) : !differ.inNumbers)
            continue;
        if (like == 0)
            first = {files[f - 1].path, files[f].path};
        like += last == f - 1 ? 1 : 2;
        last = f;
    }
    return like * 2 < files.size() ? std::make_pair(std::string(), std::string()) : first;
}

} // namespace

MixedFiles mixedFiles(const CrawlerBasicImporterParser& parser)
{
    std::vector<File> files = matchedFiles(parser);
    MixedFiles mixed;
    if (parser.numDefinedCases() == files.size())
        return mixed;
    mixed.sameName = filesOfOneName(files);
    if (mixed.sameName.first.empty())
        mixed.likeNames = filesOfLikeNames(files, parser);
    return mixed;
}

} // namespace casetable
