#include "casetable/explaining/Tally.h"

#include <algorithm>
#include <cstddef>
#include <map>
#include <random>
#include <set>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "casetable/explaining/Unmatched.h"
#include "casetable/system/Bytes.h"
#include "host/AuxFileInfoInterface.h"
#include "tests/casetable/support/Importing.h"
#include "tests/crawler/PlainMatching.h"

namespace casetable {
namespace tests {

namespace {

using Patterns = std::vector<MetadataPattern>;
using Texts = std::vector<std::string>;
using plain::below;
using plain::Random;

// An import of files, and whether each is matched.
struct Imported {
    Imported(const std::set<std::string>& paths, const Reading& ownReading)
        : reading(ownReading), importing({paths.begin(), paths.end()}, ownReading)
    {
        for (const auto& file : importing.importer.identifiedAuxFiles())
            files.emplace_back(file->filePath(), true);
        for (const std::string& path : unmatchedPaths(importing.importer))
            files.emplace_back(path, false);
        std::sort(files.begin(), files.end());
    }

    void count(const std::pair<std::string, bool>& file, Tally& tally) const
    {
        if (file.second)
            tally.countMatched(file.first, importing.importer);
        else
            tally.countUnmatched(file.first);
    }

    Tally inOrder() const
    {
        Tally tally(reading);
        for (const auto& file : files)
            count(file, tally);
        return tally;
    }

    // As another process would have it.
    Tally throughBytes(const Tally& tally) const
    {
        ByteWriter writer;
        tally.write(writer);
        const std::string bytes = writer.take();
        ByteReader reader(bytes);
        Tally read(reading);
        read.read(reader);
        reader.end();
        return read;
    }

    // Of parts of the files, merged until one is left; some have gone through bytes.
    Tally inRandomParts(Random& random) const
    {
        std::vector<std::pair<std::string, bool>> shuffled = files;
        std::shuffle(shuffled.begin(), shuffled.end(), random);
        std::vector<Tally> parts;
        for (std::size_t count = 1 + below(random, 6); parts.size() < count;)
            parts.emplace_back(reading);
        for (const auto& file : shuffled)
            count(file, parts[below(random, parts.size())]);
        while (parts.size() > 1) {
            std::swap(parts[below(random, parts.size())], parts.back());
            Tally last =
                below(random, 2) == 0 ? std::move(parts.back()) : throughBytes(parts.back());
            parts.pop_back();
            parts[below(random, parts.size())].merge(std::move(last));
        }
        return throughBytes(parts.front());
    }

