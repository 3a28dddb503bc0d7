#include "window/view/SuggestionsDialog.h"

#include <QDialogButtonBox>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

#include "window/model/Session.h"
#include "window/model/Text.h"
#include "window/view/Look.h"

namespace casetable {

SuggestionsDialog::SuggestionsDialog(Session& session, QWidget* parent)
    : QDialog(parent), session_(session), head_(new QLabel(tr("Looking at the paths…"))),
      list_(new QTreeWidget),
      buttons_(new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel))
{
    setWindowTitle(tr("Suggested templates"));
    setAttribute(Qt::WA_DeleteOnClose);
    head_->setWordWrap(true);
    list_->setHeaderLabels({tr("Template, and its columns"), tr("Files"), tr("Cases, values")});
    list_->setAccessibleName(tr("Suggested templates"));
    list_->setUniformRowHeights(true);
    list_->header()->setStretchLastSection(false);
    list_->header()->setSectionResizeMode(0, QHeaderView::Stretch);
    buttons_->button(QDialogButtonBox::Ok)->setText(tr("Take these"));
    buttons_->button(QDialogButtonBox::Ok)->setEnabled(false);
    auto* const layout = new QVBoxLayout(this);
    layout->addWidget(head_);
    layout->addWidget(list_, 1);
    layout->addWidget(buttons_);
    connect(buttons_, &QDialogButtonBox::accepted, this, &SuggestionsDialog::take);
    connect(buttons_, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(&session, &Session::suggested, this, &SuggestionsDialog::display);
    setModal(true);
    resize(QSize(em(font(), 58), em(font(), 22)).boundedTo(roomOnScreen(font())));
    session.suggest();
}

void SuggestionsDialog::display(const std::vector<Suggestion>& suggestions)
{
    suggestions_ = suggestions;
    list_->clear();
    head_->setText(suggestions.empty()
                       ? tr("No part varies in a regular way in the names of these files. Select a "
                            "value in a path and press Enter to make a template.")
                       : tr("Each template is shown with what it would give. Those that are "
                            "checked take the place of the present ones. To rename a column later, "
                            "select a value of it in a path and press Enter."));
    std::vector<std::string> names = session_.columnNames();
    for (const Suggestion& suggestion : suggestions) {
        auto* const item = new QTreeWidgetItem(
            list_, {shown(suggestion.text),
                    QString("%1 of %2").arg(suggestion.fileCount).arg(session_.files().count()),
                    QString::number(suggestion.caseCount)});
        item->setFont(0, pathFont());
        item->setCheckState(0, Qt::Checked);
        item->setToolTip(0, shown(suggestion.text));
        for (const SuggestedColumn& column : suggestion.columns) {
            QStringList values;
            for (const std::string& value : column.sample)
                values.push_back(value.empty() ? "''" : shown(value));
            if (column.sample.size() < column.valueCount)
                values.push_back(QString(QChar(0x2026)));
            auto* const row = new QTreeWidgetItem(
                item, {shown(column.name) + (column.isNumber ? tr(" (number): ") : ": ") +
                           values.join(", "),
                       QString(), QString::number(column.valueCount)});
            row->setForeground(0, columnColour(columnIndex(names, column.name), palette()));
        }
        for (int row = 0; row <= item->childCount(); ++row) {
            QTreeWidgetItem* const each = row == 0 ? item : item->child(row - 1);
            each->setTextAlignment(1, Qt::AlignRight | Qt::AlignVCenter);
            each->setTextAlignment(2, Qt::AlignRight | Qt::AlignVCenter);
        }
        item->setExpanded(true);
    }
    list_->header()->resizeSections(QHeaderView::ResizeToContents);
    list_->setCurrentItem(list_->topLevelItem(0));
    buttons_->button(QDialogButtonBox::Ok)->setEnabled(!suggestions.empty());
}

void SuggestionsDialog::take()
{
    Setup setup = session_.setup();
    setup.by = Setup::By::Templates;
    setup.templates.clear();
    for (std::size_t i = 0; i < suggestions_.size(); ++i) {
        if (list_->topLevelItem(static_cast<int>(i))->checkState(0) == Qt::Checked)
            setup.templates.push_back(suggestions_[i].text);
    }
    accept();
    session_.change(setup);
}

} // namespace casetable
