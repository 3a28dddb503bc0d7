// One path against a pattern list, applied as often as the input says.

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>

#include "crawler/private/CrawlerFilePath.h"
#include "fuzz/Input.h"
#include "tests/crawler/PlainMatching.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    FuzzedDataProvider data(bytes, size);
    plain::Record expected;
    expected.path = data.ConsumeRandomLengthString(200);
    CrawlerFilePath file(expected.path);
    std::string input = fuzz::shown(expected.path);

    for (auto rounds = data.ConsumeIntegralInRange<int>(1, 4); rounds > 0; --rounds) {
        const fuzz::Patterns patterns = fuzz::patterns(data, expected.path, 5);
        const auto caseIndex = data.ConsumeIntegral<std::uint8_t>();
        // Applying only appends to the infos; it is the parser that empties them.
        if (data.ConsumeBool()) {
            file.clearMetadataInfoList();
            expected.infos.clear();
            input += " cleared";
        }
        input += " " + fuzz::shown(patterns);

        std::string seenAnswer;
        std::string expectedAnswer;
        try {
            seenAnswer = std::to_string(file.applyMetadataPatterns(patterns));
        } catch (const std::out_of_range& error) {
            seenAnswer = error.what();
        }
        try {
            expectedAnswer = std::to_string(plain::apply(expected, patterns));
        } catch (const std::out_of_range& error) {
            expectedAnswer = error.what();
        }
        file.setCaseIndex(caseIndex);

        fuzz::expectSame("the answer", seenAnswer, expectedAnswer, input);
        fuzz::expectSame("the matched flag", std::to_string(file.isMatched()),
                         std::to_string(expected.matched), input);
        fuzz::expectSame("the infos", fuzz::shown(file.metadataInfoList()),
                         fuzz::shown(expected.infos), input);
        fuzz::expectSame("the values", fuzz::shown(file.metadataValues()),
                         fuzz::shown(expected.values), input);
        fuzz::expectSame("the path", fuzz::shown(file.filePath()), fuzz::shown(expected.path),
                         input);
        fuzz::expectSame("the case index", std::to_string(file.caseIndex()),
                         std::to_string(caseIndex), input);
        fuzz::expectSame("the label", fuzz::shown(file.label()), fuzz::shown(""), input);
        fuzz::expectSame("the type", std::to_string(file.type()),
                         std::to_string(auxFileType(expected.path)), input);
    }
    return 0;
}
