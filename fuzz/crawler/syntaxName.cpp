// A syntax name against candidates. Both are kept short, because the expressions that the rule is
// made of are slow.

#include <cstddef>
#include <cstdint>
#include <string>

#include <QString>
#include <QStringList>

#include "crawler/SyntaxNameFilter.h"
#include "fuzz/Input.h"
#include "host/ValidationResult.h"
#include "tests/crawler/AuxFileDoubles.h"

namespace {

fuzz::Texts bytesOf(const QStringList& list)
{
    fuzz::Texts texts;
    for (const QString& text : list)
        texts.push_back(text.toStdString());
    return texts;
}

std::string verdict(const ortelo::ValidationResult& result)
{
    return result.isValid() ? "valid" : result.errorString();
}

std::string expectedVerdict(const QStringList& selected)
{
    return selected.isEmpty() ? "Invalid pattern." : "valid";
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    FuzzedDataProvider data(bytes, size);
    const std::string name = data.ConsumeRandomLengthString(24);
    QStringList candidates;
    while (data.remaining_bytes() > 0 && candidates.size() < 6) {
        std::string candidate = data.ConsumeRandomLengthString(40);
        // The name itself, or a piece of it, is often selected.
        if (data.ConsumeBool()) {
            const auto from = data.ConsumeIntegralInRange<std::size_t>(0, name.size());
            candidate += name.substr(from, data.ConsumeIntegralInRange<std::size_t>(0, 24));
        }
        candidates.append(QString::fromStdString(candidate));
    }
    const std::string input = fuzz::shown(name) + " over " + fuzz::shown(bytesOf(candidates));

    const QStringList expected = doubles::plainFilter(candidates, name);
    const SyntaxNameFilter filter(candidates);
    fuzz::expectSame("the selection", fuzz::shown(bytesOf(filter.filter(name))),
                     fuzz::shown(bytesOf(expected)), input);
    fuzz::expectSame("the verdict", verdict(filter.validate(name)), expectedVerdict(expected),
                     input);

    // A candidate given as bytes ends at a NUL.
    for (const std::string& bytesOfOne : bytesOf(candidates)) {
        const std::string text = bytesOfOne.substr(0, bytesOfOne.find('\0'));
        const SyntaxNameFilter one(bytesOfOne);
        fuzz::expectSame(
            "the verdict over " + fuzz::shown(bytesOfOne) + " alone", verdict(one.validate(name)),
            expectedVerdict(doubles::plainFilter({QString::fromStdString(text)}, name)), input);
    }
    return 0;
}
