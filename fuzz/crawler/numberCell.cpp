// A text through a cell of a number column, and through one of a text column beside it.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include <boost/make_shared.hpp>

#include "fuzz/Input.h"
#include "fuzz/crawler/CaseTable.h"
#include "tests/crawler/Doubles.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    FuzzedDataProvider data(bytes, size);
    const fuzz::Patterns patterns = {{"number", MetadataPattern::NumberValue},
                                     {"text", MetadataPattern::StringValue}};
    const auto record = std::make_shared<doubles::ParserRecord>();
    while (data.remaining_bytes() > 0 && record->cases.size() < 4) {
        const std::string text = data.ConsumeRandomLengthString(500);
        record->cases.push_back({text, text});
    }

    const doubles::FileSystem disk;
    const auto importer = doubles::makeImporter(record);
    importer->setCrawlResult(doubles::crawlResult(disk.directory("/r")));
    importer->setMetadataPatternList(patterns);
    doubles::RecordingContext context;
    importer->extract(context);

    std::string input;
    for (const fuzz::Texts& texts : record->cases)
        input += " " + fuzz::shown(texts[0]);
    fuzz::expectSame("the table", fuzz::seenTable(*context.table),
                     fuzz::expectedTable(patterns, record->cases), input);
    return 0;
}
