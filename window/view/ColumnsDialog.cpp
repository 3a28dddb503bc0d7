#include "window/view/ColumnsDialog.h"

#include <algorithm>

#include <QDialogButtonBox>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

namespace casetable {

ColumnsDialog::ColumnsDialog(const QString& question, const QStringList& names,
                             const std::vector<std::size_t>& chosen, QWidget* parent)
    : QDialog(parent), list_(new QListWidget),
      buttons_(new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel))
{
    setWindowTitle(tr("Columns"));
    auto* const label = new QLabel(question);
    label->setWordWrap(true);
    list_->setAccessibleName(tr("Columns"));
    for (int i = 0; i < names.size(); ++i) {
        auto* const item = new QListWidgetItem(names[i], list_);
        const bool isChosen = std::count(chosen.begin(), chosen.end(), i) > 0;
        item->setCheckState(isChosen ? Qt::Checked : Qt::Unchecked);
    }
    list_->setCurrentRow(0);
    auto* const layout = new QVBoxLayout(this);
    layout->addWidget(label);
    layout->addWidget(list_, 1);
    layout->addWidget(buttons_);
    connect(buttons_, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons_, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(list_, &QListWidget::itemChanged, this, &ColumnsDialog::takeChoice);
    takeChoice();
}

std::vector<std::size_t> ColumnsDialog::chosen() const
{
    std::vector<std::size_t> chosen;
    for (int i = 0; i < list_->count(); ++i) {
        if (list_->item(i)->checkState() == Qt::Checked)
            chosen.push_back(static_cast<std::size_t>(i));
    }
    return chosen;
}

void ColumnsDialog::takeChoice()
{
    buttons_->button(QDialogButtonBox::Ok)->setEnabled(chosen().size() > 1);
}

} // namespace casetable
