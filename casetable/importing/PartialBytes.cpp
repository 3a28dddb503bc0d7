#include "casetable/importing/PartialBytes.h"

#include <cstdint>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "casetable/system/Bytes.h"

namespace casetable {

namespace {

const char* const name = "partial result";
const std::uint32_t version = 1;

// What cases and files take at least.
const std::size_t leastCaseBytes = 16;
const std::size_t leastFilesBytes = 24;
const std::size_t fileBytes = 12;

// The cases in the order in which they are written.
using CaseIndices = std::unordered_map<const Partial::Case*, std::uint32_t>;

// `indices` are needed where there are files alone.
void writeCases(ByteWriter& writer, const Partial& partial, CaseIndices& indices)
{
    writer.number(partial.cases.size());
    for (const auto& [key, each] : partial.cases) {
        if (!partial.files.empty())
            indices.emplace(&each, static_cast<std::uint32_t>(indices.size()));
        for (const std::string_view value : CaseKey::values(key))
            writer.text(value);
        writer.text(each.leastPath);
        writer.number(each.fileCount);
    }
}

std::vector<Partial::Case*> readCases(ByteReader& reader, std::size_t columns, Partial& partial)
{
    const std::size_t count = reader.count(leastCaseBytes);
    std::vector<Partial::Case*> cases;
    cases.reserve(count);
    partial.cases.reserve(count);
    std::string key;
    for (std::size_t index = 0; index < count; ++index) {
        key.clear();
        for (std::size_t k = 0; k < columns; ++k)
            CaseKey::append(key, reader.text());
        const auto [place, isNew] = partial.cases.try_emplace(key);
        if (!isNew)
            throw BrokenBytes("a partial result has a case twice");
        place->second.leastPath = reader.text();
        place->second.fileCount = reader.number();
        cases.push_back(&place->second);
    }
    return cases;
}

void writeFiles(ByteWriter& writer, const Partial::Files& files, const CaseIndices& indices)
{
    writer.number(files.cases.size());
    for (const Partial::Case* each : files.cases)
        writer.number32(indices.at(each));
    writer.text(files.text);
    writer.number(files.files.size());
    for (const Partial::Files::File& file : files.files) {
        writer.number32(file.end);
        writer.number32(file.caseIndex);
        writer.number32(file.identifier);
    }
}

Partial::Files readFiles(ByteReader& reader, const std::vector<Partial::Case*>& cases,
                         std::size_t identifiers)
{
    const auto checked = [](std::uint32_t index, std::size_t count) {
        if (index >= count && index != Partial::none)
            throw BrokenBytes("a partial result refers to what it does not hold");
        return index;
    };
    Partial::Files files;
    files.cases.resize(reader.count(sizeof(std::uint32_t)));
    for (Partial::Case*& each : files.cases) {
        const std::uint32_t index = reader.number32();
        if (index >= cases.size())
            throw BrokenBytes("a partial result refers to what it does not hold");
        each = cases[index];
    }
    files.text = reader.text();
    files.files.resize(reader.count(fileBytes));
    std::uint32_t end = 0;
    for (Partial::Files::File& file : files.files) {
        file.end = reader.number32();
        if (file.end < std::exchange(end, file.end) || file.end > files.text.size())
            throw BrokenBytes("a partial result has a path that ends outside its text");
        file.caseIndex = checked(reader.number32(), files.cases.size());
        file.identifier = checked(reader.number32(), identifiers);
    }
    return files;
}

} // namespace

void writePartial(ByteWriter& writer, const Partial& partial)
{
    writer.heading(name, version);
    writer.number(partial.fileCount);
    writer.flag(partial.isWatchedMatched);
    writer.number(partial.validIdentifiers.size());
    for (const bool isValid : partial.validIdentifiers)
        writer.flag(isValid);
    writer.flag(partial.matchFailure.has_value());
    if (partial.matchFailure) {
        writer.text(partial.matchFailure->path);
        writer.text(partial.matchFailure->message);
    }
    CaseIndices indices;
    writeCases(writer, partial, indices);
    writer.number(partial.files.size());
    for (const Partial::Files& files : partial.files)
        writeFiles(writer, files, indices);
}

Partial readPartial(ByteReader& reader, std::size_t columns, std::size_t identifiers)
{
    reader.heading(name, version);
    Partial partial;
    partial.fileCount = reader.number();
    partial.isWatchedMatched = reader.flag();
    partial.validIdentifiers.resize(reader.count(1));
    if (!partial.validIdentifiers.empty() && partial.validIdentifiers.size() != identifiers)
        throw BrokenBytes("a partial result has other identifiers");
    for (auto&& isValid : partial.validIdentifiers)
        isValid = reader.flag();
    if (reader.flag()) {
        partial.matchFailure.emplace();
        partial.matchFailure->path = reader.text();
        partial.matchFailure->message = reader.text();
    }
    const std::vector<Partial::Case*> cases = readCases(reader, columns, partial);
    const std::size_t count = reader.count(leastFilesBytes);
    for (std::size_t k = 0; k < count; ++k) {
        partial.files.push_back(readFiles(reader, cases, identifiers));
        if (partial.files.back().files.empty())
            throw BrokenBytes("a partial result has a part without files");
    }
    return partial;
}

} // namespace casetable
