#ifndef TESTS_CASETABLE_TEMPLATES_TEMPLATEMODEL_H
#define TESTS_CASETABLE_TEMPLATES_TEMPLATEMODEL_H

#include <algorithm>
#include <cstddef>
#include <functional>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

/// What templates mean, said once more without any engine: every choice is tried in its order. It
/// takes readable templates only, and of expressions only texts divided by "|", and a set such as
/// `[a-c]` with `+` or `{2}` behind it.
namespace templatemodel {

/// Where a value begins and ends.
struct Value {
    std::size_t begin;
    std::size_t end;
};

using Values = std::map<std::string, Value>;

/// A path took too many steps.
struct TooManySteps : std::runtime_error {
    TooManySteps() : std::runtime_error("too many steps") {}
};

struct Element {
    char kind =
        't'; // As it is written: '{', '*', '?', '[', 't' for a text, '2' for "**", '/' for "**/".
    std::string text;      // Of a text.
    std::string name;      // Of a column.
    bool isAgain = false;  // The name stood before.
    std::string type;      // Without its width.
    std::size_t width = 0; // 0 where it is open.
    std::optional<std::string> expression;
    std::vector<Element> inside; // Of a part.
};

class Model {
public:
    explicit Model(const std::string& text) : text_(text)
    {
        bool endsInSlash = false;
        elements_ = parse(endsInSlash);
    }

    /// The values of the columns that stand in the path; nothing where the template does not fit.
    /// With `isOpen`, a beginning of the path will do.
    std::optional<Values> match(const std::string& path, bool isOpen = false)
    {
        path_ = &path;
        values_.clear();
        steps_ = 0;
        const auto end = [&](std::size_t at) { return isOpen || at == path.size(); };
        if (!matches(elements_, 0, 0, Rest(end)))
            return std::nullopt;
        return values_;
    }

private:
    using Elements = std::vector<Element>;

    // What has to fit behind; it only refers to a function, which outlives it.
    class Rest {
    public:
        template <class Function>
        explicit Rest(const Function& function)
            : function_(&function), call_([](const void* called, std::size_t at) {
                  return (*static_cast<const Function*>(called))(at);
              })
        {
        }

        bool operator()(std::size_t at) const { return call_(function_, at); }

    private:
        const void* function_;
        bool (*call_)(const void*, std::size_t);
    };

    // Up to the end or behind the "]". A component begins first, and behind "/".
    Elements parse(bool& endsInSlash)
    {
        Elements elements;
        bool begins = true;
        endsInSlash = false;
        while (next_ < text_.size()) {
            const char c = text_[next_++];
            Element element;
            element.kind = c;
            bool slash = false;
            if (c == ']')
                return elements;
            if (c == '[') {
                element.inside = parse(slash);
            } else if (c == '{') {
                parseColumn(element);
            } else if (c == '*' && next_ < text_.size() && text_[next_] == '*') {
                ++next_;
                slash = begins && next_ < text_.size() && text_[next_] == '/';
                element.kind = slash ? '/' : '2';
                next_ += slash ? 1 : 0;
            } else if (c != '*' && c != '?') {
                element.kind = 't';
                element.text = c == '\\' ? text_[next_++] : c;
                slash = element.text == "/";
            }
            begins = endsInSlash = slash;
            elements.push_back(element);
        }
        return elements;
    }

    void parseColumn(Element& column)
    {
        const std::size_t nameEnd = text_.find_first_of(":,}", next_);
        column.name = text_.substr(next_, nameEnd - next_);
        next_ = nameEnd;
        column.isAgain = std::find(names_.begin(), names_.end(), column.name) != names_.end();
        names_.push_back(column.name);
        column.type = "text";
        if (text_[next_] == ':') {
            const std::size_t end = text_.find_first_of(",}", next_);
            const std::string type = text_.substr(next_ + 1, end - next_ - 1);
            column.type = type.substr(0, type.find_first_of("0123456789"));
            if (type.size() > column.type.size())
                column.width = std::stoul(type.substr(column.type.size()));
            next_ = end;
        }
        if (text_[next_] == ',') {
            std::size_t end = next_ + 1;
            for (int depth = 0; depth > 0 || text_[end] != '}'; ++end)
                depth += text_[end] == '{' ? 1 : text_[end] == '}' ? -1 : 0;
            column.expression = text_.substr(next_ + 1, end - next_ - 1);
            next_ = end;
        }
        ++next_;
    }

