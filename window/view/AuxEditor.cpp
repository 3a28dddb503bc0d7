#include "window/view/AuxEditor.h"

#include <QHeaderView>

#include "window/model/Session.h"
#include "window/model/Text.h"
#include "window/view/Look.h"
#include "window/view/RowTable.h"

namespace casetable {

namespace {

enum Column { WildcardColumn, TagColumn, FilesColumn };

} // namespace

AuxEditor::AuxEditor(Session& session)
    : session_(session), table_(new RowTable({tr("Wildcard"), tr("Tag"), tr("Files")}))
{
    table_->setAccessibleName(tr("Auxiliary files"));
    table_->horizontalHeader()->setStretchLastSection(true);
    table_->setColumnWidth(WildcardColumn, em(font(), 18));
    table_->setColumnWidth(TagColumn, em(font(), 12));
    table_->layOutIn(*this, tr("Of each case, the files whose path ends as a wildcard says, "
                               "such as “*.log”, are collected under its tag."));
    connect(table_, &QTableWidget::cellChanged, this, &AuxEditor::takeText);
    connect(table_, &RowTable::rowRemoved, this, [this](int row) {
        Setup setup = session_.setup();
        setup.auxRows.erase(setup.auxRows.begin() + row);
        session_.change(setup);
    });
    connect(table_, &RowTable::rowMoved, this, [this](int from, int to) {
        Setup setup = session_.setup();
        moveRow(setup.auxRows, from, to);
        session_.change(setup);
        table_->setCurrentCell(to, WildcardColumn);
    });
    connect(&session, &Session::setupChanged, this, &AuxEditor::takeSetup);
    connect(&session, &Session::matchingChanged, this, &AuxEditor::takeResults);
    takeSetup();
}

void AuxEditor::takeText(int row, int column)
{
    if (column == FilesColumn)
        return;
    Setup setup = session_.setup();
    const auto at = static_cast<std::size_t>(row);
    const std::string text = bytesOf(table_->item(row, column)->text());
    if (at == setup.auxRows.size() && text.empty())
        return;
    if (at == setup.auxRows.size())
        setup.auxRows.emplace_back();
    (column == TagColumn ? setup.auxRows[at].tag : setup.auxRows[at].wildcard) = text;
    session_.change(setup);
}

void AuxEditor::takeSetup()
{
    const std::vector<Setup::AuxRow>& rows = session_.setup().auxRows;
    {
        const QSignalBlocker blocker(table_);
        table_->setRowCount(static_cast<int>(rows.size()) + 1);
        for (int row = 0; row < table_->rowCount(); ++row) {
            const bool isRow = row < table_->filledRows();
            const Setup::AuxRow values =
                isRow ? rows[static_cast<std::size_t>(row)] : Setup::AuxRow();
            for (const int column : {WildcardColumn, TagColumn}) {
                QTableWidgetItem& item = table_->itemAt(row, column);
                if (!table_->isEdited(row, column))
                    item.setText(editable(column == TagColumn ? values.tag : values.wildcard));
            }
            table_->itemAt(row, FilesColumn).setText({});
            table_->itemAt(row, FilesColumn).setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable);
        }
    }
    takeResults();
}

void AuxEditor::takeResults()
{
    const auto& matching = session_.matching();
    const auto& rows = session_.setup().auxRows;
    const QSignalBlocker blocker(table_);
    for (int row = 0; row < table_->filledRows(); ++row) {
        const auto at = static_cast<std::size_t>(row);
        const bool isTyped = !rows[at].wildcard.empty() || !rows[at].tag.empty();
        const bool isKnown = isTyped && matching && !session_.isMatching() &&
                             at < matching->aux.size() && matching->import;
        const AuxResult result = isKnown ? matching->aux[at] : AuxResult();
        QTableWidgetItem* const files = table_->item(row, FilesColumn);
        files->setText(!isKnown               ? QString()
                       : result.error.empty() ? QString::number(result.fileCount)
                                              : QString(QChar(0x2717)) + ' ' + shown(result.error));
        files->setForeground(result.error.empty() ? quietColour(palette())
                                                  : errorColour(palette()));
        for (const int column : {WildcardColumn, TagColumn}) {
            const bool isWrong =
                !result.error.empty() && (column == TagColumn) == result.isTagWrong;
            if (table_->isEdited(row, column))
                continue;
            QTableWidgetItem* const item = table_->item(row, column);
            item->setFont(column == WildcardColumn ? pathFont() : font());
            item->setForeground(isWrong ? QBrush(errorColour(palette())) : QBrush());
            item->setToolTip(isWrong ? shown(result.error) : QString());
        }
    }
}

} // namespace casetable
