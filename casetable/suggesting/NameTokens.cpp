#include "casetable/suggesting/NameTokens.h"

#include <algorithm>

#include "crawler/private/PathReading.h"

namespace casetable {

namespace {

using reading::digitAt;
using reading::isDigit;

std::size_t skipWord(std::string_view name, std::size_t index)
{
    while (index < name.size() && isWordByte(name[index]))
        ++index;
    return index;
}

bool isSignedNumber(std::string_view name, std::size_t index)
{
    return index < name.size() && reading::isSign(name[index]) &&
           (digitAt(name, index + 1) ||
            (index + 1 < name.size() && name[index + 1] == '.' && digitAt(name, index + 2)));
}

// Counted things are written like -0007, measured ones are not.
bool isPadded(std::string_view name, std::size_t sign)
{
    return digitAt(name, sign + 1) && name[sign + 1] == '0' && digitAt(name, sign + 2);
}

// The word ends before a capital that follows a small letter, unless that one stands alone, as in
// kEpsilon.
std::size_t skipCamelWord(std::string_view name, std::size_t index)
{
    const auto isSmall = [](char c) { return c >= 'a' && c <= 'z'; };
    const auto isCapital = [](char c) { return c >= 'A' && c <= 'Z'; };
    const std::size_t end = skipWord(name, index);
    for (index += 2; index < end; ++index) {
        if (isSmall(name[index - 1]) && isCapital(name[index]))
            return index;
    }
    return end;
}

std::string_view wordBefore(std::string_view name, std::size_t end)
{
    std::size_t begin = end;
    while (begin > 0 && isWordByte(name[begin - 1]))
        --begin;
    return name.substr(begin, end - begin);
}

bool numberBeginsAt(std::string_view name, std::size_t index, const std::vector<Token>& before,
                    const Signs& signs)
{
    if (isDigit(name[index]))
        return true;
    if (!isSignedNumber(name, index))
        return false;
    if (before.empty() || before.back().kind == Token::Kind::Separator || name[index] == '+')
        return before.empty() || before.back().kind != Token::Kind::Number;
    return before.back().kind == Token::Kind::Word && !isPadded(name, index) &&
           signs.isSignBehind(wordBefore(name, index));
}

std::size_t skipSeparators(std::string_view name, std::size_t index)
{
    ++index;
    while (index < name.size() && !isWordByte(name[index]) && !isDigit(name[index]) &&
           !isSignedNumber(name, index))
        ++index;
    return index;
}

std::size_t digitCount(std::string_view text)
{
    return std::all_of(text.begin(), text.end(), isDigit) ? text.size() : 0;
}

// 2024 before 01, or 20240131 before 123000.
bool looksLikeDate(std::string_view first, std::string_view second)
{
    const bool century = first.substr(0, 2) == "19" || first.substr(0, 2) == "20";
    return century && ((digitCount(first) == 4 && digitCount(second) == 2) ||
                       (digitCount(first) == 8 && digitCount(second) >= 4));
}

// Whether the numbers left and right of `between` are parts of one value.
bool joins(std::string_view name, const Token& first, const Token& between, const Token& second)
{
    const bool numbers = first.kind == Token::Kind::Numbers || first.kind == Token::Kind::Number;
    if (!numbers || second.kind != Token::Kind::Number || between.end - between.begin != 1)
        return false;
    const char joint = name[between.begin];
    if (joint == '-' || joint == ':' || joint == '.' || joint == ',')
        return true;
    if (joint != '_' && joint != 'T')
        return false;
    if (first.kind == Token::Kind::Numbers)
        return digitCount(second.in(name)) >= 2 && (joint == '_' || first.end - first.begin == 10);
    return looksLikeDate(first.in(name), second.in(name));
}

} // namespace

bool isWordByte(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || static_cast<unsigned char>(c) >= 128;
}

void Signs::look(std::string_view name)
{
    for (std::size_t begin = 0; begin < name.size();) {
        const std::size_t end = skipWord(name, begin);
        if (end == begin) {
            ++begin;
            continue;
        }
        if (digitAt(name, end) || (isSignedNumber(name, end) && name[end] == '+'))
            ++words_[name.substr(begin, end - begin)].direct;
        else if (isSignedNumber(name, end))
            ++words_[name.substr(begin, end - begin)].dashed;
        begin = end;
    }
}

bool Signs::isSignBehind(std::string_view word) const
{
    const auto counts = words_.find(word);
    return counts != words_.end() && counts->second.direct > 0 &&
           counts->second.direct * 10 >= counts->second.dashed;
}

std::vector<Token> tokensOf(std::string_view name, const Signs& signs)
{
    const auto token = [](Token::Kind kind, std::size_t begin, std::size_t end) {
        return Token{kind, static_cast<std::uint32_t>(begin), static_cast<std::uint32_t>(end)};
    };
    // No file system has such names, but a list may; they would take long.
    if (name.size() > longestName)
        return {token(Token::Kind::Separator, 0, name.size())};
    std::vector<Token> tokens;
    for (std::size_t begin = 0; begin < name.size(); begin = tokens.back().end) {
        if (numberBeginsAt(name, begin, tokens, signs))
            tokens.push_back(
                token(Token::Kind::Number, begin, reading::scanNumberValue(name, begin)));
        else if (isWordByte(name[begin]))
            tokens.push_back(token(Token::Kind::Word, begin, skipCamelWord(name, begin)));
        else
            tokens.push_back(token(Token::Kind::Separator, begin, skipSeparators(name, begin)));
        const std::size_t count = tokens.size();
        if (count >= 3 && joins(name, tokens[count - 3], tokens[count - 2], tokens[count - 1])) {
            tokens[count - 3].kind = Token::Kind::Numbers;
            tokens[count - 3].end = tokens.back().end;
            tokens.resize(count - 2);
        }
    }
    tokens.shrink_to_fit();
    return tokens;
}

std::size_t beginOfExtensions(std::string_view name, const std::vector<Token>& tokens)
{
    std::size_t end = name.size();
    for (;;) {
        const std::size_t point = name.substr(0, end).rfind('.');
        if (point == std::string_view::npos || point == 0)
            return end;
        const std::string_view extension = name.substr(point + 1, end - point - 1);
        if (!extension.empty() && digitCount(extension) == extension.size())
            return end;
        const bool inNumber =
            std::any_of(tokens.begin(), tokens.end(), [point](const Token& token) {
                return token.kind != Token::Kind::Separator && token.begin < point &&
                       point < token.end;
            });
        if (inNumber)
            return end;
        end = point;
    }
}

} // namespace casetable
