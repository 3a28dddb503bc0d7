#include "window/model/Matching.h"

#include <algorithm>
#include <exception>
#include <mutex>
#include <new>
#include <string_view>
#include <utility>

#include <boost/make_shared.hpp>

#include "casetable/importing/PlainTagValidator.h"
#include "casetable/importing/ShardImport.h"
#include "casetable/importing/ShardWorkers.h"
#include "casetable/listing/ListRoot.h"
#include "casetable/listing/Shard.h"

namespace casetable {

namespace {

class NoIdentifiers : public AuxFileIdentifierValidator::IdentifierProviderInterface {
public:
    std::vector<AuxFileIdentifier> identifiers() const override { return {}; }
};

// What the module says of a wildcard that selects nothing.
std::string wildcardError(const std::string& wildcard)
{
    const NoIdentifiers none;
    const AuxFileIdentifierValidator validator(none, {}, boost::make_shared<PlainTagValidator>());
    return validator.syntaxNameValidator()->validate(wildcard).errorString();
}

// The rows that may select files, by their index.
using RowIndices = std::vector<std::uint32_t>;

std::vector<AuxFileIdentifier> identifiersOf(const std::vector<Setup::AuxRow>& rows,
                                             const RowIndices& indices)
{
    std::vector<AuxFileIdentifier> identifiers;
    for (const std::uint32_t index : indices)
        identifiers.push_back({rows[index].wildcard, rows[index].tag});
    return identifiers;
}

// The rows of good tags; of the others, `results` tells what is wrong.
RowIndices rowsWithTags(const std::vector<Setup::AuxRow>& rows, std::vector<AuxResult>& results)
{
    RowIndices indices;
    for (std::uint32_t i = 0; i < rows.size(); ++i) {
        if (rows[i].wildcard.empty() && rows[i].tag.empty())
            continue;
        const ortelo::ValidationResult result = PlainTagValidator().validate(rows[i].tag);
        if (result.isValid() && rows[i].tag.find('=') == std::string::npos)
            indices.push_back(i);
        else
            results[i] = {result.isValid() ? "a tag holds no \"=\"" : result.errorString(), true};
    }
    return indices;
}

// Takes the rows off that select nothing.
void dropInvalid(RowIndices& indices, const std::vector<bool>& areValid,
                 const std::vector<Setup::AuxRow>& rows, std::vector<AuxResult>& results)
{
    RowIndices valid;
    for (std::size_t k = 0; k < indices.size(); ++k) {
        if (areValid[k])
            valid.push_back(indices[k]);
        else
            results[indices[k]] = {wildcardError(rows[indices[k]].wildcard), false};
    }
    indices = std::move(valid);
}

Partial importAll(const Files& files, const Reading& reading,
                  const std::vector<AuxFileIdentifier>& identifiers, const KeptFiles& kept,
                  std::size_t jobs, const std::atomic<bool>& isCancelled)
{
    Partial all;
    std::mutex mutex; // Guards the result.
    ShardWorkers workers(jobs, [&](const Shard& shard) {
        if (isCancelled)
            return;
        Partial partial = importShard(shard, reading, identifiers, kept);
        const std::lock_guard<std::mutex> lock(mutex);
        all.merge(std::move(partial));
    });
    for (const auto& shard : files.shards()) {
        if (isCancelled)
            break;
        workers.give(Shard(*shard));
    }
    workers.finish();
    return all;
}

// Enters what was selected: the number of files of each row, and, by path, its row.
struct Selected {
    std::string_view path;
    std::uint32_t row;
};

std::vector<Selected> selectedFiles(const Partial& all, const RowIndices& indices)
{
    std::vector<Selected> selected;
    for (const Partial::Files& part : all.files) {
        for (std::size_t i = 0; i < part.files.size(); ++i) {
            if (part.files[i].identifier != Partial::none)
                selected.push_back({part.path(i), indices[part.files[i].identifier]});
        }
    }
    std::sort(selected.begin(), selected.end(),
              [](const Selected& left, const Selected& right) { return left.path < right.path; });
    return selected;
}

void takeSelected(const Partial& all, const RowIndices& indices, Matching& matching)
{
    if (indices.empty())
        return;
    const std::vector<Selected> selected = selectedFiles(all, indices);
    matching.auxOf.assign(matching.files.count(), Matching::none);
    std::size_t next = 0;
    for (std::size_t i = 0; i < matching.files.count() && next < selected.size(); ++i) {
        if (matching.files.path(i) != selected[next].path)
            continue;
        matching.auxOf[i] = selected[next].row;
        ++matching.aux[selected[next++].row].fileCount;
    }
}

// Both stand in byte order of path.
void takeCases(Matching& matching)
{
    const std::size_t count = matching.files.count();
    matching.caseOf.assign(count, Matching::none);
    const FileRows matched = matching.import->matchedFiles();
    std::size_t next = 0;
    for (std::size_t i = 0; i < count && next < matched.count; ++i) {
        const FileRow row = matched.file(next);
        if (matching.files.path(i) == row.path) {
            matching.caseOf[i] = static_cast<std::uint32_t>(row.caseIndex);
            ++next;
        }
    }

    std::vector<std::size_t>& begins = matching.caseBegins;
    begins.assign(matching.import->table().caseCount() + 1, 0);
    for (const std::uint32_t index : matching.caseOf) {
        if (index != Matching::none)
            ++begins[index + 1];
    }
    for (std::size_t i = 1; i < begins.size(); ++i)
        begins[i] += begins[i - 1];
    matching.filesByCase.resize(begins.back());
    std::vector<std::size_t> places(begins.begin(), begins.end() - 1);
    for (std::uint32_t i = 0; i < count; ++i) {
        if (matching.caseOf[i] != Matching::none)
            matching.filesByCase[places[matching.caseOf[i]]++] = i;
    }
}

void match(Matching& matching, const std::vector<Setup::AuxRow>& rows, const std::string& rootName,
           std::size_t jobs, const std::atomic<bool>& isCancelled)
{
    const KeptFiles kept = {true, false, ""};
    RowIndices indices = rowsWithTags(rows, matching.aux);
    const auto importNow = [&] {
        return importAll(matching.files, *matching.reading, identifiersOf(rows, indices), kept,
                         jobs, isCancelled);
    };
    Partial all = importNow();
    if (!all.cases.empty() && all.validIdentifiers.size() == indices.size() &&
        std::count(all.validIdentifiers.begin(), all.validIdentifiers.end(), false) > 0) {
        dropInvalid(indices, all.validIdentifiers, rows, matching.aux);
        all = importNow();
    }
    if (isCancelled)
        return;
    if (!all.matchFailure)
        takeSelected(all, indices, matching);
    // The walk has judged the root, and may have been left to itself since; nothing is asked of it.
    matching.import = std::make_unique<const Import>(
        std::move(all), listRoot(rootName), *matching.reading, identifiersOf(rows, indices), kept);
    if (!isCancelled)
        takeCases(matching);
}

} // namespace

std::shared_ptr<const Matching> matchFiles(const Files& files, const Reading& reading,
                                           const std::vector<Setup::AuxRow>& rows,
                                           const std::string& rootName, std::size_t jobs,
                                           const std::atomic<bool>& isCancelled)
{
    const auto matching = std::make_shared<Matching>();
    matching->files = files;
    matching->reading = std::make_shared<const Reading>(reading);
    matching->aux.resize(rows.size());
    try {
        match(*matching, rows, rootName, jobs, isCancelled);
    } catch (const std::bad_alloc&) {
        matching->failure = "not enough memory";
    } catch (const std::exception& failure) {
        matching->failure = failure.what();
    }
    if (isCancelled)
        return nullptr;
    return matching;
}

} // namespace casetable
