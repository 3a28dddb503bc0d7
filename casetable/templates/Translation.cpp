#include "casetable/templates/Translation.h"

#include <iterator>
#include <map>
#include <string_view>

// | element | expression |
// |---|---|
// | text | its bytes, escaped |
// | `{name}`, `{name:text}` | `[^/]+?` |
// | `{name:word}`, `{name:digits}` | `[0-9A-Za-z]+`, `\d+` |
// | `{name:number}` | `[+-]?(?:\d+(?:\.\d+)?|\.\d+)(?:[eE][+-]?\d+)?` |
// | `{name:text36}`, `{name:word2}`, `{name:digits3}` | `[^/]{36}` and so on |
// | `{name:path}` | `(?s:.+?)` |
// | `{name,EXPRESSION}` | `(?n:EXPRESSION)` |
// | `{name}` again | `\g{1}`, the number of its group |
// | `*` | `[^/]*?` |
// | `?` | `[^/]` |
// | `**/` where a component begins | `(?:[^/]+/)*?` |
// | `**` | `(?s:.*?)` |
// | `[...]` | `(?:...)?` |
//
// Behind a wildcard `W` parts are looked for. What `W[A][B]C` means is
//
//     (?:WA(?:B)?|WB|W)C
//
// but that says a part once for each part before it and once more, and parts in parts multiply.
// This tries the same in the same order and says each part once. The group <at> tells whether W
// stands already:
//
//     (?:W(?<at>)A)?(?:(?(<at>)|W(?<at>))B)?(?(<at>)|W)C
//
// Where C begins with a wildcard that takes all that W takes, any bytes may stand between the parts
// too, so each is looked for by itself, behind the one before:
//
//     (?:WA)?(?:WB)?C
//
// There W is not tried without a part: whatever it takes, C takes alone. With both, a path without
// any of the parts would be divided between them in every way, and each further wildcard multiplies
// the ways.

namespace casetable {

namespace {

using Elements = std::vector<TemplateElement>;
using Kind = TemplateElement::Kind;
using Type = TemplateElement::Type;

bool isLiteral(unsigned char byte)
{
    return (byte >= '0' && byte <= '9') || (byte >= 'A' && byte <= 'Z') ||
           (byte >= 'a' && byte <= 'z') || byte >= 0x80;
}

std::string escaped(std::string_view text)
{
    static const char* const digits = "0123456789abcdef";
    std::string expression;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (isLiteral(byte)) {
            expression += c;
        } else if (byte > ' ' && byte < 0x7f) {
            expression += '\\';
            expression += c;
        } else {
            expression += "\\x";
            expression += digits[byte / 16];
            expression += digits[byte % 16];
        }
    }
    return expression;
}

std::string columnExpression(const TemplateElement& column, const std::string& asFew)
{
    const std::string count =
        column.width != 0 ? "{" + std::to_string(column.width) + "}" : std::string("+");
    switch (column.type) {
    case Type::Text:
        return "[^/]" + count + (column.width != 0 ? "" : asFew);
    case Type::Word:
        return "[0-9A-Za-z]" + count;
    case Type::Digits:
        return "\\d" + count;
    case Type::Number:
        return R"([+-]?(?:\d+(?:\.\d+)?|\.\d+)(?:[eE][+-]?\d+)?)";
    case Type::Path:
        return "(?s:.+" + asFew + ")";
    case Type::Expression:
        break;
    }
    return column.text;
}

bool isWildcard(const TemplateElement& element)
{
    return element.kind == Kind::Bytes || element.kind == Kind::AllBytes;
}

// Whether `other` takes all that the wildcard takes.
bool isCovered(const TemplateElement& wildcard, const TemplateElement& other)
{
    return other.kind == Kind::AllBytes || other.kind == wildcard.kind;
}

using Iterator = Elements::const_iterator;

class Translator {
public:
    enum class Groups { Columns, Elements };

    explicit Translator(Groups groups) : groups_(groups) {}

