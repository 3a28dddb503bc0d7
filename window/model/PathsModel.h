#ifndef WINDOW_MODEL_PATHSMODEL_H
#define WINDOW_MODEL_PATHSMODEL_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include <QAbstractTableModel>
#include <QCache>

#include "window/model/PathReader.h"
#include "window/model/Session.h"

namespace casetable {

/// The files that a session shows, a row each. Nothing is copied for a row: what is read of a path
/// is found out when the row is seen, by the reading in effect.
class PathsModel : public QAbstractTableModel {
    Q_OBJECT

public:
    enum Column { CaseColumn, PathColumn, ColumnCount };

    /// The session must outlive it.
    explicit PathsModel(const Session& session);

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

    /// The index of the file in the row.
    std::size_t fileOf(int row) const;
    /// The row of a file; negative where it is not shown.
    int rowOf(std::size_t file) const;

    std::string path(int row) const;
    /// Null where there is no reading.
    const PathRead* read(int row) const;
    /// How the path is read, or why not, in lines as --explain prints them; empty where there is no
    /// reading.
    std::string explanation(int row) const;
    /// The index of its case, once that is known.
    std::optional<std::size_t> caseOf(int row) const;
    /// The row of auxiliary files that selects it, if one does.
    std::optional<std::size_t> auxOf(int row) const;

private:
    void takeFiles();
    void takeShown();
    void takeReading();

    const Session& session_;
    int rows_ = 0;
    std::shared_ptr<const Reading> reading_;
    mutable std::unique_ptr<PathReader> reader_;
    mutable QCache<std::size_t, PathRead> reads_;
};

} // namespace casetable

#endif
