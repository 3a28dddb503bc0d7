#include "casetable/importing/Partial.h"

#include <algorithm>
#include <map>
#include <random>
#include <set>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace casetable {
namespace tests {

namespace {

// A file with the key of its case; that is empty where it has none.
struct OneFile {
    std::string path;
    std::string key;
};

// What a partial says, in a form that can be compared.
struct Content {
    std::size_t fileCount = 0;
    std::map<std::string, std::pair<std::string, std::size_t>> cases; // Least path and count.
    std::set<std::tuple<std::string, std::string, std::uint32_t>> files;
    std::vector<bool> validIdentifiers = {false, false, false};
    bool isWatchedMatched = false;
    std::string failure;

    bool operator==(const Content& other) const
    {
        return std::tie(fileCount, cases, files, validIdentifiers, isWatchedMatched, failure) ==
               std::tie(other.fileCount, other.cases, other.files, other.validIdentifiers,
                        other.isWatchedMatched, other.failure);
    }
};

Content contentOf(const Partial& partial)
{
    Content content;
    content.fileCount = partial.fileCount;
    for (const Cases::Case& each : partial.cases)
        content.cases[std::string(each.key())] = {std::string(each.leastPath()), each.fileCount()};
    for (const Partial::Files& part : partial.files) {
        for (std::size_t i = 0; i < part.files.size(); ++i) {
            const Partial::Files::File& file = part.files[i];
            std::string key;
            if (file.caseIndex != Partial::none)
                key = partial.cases[file.caseIndex].key();
            content.files.emplace(part.path(i), key, file.identifier);
        }
    }
    if (!partial.validIdentifiers.empty())
        content.validIdentifiers = partial.validIdentifiers;
    content.isWatchedMatched = partial.isWatchedMatched;
    content.failure = partial.matchFailure ? partial.matchFailure->message : "";
    return content;
}

const std::string watched = "p33";

bool fails(const std::string& path)
{
    return path.back() == '7' && path.size() == 3;
}

// The partial of these files, as an import would make it.
Partial partialOf(const std::vector<OneFile>& files)
{
    Partial partial;
    partial.validIdentifiers.resize(3);
    Partial::Files kept;
    for (const OneFile& file : files) {
        ++partial.fileCount;
        if (fails(file.path) && (!partial.matchFailure || file.path < partial.matchFailure->path))
            partial.matchFailure = Partial::MatchFailure{file.path, "no " + file.path};
        if (file.key.empty()) {
            kept.append(file.path, Partial::none, Partial::none);
            continue;
        }
        const std::uint32_t index = partial.cases.add(file.key, file.path, 1);
        const std::uint32_t identifier = file.path.back() % 3;
        partial.validIdentifiers[identifier] = true;
        partial.isWatchedMatched = partial.isWatchedMatched || file.path == watched;
        kept.append(file.path, index, identifier);
    }
    if (!kept.files.empty())
        partial.files.push_back(std::move(kept));
    return partial;
}

} // namespace

TEST(Partial, IsTheSameHoweverFilesAreDividedAndPartsAreMerged)
{
    const unsigned seed = 4;
    std::mt19937 random(seed);
    for (int i = 0; i < 1000; ++i) {
        std::vector<OneFile> files;
        for (auto count = random() % 60; count > 0; --count) {
            const auto key = random() % 12;
            files.push_back({"p" + std::to_string(count), key == 0 ? "" : std::to_string(key)});
        }
        const Content expected = contentOf(partialOf(files));
        std::shuffle(files.begin(), files.end(), random);
        std::vector<Partial> parts;
        for (auto file = files.begin(); file != files.end();) {
            const auto left = static_cast<std::size_t>(files.end() - file);
            const auto end = file + static_cast<std::ptrdiff_t>(1 + random() % left);
            parts.push_back(partialOf({file, end}));
            file = end;
        }
        parts.emplace_back();

        // Any two are merged, until one is left.
        while (parts.size() > 1) {
            std::swap(parts[random() % parts.size()], parts.back());
            Partial last = std::move(parts.back());
            parts.pop_back();
            parts[random() % parts.size()].merge(std::move(last));
        }

        EXPECT_EQ(contentOf(parts.front()), expected) << i;
    }
}

TEST(Partial, CountsTheFilesInCases)
{
    EXPECT_EQ(Partial().matchedCount(), 0u);
    EXPECT_EQ(partialOf({{"a", "1"}, {"b", ""}, {"c", "2"}, {"d", "1"}}).matchedCount(), 3u);
}

TEST(CaseKey, TellsValuesApartWhereverTheyEnd)
{
    using Values = std::vector<std::string_view>;
    const std::vector<Values> cases = {
        {"ab", "c"},     {"a", "bc"}, {"abc", ""}, {"", "abc"},
        {"a", "b", "c"}, {"abc"},     {""},        {std::string_view("\0\n", 2)}};
    std::set<std::string> keys;
    for (const Values& values : cases) {
        std::string key;
        for (const std::string_view value : values)
            CaseKey::append(key, value);
        EXPECT_EQ(CaseKey::values(key), values);
        keys.insert(key);
    }
    EXPECT_EQ(keys.size(), cases.size());
}

} // namespace tests
} // namespace casetable
