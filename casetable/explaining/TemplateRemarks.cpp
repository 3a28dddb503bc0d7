#include "casetable/explaining/TemplateRemarks.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <string_view>
#include <utility>

#include "casetable/explaining/CountedFiles.h"
#include "casetable/explaining/TemplateFailure.h"
#include "casetable/templates/Matcher.h"

namespace casetable {

namespace {

using Kind = TemplateElement::Kind;

// What became of an optional part in the files that its template reads.
struct PartUse {
    bool isTaken = false;
    CountedFiles swallowing; // In which another element holds the text it begins with.
    std::string holder;      // The element that holds the text in the example.

    void merge(PartUse&& other)
    {
        isTaken = isTaken || other.isTaken;
        if (swallowing.merge(std::move(other.swallowing)))
            holder = std::move(other.holder);
    }

    void write(ByteWriter& writer) const
    {
        writer.flag(isTaken);
        swallowing.write(writer);
        writer.text(holder);
    }

    void read(ByteReader& reader)
    {
        isTaken = reader.flag();
        swallowing.read(reader);
        holder = reader.text();
    }
};

bool takesVariousBytes(const TemplateElement& element)
{
    return element.kind == Kind::Column || element.kind == Kind::Bytes ||
           element.kind == Kind::AllBytes || element.kind == Kind::Folders;
}

// An element of a template.
struct Piece {
    const TemplateElement* element;
    // Of a part: the indices of those that could have its bytes, right before and right behind it
    // and others that are left out.
    std::vector<std::size_t> neighbours;
};

void findNeighbours(const std::vector<std::size_t>& siblings, std::vector<Piece>& pieces)
{
    const auto isPart = [&](std::size_t index) {
        return pieces[index].element->kind == Kind::Part;
    };
    const auto addTo = [&](std::size_t part, std::size_t other) {
        if (takesVariousBytes(*pieces[other].element))
            pieces[part].neighbours.push_back(other);
    };
    for (auto part = siblings.begin(); part != siblings.end(); ++part) {
        if (!isPart(*part))
            continue;
        const auto before =
            std::find_if_not(std::make_reverse_iterator(part), siblings.rend(), isPart);
        if (before != siblings.rend())
            addTo(*part, *before);
        const auto behind = std::find_if_not(part, siblings.end(), isPart);
        if (behind != siblings.end())
            addTo(*part, *behind);
    }
}

// Appends the elements in the order in which Matcher::elementSpans() answers: each part before what
// is in it.
void append(const std::vector<TemplateElement>& elements, std::vector<Piece>& pieces)
{
    std::vector<std::size_t> siblings;
    for (const TemplateElement& element : elements) {
        siblings.push_back(pieces.size());
        pieces.push_back({&element, {}});
        append(element.elements, pieces);
    }
    findNeighbours(siblings, pieces);
}

} // namespace

// One template, and how the files that it reads use its optional parts.
class TemplateRemarks::Use {
public:
    explicit Use(const Template& pathTemplate) : template_(&pathTemplate), matcher_(pathTemplate)
    {
        append(pathTemplate.elements(), pieces_);
        parts_.resize(pieces_.size());
    }

    // Whether the template fits the path; if so, counts how its parts are used.
    bool count(const std::string& path)
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
        for (std::size_t part = 0; part < pieces_.size(); ++part) {
            if (pieces_[part].element->kind != Kind::Part)
                continue;
            if (spans[part].isLeftOut)
                lookForBeginning(part, path, spans);
            else
                parts_[part].isTaken = true;
        }
        return true;
    }

    void merge(Use&& other)
    {
        files_ += other.files_;
        for (std::size_t part = 0; part < parts_.size(); ++part)
            parts_[part].merge(std::move(other.parts_[part]));
    }

    void write(ByteWriter& writer) const
    {
        writer.number(files_);
        for (const PartUse& use : parts_)
            use.write(writer);
    }

    void read(ByteReader& reader)
    {
        files_ = reader.number();
        for (PartUse& use : parts_)
            use.read(reader);
    }

    void appendRemarks(std::vector<std::string>& lines) const
    {
        if (files_ == 0)
            lines.push_back("the template " + template_->text() + " reads no file");
        for (std::size_t part = 0; part < pieces_.size() && files_ > 0; ++part) {
            if (pieces_[part].element->kind != Kind::Part)
                continue;
            const PartUse& use = parts_[part];
            const std::string text = elementText(*template_, *pieces_[part].element);
            if (!use.isTaken)
                lines.push_back("no file takes the optional part " + text + hintAtSet(text));
            if (use.swallowing.count > 0)
                lines.push_back("the optional part " + text + " is left out in " +
                                std::to_string(use.swallowing.count) +
                                (use.swallowing.count == 1 ? " file" : " files") + " in which " +
                                use.holder + " beside it holds its beginning, as in " +
                                use.swallowing.example);
        }
    }

private:
    // Looks whether another element holds the text that a part begins with, which is left out.
    void lookForBeginning(std::size_t part, const std::string& path, const std::vector<Span>& spans)
    {
        const std::vector<TemplateElement>& inside = pieces_[part].element->elements;
        if (inside.empty() || inside.front().kind != Kind::Text)
            return;
        for (const std::size_t other : pieces_[part].neighbours) {
            const Span& span = spans[other];
            if (std::string_view(path).substr(span.begin, span.length).find(inside.front().text) ==
                std::string_view::npos)
                continue;
            PartUse& use = parts_[part];
            if (use.swallowing.add(path))
                use.holder = elementText(*template_, *pieces_[other].element);
            return;
        }
    }

    // A part such as [0-9] is probably meant as the set that it is in other languages of patterns.
    static std::string hintAtSet(const std::string& part)
    {
        const bool readsLikeASet = part.size() > 3 && part.find('-') != std::string::npos &&
                                   part.find_first_of("{}*?[]", 1) == part.size() - 1 &&
                                   part.size() <= 12;
        return readsLikeASet ? "; a set of bytes is written {name," + part + "}" : "";
    }

    const Template* template_;
    Matcher matcher_;
    std::vector<Piece> pieces_;
    std::vector<PartUse> parts_; // One for each element; those of parts are used.
    std::size_t files_ = 0;
};

TemplateRemarks::TemplateRemarks(const TemplateList& templates)
{
    for (const Template& each : templates.templates())
        uses_.emplace_back(each);
}

TemplateRemarks::TemplateRemarks(TemplateRemarks&& other) noexcept = default;
TemplateRemarks& TemplateRemarks::operator=(TemplateRemarks&& other) noexcept = default;
TemplateRemarks::~TemplateRemarks() = default;

void TemplateRemarks::count(const std::string& path)
{
    for (Use& use : uses_) {
        if (use.count(path))
            return;
    }
}

void TemplateRemarks::merge(TemplateRemarks&& other)
{
    for (std::size_t index = 0; index < uses_.size(); ++index)
        uses_[index].merge(std::move(other.uses_[index]));
}

void TemplateRemarks::write(ByteWriter& writer) const
{
    for (const Use& use : uses_)
        use.write(writer);
}

void TemplateRemarks::read(ByteReader& reader)
{
    for (Use& use : uses_)
        use.read(reader);
}

std::vector<std::string> TemplateRemarks::lines() const
{
    std::vector<std::string> lines;
    for (const Use& use : uses_)
        use.appendRemarks(lines);
    return lines;
}

} // namespace casetable
