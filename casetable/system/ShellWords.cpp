#include "casetable/system/ShellWords.h"

#include <algorithm>
#include <cstdio>
#include <string_view>

#include "casetable/system/Printable.h"

namespace casetable {

namespace {

// Safe to stand in a command line without quotes, and no beginning of a pattern or an assignment.
bool isPlain(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
           std::string_view("_-+./=,:@%").find(c) != std::string_view::npos;
}

} // namespace

// What is shown as escapes, and so is no exact text, goes as numbers.
std::string shellWord(const std::string& bytes)
{
    // Some shells look a word that begins with "=" up as a command.
    if (!bytes.empty() && bytes.front() != '=' && std::all_of(bytes.begin(), bytes.end(), isPlain))
        return bytes;
    if (printable(bytes) == bytes) {
        std::string word = "'";
        for (const char c : bytes)
            word += c == '\'' ? std::string("'\\''") : std::string(1, c);
        return word + "'";
    }
    std::string word = "$'";
    for (const char c : bytes) {
        char octal[8];
        const auto byte = static_cast<unsigned char>(c);
        static_cast<void>(
            std::snprintf(octal, sizeof octal, "\\%03o", static_cast<unsigned>(byte)));
        if (byte < 0x20 || byte > 0x7e || c == '\'' || c == '\\')
            word += octal;
        else
            word += c;
    }
    return word + "'";
}

} // namespace casetable
