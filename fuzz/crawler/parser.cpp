// Paths appended, pattern lists applied and paths cleared, in any order.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "crawler/CrawlerBasicImporterParser.h"
#include "fuzz/Input.h"
#include "tests/crawler/ParserModel.h"

namespace {

class Comparison {
public:
    void append(const std::string& path)
    {
        input_ += " append " + fuzz::shown(path);
        parser_.appendRawFilePath(path);
        model_.append(path);
    }

    void clear()
    {
        input_ += " clear";
        parser_.clearFilePaths();
        model_.files.clear();
    }

    void apply(const fuzz::Patterns& patterns)
    {
        input_ += " apply " + fuzz::shown(patterns);
        std::string seen;
        std::string expected;
        try {
            parser_.applyMetadataPatternList(patterns);
        } catch (const std::out_of_range& error) {
            seen = error.what();
        }
        try {
            model_.apply(patterns);
        } catch (const std::out_of_range& error) {
            expected = error.what();
        }
        fuzz::expectSame("what is thrown", seen, expected, input_);
    }

    void expectSame()
    {
        expectSameCases();
        expectSameFiles();
        // Replaced and cleared records as well: they keep what they held.
        for (const auto& file : shown_) {
            const plain::Record& record = file->record;
            expectSame("the path of a record", fuzz::shown(file->shown->filePath()),
                       fuzz::shown(record.path));
            expectSame("the matched flag of " + fuzz::shown(record.path),
                       std::to_string(file->shown->isMatched()), std::to_string(record.matched));
            expectSame("the case index of " + fuzz::shown(record.path),
                       std::to_string(file->shown->caseIndex()), std::to_string(record.caseIndex));
        }
    }

    /// One of the paths that the parser holds, by any number; empty when it holds none.
    std::string path(std::size_t number) const
    {
        return model_.files.empty() ? std::string()
                                    : model_.files[number % model_.files.size()]->record.path;
    }

private:
    void expectSame(const std::string& what, const std::string& seen,
                    const std::string& expected) const
    {
        fuzz::expectSame(what, seen, expected, input_);
    }

    void expectSameCases() const
    {
        expectSame("the number of cases", std::to_string(parser_.numDefinedCases()),
                   std::to_string(model_.cases.size()));
        for (std::size_t i = 0; i < model_.cases.size(); ++i) {
            fuzz::Texts values;
            for (std::size_t k = 0; k < model_.cases[i].size(); ++k)
                values.push_back(parser_.caseMetadataSValue(i, k));
            expectSame("case " + std::to_string(i), fuzz::shown(values),
                       fuzz::shown(model_.cases[i]));
        }
    }

    void expectSameFiles()
    {
        const auto files = parser_.crawlerFilePathList();
        expectSame("the number of files", std::to_string(files.size()),
                   std::to_string(model_.files.size()));
        for (std::size_t i = 0; i < files.size(); ++i) {
            const std::shared_ptr<model::File>& file = model_.files[i];
            const std::string path = fuzz::shown(file->record.path);
            expectSame("the path at " + std::to_string(i), fuzz::shown(files[i]->filePath()), path);
            expectSame("the infos of " + path,
                       fuzz::shown(parser_.metadataInfoList(file->record.path)),
                       fuzz::shown(file->record.infos));
            if (!file->shown) {
                for (const auto& other : shown_)
                    expectSame("whose record " + path + " has",
                               other->shown == files[i] ? "an old one" : "a fresh one",
                               "a fresh one");
                file->shown = files[i];
                shown_.push_back(file);
            }
            expectSame("whose record " + path + " has",
                       file->shown == files[i] ? "its own" : "another", "its own");
        }
        const std::string unknown = path(0) + "?";
        bool known = false;
        for (const auto& file : model_.files)
            known = known || file->record.path == unknown;
        if (!known)
            expectSame("the infos of an unknown path",
                       fuzz::shown(parser_.metadataInfoList(unknown)), "{ }");
    }

    CrawlerBasicImporterParser parser_;
    model::Parser model_;
    std::vector<std::shared_ptr<model::File>> shown_;
    std::string input_;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    FuzzedDataProvider data(bytes, size);
    Comparison comparison;
    for (int steps = 0; steps < 40 && data.remaining_bytes() > 0; ++steps) {
        const auto action = data.ConsumeIntegralInRange<int>(0, 9);
        const std::string known = comparison.path(data.ConsumeIntegral<std::uint8_t>());
        if (action == 0)
            comparison.clear();
        else if (action < 4)
            comparison.append(data.ConsumeRandomLengthString(40));
        else if (action == 4)
            comparison.append(known + data.ConsumeRandomLengthString(8));
        else if (action == 5)
            comparison.append(data.ConsumeRandomLengthString(8) + known);
        else
            comparison.apply(fuzz::patterns(data, known, 4));
        comparison.expectSame();
    }
    return 0;
}
