#include "casetable/importing/Partial.h"

#include <algorithm>
#include <cstring>
#include <numeric>
#include <stdexcept>
#include <utility>

namespace casetable {

namespace {

using Length = std::uint32_t;

Length checkedLength(std::size_t length)
{
    if (length > UINT32_MAX)
        throw std::length_error("a value is too long");
    return static_cast<Length>(length);
}

} // namespace

void Partial::Files::append(std::string_view path, std::uint32_t caseIndex,
                            std::uint32_t identifier)
{
    text += path;
    files.push_back({checkedLength(text.size()), caseIndex, identifier});
}

std::string_view Partial::Files::path(std::size_t index) const
{
    const std::size_t begin = index == 0 ? 0 : files[index - 1].end;
    return std::string_view(text).substr(begin, files[index].end - begin);
}

void Partial::merge(Partial&& other)
{
    if (other.cases.size() > cases.size())
        std::swap(*this, other);
    fileCount += other.fileCount;
    isWatchedMatched = isWatchedMatched || other.isWatchedMatched;
    if (other.matchFailure && (!matchFailure || other.matchFailure->path < matchFailure->path))
        matchFailure = std::move(other.matchFailure);
    if (validIdentifiers.empty())
        validIdentifiers = other.validIdentifiers;
    for (std::size_t k = 0; k < other.validIdentifiers.size(); ++k)
        validIdentifiers[k] = validIdentifiers[k] || other.validIdentifiers[k];

    const std::vector<std::uint32_t> indices = cases.addAll(other.cases);
    for (Files& kept : other.files) {
        for (Files::File& file : kept.files) {
            if (file.caseIndex != none)
                file.caseIndex = indices[file.caseIndex];
        }
        files.push_back(std::move(kept));
    }
    other = Partial();
}

std::size_t Partial::matchedCount() const
{
    return std::accumulate(
        cases.begin(), cases.end(), std::size_t{0},
        [](std::size_t count, const Cases::Case& each) { return count + each.fileCount(); });
}

void CaseKey::append(std::string& key, std::string_view value)
{
    const Length length = checkedLength(value.size());
    char bytes[sizeof length];
    std::memcpy(bytes, &length, sizeof length);
    key.append(bytes, sizeof length).append(value);
}

std::vector<std::string_view> CaseKey::values(std::string_view key)
{
    std::vector<std::string_view> values;
    while (!key.empty()) {
        Length length = 0;
        std::memcpy(&length, key.data(), sizeof length);
        values.push_back(key.substr(sizeof length, length));
        key.remove_prefix(sizeof length + length);
    }
    return values;
}

} // namespace casetable
