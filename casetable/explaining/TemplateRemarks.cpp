#include "casetable/explaining/TemplateRemarks.h"

#include <cstddef>
#include <string_view>

#include "casetable/explaining/TemplateFailure.h"
#include "casetable/templates/Matcher.h"
#include "host/AuxFileInfoInterface.h"

namespace casetable {

namespace {

using Kind = TemplateElement::Kind;

// What came of an optional part in the files that its template reads.
struct PartUse {
    bool isTaken = false;
    std::size_t swallowing = 0; // Files in which something else holds its beginning.
    std::string example;        // Of these, the first.
    std::string holder;         // What holds it there.
};

// The elements of a template in the order of their spans, each part before what it holds.
void flatten(const std::vector<TemplateElement>& elements,
             std::vector<const TemplateElement*>& flat)
{
    for (const TemplateElement& element : elements) {
        flat.push_back(&element);
        flatten(element.elements, flat);
    }
}

bool takesVariousBytes(const TemplateElement& element)
{
    return element.kind == Kind::Column || element.kind == Kind::Bytes ||
           element.kind == Kind::AllBytes || element.kind == Kind::Folders;
}

// One template, and what the files that it reads tell of it.
class TemplateUse {
public:
    explicit TemplateUse(const Template& pathTemplate)
        : template_(pathTemplate), matcher_(pathTemplate)
    {
        flatten(pathTemplate.elements(), elements_);
        parts_.resize(elements_.size());
    }

    // Whether the template fits; then its parts are looked at.
    bool takeNoteOf(const std::string& path)
    {
        if (!matcher_.match(path))
            return false;
        ++files_;
        std::vector<Span> spans;
        try {
            spans = matcher_.elementSpans(path);
        } catch (const MatchError&) {
            for (PartUse& use : parts_)
                use.isTaken = true; // As far as one knows.
            return true;
        }
        for (std::size_t part = 0; part < elements_.size(); ++part) {
            if (elements_[part]->kind != Kind::Part)
                continue;
            if (spans[part].isLeftOut)
                lookForBeginning(part, path, spans);
            else
                parts_[part].isTaken = true;
        }
        return true;
    }

    void appendRemarks(std::vector<std::string>& lines) const
    {
        if (files_ == 0)
            lines.push_back("the template " + template_.text() + " reads no file");
        for (std::size_t part = 0; part < elements_.size() && files_ > 0; ++part) {
            if (elements_[part]->kind != Kind::Part)
                continue;
            const PartUse& use = parts_[part];
            const std::string text = elementText(template_, *elements_[part]);
            if (!use.isTaken)
                lines.push_back("no file takes the optional part " + text + hintAtSet(text));
            if (use.swallowing > 0)
                lines.push_back("the optional part " + text + " is left out in " +
                                std::to_string(use.swallowing) +
                                (use.swallowing == 1 ? " file" : " files") + " in which " +
                                use.holder + " holds its beginning, as in " + use.example);
        }
    }

private:
    void lookForBeginning(std::size_t part, const std::string& path, const std::vector<Span>& spans)
    {
        const std::vector<TemplateElement>& inside = elements_[part]->elements;
        if (inside.empty() || inside.front().kind != Kind::Text)
            return;
        for (std::size_t other = 0; other < elements_.size(); ++other) {
            const Span& span = spans[other];
            if (!takesVariousBytes(*elements_[other]) ||
                std::string_view(path).substr(span.begin, span.length).find(inside.front().text) ==
                    std::string_view::npos)
                continue;
            PartUse& use = parts_[part];
            if (++use.swallowing == 1) {
                use.example = path;
                use.holder = elementText(template_, *elements_[other]);
            }
            return;
        }
    }

    // [0-9] is a set in other languages of patterns.
    static std::string hintAtSet(const std::string& part)
    {
        const bool readsLikeASet = part.size() > 3 && part.find('-') != std::string::npos &&
                                   part.find_first_of("{}*?[]", 1) == part.size() - 1 &&
                                   part.size() <= 12;
        return readsLikeASet ? "; a set of bytes is written {name," + part + "}" : "";
    }

    const Template& template_;
    Matcher matcher_;
    std::vector<const TemplateElement*> elements_;
    std::vector<PartUse> parts_; // One for each element; those of parts are used.
    std::size_t files_ = 0;
};

} // namespace

std::vector<std::string> remarks(const MetadataFileCrawler& importer, const TemplateList& templates)
{
    std::vector<TemplateUse> uses;
    for (const Template& each : templates.templates())
        uses.emplace_back(each);
    for (const auto& file : importer.identifiedAuxFiles()) {
        const std::string path = file->filePath();
        for (TemplateUse& use : uses) {
            if (use.takeNoteOf(path))
                break;
        }
    }
    std::vector<std::string> lines;
    for (const TemplateUse& use : uses)
        use.appendRemarks(lines);
    return lines;
}

} // namespace casetable
