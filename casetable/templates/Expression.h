#ifndef CASETABLE_TEMPLATES_EXPRESSION_H
#define CASETABLE_TEMPLATES_EXPRESSION_H

#include <cstddef>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "casetable/templates/Translation.h"

namespace casetable {

/// An expression that the engine refuses. what() is the reason.
class ExpressionError : public std::invalid_argument {
public:
    ExpressionError(std::size_t position, const std::string& reason)
        : std::invalid_argument(reason), position(position)
    {
    }

    /// The byte of the expression, from 0, at which it was refused; at most its size.
    const std::size_t position;
};

/// A compiled translation, that matches from the first byte of a subject. Immutable; threads may
/// share one.
class Expression {
public:
    /// Throws ExpressionError.
    explicit Expression(const Translation& translation);
    Expression(const Expression&) = delete;
    Expression& operator=(const Expression&) = delete;
    ~Expression();

    /// As Translation::groups.
    const std::vector<std::size_t>& groups() const { return groups_; }

private:
    friend class ExpressionMatcher;
    struct Code;
    std::vector<std::size_t> groups_;
    std::unique_ptr<Code> code_;
};

/// The memory in which expressions are matched. Used by one thread at a time.
class ExpressionMatcher {
public:
    ExpressionMatcher();
    ExpressionMatcher(const ExpressionMatcher&) = delete;
    ExpressionMatcher& operator=(const ExpressionMatcher&) = delete;
    ~ExpressionMatcher();

    /// Where a group begins that took no part in a match.
    static const std::size_t unset;

    /// The begin and the end of what matched, then of each group, in bytes of the subject; good
    /// until the next match. Null when nothing matches. Throws std::runtime_error with the engine's
    /// reason when it gives up.
    const std::size_t* match(const Expression& expression, std::string_view subject);

private:
    struct Memory;
    std::unique_ptr<Memory> memory_;
};

/// A column's expression as it can be put into a larger one without a change of its meaning, and
/// without changing the meaning of anything else there: `(?:` and `)` around it, its parentheses
/// capture nothing. The larger one may have any number of groups, and may name them.
///
/// Throws ExpressionError where it is no expression of its own; where it names groups or has verbs,
/// callouts, conditions, `\K`, backreferences or recursion.
std::string enclosedExpression(const std::string& text);

} // namespace casetable

#endif
