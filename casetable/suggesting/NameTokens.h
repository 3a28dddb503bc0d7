#ifndef CASETABLE_SUGGESTING_NAMETOKENS_H
#define CASETABLE_SUGGESTING_NAMETOKENS_H

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace casetable {

/// The most bytes of a name that is looked into.
const std::size_t longestName = 255;

/// A piece of the name of a file or folder; the bytes from `begin` up to `end`.
struct Token {
    enum class Kind : std::uint8_t {
        Word,      ///< Letters, divided where a capital follows a small one that is not the first.
        Separator, ///< Whatever is neither letter nor number.
        Number,    ///< A number as the module reads it.
        Numbers    ///< Numbers that belong together, such as a date, a version or 0,75.
    };

    Kind kind;
    std::uint32_t begin; // There are very many of these.
    std::uint32_t end;

    std::string_view in(std::string_view name) const { return name.substr(begin, end - begin); }
};

/// Whether bytes belong to words: letters, and all beyond ASCII.
bool isWordByte(char c);

/// Tells the "-" of `run-0007` from the "-" of `AoA-2.5`: behind a word it is a sign when other
/// names have a number right behind that word. Refers to the names that it was shown.
class Signs {
public:
    void look(std::string_view name);
    bool isSignBehind(std::string_view word) const;

private:
    struct Counts {
        std::size_t direct = 0;
        std::size_t dashed = 0;
    };
    std::unordered_map<std::string_view, Counts> words_;
};

/// Divides a name, without a gap. One of more than `longestName` bytes is one separator.
std::vector<Token> tokensOf(std::string_view name, const Signs& signs);

/// Where the extensions of a file name begin; its size when there are none. A point in a number
/// begins none, and neither does one with nothing but digits behind it.
std::size_t beginOfExtensions(std::string_view name, const std::vector<Token>& tokens);

} // namespace casetable

#endif
