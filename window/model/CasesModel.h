#ifndef WINDOW_MODEL_CASESMODEL_H
#define WINDOW_MODEL_CASESMODEL_H

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include <QAbstractTableModel>
#include <QCache>

#include "casetable/importing/Report.h"
#include "window/model/Session.h"

namespace casetable {

/// The table of cases of a session: the columns of caseReport(), in the order of Setup::sort.
/// Nothing is copied for a row, but for those that were seen last.
class CasesModel : public QAbstractTableModel {
    Q_OBJECT

public:
    /// The session must outlive it.
    explicit CasesModel(const Session& session);

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

    std::size_t caseOf(int row) const;
    /// The row of a case, below rowCount().
    int rowOf(std::size_t caseIndex) const;

    const std::vector<Column>& columns() const { return columns_; }

    /// The text of a cell, as it is written.
    std::string cell(int row, int column) const;

private:
    void take();

    const Session& session_;
    std::shared_ptr<const Matching> matching_;
    std::vector<Column> columns_;
    std::vector<std::string> header_;
    mutable QCache<std::size_t, std::vector<std::string>> rows_; // Of cases with auxiliary files.
};

} // namespace casetable

#endif