    bool isByte(std::size_t at, const std::function<bool(char)>& rule) const
    {
        return at < path_->size() && rule((*path_)[at]);
    }

    static bool isDigit(char c) { return c >= '0' && c <= '9'; }
    static bool isWord(char c)
    {
        return isDigit(c) || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
    }
    static bool isNoSlash(char c) { return c != '/'; }
    static bool isAny(char) { return true; }

    // The ends of the runs of such bytes that begin at `at`, the shortest first.
    std::vector<std::size_t> runs(std::size_t at, bool (*rule)(char), bool withEmpty) const
    {
        std::vector<std::size_t> ends;
        if (withEmpty)
            ends.push_back(at);
        while (isByte(at, rule))
            ends.push_back(++at);
        return ends;
    }

    static std::vector<std::size_t> longestFirst(std::vector<std::size_t> ends)
    {
        std::reverse(ends.begin(), ends.end());
        return ends;
    }

    static bool areDigits(const std::string& text)
    {
        return !text.empty() && std::all_of(text.begin(), text.end(), isDigit);
    }

    static bool isNumber(std::string text)
    {
        if (!text.empty() && (text[0] == '+' || text[0] == '-'))
            text.erase(0, 1);
        const std::size_t e = text.find_first_of("eE");
        if (e != std::string::npos) {
            std::string exponent = text.substr(e + 1);
            if (!exponent.empty() && (exponent[0] == '+' || exponent[0] == '-'))
                exponent.erase(0, 1);
            if (!areDigits(exponent))
                return false;
            text.erase(e);
        }
        const std::size_t point = text.find('.');
        if (point == std::string::npos)
            return areDigits(text);
        return areDigits(text.substr(point + 1)) &&
               (point == 0 || areDigits(text.substr(0, point)));
    }

    // Where a column that begins at `at` may end, in the order in which that is tried.
    std::vector<std::size_t> ends(const Element& column, std::size_t at) const
    {
        if (column.expression)
            return endsOfExpression(*column.expression, at);
        if (column.isAgain) {
            const auto value = values_.find(column.name);
            if (value == values_.end())
                return {};
            const std::string text =
                path_->substr(value->second.begin, value->second.end - value->second.begin);
            return path_->compare(at, text.size(), text) == 0
                       ? std::vector<std::size_t>{at + text.size()}
                       : std::vector<std::size_t>();
        }
        if (column.type == "number") {
            std::vector<std::size_t> found;
            for (std::size_t end = path_->size(); end > at; --end) {
                if (isNumber(path_->substr(at, end - at)))
                    found.push_back(end);
            }
            return found;
        }
        bool (*const rule)(char) = column.type == "word"     ? isWord
                                   : column.type == "digits" ? isDigit
                                   : column.type == "path"   ? isAny
                                                             : isNoSlash;
        const std::vector<std::size_t> found = runs(at, rule, false);
        if (column.width != 0)
            return column.width <= found.size() ? std::vector<std::size_t>{at + column.width}
                                                : std::vector<std::size_t>();
        return rule == isWord || rule == isDigit ? longestFirst(found) : found;
    }

    std::vector<std::size_t> endsOfExpression(const std::string& expression, std::size_t at) const
    {
        std::vector<std::size_t> found;
        if (!expression.empty() && expression[0] == '[') {
            const std::size_t close = expression.find(']');
            const std::string set = expression.substr(1, close - 1);
            const auto isInSet = [&set](char c) {
                return set.size() == 3 && set[1] == '-' ? c >= set[0] && c <= set[2]
                                                        : set.find(c) != std::string::npos;
            };
            const std::string count = expression.substr(close + 1);
            std::size_t end = at;
            while (isByte(end, isInSet))
                found.push_back(++end);
            if (count == "+")
                return longestFirst(found);
            const std::size_t width = std::stoul(count.substr(1));
            return width <= found.size() ? std::vector<std::size_t>{at + width}
                                         : std::vector<std::size_t>();
        }
        for (std::size_t begin = 0; begin <= expression.size();) {
            const std::size_t end = std::min(expression.find('|', begin), expression.size());
            const std::string text = expression.substr(begin, end - begin);
            if (path_->compare(at, text.size(), text) == 0)
                found.push_back(at + text.size());
            begin = end + 1;
        }
        return found;
    }

