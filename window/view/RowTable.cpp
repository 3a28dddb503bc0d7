#include "window/view/RowTable.h"

#include <algorithm>

#include <QDropEvent>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>

#include "window/view/Look.h"

namespace casetable {

RowTable::RowTable(const QStringList& header) : QTableWidget(1, header.size())
{
    setHorizontalHeaderLabels(header);
    makeRoomy(*this);
    makeRoomy(*horizontalHeader());
    horizontalHeader()->setHighlightSections(false);
    horizontalHeader()->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    verticalHeader()->setDefaultSectionSize(em(font(), 1.7));
    verticalHeader()->hide();
    setSelectionBehavior(SelectRows);
    setSelectionMode(SingleSelection);
    setDragDropMode(InternalMove);
    setDragDropOverwriteMode(false);
    setTabKeyNavigation(false);
    setEditTriggers(DoubleClicked | EditKeyPressed | AnyKeyPressed);
    setShowGrid(false);
    setAlternatingRowColors(true);
}

QTableWidgetItem& RowTable::itemAt(int row, int column)
{
    if (item(row, column) == nullptr)
        setItem(row, column, new QTableWidgetItem);
    return *item(row, column);
}

bool RowTable::isEdited(int row, int column) const
{
    return state() == EditingState && currentRow() == row && currentColumn() == column;
}

void RowTable::layOutIn(QWidget& editor, const QString& hint)
{
    auto* const label = new QLabel(hint);
    label->setWordWrap(true);
    setQuiet(*label);
    label->setAlignment(Qt::AlignTop);
    label->setContentsMargins(em(font(), 0.5), 0, 0, 0);
    auto* const layout = new QHBoxLayout(&editor);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(this, 3);
    layout->addWidget(label, 2);
    editor.setFocusProxy(this);
}

void RowTable::keyPressEvent(QKeyEvent* event)
{
    const int row = currentRow();
    const bool isRow = row >= 0 && row < filledRows();
    const bool isAlt = event->modifiers() & Qt::AltModifier;
    if (isRow && event->key() == Qt::Key_Delete)
        Q_EMIT rowRemoved(row);
    else if (isRow && isAlt && event->key() == Qt::Key_Up && row > 0)
        Q_EMIT rowMoved(row, row - 1);
    else if (isRow && isAlt && event->key() == Qt::Key_Down && row + 1 < filledRows())
        Q_EMIT rowMoved(row, row + 1);
    else
        QTableWidget::keyPressEvent(event);
}

// The rows are made anew by whoever owns them, so that nothing is moved here.
void RowTable::dropEvent(QDropEvent* event)
{
    event->setDropAction(Qt::IgnoreAction);
    event->accept();
    const QModelIndex index = indexAt(event->pos());
    int to = index.isValid() ? index.row() : filledRows();
    if (index.isValid() && event->pos().y() > visualRect(index).center().y())
        ++to;
    const int from = currentRow();
    to = std::min(to, filledRows());
    if (to > from)
        --to;
    if (from >= 0 && from < filledRows() && to != from)
        Q_EMIT rowMoved(from, to);
}

} // namespace casetable
