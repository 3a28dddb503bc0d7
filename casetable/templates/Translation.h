#ifndef CASETABLE_TEMPLATES_TRANSLATION_H
#define CASETABLE_TEMPLATES_TRANSLATION_H

#include <cstddef>
#include <string>
#include <vector>

#include "casetable/templates/Template.h"

namespace casetable {

/// An expression that says what a template says, and what its groups are.
struct Translation {
    /// In place of an index, for a group that serves the expression alone.
    static constexpr std::size_t internal = static_cast<std::size_t>(-1);

    std::string expression;
    /// For each group, from the first: the index of the column, or of the element, counted with
    /// those of parts behind them, that it stands for. Of several groups with the same index at
    /// most one takes part in a match.
    std::vector<std::size_t> groups;
};

/// For whole paths, with a group for each column.
Translation translateColumns(const std::vector<TemplateElement>& elements);

/// For whole paths, with a group for each element, those of parts among them.
Translation translateElements(const std::vector<TemplateElement>& elements);

/// For the beginnings of paths that the first `count` elements fit, with a group for each column.
/// The last of them, where it takes as few bytes as fit, takes as many.
Translation translateBeginning(const std::vector<TemplateElement>& elements, std::size_t count);

} // namespace casetable

#endif
