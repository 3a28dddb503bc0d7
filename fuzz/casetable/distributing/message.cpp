// Reads bytes as what processes tell each other. Either they are refused, or what was read is
// written and read once more, and is the same then.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "casetable/distributing/Messages.h"
#include "casetable/explaining/Tally.h"
#include "casetable/importing/PartialBytes.h"
#include "casetable/importing/Reading.h"
#include "casetable/system/Bytes.h"
#include "fuzz/Input.h"

namespace {

using casetable::ByteReader;
using casetable::ByteWriter;

const casetable::Reading& markers()
{
    static const casetable::Reading reading(std::vector<MetadataPattern>{
        {"T", MetadataPattern::StringValue}, {"P", MetadataPattern::NumberValue}});
    return reading;
}

const casetable::Reading& templates()
{
    static const casetable::Reading reading{
        casetable::TemplateList({"{a}[_{b:digits}].x", "{a}/{b:digits}[-[1]].x"})};
    return reading;
}

template <class Content> std::string again(ByteReader& reader)
{
    Content content;
    content.read(reader);
    ByteWriter writer;
    content.write(writer);
    return writer.take();
}

std::string tallyAgain(ByteReader& reader, const casetable::Reading& reading)
{
    casetable::Tally tally(reading);
    tally.read(reader);
    ByteWriter writer;
    tally.write(writer);
    return writer.take();
}

// A case may stand there twice, so what is written is not compared. Looks at every path.
std::string partialAgain(ByteReader& reader)
{
    casetable::Partial partial;
    casetable::mergePartial(reader, 2, 2, partial);
    std::size_t bytes = 0;
    for (const casetable::Partial::Files& files : partial.files) {
        for (std::size_t index = 0; index < files.files.size(); ++index)
            bytes += files.path(index).size();
    }
    ByteWriter writer;
    casetable::writePartial(writer, partial);
    return std::string(writer.take().size() + bytes, '.');
}

std::string contentAgain(std::uint8_t kind, ByteReader& reader)
{
    switch (kind % 8) {
    case 0:
        return partialAgain(reader);
    case 1:
        return tallyAgain(reader, markers());
    case 2:
        return tallyAgain(reader, templates());
    case 3:
        return again<casetable::Ready>(reader);
    case 4:
        return again<casetable::Begin>(reader);
    case 5:
        return again<casetable::Listed>(reader);
    case 6:
        return again<casetable::Seen>(reader);
    default:
        return again<casetable::Failed>(reader);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0)
        return 0;
    const std::string input(reinterpret_cast<const char*>(data + 1), size - 1);
    ByteReader reader(input);
    std::string written;
    try {
        written = contentAgain(data[0], reader);
    } catch (const casetable::BrokenBytes&) {
        return 0;
    }
    if (data[0] % 8 == 0)
        return 0;
    ByteReader rereader(written);
    fuzz::expectSame("the message", fuzz::shown(contentAgain(data[0], rereader)),
                     fuzz::shown(written), fuzz::shown(input));
    return 0;
}
