#include "casetable/importing/PartialBytes.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "casetable/system/Bytes.h"

namespace casetable {

namespace {

const char* const name = "partial result";
const std::uint32_t version = 1;

// What cases and files take at least.
const std::size_t leastCaseBytes = 16;
const std::size_t leastFilesBytes = 16;
const std::size_t fileBytes = 12;

void writeCases(ByteWriter& writer, const Cases& cases)
{
    writer.number(cases.size());
    for (const Cases::Case& each : cases) {
        for (const std::string_view value : CaseKey::values(each.key()))
            writer.text(value);
        writer.text(each.leastPath());
        writer.number(each.fileCount());
    }
}

// Returns the index of each case in `all`.
std::vector<std::uint32_t> mergeCases(ByteReader& reader, std::size_t columns, Cases& all)
{
    std::vector<std::uint32_t> indices(reader.count(leastCaseBytes));
    std::string key;
    for (std::uint32_t& index : indices) {
        key.clear();
        for (std::size_t k = 0; k < columns; ++k)
            CaseKey::append(key, reader.text());
        const std::string_view leastPath = reader.text();
        index = all.add(key, leastPath, reader.number());
    }
    return indices;
}

void writeFiles(ByteWriter& writer, const Partial::Files& files)
{
    writer.text(files.text);
    writer.number(files.files.size());
    for (const Partial::Files::File& file : files.files) {
        writer.number32(file.end);
        writer.number32(file.caseIndex);
        writer.number32(file.identifier);
    }
}

Partial::Files readFiles(ByteReader& reader, const std::vector<std::uint32_t>& cases,
                         std::size_t identifiers)
{
    const auto check = [](bool refersToNone) {
        if (refersToNone)
            throw BrokenBytes("a partial result refers to what it does not hold");
    };
    Partial::Files files;
    files.text = reader.text();
    files.files.resize(reader.count(fileBytes));
    std::uint32_t end = 0;
    for (Partial::Files::File& file : files.files) {
        file.end = reader.number32();
        check(file.end < std::exchange(end, file.end) || file.end > files.text.size());
        const std::uint32_t index = reader.number32();
        check(index >= cases.size() && index != Partial::none);
        file.caseIndex = index == Partial::none ? index : cases[index];
        file.identifier = reader.number32();
        check(file.identifier >= identifiers && file.identifier != Partial::none);
    }
    if (files.files.empty())
        throw BrokenBytes("a partial result has a group of no files");
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
    writeCases(writer, partial.cases);
    writer.number(partial.files.size());
    for (const Partial::Files& files : partial.files)
        writeFiles(writer, files);
}

void mergePartial(ByteReader& reader, std::size_t columns, std::size_t identifiers, Partial& all)
{
    reader.heading(name, version);
    Partial partial; // All but the cases and files.
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
    all.merge(std::move(partial));
    const std::vector<std::uint32_t> cases = mergeCases(reader, columns, all.cases);
    for (std::size_t left = reader.count(leastFilesBytes); left > 0; --left)
        all.files.push_back(readFiles(reader, cases, identifiers));
}

} // namespace casetable
