#include "casetable/templates/Template.h"

#include <algorithm>
#include <utility>

#include "casetable/templates/Expression.h"
#include "casetable/templates/Translation.h"

namespace casetable {

namespace {

using Elements = std::vector<TemplateElement>;
using Kind = TemplateElement::Kind;
using Type = TemplateElement::Type;

// What begins or ends an element, and what a backslash may stand before.
const std::string_view special = "\\*?[]{}";

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

bool isNameStart(char c)
{
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_';
}

// Whether a component begins behind the elements, the last of which may be a part.
bool endsComponent(const Elements& elements)
{
    if (elements.empty())
        return false;
    const TemplateElement& last = elements.back();
    switch (last.kind) {
    case Kind::Text:
        return last.text.back() == '/';
    case Kind::Folders:
        return true;
    case Kind::Part:
        return endsComponent(last.elements);
    default:
        return false;
    }
}

class Reader {
public:
    explicit Reader(const std::string& text) : text_(text) {}

    Elements readAll()
    {
        if (text_.size() > Template::maxSize)
            fail(Template::maxSize,
                 "the template is longer than " + std::to_string(Template::maxSize) + " bytes");
        Elements elements = readSequence(0);
        if (!atEnd())
            fail(at_, "this ] closes nothing");
        if (columns_.empty())
            fail(0, "the template has no columns");
        return elements;
    }

    std::vector<TemplateColumn> takeColumns() { return std::move(columns_); }

private:
    [[noreturn]] void fail(std::size_t position, const std::string& reason) const
    {
        throw TemplateError(text_, position, reason);
    }

    bool atEnd() const { return at_ == text_.size(); }

    // Up to the end or to a "]".
    Elements readSequence(std::size_t depth)
    {
        Elements elements;
        while (!atEnd() && text_[at_] != ']') {
            const std::size_t begin = at_;
            elements.push_back(read(elements.empty() || endsComponent(elements), depth));
            elements.back().position = begin;
            elements.back().length = at_ - begin;
        }
        return elements;
    }

    TemplateElement read(bool beginsComponent, std::size_t depth)
    {
        switch (text_[at_]) {
        case '*':
            return readWildcard(beginsComponent);
        case '?':
            ++at_;
            return ofKind(Kind::Byte);
        case '[':
            return readPart(depth);
        case '{':
            return readColumn();
        case '}':
            fail(at_, "this } closes nothing");
        default:
            return readText();
        }
    }

    static TemplateElement ofKind(Kind kind)
    {
        TemplateElement element;
        element.kind = kind;
        return element;
    }

    TemplateElement readText()
    {
        TemplateElement element;
        while (!atEnd() && (text_[at_] == '\\' || special.find(text_[at_]) == std::string::npos)) {
            if (text_[at_] == '\\') {
                if (at_ + 1 == text_.size() || special.find(text_[at_ + 1]) == std::string::npos)
                    fail(at_, "a backslash stands only before one of \\ * ? [ ] { }");
                ++at_;
            }
            element.text += text_[at_++];
            if (element.text.back() == '/')
                break;
        }
        return element;
    }

    TemplateElement readWildcard(bool beginsComponent)
    {
        const std::size_t begin = at_;
        at_ = std::min(text_.find_first_not_of('*', at_), text_.size());
        const std::size_t count = at_ - begin;
        if (count > 2)
            fail(begin, "more than two asterisks have no meaning");
        if (count == 1)
            return ofKind(Kind::Bytes);
        if (!beginsComponent || atEnd() || text_[at_] != '/')
            return ofKind(Kind::AllBytes);
        ++at_;
        return ofKind(Kind::Folders);
    }

    TemplateElement readPart(std::size_t depth)
    {
        const std::size_t begin = at_;
        if (depth == Template::maxDepth)
            fail(begin,
                 "parts are nested more than " + std::to_string(Template::maxDepth) + " deep");
        ++at_;
        TemplateElement part = ofKind(Kind::Part);
        part.elements = readSequence(depth + 1);
        if (atEnd())
            fail(begin, "this [ is not closed");
        ++at_;
        return part;
    }

