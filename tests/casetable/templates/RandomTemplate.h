#ifndef TESTS_CASETABLE_TEMPLATES_RANDOMTEMPLATE_H
#define TESTS_CASETABLE_TEMPLATES_RANDOMTEMPLATE_H

#include <cstddef>
#include <functional>
#include <set>
#include <string>
#include <vector>

/// Makes templates that the model knows, and paths that have a chance to fit them.
namespace templatemodel {

/// Gives any number below its argument, which is not 0.
using Choose = std::function<std::size_t(std::size_t)>;

class RandomTemplate {
public:
    explicit RandomTemplate(const Choose& choose) : choose_(choose)
    {
        add(0);
        if (names_.empty())
            text += "{z}";
    }

    /// A path that was put together with the template; it fits often, not always.
    std::string path() const { return path_; }

    std::string text;

private:
    const char* oneOf(const std::vector<const char*>& texts)
    {
        return texts[choose_(texts.size())];
    }

    // Often of the same few bytes, so that there are many choices.
    std::string bytes(const std::vector<const char*>& from, std::size_t least, std::size_t most)
    {
        std::string made;
        for (std::size_t n = least + choose_(most - least + 1); n > 0; --n)
            made += oneOf(from);
        return made;
    }

    void addPlain(const char* bytes)
    {
        for (const char* c = bytes; *c != '\0'; ++c) {
            if (std::string("\\*?[]{}").find(*c) != std::string::npos)
                text += '\\';
            text += *c;
        }
        path_ += bytes;
    }

    void add(std::size_t depth)
    {
        for (std::size_t count = 1 + choose_(5); count > 0; --count) {
            switch (choose_(8)) {
            case 0:
            case 1:
                addPlain(oneOf({"a", "b", "_", "/", "-", "1", ".", "_a", "b/", "[", "\n", "\xff"}));
                break;
            case 2:
            case 3:
                addColumn();
                break;
            case 4:
                addWildcard();
                break;
            case 5:
                text += '?';
                path_ += oneOf({"a", "1", "_"});
                break;
            default:
                if (depth < 3)
                    addPart(depth);
            }
        }
    }

    void addPart(std::size_t depth)
    {
        const std::string before = path_;
        text += '[';
        add(depth + 1);
        text += ']';
        if (choose_(2) == 0)
            path_ = before;
    }

    void addWildcard()
    {
        if (!text.empty() && text.back() == '*')
            return;
        switch (choose_(3)) {
        case 0:
            text += '*';
            path_ += bytes({"a", "b", "_", "1"}, 0, 2);
            break;
        case 1:
            text += "**";
            path_ += bytes({"a", "b", "_", "/"}, 0, 3);
            break;
        default:
            text += "**/";
            path_ += bytes({"a/", "b_/"}, 0, 2);
        }
    }

    void addColumn()
    {
        const std::string name = oneOf({"a", "b", "c", "_d1"});
        text += '{' + name;
        if (names_.insert(name).second)
            addType();
        else
            path_ += oneOf({"a", "1"});
        text += '}';
    }

    void addType()
    {
        switch (choose_(8)) {
        case 0:
            text += oneOf({"", ":text", ":text2", ":text1"});
            path_ += oneOf({"a", "a_", "ab"});
            break;
        case 1:
            text += oneOf({":word", ":word2"});
            path_ += oneOf({"a", "1b", "ab1"});
            break;
        case 2:
            text += oneOf({":digits", ":digits2"});
            path_ += oneOf({"1", "12", "111"});
            break;
        case 3:
            text += ":number";
            path_ += oneOf({"1", "-1", "1.5", ".5", "1e2", "+1.5e-11", "1.", "-.1e"});
            break;
        case 4:
            text += ":path";
            path_ += oneOf({"a", "a/b", "_/1"});
            break;
        case 5:
            text += oneOf({",", ":number,", ":text,"});
            text += oneOf({"a|ab", "ab|a", "1|11|", "a/b|a|b", "", "b"});
            path_ += oneOf({"a", "ab", "1", ""});
            break;
        case 6:
            text += oneOf({",[ab]+", ",[a-b]+", ",[ab1]{2}"});
            path_ += oneOf({"ab", "ba", "a"});
            break;
        default:
            path_ += oneOf({"a", "b_1", "_"});
        }
    }

    const Choose choose_;
    std::set<std::string> names_;
    std::string path_;
};

/// Any path of the bytes that templates are made of.
inline std::string randomPath(const Choose& choose)
{
    static const std::string bytes = "aaabb11__/-.e[\n\xff";
    std::string path;
    for (std::size_t n = choose(14); n > 0; --n)
        path += bytes[choose(bytes.size())];
    return path;
}

/// The path with one byte left out, put in or put in place of another.
inline std::string changedPath(std::string path, const Choose& choose)
{
    const std::size_t at = choose(path.size() + 1);
    const std::string byte(1, "a1_/-"[choose(5)]);
    return path.replace(at, choose(2), choose(2) == 0 ? byte : "");
}

} // namespace templatemodel

#endif
