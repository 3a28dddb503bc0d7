#include "casetable/importing/PartialBytes.h"

#include <random>
#include <set>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "casetable/importing/Reading.h"
#include "casetable/importing/ShardImport.h"
#include "casetable/listing/Shard.h"
#include "casetable/system/Bytes.h"

namespace casetable {
namespace tests {

namespace {

const std::vector<AuxFileIdentifier> identifiers = {{"*1.dat", "one"}, {"*2.dat", "two"}};

Reading reading()
{
    return Reading(std::vector<MetadataPattern>{{"T", MetadataPattern::StringValue},
                                                {"P", MetadataPattern::NumberValue}});
}

// All that a partial says, as a text.
std::string textOf(const Partial& partial)
{
    std::ostringstream text;
    text << partial.fileCount << ' ' << partial.isWatchedMatched << '\n';
    for (const bool isValid : partial.validIdentifiers)
        text << isValid;
    if (partial.matchFailure)
        text << partial.matchFailure->path << partial.matchFailure->message;
    std::set<std::string> lines;
    for (const Cases::Case& each : partial.cases)
        lines.insert(std::string(each.key()) + ' ' + std::string(each.leastPath()) + ' ' +
                     std::to_string(each.fileCount()));
    for (const Partial::Files& part : partial.files) {
        for (std::size_t i = 0; i < part.files.size(); ++i) {
            const Partial::Files::File& file = part.files[i];
            const std::string key = file.caseIndex == Partial::none
                                        ? "none"
                                        : std::string(partial.cases[file.caseIndex].key());
            lines.insert(std::string(part.path(i)) + ' ' + key + ' ' +
                         std::to_string(file.identifier));
        }
    }
    for (const std::string& line : lines)
        text << '\n' << line;
    return text.str();
}

Partial importOf(const std::vector<std::string>& paths, const KeptFiles& kept)
{
    Shard shard;
    for (const std::string& path : paths)
        shard.append(path);
    return importShard(shard, reading(), identifiers, kept);
}

Partial randomPartial(std::mt19937& random)
{
    KeptFiles kept;
    kept.matched = random() % 2 == 0;
    kept.unmatched = random() % 2 == 0;
    kept.watched = "Ta/P1_1.dat";
    Partial partial;
    for (auto parts = random() % 4; parts > 0; --parts) {
        std::vector<std::string> paths;
        for (auto count = random() % 30; count > 0; --count)
            paths.push_back(
                (random() % 5 == 0 ? "none" : "T" + std::string(1, 'a' + random() % 3)) + "a/P" +
                std::to_string(random() % 4) + '_' + std::to_string(100 * parts + random() % 5) +
                ".dat");
        partial.merge(importOf(paths, kept));
    }
    return partial;
}

std::string bytesOf(const Partial& partial)
{
    ByteWriter writer;
    writePartial(writer, partial);
    return writer.take();
}

Partial partialOf(std::string_view bytes)
{
    ByteReader reader(bytes);
    Partial partial;
    mergePartial(reader, 2, identifiers.size(), partial);
    reader.end();
    return partial;
}

} // namespace

TEST(PartialBytes, GiveWhatTheyWereMadeOf)
{
    std::mt19937 random(1);
    for (int i = 0; i < 300; ++i) {
        const Partial partial = randomPartial(random);
        EXPECT_EQ(textOf(partialOf(bytesOf(partial))), textOf(partial)) << i;
    }
}

TEST(PartialBytes, KeepAFailure)
{
    Partial partial;
    partial.matchFailure = Partial::MatchFailure{"a\n", "b"};
    EXPECT_EQ(textOf(partialOf(bytesOf(partial))), textOf(partial));
}

TEST(PartialBytes, AreMergedLikeWhatTheyWereMadeOf)
{
    KeptFiles kept;
    kept.matched = true;
    const auto one = [&] { return importOf({"Taa/P1_a", "Tbb/P2_b"}, kept); };
    const auto other = [&] { return importOf({"Tbb/P2_a", "Tcc/P3_a"}, kept); };
    Partial expected = one();
    expected.merge(other());

    Partial merged = one();
    const std::string bytes = bytesOf(other());
    ByteReader reader(bytes);
    mergePartial(reader, 2, identifiers.size(), merged);

    EXPECT_EQ(textOf(merged), textOf(expected));
}

TEST(PartialBytes, AreRefusedWhereverTheyAreCutOff)
{
    std::mt19937 random(2);
    for (int i = 0; i < 20; ++i) {
        const std::string bytes = bytesOf(randomPartial(random));
        for (std::size_t size = 0; size < bytes.size(); ++size)
            EXPECT_THROW(partialOf(std::string_view(bytes).substr(0, size)), BrokenBytes);
    }
}

TEST(PartialBytes, AreRefusedOrReadWhateverIsDamaged)
{
    std::mt19937 random(3);
    for (int i = 0; i < 2000; ++i) {
        std::string bytes = bytesOf(randomPartial(random));
        for (auto count = 1 + random() % 3; count > 0; --count)
            bytes[random() % bytes.size()] = static_cast<char>(random());
        try {
            textOf(partialOf(bytes)); // Looks at every path and case.
        } catch (const BrokenBytes& failure) {
            EXPECT_STRNE(failure.what(), "");
        }
    }
}

TEST(PartialBytes, AreRefusedWithAGroupOfNoFiles)
{
    Partial partial;
    partial.files.emplace_back();
    const std::string bytes = bytesOf(partial);
    ByteReader reader(bytes);
    Partial all;
    try {
        mergePartial(reader, 2, 0, all);
        FAIL();
    } catch (const BrokenBytes& failure) {
        EXPECT_STREQ(failure.what(), "a partial result has a group of no files");
    }
}

TEST(PartialBytes, AreRefusedOfAnotherImport)
{
    const std::string bytes = bytesOf(importOf({"Taa/P1_a"}, KeptFiles()));
    ByteReader reader(bytes);
    Partial all;
    EXPECT_THROW(mergePartial(reader, 2, 3, all), BrokenBytes);
}

} // namespace tests
} // namespace casetable
