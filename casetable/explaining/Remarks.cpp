#include "casetable/explaining/Remarks.h"

#include <cctype>
#include <cstddef>
#include <string_view>

#include "casetable/explaining/Unmatched.h"
#include "crawler/private/PathReading.h"
#include "host/AuxFileInfoInterface.h"

namespace casetable {

namespace {

// Files in which the value of one marker was probably meant otherwise.
struct Doubtful {
    std::size_t files = 0;
    std::string path; // The first of them, and what is read from it.
    std::string value;
    char behind = '\0'; // The byte behind that value.

    void count(const std::string& inPath, const MetadataInfo& info)
    {
        if (++files > 1)
            return;
        path = inPath;
        value = info.value;
        const std::size_t end = info.valuePosition + info.valueLength;
        behind = end < path.size() ? path[end] : '\0';
    }
};

// What the values of one marker are like.
struct Values {
    Doubtful endEarly;
    Doubtful negative; // With a word in front of the sign.
};

bool endsEarly(const std::string& path, const std::vector<MetadataInfo>& infos, std::size_t k,
               MetadataPattern::ValueType type)
{
    const std::size_t end = infos[k].valuePosition + infos[k].valueLength;
    if (end == path.size())
        return false;
    if (type == MetadataPattern::NumberValue)
        return (path[end] == ',' || path[end] == '.' || path[end] == 'p') &&
               reading::digitAt(std::string_view(path), end + 1);
    return path[end] == '.' && k + 1 < infos.size() && end < infos[k + 1].patternPosition;
}

// "run-01" may be run 01, while "AoA-2.5" is an angle: where a column has other signs too, it is
// one of numbers.
bool hasSignBehindWord(const std::string& path, const MetadataInfo& info)
{
    const bool isBehindWord =
        info.valuePosition > 0 &&
        std::isalnum(static_cast<unsigned char>(path[info.valuePosition - 1])) != 0;
    return isBehindWord && path[info.valuePosition] == '-';
}

void count(const std::string& path, const std::vector<MetadataInfo>& infos,
           const std::vector<MetadataPattern>& patterns, std::vector<Values>& values)
{
    for (std::size_t k = 0; k < infos.size(); ++k) {
        if (endsEarly(path, infos, k, patterns[k].valueType))
            values[k].endEarly.count(path, infos[k]);
        if (patterns[k].valueType == MetadataPattern::NumberValue &&
            hasSignBehindWord(path, infos[k]))
            values[k].negative.count(path, infos[k]);
    }
}

std::string inFiles(const Doubtful& doubtful)
{
    return "in " + std::to_string(doubtful.files) + (doubtful.files == 1 ? " file" : " files") +
           ", as in " + doubtful.path + ", which gives '" + doubtful.value + "'";
}

} // namespace

std::vector<std::string> remarks(const MetadataFileCrawler& importer,
                                 const std::vector<MetadataPattern>& patterns)
{
    std::vector<Values> values(patterns.size());
    const auto files = importer.identifiedAuxFiles();
    for (const auto& file : files) {
        const std::string path = file->filePath();
        count(path, importer.metadataInfoList(path), patterns, values);
    }

    std::vector<std::string> lines;
    for (std::size_t k = 0; k < patterns.size(); ++k) {
        const std::string name = "'" + patterns[k].pattern + "'";
        const Values& of = values[k];
        if (of.endEarly.files > 0)
            lines.push_back("the value of " + name + " ends at a '" + of.endEarly.behind + "' " +
                            inFiles(of.endEarly) + otherReading);
        if (of.negative.files > 0 && of.negative.files == files.size())
            lines.push_back("the '-' behind " + name + " is taken for a sign " +
                            inFiles(of.negative) + otherReading);
    }
    return lines;
}

} // namespace casetable
