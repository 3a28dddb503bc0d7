#include "casetable/importing/CaseTable.h"

#include <algorithm>
#include <iterator>

namespace casetable {

std::vector<std::string> CaseTable::auxFilesOf(std::size_t caseIndex, std::size_t tagIndex) const
{
    // The collection has no index behind the last case with files under a tag.
    if (!auxFiles || caseIndex >= auxFiles->indexCount())
        return {};
    return auxFiles->filePaths(caseIndex, tags[tagIndex]);
}

void CaseTable::appendCells(std::size_t caseIndex, std::vector<std::string>& cells) const
{
    const auto begin =
        std::next(this->cells.begin(), static_cast<std::ptrdiff_t>(caseIndex * patterns.size()));
    cells.insert(cells.end(), begin,
                 std::next(begin, static_cast<std::ptrdiff_t>(patterns.size())));
}

std::vector<std::string> tagsOf(const std::vector<AuxFileIdentifier>& identifiers)
{
    std::vector<std::string> tags;
    for (const AuxFileIdentifier& identifier : identifiers) {
        if (std::find(tags.begin(), tags.end(), identifier.tag) == tags.end())
            tags.push_back(identifier.tag);
    }
    return tags;
}

} // namespace casetable
