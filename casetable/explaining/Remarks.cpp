#include "casetable/explaining/Remarks.h"

#include <cstddef>
#include <string_view>

#include "crawler/private/PathReading.h"
#include "host/AuxFileInfoInterface.h"

namespace casetable {

namespace {

// The files in which the value of one marker ends where its writer hardly meant it to.
struct Cut {
    std::size_t files = 0;
    std::string path; // Of the first.
    std::string value;
    char at = '.';
};

bool isCut(const std::string& path, const std::vector<MetadataInfo>& infos, std::size_t k,
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
    std::vector<Cut> cuts(patterns.size());
    for (const auto& file : importer.identifiedAuxFiles()) {
        const std::string path = file->filePath();
        const std::vector<MetadataInfo> infos = importer.metadataInfoList(path);
        for (std::size_t k = 0; k < infos.size(); ++k) {
            if (isCut(path, infos, k, patterns[k].valueType) && ++cuts[k].files == 1) {
                const std::size_t end = infos[k].valuePosition + infos[k].valueLength;
                cuts[k] = {1, path, infos[k].value, path[end]};
            }
        }
    }

    std::vector<std::string> lines;
    for (std::size_t k = 0; k < patterns.size(); ++k) {
        if (cuts[k].files == 0)
            continue;
        lines.push_back("the value of '" + patterns[k].pattern + "' ends at a '" + cuts[k].at +
                        "' in " + std::to_string(cuts[k].files) +
                        (cuts[k].files == 1 ? " file" : " files") + ", as in " + cuts[k].path +
                        ", which gives '" + cuts[k].value + "'");
    }
    return lines;
}

} // namespace casetable