    const Reading& reading;
    Importing importing;
    std::vector<std::pair<std::string, bool>> files;
};

Texts sentencesOf(const Tally& tally)
{
    Texts sentences = tally.remarks();
    sentences.push_back(tally.whySomeFailed("T/x"));
    sentences.push_back(tally.whyNoneMatched("T/x"));
    return sentences;
}

// A path in which all markers stand, most of them with a value. In some rounds all values are
// alike.
std::string pathWithMarkers(Random& random, const Patterns& patterns, const std::string& value)
{
    static const Texts values = {"1", "-1", "1,5", "a", "ab", "a.b", "", "1.x"};
    std::string path = "x" + std::to_string(below(random, 50));
    for (const MetadataPattern& pattern : patterns)
        path += (below(random, 2) == 0 ? "/" : "") + pattern.pattern +
                (value.empty() ? values[below(random, values.size())] : value);
    return path;
}

// Files that an import by the patterns does not throw at. Their endings are few or very many.
std::set<std::string> randomFiles(Random& random, const Patterns& patterns)
{
    const bool hasManyKinds = below(random, 10) == 0;
    const std::string value = below(random, 4) == 0 ? "-1" : "";
    std::set<std::string> files;
    for (std::size_t tries = hasManyKinds ? 600 : 1 + below(random, 1 + below(random, 40));
         tries > 0; --tries) {
        plain::Record record;
        record.path = below(random, 2) == 0 ? "x" + plain::randomText(random, "TtPp1-,.e/_x", 12)
                                            : pathWithMarkers(random, patterns, value);
        if (hasManyKinds)
            record.path += "." + std::to_string(below(random, 2000));
        try {
            plain::apply(record, patterns);
            files.insert(record.path);
        } catch (const std::out_of_range&) {
        }
    }
    return files;
}

Patterns randomPatterns(Random& random)
{
    Patterns patterns;
    for (std::size_t count = 1 + below(random, 3); patterns.size() < count;)
        patterns.emplace_back("TtPp_*"[below(random, 6)] + plain::randomText(random, "TPx-/", 1),
                              below(random, 2) == 0 ? MetadataPattern::StringValue
                                                    : MetadataPattern::NumberValue);
    if (below(random, 5) == 0)
        patterns.push_back(patterns.back());
    return patterns;
}

} // namespace

TEST(Tally, SaysTheSameOfMarkersInWhateverPartsAndOrderFilesAreCounted)
{
    const Texts beginnings = {"the value of",   "the '-' behind", "one character stands",
                              "' is found in",  "' stands in x",  "' stands in front",
                              "' is written",   "' has no value", "' stands in T/x",
                              "a marker is a l"};
    std::map<std::string, std::size_t> counts;
    Random random(15);
    for (int round = 0; round < 2000; ++round) {
        const Reading reading(randomPatterns(random));
        const Imported imported(randomFiles(random, reading.patterns()), reading);
        const Texts sentences = sentencesOf(imported.inOrder());
        ASSERT_EQ(sentencesOf(imported.inRandomParts(random)), sentences)
            << "round " << round << plain::describe(reading.patterns());
        for (const std::string& sentence : sentences) {
            for (const std::string& beginning : beginnings)
                counts[beginning] += sentence.find(beginning) != std::string::npos ? 1 : 0;
        }
    }
    for (const std::string& beginning : beginnings)
        EXPECT_GT(counts[beginning], 5u) << beginning;
}

TEST(Tally, SaysTheSameOfTemplatesInWhateverPartsAndOrderFilesAreCounted)
{
    const Texts beginnings = {"reads no file", "no file takes", "is left out in",
                              "the template does not fit", "no template fits"};
    std::map<std::string, std::size_t> counts;
    Random random(16);
    for (int round = 0; round < 200; ++round) {
        const Reading reading{
            TemplateList(below(random, 2) == 0
                             ? Texts{"{a}[_{b:digits}][-1].x"}
                             : Texts{"{a}[_{b:digits}].x", "a/{b:digits}[_x[1]].x", "{a}_/x"})};
        std::set<std::string> files;
        for (std::size_t tries = 1 + below(random, 30); tries > 0; --tries)
            files.insert((below(random, 3) == 0 ? "a/" : "") +
                         plain::randomText(random, "a1_-/x", 6) +
                         (below(random, 3) == 0 ? "" : ".x"));
        const Imported imported(files, reading);
        const Texts sentences = sentencesOf(imported.inOrder());
        ASSERT_EQ(sentencesOf(imported.inRandomParts(random)), sentences) << "round " << round;
        for (const std::string& sentence : sentences) {
            for (const std::string& beginning : beginnings)
                counts[beginning] += sentence.find(beginning) != std::string::npos ? 1 : 0;
        }
    }
    for (const std::string& beginning : beginnings)
        EXPECT_GT(counts[beginning], 5u) << beginning;
}

TEST(Tally, TriesTheSameFilesOfManyThatNoTemplateFits)
{
    Random random(17);
    std::set<std::string> files;
    for (int i = 0; i < 5000; ++i)
        files.insert("T" + plain::randomText(random, "T1", 9) + plain::randomText(random, "/x", 4));
    const Reading reading{TemplateList({"{a}/T{b:digits}/x"})};
    const Imported imported(files, reading);

    const Texts sentences = sentencesOf(imported.inOrder());

    ASSERT_GT(unmatchedPaths(imported.importing.importer).size(), 2000u);
    for (int round = 0; round < 5; ++round)
        EXPECT_EQ(sentencesOf(imported.inRandomParts(random)), sentences);
}

TEST(Tally, RefusesBytesThatAreCutOffOrOfAnotherReading)
{
    const Reading markers(Patterns{{"T", MetadataPattern::NumberValue}});
    const Reading templates{TemplateList({"{a}[_{b:digits}].x"})};
    for (const Reading* const reading : {&markers, &templates}) {
        const Imported imported({"a/T1,5.x", "b_7.x", "c/Tx"}, *reading);
        ByteWriter writer;
        imported.inOrder().write(writer);
        const std::string bytes = writer.take();
        for (std::size_t size = 0; size < bytes.size(); ++size) {
            ByteReader reader(std::string_view(bytes).substr(0, size));
            EXPECT_THROW(Tally(*reading).read(reader), BrokenBytes) << size;
        }
        ByteReader reader(bytes);
        EXPECT_THROW(Tally(reading == &markers ? templates : markers).read(reader), BrokenBytes);
    }
}

TEST(Tally, NamesTheLeastPathWhicheverIsCountedFirst)
{
    const Reading reading(Patterns{{"T", MetadataPattern::NumberValue}});
    const Imported imported({"a/T1,5", "b/T2,5", "c/Tx", "d/Ty"}, reading);
    Tally tally(reading);
    for (auto file = imported.files.rbegin(); file != imported.files.rend(); ++file)
        imported.count(*file, tally);

    EXPECT_EQ(tally.remarks(),
              Texts({"the value of 'T' ends at a ',' in 2 files, as in a/T1,5, which gives '1'; "
                     "--suggest finds templates, and -t reads by them"}));
    EXPECT_EQ(tally.whySomeFailed("."), "'T' has no value in c/Tx, and --explain tells why");
}

TEST(Tally, TakesEndingsBeyondAFewHundredForOneKindOfFile)
{
    const auto whyFailed = [](std::size_t otherEndings) {
        const Reading reading(Patterns{{"T", MetadataPattern::NumberValue}});
        std::set<std::string> files = {"T1.vtu", "t2.long-ending", "T1.longer-ending"};
        for (std::size_t i = 0; i < otherEndings; ++i)
            files.insert("T1." + std::to_string(i));
        return Imported(files, reading).inOrder().whySomeFailed(".");
    };
    EXPECT_EQ(whyFailed(100), "");
    EXPECT_EQ(whyFailed(1000),
              "'T' is written with other letters, large or small, in t2.long-ending");
}

} // namespace tests
} // namespace casetable
