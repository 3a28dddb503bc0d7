#ifndef CASETABLE_TEMPLATES_MATCHER_H
#define CASETABLE_TEMPLATES_MATCHER_H

#include <cstddef>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "casetable/templates/Template.h"

namespace casetable {

/// The engine gave up on a path, so it is not known whether a template fits it. what() is the path
/// and the engine's reason.
class MatchError : public std::runtime_error {
public:
    MatchError(const std::string& path, const std::string& reason)
        : std::runtime_error(path + ": " + reason), path(path), reason(reason)
    {
    }

    const std::string path;
    const std::string reason;
};

/// What a column or an element has of a path.
struct Span {
    /// In bytes, from the beginning of the path.
    std::size_t begin = 0;
    std::size_t length = 0;
    /// It is in a part that the path does not have; then it has no bytes.
    bool isLeftOut = false;
};

/// How far a template fits a path.
struct Beginning {
    /// So many of the template's elements, from the first, together fit a beginning of the path,
    /// and no more do; the next one failed. All of them, where the path goes on behind the
    /// template.
    std::size_t elements = 0;
    /// Where that beginning of the path ends. Where its last element may take more or fewer bytes,
    /// it has as many as it can.
    std::size_t end = 0;
    /// What the columns in those elements read, by their index. Columns further behind are left
    /// out.
    std::vector<Span> columns;
};

/// Asks a template about paths. Used by one thread at a time; any number of them may share a
/// template.
///
/// All operations throw MatchError when the engine gives up, because the choices that it would have
/// to try are too many; they may be used again afterwards.
class Matcher {
public:
    explicit Matcher(const Template& pathTemplate);
    Matcher(Matcher&& other) noexcept;
    ~Matcher();

    /// Whether the template fits the whole path.
    bool match(std::string_view path);

    /// What each column read in the last path that was matched; the begin of one that is left out
    /// is open.
    const std::vector<Span>& columns() const;

    /// What each element has of the path, those of a part behind it, in the order of the template;
    /// empty when the template does not fit. One that is left out begins where it would stand.
    /// Where two wildcards have only left-out parts between them, the second has the bytes of both.
    /// Slower than match().
    std::vector<Span> elementSpans(std::string_view path);

    /// As elementSpans(), for the columns.
    std::vector<Span> columnSpans(std::string_view path);

    /// The most elements that fit a beginning of a path. Slower than match(), and once for each
    /// element much slower.
    Beginning longestBeginning(std::string_view path);

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

} // namespace casetable

#endif
