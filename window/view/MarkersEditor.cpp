#include "window/view/MarkersEditor.h"

#include <QComboBox>
#include <QHeaderView>

#include "window/model/Session.h"
#include "window/model/Text.h"
#include "window/view/Look.h"
#include "window/view/RowTable.h"

namespace casetable {

namespace {

enum Column { MarkerColumn, TypeColumn };

} // namespace

MarkersEditor::MarkersEditor(Session& session)
    : session_(session), table_(new RowTable({tr("Marker"), tr("Type of what stands behind it")}))
{
    table_->setAccessibleName(tr("Markers"));
    table_->horizontalHeader()->setStretchLastSection(true);
    table_->setColumnWidth(MarkerColumn, em(font(), 20));
    table_->layOutIn(
        *this,
        tr("Markers read the paths in place of the templates, which stay where they are. A marker "
           "is the text in front of a value, such as “Mach” in “Mach0.8”. Each is looked "
           "for behind the one before. Del removes, Alt+Up and Alt+Down move."));
    connect(table_, &QTableWidget::cellChanged, this, &MarkersEditor::takeText);
    connect(table_, &RowTable::rowRemoved, this, [this](int row) {
        Setup setup = session_.setup();
        setup.markers.erase(setup.markers.begin() + row);
        session_.change(setup);
    });
    connect(table_, &RowTable::rowMoved, this, [this](int from, int to) {
        Setup setup = session_.setup();
        moveRow(setup.markers, from, to);
        session_.change(setup);
        table_->setCurrentCell(to, MarkerColumn);
    });
    connect(&session, &Session::setupChanged, this, &MarkersEditor::takeSetup);
    takeSetup();
}

void MarkersEditor::takeText(int row, int column)
{
    if (column != MarkerColumn)
        return;
    Setup setup = session_.setup();
    const auto at = static_cast<std::size_t>(row);
    const std::string text = bytesOf(table_->item(row, column)->text());
    if (at == setup.markers.size() && text.empty())
        return;
    if (at == setup.markers.size())
        setup.markers.emplace_back();
    setup.markers[at].text = text;
    setup.by = Setup::By::Markers;
    session_.change(setup);
}

void MarkersEditor::takeType(int row, bool isNumber)
{
    Setup setup = session_.setup();
    setup.markers[static_cast<std::size_t>(row)].isNumber = isNumber;
    session_.change(setup);
}

void MarkersEditor::takeSetup()
{
    const std::vector<Setup::Marker>& markers = session_.setup().markers;
    const QSignalBlocker blocker(table_);
    table_->setRowCount(static_cast<int>(markers.size()) + 1);
    for (int row = 0; row < table_->rowCount(); ++row) {
        const bool isRow = row < table_->filledRows();
        const Setup::Marker marker =
            isRow ? markers[static_cast<std::size_t>(row)] : Setup::Marker();
        QTableWidgetItem& item = table_->itemAt(row, MarkerColumn);
        if (!table_->isEdited(row, MarkerColumn)) {
            item.setText(editable(marker.text));
            item.setFont(pathFont());
            item.setForeground(isRow ? columnColour(static_cast<std::size_t>(row), palette())
                                     : palette().color(QPalette::Text));
        }
        table_->itemAt(row, TypeColumn)
            .setFlags(isRow ? Qt::ItemIsEnabled | Qt::ItemIsSelectable : Qt::NoItemFlags);
        auto* combo = qobject_cast<QComboBox*>(table_->cellWidget(row, TypeColumn));
        if (!isRow) {
            table_->removeCellWidget(row, TypeColumn);
            continue;
        }
        if (combo == nullptr) {
            combo = new QComboBox;
            combo->addItems({tr("Text"), tr("Number")});
            combo->setFrame(false);
            combo->setAccessibleName(tr("Type"));
            connect(combo, qOverload<int>(&QComboBox::activated), this,
                    [this, row](int type) { takeType(row, type == 1); });
            table_->setCellWidget(row, TypeColumn, combo);
        }
        combo->setCurrentIndex(marker.isNumber ? 1 : 0);
    }
}

} // namespace casetable
