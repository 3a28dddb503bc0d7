#include "casetable/suggesting/Census.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <map>
#include <string>
#include <utility>

namespace casetable {

namespace {

using Paths = std::vector<DividedPath>;

DividedPath componentsOf(std::string_view path)
{
    DividedPath divided;
    for (std::size_t begin = 0; begin <= path.size();) {
        const std::size_t end = std::min(path.find('/', begin), path.size());
        divided.components.push_back(path.substr(begin, end - begin));
        begin = end + 1;
    }
    divided.ending = endingOf(divided.components.back());
    divided.components.back().remove_suffix(divided.ending.size());
    divided.parts.resize(divided.components.size());
    return divided;
}

// File names without digits, of several endings, that come again in many folders of a depth are the
// files of one run: "flow.vtu", "forces.dat".
void findListedNames(Paths& paths)
{
    using Place = std::pair<std::size_t, std::string_view>;
    const auto placeOf = [](const DividedPath& path) {
        const std::string_view stem = path.components.back();
        return Place(path.components.size(), {stem.data(), stem.size() + path.ending.size()});
    };
    std::map<std::size_t, std::size_t> all;
    std::map<Place, std::size_t> counts;
    for (const DividedPath& path : paths) {
        const std::string_view stem = path.components.back();
        const bool hasDigits = std::any_of(stem.begin(), stem.end(), isDigit);
        ++all[path.components.size()];
        counts[placeOf(path)] += hasDigits || path.components.size() == 1 ? 0 : 1;
    }
    const auto isFrequent = [&](const Place& place) {
        return counts[place] >= 3 && counts[place] * 50 >= all[place.first];
    };
    std::map<std::size_t, std::set<std::string_view>> endings;
    for (const DividedPath& path : paths)
        if (isFrequent(placeOf(path)))
            endings[path.components.size()].insert(path.ending);
    for (DividedPath& path : paths) {
        const Place place = placeOf(path);
        if (!isFrequent(place) || endings[place.first].size() < 2)
            continue;
        path.components.back() = place.second;
        path.ending = {};
        path.parts.back() = {{{}, {}, place.second, listedKind}};
    }
}

// A folder's name of letters or of several parts is one part where it comes again behind it:
// "MPI-ESM/tas_MPI-ESM_r1.nc".
void divide(Paths& paths, NameReader& reader, bool findsAgain)
{
    for (DividedPath& path : paths) {
        std::vector<std::pair<std::size_t, std::string_view>> again;
        for (std::size_t i = 0; i < path.parts.size(); ++i) {
            std::vector<NamePart>& parts = path.parts[i];
            if (parts.empty() || parts.front().kind != listedKind)
                parts = reader.divide(path.components[i], again);
            const bool isWord = parts.front().key.empty() && path.components[i].size() > 1 &&
                                (parts.front().kind & (letterKind | mixedKind)) != 0;
            if (findsAgain && i < maxAgain && (parts.size() > 1 || isWord))
                again.emplace_back(i, path.components[i]);
        }
    }
}

// In "sub-01_task-rest_bold", few words stand before a "-", and mostly several in a path: they are
// keys. Others, "Peck-solid", are not. Words that stand before a number with a "-" and also without
// are signed: "AoA-2.5" and "AoA2.5".
NameReader readerOf(const Paths& paths)
{
    Words joined;
    Words behindMinus;
    std::map<std::string_view, std::pair<std::size_t, std::size_t>> counts;
    for (const DividedPath& path : paths) {
        Words words;
        for (const std::vector<NamePart>& parts : path.parts)
            for (std::size_t i = 0; i < parts.size(); ++i) {
                const NamePart& part = parts[i];
                for (const std::string_view run : runsOf(part.text))
                    joined.insert(part.kind == mixedKind ? run : std::string_view());
                if (part.kind != letterKind || i + 1 == parts.size() || part.separator == "-" ||
                    parts[i + 1].separator != "-" || parts[i + 1].kind == emptyKind)
                    continue;
                words.insert(part.text);
                if (isDigit(parts[i + 1].text.front()))
                    behindMinus.insert(part.text);
            }
        for (const std::string_view word : words) {
            ++counts[word].first;
            counts[word].second += words.size() > 1 ? 1 : 0;
        }
    }
    Words signedWords;
    std::set_intersection(joined.begin(), joined.end(), behindMinus.begin(), behindMinus.end(),
                          std::inserter(signedWords, signedWords.end()));
    Words keys;
    std::size_t ofOthers = 0;
    std::size_t ofKeys = 0;
    for (const auto& [word, count] : counts) {
        const bool isKey = count.first >= 3 && count.first * 200 >= paths.size() &&
                           count.second * 2 >= count.first && signedWords.count(word) == 0;
        (isKey ? ofKeys : ofOthers) += count.first;
        if (isKey)
            keys.insert(word);
    }
    return {signedWords, ofOthers * 4 <= ofKeys ? keys : Words()};
}

std::string signatureOf(const DividedPath& path)
{
    std::string signature(1, path.ending.empty() ? '-' : '.');
    for (const std::vector<NamePart>& parts : path.parts) {
        for (const NamePart& part : parts)
            signature.append(part.separator)
                .append(1, '\0')
                .append(part.key.empty() ? std::to_string(part.kind) : std::string(part.key))
                .append(1, '\0');
        signature += '/';
    }
    return signature;
}

std::uint64_t hashOf(std::string_view path)
{
    std::uint64_t hash = 14695981039346656037U; // FNV-1a, the same on all machines
    for (const char byte : path)
        hash = (hash ^ static_cast<unsigned char>(byte)) * 1099511628211U;
    return hash ^ (hash >> 29U);
}

} // namespace

std::vector<std::string_view> samplePaths(const std::vector<std::string_view>& paths,
                                          std::size_t count)
{
    std::vector<std::pair<std::uint64_t, std::string_view>> hashed;
    for (const std::string_view path : paths)
        hashed.emplace_back(hashOf(path), path);
    if (hashed.size() > count) {
        std::nth_element(hashed.begin(), hashed.begin() + static_cast<std::ptrdiff_t>(count),
                         hashed.end());
        hashed.resize(count);
    }
    std::vector<std::string_view> sample;
    for (const auto& [hash, path] : hashed)
        sample.push_back(path);
    std::sort(sample.begin(), sample.end());
    return sample;
}

std::vector<PathClass> takeCensus(const std::vector<std::string_view>& paths)
{
    Paths divided;
    std::transform(paths.begin(), paths.end(), std::back_inserter(divided), componentsOf);
    findListedNames(divided);
    NameReader plainReader({}, {});
    divide(divided, plainReader, false);
    NameReader reader = readerOf(divided);
    divide(divided, reader, true);
    std::map<std::string, PathClass> classes;
    for (DividedPath& path : divided)
        classes[signatureOf(path)].push_back(std::move(path));
    std::vector<PathClass> largestFirst;
    for (auto& [signature, members] : classes)
        largestFirst.push_back(std::move(members));
    std::stable_sort(largestFirst.begin(), largestFirst.end(),
                     [](const PathClass& a, const PathClass& b) { return a.size() > b.size(); });
    return largestFirst;
}

} // namespace casetable