    // Where any other element but a text may end.
    std::vector<std::size_t> endsOfWildcard(const Element& element, std::size_t at) const
    {
        if (element.kind == '?')
            return isByte(at, isNoSlash) ? std::vector<std::size_t>{at + 1}
                                         : std::vector<std::size_t>();
        if (element.kind == '*')
            return runs(at, isNoSlash, true);
        if (element.kind == '2')
            return runs(at, isAny, true);
        std::vector<std::size_t> found = {at};
        for (std::size_t slash = path_->find('/', at); slash != std::string::npos && slash > at;
             slash = path_->find('/', at)) {
            at = slash + 1;
            found.push_back(at);
        }
        return found;
    }

    bool matches(const Elements& elements, std::size_t index, std::size_t at, const Rest& rest)
    {
        if (++steps_ > 50000)
            throw TooManySteps();
        if (index == elements.size())
            return rest(at);
        const Element& element = elements[index];
        const auto goOn = [&](std::size_t end) { return matches(elements, index + 1, end, rest); };
        switch (element.kind) {
        case 't':
            return isByte(at, [&](char c) { return c == element.text[0]; }) && goOn(at + 1);
        case '{':
            return matchesColumn(element, at, Rest(goOn));
        case '[':
            return matches(element.inside, 0, at, Rest(goOn)) || goOn(at);
        default:
            return matchesWildcard(elements, index, at, rest);
        }
    }

    bool matchesColumn(const Element& column, std::size_t at, const Rest& rest)
    {
        for (const std::size_t end : ends(column, at)) {
            if (!column.isAgain)
                values_[column.name] = {at, end};
            if (rest(end))
                return true;
            if (!column.isAgain)
                values_.erase(column.name);
        }
        return false;
    }

    // The part at `index`, and behind it those up to `end`, each where it can be.
    bool matchesPart(const Elements& elements, std::size_t index, std::size_t end, std::size_t at,
                     const Rest& rest)
    {
        const auto goOn = [&](std::size_t behind) {
            return matchesParts(elements, index + 1, end, behind, rest);
        };
        return matches(elements[index].inside, 0, at, Rest(goOn));
    }

    bool matchesParts(const Elements& elements, std::size_t index, std::size_t end, std::size_t at,
                      const Rest& rest)
    {
        if (index == end)
            return matches(elements, end, at, rest);
        return matchesPart(elements, index, end, at, rest) ||
               matchesParts(elements, index + 1, end, at, rest);
    }

    // Looks behind the wildcard for the parts up to `end`, each by itself behind the one before.
    bool looksForEach(const Elements& elements, std::size_t wildcard, std::size_t part,
                      std::size_t end, std::size_t at, const Rest& rest)
    {
        if (part == end)
            return matches(elements, end, at, rest);
        const auto goOn = [&](std::size_t behind) {
            return looksForEach(elements, wildcard, part + 1, end, behind, rest);
        };
        for (const std::size_t begin : endsOfWildcard(elements[wildcard], at)) {
            if (matches(elements[part].inside, 0, begin, Rest(goOn)))
                return true;
        }
        return looksForEach(elements, wildcard, part + 1, end, at, rest);
    }

    bool matchesWildcard(const Elements& elements, std::size_t index, std::size_t at,
                         const Rest& rest)
    {
        const bool looks = elements[index].kind == '*' || elements[index].kind == '2';
        std::size_t end = index + 1;
        while (looks && end < elements.size() && elements[end].kind == '[')
            ++end;
        const bool mayStandBetween =
            end < elements.size() &&
            (elements[end].kind == '2' || elements[end].kind == elements[index].kind);
        if (looks && mayStandBetween)
            return looksForEach(elements, index, index + 1, end, at, rest);
        const std::vector<std::size_t> reached = endsOfWildcard(elements[index], at);
        for (std::size_t part = index + 1; part < end; ++part) {
            for (const std::size_t begin : reached) {
                if (matchesPart(elements, part, end, begin, rest))
                    return true;
            }
        }
        return std::any_of(reached.begin(), reached.end(),
                           [&](std::size_t begin) { return matches(elements, end, begin, rest); });
    }

    const std::string text_;
    std::size_t next_ = 0;
    std::vector<std::string> names_;
    Elements elements_;
    const std::string* path_ = nullptr;
    Values values_;
    std::size_t steps_ = 0;
};

} // namespace templatemodel

#endif
