#include "window/model/CommandText.h"

#include <cstddef>
#include <stdexcept>

namespace casetable {

namespace {

bool isBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

class Reader {
public:
    explicit Reader(std::string_view text) : text_(text) {}

    std::vector<std::string> read()
    {
        std::vector<std::string> words;
        for (skipBlanks(); !isAtEnd(); skipBlanks())
            words.push_back(readWord());
        return words;
    }

private:
    bool isAtEnd() const { return next_ == text_.size(); }

    bool accept(std::string_view token)
    {
        const bool isHere = text_.substr(next_, token.size()) == token;
        next_ += isHere ? token.size() : 0;
        return isHere;
    }

    void skipBlanks()
    {
        while (accept("\\\n") || (!isAtEnd() && isBlank(text_[next_]) && ++next_ > 0)) {
        }
    }

    std::string readWord()
    {
        std::string word;
        while (!isAtEnd() && !isBlank(text_[next_])) {
            if (accept("\\\n"))
                continue;
            if (accept("$'"))
                readEscapes(word);
            else if (accept("'"))
                readUntil('\'', "", word);
            else if (accept("\""))
                readUntil('"', "\"\\$`", word);
            else if (text_[next_] == '\\' && next_ + 1 < text_.size())
                word += text_[(next_ += 2) - 1];
            else
                word += text_[next_++];
        }
        return word;
    }

    // Up to the closing quote; a "\" protects any of `escaped`.
    void readUntil(char quote, std::string_view escaped, std::string& word)
    {
        for (; !isAtEnd(); ++next_) {
            if (text_[next_] == quote) {
                ++next_;
                return;
            }
            const bool protects = text_[next_] == '\\' && next_ + 1 < text_.size() &&
                                  escaped.find(text_[next_ + 1]) != std::string_view::npos;
            word += text_[next_ += protects ? 1 : 0];
        }
        failUnclosed(quote);
    }

    void readEscapes(std::string& word)
    {
        while (!isAtEnd()) {
            const char c = text_[next_++];
            if (c == '\'')
                return;
            if (c == '\\' && !isAtEnd())
                word += escape();
            else
                word += c;
        }
        failUnclosed('\'');
    }

    // What stands for a byte behind a "\" in $'...'.
    char escape()
    {
        const char c = text_[next_];
        if (c == 'x') {
            ++next_;
            return number(16, 2);
        }
        if (c >= '0' && c <= '7')
            return number(8, 3);
        ++next_;
        const std::string_view letters = "abefnrtv";
        const std::size_t place = letters.find(c);
        return place == std::string_view::npos ? c : "\a\b\x1b\f\n\r\t\v"[place];
    }

    char number(unsigned base, unsigned digits)
    {
        unsigned value = 0;
        for (unsigned i = 0; i < digits && !isAtEnd(); ++i, ++next_) {
            const std::string_view all = "0123456789abcdef";
            const char c = text_[next_];
            const std::size_t digit =
                all.find(c >= 'A' && c <= 'F' ? static_cast<char>(c - 'A' + 'a') : c);
            if (digit >= base)
                break;
            value = value * base + static_cast<unsigned>(digit);
        }
        return static_cast<char>(value);
    }

    [[noreturn]] static void failUnclosed(char quote)
    {
        throw std::invalid_argument(std::string("the quote ") + quote + " is not closed");
    }

    const std::string_view text_;
    std::size_t next_ = 0;
};

} // namespace

std::vector<std::string> commandWords(std::string_view line)
{
    return Reader(line).read();
}

} // namespace casetable
