#include "casetable/explaining/Remarks.h"

#include <cstddef>
#include <string_view>

#include "crawler/private/PathReading.h"
#include "host/AuxFileInfoInterface.h"

namespace casetable {

namespace {

// The files in which the value of one marker probably ends too early.
struct EarlyEnds {
    std::size_t files = 0;
    std::string path; // The first of them, and what is read from it.
    std::string value;
    char behind = '.'; // The byte behind that value.
};

bool endsEarly(const std::string& path, const std::vector<MetadataInfo>& infos, std::size_t k,
               MetadataPattern::ValueType type)
{
    const std::size_t end = infos[k].valuePosition + infos[k].valueLength;
    if (end == path.size())
        return false;
    if (type == MetadataPattern::NumberValue)
        return (path[end] == ',' || path[end] == '.') &&
               reading::digitAt(std::string_view(path), end + 1);
    return path[end] == '.' && k + 1 < infos.size() && end < infos[k + 1].patternPosition;
}

} // namespace

std::vector<std::string> remarks(const MetadataFileCrawler& importer,
                                 const std::vector<MetadataPattern>& patterns)
{
    std::vector<EarlyEnds> ends(patterns.size());
    for (const auto& file : importer.identifiedAuxFiles()) {
        const std::string path = file->filePath();
        const std::vector<MetadataInfo> infos = importer.metadataInfoList(path);
        for (std::size_t k = 0; k < infos.size(); ++k) {
            if (endsEarly(path, infos, k, patterns[k].valueType) && ++ends[k].files == 1) {
                const std::size_t end = infos[k].valuePosition + infos[k].valueLength;
                ends[k] = {1, path, infos[k].value, path[end]};
            }
        }
    }

    std::vector<std::string> lines;
    for (std::size_t k = 0; k < patterns.size(); ++k) {
        if (ends[k].files == 0)
            continue;
        lines.push_back("the value of '" + patterns[k].pattern + "' ends at a '" + ends[k].behind +
                        "' in " + std::to_string(ends[k].files) +
                        (ends[k].files == 1 ? " file" : " files") + ", as in " + ends[k].path +
                        ", which gives '" + ends[k].value + "'");
    }
    return lines;
}

} // namespace casetable