    TemplateElement readColumn()
    {
        const std::size_t begin = at_++;
        const std::size_t nameAt = at_;
        const std::string name = readName(begin);
        const std::size_t typeAt = at_ + 1;
        const auto known =
            std::find_if(columns_.begin(), columns_.end(),
                         [&name](const TemplateColumn& column) { return column.name == name; });
        TemplateElement element = ofKind(known == columns_.end() ? Kind::Column : Kind::Again);
        element.column = static_cast<std::size_t>(known - columns_.begin());
        if (known != columns_.end() && text_[at_] != '}')
            fail(typeAt, "a column has its type or expression where its name stands first");
        if (text_[at_] == ':')
            readType(element, begin);
        const bool isNumber = element.type == Type::Number;
        if (text_[at_] == ',')
            readExpression(element, begin, typeAt);
        ++at_;
        if (known != columns_.end())
            return element;
        if (name == "case" || name == "path" || name == "files")
            fail(nameAt, "the table has a column of that name itself");
        columns_.push_back({name, isNumber});
        return element;
    }

    // Stops at the ":", "," or "}" behind it.
    std::string readName(std::size_t columnAt)
    {
        const std::size_t begin = at_;
        while (!atEnd() && (isNameStart(text_[at_]) || (at_ > begin && isDigit(text_[at_]))))
            ++at_;
        if (atEnd())
            fail(columnAt, "this { is not closed");
        if (at_ == begin || (text_[at_] != ':' && text_[at_] != ',' && text_[at_] != '}'))
            fail(at_, "a column's name is a letter or _, then letters, digits and _");
        return text_.substr(begin, at_ - begin);
    }

    // Stops at the "," or "}" behind it.
    void readType(TemplateElement& column, std::size_t columnAt)
    {
        static const std::vector<std::pair<std::string, Type>> types = {{"text", Type::Text},
                                                                        {"word", Type::Word},
                                                                        {"digits", Type::Digits},
                                                                        {"number", Type::Number},
                                                                        {"path", Type::Path}};
        const std::size_t begin = at_ + 1;
        at_ = text_.find_first_of(",}", begin);
        if (at_ == std::string::npos)
            fail(columnAt, "this { is not closed");
        const std::string text = text_.substr(begin, at_ - begin);
        const std::string name = text.substr(0, text.find_first_of("0123456789"));
        const std::string width = text.substr(name.size());
        const auto type = std::find_if(types.begin(), types.end(),
                                       [&name](const auto& entry) { return entry.first == name; });
        const bool hasFixedWidths = name != "number" && name != "path";
        const bool isWidth = width.find_first_not_of("0123456789") == std::string::npos;
        if (type == types.end() || (!width.empty() && (!hasFixedWidths || !isWidth)))
            fail(begin, "unknown type; types are text, word, digits, number and path, and with a "
                        "number of bytes text3, word3 and digits3");
        column.type = type->second;
        if (width.empty())
            return;
        column.width = width.size() < 10 ? std::stoul(width) : 0;
        if (column.width < 1 || column.width > Template::maxWidth)
            fail(begin + name.size(),
                 "a width is from 1 to " + std::to_string(Template::maxWidth) + " bytes");
    }

    // Stops at the "}" behind it.
    void readExpression(TemplateElement& column, std::size_t columnAt, std::size_t typeAt)
    {
        if ((column.type != Type::Text && column.type != Type::Number) || column.width != 0)
            fail(typeAt, "a column with an expression is a number or has no type");
        const std::size_t begin = at_ + 1;
        at_ = begin;
        for (std::size_t depth = 0; !atEnd() && (depth > 0 || text_[at_] != '}'); ++at_) {
            if (text_[at_] == '{')
                ++depth;
            else if (text_[at_] == '}')
                --depth;
            else if (text_[at_] == '\\' && at_ + 1 < text_.size())
                ++at_;
        }
        if (atEnd())
            fail(columnAt, "this { is not closed");
        column.type = Type::Expression;
        try {
            column.text = enclosedExpression(text_.substr(begin, at_ - begin));
        } catch (const ExpressionError& error) {
            fail(begin + error.position, error.what());
        }
    }

    const std::string& text_;
    std::size_t at_ = 0;
    std::vector<TemplateColumn> columns_;
};

} // namespace

Template::Template(const std::string& text) : text_(text)
{
    Reader reader(text_);
    elements_ = reader.readAll();
    columns_ = reader.takeColumns();
    try {
        columnExpression_ = std::make_shared<const Expression>(translateColumns(elements_));
        elementExpression_ = std::make_shared<const Expression>(translateElements(elements_));
    } catch (const ExpressionError& error) {
        throw TemplateError(text_, 0, "the template is too large: " + std::string(error.what()));
    }
}

std::string escaped(std::string_view text)
{
    std::string result;
    for (const char byte : text) {
        if (special.find(byte) != std::string_view::npos)
            result += '\\';
        result += byte;
    }
    return result;
}

} // namespace casetable
