// A template and a path of it, compared with the model; or any text as a template, which is read or
// refused.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>

#include "casetable/templates/Matcher.h"
#include "casetable/templates/Template.h"
#include "fuzz/Input.h"
#include "tests/casetable/templates/RandomTemplate.h"
#include "tests/casetable/templates/TemplateModel.h"

namespace {

using templatemodel::Values;

// Runs in which either gives up prove nothing; their share is told, so that it stays small.
class Count {
public:
    ~Count() { std::fprintf(stderr, "%zu runs compared, %zu given up\n", compared, givenUp); }

    std::size_t compared = 0;
    std::size_t givenUp = 0;
};

Count count;

std::string shown(const std::optional<Values>& values)
{
    if (!values)
        return "no match";
    std::string text = "match";
    for (const auto& entry : *values)
        text += " " + entry.first + "=" + std::to_string(entry.second.begin) + "-" +
                std::to_string(entry.second.end);
    return text;
}

std::optional<Values> read(casetable::Matcher& matcher, const casetable::Template& pathTemplate,
                           const std::string& path)
{
    if (!matcher.match(path))
        return std::nullopt;
    Values values;
    for (std::size_t k = 0; k < pathTemplate.columns().size(); ++k) {
        const casetable::Span& span = matcher.columns()[k];
        if (!span.isLeftOut)
            values[pathTemplate.columns()[k].name] = {span.begin, span.begin + span.length};
    }
    return values;
}

void compare(FuzzedDataProvider& data)
{
    const templatemodel::Choose choose = [&data](std::size_t end) {
        return data.ConsumeIntegralInRange<std::size_t>(0, end - 1);
    };
    const templatemodel::RandomTemplate random(choose);
    const casetable::Template pathTemplate(random.text);
    casetable::Matcher matcher(pathTemplate);
    templatemodel::Model model(random.text);
    for (int k = 0; k < 4; ++k) {
        const std::string path = k == 0   ? random.path()
                                 : k == 1 ? data.ConsumeRandomLengthString(24)
                                 : k == 2 ? templatemodel::changedPath(random.path(), choose)
                                          : templatemodel::randomPath(choose);
        try {
            const std::string expected = shown(model.match(path));
            fuzz::expectSame("what is read", shown(read(matcher, pathTemplate, path)), expected,
                             fuzz::shown(random.text) + " " + fuzz::shown(path));
            fuzz::expectSame("whether elements have places",
                             matcher.elementSpans(path).empty() ? "no match" : "match",
                             expected == "no match" ? "no match" : "match",
                             fuzz::shown(random.text) + " " + fuzz::shown(path));
            matcher.longestBeginning(path);
            ++count.compared;
        } catch (const templatemodel::TooManySteps&) {
            ++count.givenUp;
        } catch (const casetable::MatchError&) {
            ++count.givenUp;
        }
    }
}

void readAnyText(FuzzedDataProvider& data)
{
    const std::string text = data.ConsumeRandomLengthString(200);
    try {
        const casetable::Template pathTemplate(text);
        casetable::Matcher matcher(pathTemplate);
        const std::string path = data.ConsumeRandomLengthString(60);
        for (const casetable::Span& span : matcher.elementSpans(path)) {
            if (span.begin + span.length > path.size())
                fuzz::expectSame("a span", "outside", "inside", fuzz::shown(text));
        }
        matcher.longestBeginning(path);
    } catch (const casetable::TemplateError& error) {
        if (error.position > text.size())
            fuzz::expectSame("the place of an error", "outside", "inside", fuzz::shown(text));
    } catch (const casetable::MatchError&) {
        ++count.givenUp;
    }
}

} // namespace

// The model takes memory at very many depths of its recursion; the sanitizer keeps the callers of
// each, and would keep more of them with every run.
// NOLINTNEXTLINE(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)
extern "C" const char* __asan_default_options()
{
    return "malloc_context_size=3";
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    FuzzedDataProvider data(bytes, size);
    if (data.ConsumeIntegralInRange<int>(0, 3) == 0)
        readAnyText(data);
    else
        compare(data);
    return 0;
}