    // Where `isOpenEnded`, the last element takes as much as it can.
    void addSequence(Iterator begin, Iterator end, bool isOpenEnded)
    {
        for (auto element = begin; element != end;) {
            auto next = std::next(element);
            if (isWildcard(*element)) {
                while (next != end && next->kind == Kind::Part)
                    ++next;
            }
            const std::string asFew = isOpenEnded && next == end ? "" : "?";
            if (isWildcard(*element) && next != std::next(element))
                addSearch(element, next, next != end && isCovered(*element, *next), asFew);
            else if (element->kind == Kind::Part)
                addPart(*element);
            else
                addElement(*element, index_++, asFew);
            element = next;
        }
    }

    Translation take(const char* end)
    {
        translation_.expression += end;
        return std::move(translation_);
    }

private:
    void add(const std::string& text) { translation_.expression += text; }

    void beginGroup(std::size_t index, const char* parenthesis)
    {
        translation_.groups.push_back(index);
        add(parenthesis);
    }

    void addElement(const TemplateElement& element, std::size_t index, const std::string& asFew)
    {
        const bool isGroup = groups_ == Groups::Elements || element.kind == Kind::Column;
        if (isGroup)
            beginGroup(groups_ == Groups::Elements ? index : element.column, "(");
        addContent(element, asFew);
        if (isGroup)
            add(")");
    }

    void addPart(const TemplateElement& part)
    {
        add("(?:");
        addElement(part, index_++, "");
        add(")?");
    }

    void addContent(const TemplateElement& element, const std::string& asFew)
    {
        switch (element.kind) {
        case Kind::Text:
            return add(escaped(element.text));
        case Kind::Column:
            groupsOfColumns_[element.column] = translation_.groups.size();
            return add(columnExpression(element, asFew));
        case Kind::Again:
            return add("\\g{" + std::to_string(groupsOfColumns_.at(element.column)) + "}");
        case Kind::Byte:
            return add("[^/]");
        case Kind::Bytes:
            return add("[^/]*" + asFew);
        case Kind::AllBytes:
            return add("(?s:.*" + asFew + ")");
        case Kind::Folders:
            return add("(?:[^/]+/)*" + asFew);
        case Kind::Part:
            return addSequence(element.elements.begin(), element.elements.end(), false);
        }
    }

    // The wildcard at `begin` and the parts behind it.
    void addSearch(Iterator begin, Iterator end, bool isCovered, const std::string& asFew)
    {
        const std::size_t wildcard = index_++;
        const std::string name = "w" + std::to_string(wildcard);
        const std::string otherwise = "(?(<" + name + ">)|";
        const std::string mark = "(?<" + name + ">)";
        for (auto part = std::next(begin); part != end; ++part) {
            const bool mayStand = !isCovered && part != std::next(begin);
            add(mayStand ? "(?:" + otherwise : "(?:");
            addElement(*begin, wildcard, "?");
            if (!isCovered)
                beginGroup(Translation::internal, mark.c_str());
            add(mayStand ? ")" : "");
            addElement(*part, index_++, "");
            add(")?");
        }
        if (isCovered)
            return;
        add(otherwise);
        addElement(*begin, wildcard, asFew);
        add(")");
    }

    const Groups groups_;
    Translation translation_;
    std::size_t index_ = 0;
    std::map<std::size_t, std::size_t> groupsOfColumns_;
};

} // namespace

Translation translateColumns(const Elements& elements)
{
    Translator translator(Translator::Groups::Columns);
    translator.addSequence(elements.begin(), elements.end(), false);
    return translator.take("\\z");
}

Translation translateElements(const Elements& elements)
{
    Translator translator(Translator::Groups::Elements);
    translator.addSequence(elements.begin(), elements.end(), false);
    return translator.take("\\z");
}

Translation translateBeginning(const Elements& elements, std::size_t count)
{
    Translator translator(Translator::Groups::Columns);
    translator.addSequence(elements.begin(),
                           std::next(elements.begin(), static_cast<std::ptrdiff_t>(count)), true);
    return translator.take("");
}

} // namespace casetable
