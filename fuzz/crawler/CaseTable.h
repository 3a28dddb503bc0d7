#ifndef FUZZ_CRAWLER_CASETABLE_H
#define FUZZ_CRAWLER_CASETABLE_H

#include <algorithm>
#include <cstddef>
#include <string>
#include <vector>

#include <boost/lexical_cast.hpp>

#include <vtkAbstractArray.h>
#include <vtkStringArray.h>
#include <vtkTable.h>
#include <vtkType.h>
#include <vtkVariant.h>
#include <vtkVariantArray.h>

#include "fuzz/Input.h"

/// The case table said once more, as a text of all that it shows.
namespace fuzz {

/// What the cell for `text` shows. A cell is made of a text as C has it, so it ends at a NUL.
inline std::string expectedCell(const std::string& text, MetadataPattern::ValueType type)
{
    if (type == MetadataPattern::NumberValue) {
        try {
            boost::lexical_cast<double>(text);
        } catch (const boost::bad_lexical_cast&) {
            return "NULL";
        }
    }
    return text.substr(0, text.find('\0'));
}

/// One line for each column and each row. A column is named after what its marker holds in front
/// of a NUL, since a name ends there.
inline std::string expectedTable(const Patterns& patterns, const std::vector<Texts>& cases)
{
    std::string table;
    if (cases.empty())
        return table;
    Texts names;
    for (const MetadataPattern& pattern : patterns) {
        const std::string base = pattern.pattern.substr(0, pattern.pattern.find('\0'));
        std::string name = base;
        for (int number = 2; std::find(names.begin(), names.end(), name) != names.end(); ++number)
            name = base + "(" + std::to_string(number) + ")";
        names.push_back(name);
        table +=
            (pattern.valueType == MetadataPattern::StringValue ? "\n    texts " : "\n    cells ") +
            shown(name);
    }
    for (const Texts& values : cases) {
        table += "\n    row";
        for (std::size_t k = 0; k < patterns.size(); ++k)
            table += " " + shown(expectedCell(values[k], patterns[k].valueType));
    }
    return table;
}

inline std::string seenTable(vtkTable& table)
{
    std::string text;
    for (vtkIdType column = 0; column < table.GetNumberOfColumns(); ++column) {
        vtkAbstractArray* const array = table.GetColumn(column);
        text += vtkStringArray::SafeDownCast(array)    ? "\n    texts "
                : vtkVariantArray::SafeDownCast(array) ? "\n    cells "
                                                       : "\n    others ";
        text += shown(array->GetName());
    }
    for (vtkIdType row = 0; row < table.GetNumberOfRows(); ++row) {
        text += "\n    row";
        for (vtkIdType column = 0; column < table.GetNumberOfColumns(); ++column) {
            const vtkVariant cell = table.GetValue(row, column);
            text += " " + (cell.GetType() == VTK_STRING
                               ? shown(std::string(cell.ToString()))
                               : "of type " + std::string(cell.GetTypeAsString()));
        }
    }
    return text;
}

} // namespace fuzz

#endif
