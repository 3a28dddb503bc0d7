#include "window/model/Suggestions.h"

#include <algorithm>
#include <memory>
#include <string_view>

#include "casetable/importing/CellOrder.h"
#include "casetable/importing/Report.h"
#include "casetable/suggesting/TemplateSuggestion.h"
#include "window/model/Matching.h"

namespace casetable {

namespace {

const std::size_t sampleSize = 4;

SuggestedColumn columnOf(const CaseTable& table, std::size_t column)
{
    const MetadataPattern& pattern = table.patterns[column];
    std::vector<std::string_view> cells;
    for (std::size_t i = 0; i < table.caseCount(); ++i)
        cells.emplace_back(table.cell(i, column));
    const CellRanks ranks = rankCells(caseColumns(table.patterns, {})[column + 1], cells);
    SuggestedColumn result = {pattern.pattern,
                              pattern.valueType == MetadataPattern::NumberValue,
                              ranks.firsts.size(),
                              {}};
    for (std::size_t i = 0; i < std::min(sampleSize, ranks.firsts.size()); ++i)
        result.sample.push_back(table.cell(ranks.firsts[i], column));
    return result;
}

} // namespace

std::vector<Suggestion> suggestionsFor(const Files& files, std::size_t jobs,
                                       const std::atomic<bool>& isCancelled)
{
    std::vector<std::string_view> paths;
    paths.reserve(files.count());
    for (const auto& shard : files.shards()) {
        for (std::size_t i = 0; i < shard->fileCount(); ++i)
            paths.push_back(shard->path(i));
    }
    std::vector<Suggestion> suggestions;
    for (const std::string& text : suggestTemplates(paths)) {
        const Reading reading((TemplateList({text})));
        const auto matching = matchFiles(files, reading, {}, "", jobs, isCancelled);
        if (!matching || !matching->import)
            continue;
        const CaseTable& table = matching->import->table();
        Suggestion suggestion = {text, matching->import->matchedCount(), table.caseCount(), {}};
        for (std::size_t column = 0; column < table.patterns.size(); ++column)
            suggestion.columns.push_back(columnOf(table, column));
        suggestions.push_back(std::move(suggestion));
    }
    return suggestions;
}

} // namespace casetable
