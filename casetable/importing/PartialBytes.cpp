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

Cases readCases(ByteReader& reader, std::size_t columns)
{
    Cases cases;
    std::string key;
    for (std::size_t left = reader.count(leastCaseBytes); left > 0; --left) {
        key.clear();
        for (std::size_t k = 0; k < columns; ++k)
            CaseKey::append(key, reader.text());
        const std::string_view leastPath = reader.text();
        const std::size_t count = cases.size();
        if (cases.add(key, leastPath, reader.number()) != count)
            throw BrokenBytes("a partial result has a case twice");
    }
    return cases;
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

Partial::Files readFiles(ByteReader& reader, std::size_t cases, std::size_t identifiers)
{
    const auto checked = [](std::uint32_t index, std::size_t count) {
        if (index >= count && index != Partial::none)
            throw BrokenBytes("a partial result refers to what it does not hold");
        return index;
    };
    Partial::Files files;
    files.text = reader.text();
    files.files.resize(reader.count(fileBytes));
    std::uint32_t end = 0;
    for (Partial::Files::File& file : files.files) {
        file.end = reader.number32();
        if (file.end < std::exchange(end, file.end) || file.end > files.text.size())
            throw BrokenBytes("a partial result has a path that ends outside its text");
        file.caseIndex = checked(reader.number32(), cases);
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
    writeCases(writer, partial.cases);
    writer.number(partial.files.size());
    for (const Partial::Files& files : partial.files)
        writeFiles(writer, files);
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
    partial.cases = readCases(reader, columns);
    const std::size_t count = reader.count(leastFilesBytes);
    for (std::size_t k = 0; k < count; ++k) {
        partial.files.push_back(readFiles(reader, partial.cases.size(), identifiers));
        if (partial.files.back().files.empty())
            throw BrokenBytes("a partial result has a part without files");
    }
    return partial;
}

} // namespace casetable
