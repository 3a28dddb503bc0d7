#ifndef BENCHMARKS_PEERS_H
#define BENCHMARKS_PEERS_H

#include <cstddef>
#include <string>
#include <vector>

#include <QRegExp>
#include <QString>
#include <QStringList>

#include <vtkSmartPointer.h>
#include <vtkStringArray.h>
#include <vtkTable.h>
#include <vtkVariant.h>
#include <vtkVariantArray.h>

#include "crawler/MetadataPattern.h"

/// What the module's stages are compared with.
namespace campaign {

/// How many candidates `syntaxName` selects, asked of QRegExp alone.
inline std::size_t selectWithQRegExp(const std::string& syntaxName, const QStringList& candidates)
{
    const QRegExp expression(QString::fromStdString(syntaxName), Qt::CaseSensitive,
                             QRegExp::Wildcard);
    std::size_t count = 0;
    for (const QString& candidate : candidates) {
        if (expression.lastIndexIn(candidate, -1, QRegExp::CaretAtZero) != -1 &&
            candidate.endsWith(expression.cap(0), Qt::CaseSensitive))
            ++count;
    }
    return count;
}

/// The texts of a table's cells, row by row.
inline std::vector<std::vector<std::string>> textsOf(vtkTable& table)
{
    std::vector<std::vector<std::string>> texts(static_cast<std::size_t>(table.GetNumberOfRows()));
    for (vtkIdType row = 0; row < table.GetNumberOfRows(); ++row) {
        for (vtkIdType j = 0; j < table.GetNumberOfColumns(); ++j)
            texts[static_cast<std::size_t>(row)].push_back(table.GetValue(row, j).ToString());
    }
    return texts;
}

/// The table of an extraction from texts that are already there, row by row, filled column by
/// column without a parser, a check or an importer.
inline vtkSmartPointer<vtkTable> fillByHand(const std::vector<std::vector<std::string>>& texts,
                                            const std::vector<MetadataPattern>& patterns)
{
    const auto table = vtkSmartPointer<vtkTable>::New();
    const auto rows = static_cast<vtkIdType>(texts.size());
    for (std::size_t j = 0; j < patterns.size(); ++j) {
        const auto fill = [&](auto& column, const auto& cellOf) {
            column.SetNumberOfTuples(rows);
            column.SetName(patterns[j].pattern.c_str());
            for (vtkIdType row = 0; row < rows; ++row)
                column.SetValue(row, cellOf(texts[static_cast<std::size_t>(row)][j]));
            table->AddColumn(&column);
        };
        if (patterns[j].valueType == MetadataPattern::NumberValue)
            fill(*vtkSmartPointer<vtkVariantArray>::New(),
                 [](const std::string& text) { return vtkVariant(text.c_str()); });
        else
            fill(*vtkSmartPointer<vtkStringArray>::New(),
                 [](const std::string& text) { return text.c_str(); });
    }
    return table;
}

} // namespace campaign

#endif
