#ifndef WINDOW_MODEL_TEXT_H
#define WINDOW_MODEL_TEXT_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include <QString>

namespace casetable {

/// Bytes as a text to be edited, of which bytesOf() gives the same bytes: UTF-8 is read, and each
/// byte that is not, or that is a control character, becomes a lone surrogate, which fonts show as
/// a box.
QString editable(std::string_view bytes);

/// The bytes for which a text stands that editable() has made or the user has typed.
std::string bytesOf(const QString& text);

/// Bytes as people are shown them, with escapes for what cannot be shown, as printable() makes it;
/// and which bytes stand where.
class ShownText {
public:
    ShownText() = default;
    explicit ShownText(std::string_view bytes);

    const QString& text() const { return text_; }

    /// Where in text() the byte at `offset` is shown, in UTF-16 units; an offset inside a character
    /// counts as its begin, and one from the end of the bytes on as the end.
    int placeOf(std::size_t offset) const;

    /// The offset of the character, or the bytes of the escape, that is shown at `place`; that of
    /// the end from there on. Places inside an escape count as its begin.
    std::size_t offsetAt(int place) const;

    /// The begin of the character behind, or before, the one that begins at `offset`.
    std::size_t next(std::size_t offset) const;
    std::size_t previous(std::size_t offset) const;

private:
    // A character or byte, in ascending order of both; the last stands for the end.
    struct Place {
        std::size_t offset;
        int place;
    };

    QString text_;
    std::vector<Place> places_ = {{0, 0}};
};

/// The text alone.
QString shown(std::string_view bytes);

} // namespace casetable

#endif
