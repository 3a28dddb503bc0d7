#ifndef CASETABLE_TEMPLATES_TEMPLATE_H
#define CASETABLE_TEMPLATES_TEMPLATE_H

#include <cstddef>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace casetable {

class Expression;

/// A template that cannot be read. what() is the reason alone, for one line behind the template
/// with a caret under the place.
class TemplateError : public std::invalid_argument {
public:
    TemplateError(const std::string& text, std::size_t position, const std::string& reason)
        : std::invalid_argument(reason), text(text), position(position)
    {
    }

    /// The whole template.
    const std::string text;
    /// The byte of it, from 0, at which it cannot be read on; at most its size.
    const std::size_t position;
};

/// A column that a template reads.
struct TemplateColumn {
    std::string name;
    bool isNumber;
};

/// A piece of a template.
struct TemplateElement {
    enum class Kind {
        Text,     ///< Itself. A longer text is divided behind each "/".
        Column,   ///< A column where its name stands first.
        Again,    ///< The bytes of a column again.
        Byte,     ///< `?`
        Bytes,    ///< `*`
        AllBytes, ///< `**`
        Folders,  ///< `**/` where a component begins.
        Part      ///< `[...]`
    };
    /// What a column's bytes may be.
    enum class Type { Text, Word, Digits, Number, Path, Expression };

    Kind kind = Kind::Text;
    /// Where it stands in the template, in bytes.
    std::size_t position = 0;
    std::size_t length = 0;
    /// The bytes of a Text, or the expression of a column, as it is put into a larger one.
    std::string text;
    /// The index of a Column, or of the one that stands Again.
    std::size_t column = 0;
    Type type = Type::Text;
    /// The number of bytes of a column of fixed width, otherwise 0.
    std::size_t width = 0;
    /// What a Part holds.
    std::vector<TemplateElement> elements;
};

/// A description of whole paths, byte for byte, with columns in it.
///
/// | element | stands for |
/// |---|---|
/// | text | itself; `\` takes the meaning from the next of `\ * ? [ ] { }` |
/// | `{name}`, `{name:text}` | a column: one byte or more but `/`, as few as fit |
/// | `{name:word}` | ASCII letters and digits, one or more, as many as fit |
/// | `{name:digits}` | `0` to `9`, one or more, as many as fit |
/// | `{name:number}` | an optional sign, digits with an optional fraction or a fraction alone, an
///   optional exponent with `e` or `E`; as much as fits; a number column |
/// | `{name:digits3}`, `{name:word2}`, `{name:text36}` | so many bytes of the kind |
/// | `{name:path}` | one byte or more, `/` included, as few as fit |
/// | `{name,EXPRESSION}`, `{name:number,EXPRESSION}` | what a Perl-compatible expression says; up
/// to
///   the `}` that closes it, braces are balanced or escaped; it may match `/`, and nothing at all |
/// | `{name}` again | the same bytes again; nothing fits where its part was left out |
/// | `*` | any bytes but `/`, also none, as few as fit |
/// | `?` | one byte but `/` |
/// | `**/` where a component begins | any number of whole folders, also none, as few as fit |
/// | `**` elsewhere | any bytes, `/` included, also none, as few as fit |
/// | `[...]` | an optional part, taken where it can be; parts may be nested |
///
/// A component begins first in the template or in a part, behind `/`, and behind a part that ends
/// in `/`. Choices are made from left to right; the first that lets the rest fit counts. Parts
/// directly behind `*` or `**` are looked for: `*[A][B]` first tries to reach `A`, with `B` behind
/// it where that can be, then `B`, then neither. Where a wildcard that takes as much stands behind
/// the parts, `*[A][B]*`, other bytes may stand between them too.
///
/// Immutable; copies share what is costly, and threads may share one.
class Template {
public:
    /// The longest template in bytes, and how deeply parts may be nested.
    static constexpr std::size_t maxSize = 65536;
    static constexpr std::size_t maxDepth = 100;
    /// The largest fixed width.
    static constexpr std::size_t maxWidth = 65535;

    /// Throws TemplateError when the text is none of these, has no columns, names one `case`,
    /// `path` or `files`, or makes an expression that is too large for the engine. An expression
    /// may not name groups, hold verbs, callouts or `\K`, or refer to anything in itself by number
    /// or name; its parentheses capture nothing.
    explicit Template(const std::string& text);

    /// The template as it was given.
    const std::string& text() const { return text_; }

    /// In the order in which the names first appear.
    const std::vector<TemplateColumn>& columns() const { return columns_; }

    const std::vector<TemplateElement>& elements() const { return elements_; }

    /// What a Matcher runs on whole paths: a group for each column, or, for the other, for all
    /// elements.
    const std::shared_ptr<const Expression>& columnExpression() const { return columnExpression_; }
    const std::shared_ptr<const Expression>& elementExpression() const
    {
        return elementExpression_;
    }

private:
    std::string text_;
    std::vector<TemplateColumn> columns_;
    std::vector<TemplateElement> elements_;
    std::shared_ptr<const Expression> columnExpression_;
    std::shared_ptr<const Expression> elementExpression_;
};

/// `text` as a part of a template, in which it stands for itself.
std::string escaped(std::string_view text);

} // namespace casetable

#endif
