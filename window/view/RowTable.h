#ifndef WINDOW_VIEW_ROWTABLE_H
#define WINDOW_VIEW_ROWTABLE_H

#include <cstddef>
#include <vector>

#include <QTableWidget>

namespace casetable {

/// A small table of rows that the user types, adds, removes and puts in order: Del removes the
/// current row, Alt+Up and Alt+Down move it, and so does dragging. Below the rows one stands empty,
/// and becomes a row when something is typed there.
class RowTable : public QTableWidget {
    Q_OBJECT

public:
    explicit RowTable(const QStringList& header);

    /// The rows without the empty one.
    int filledRows() const { return rowCount() - 1; }

    /// The item of a cell, made where there is none.
    QTableWidgetItem& itemAt(int row, int column);

    /// Whether somebody types in the cell: what is set there now would take the place of that.
    bool isEdited(int row, int column) const;

    /// Puts the table into an editor, which passes its focus on to it, beside a hint.
    void layOutIn(QWidget& editor, const QString& hint);

Q_SIGNALS:
    void rowRemoved(int row);
    void rowMoved(int from, int to);

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void dropEvent(QDropEvent* event) override;
};

/// Moves the row at the index `from` to the index `to`.
template <class Row> void moveRow(std::vector<Row>& rows, int from, int to)
{
    const Row row = rows[static_cast<std::size_t>(from)];
    rows.erase(rows.begin() + from);
    rows.insert(rows.begin() + to, row);
}

} // namespace casetable

#endif
