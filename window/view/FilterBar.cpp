#include "window/view/FilterBar.h"

#include <algorithm>
#include <string_view>
#include <vector>

#include <QComboBox>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLineEdit>
#include <QToolButton>

#include "casetable/importing/CellOrder.h"
#include "casetable/importing/Report.h"
#include "window/model/Session.h"
#include "window/model/Text.h"
#include "window/view/Look.h"

namespace casetable {

namespace {

// More cannot be chosen from, and looking for them takes time.
const std::size_t mostListed = 500;
const std::size_t mostCases = 50'000;

// The values of a column in their order.
std::vector<std::string> valuesOf(const CaseTable& table, std::size_t column)
{
    std::vector<std::string_view> cells;
    for (std::size_t i = 0; i < std::min(table.caseCount(), mostCases); ++i)
        cells.emplace_back(table.cell(i, column));
    const CellRanks ranks = rankCells(caseColumns(table.patterns, {})[column + 1], cells);
    std::vector<std::string> values;
    for (std::size_t i = 0; i < std::min(ranks.firsts.size(), mostListed); ++i)
        values.emplace_back(cells[ranks.firsts[i]]);
    return values;
}

} // namespace

FilterBar::FilterBar(Session& session)
    : session_(session), text_(new QLineEdit), which_(new QComboBox), column_(new QComboBox),
      value_(new QComboBox), cases_(new QToolButton)
{
    text_->setPlaceholderText(tr("Filter paths"));
    text_->setClearButtonEnabled(true);
    text_->setAccessibleName(tr("Filter paths by text"));
    text_->setToolTip(tr("Small letters stand for capitals too; with a capital, case counts"));
    which_->addItems({tr("All files"), tr("Matched"), tr("Unmatched")});
    which_->setAccessibleName(tr("Show matched or unmatched files"));
    column_->setAccessibleName(tr("Filter by the values of a column"));
    column_->setToolTip(tr("Show the files with one value of a column"));
    column_->addItem(tr("Any value"));
    value_->setAccessibleName(tr("The value to show"));
    value_->setVisible(false);
    for (QComboBox* const box : {which_, column_, value_})
        box->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    value_->setMaximumWidth(em(font(), 12));
    cases_->setVisible(false);
    cases_->setToolTip(tr("Show the files of all cases again"));
    auto* const layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(text_, 1);
    layout->addWidget(which_);
    layout->addWidget(column_);
    layout->addWidget(value_);
    layout->addWidget(cases_);
    connect(text_, &QLineEdit::textChanged, this, &FilterBar::filter);
    connect(which_, qOverload<int>(&QComboBox::activated), this, &FilterBar::filter);
    connect(column_, qOverload<int>(&QComboBox::activated), this, &FilterBar::takeColumn);
    connect(value_, qOverload<int>(&QComboBox::activated), this, &FilterBar::filter);
    connect(cases_, &QToolButton::clicked, this, &FilterBar::casesDropped);
    connect(&session, &Session::matchingChanged, this, &FilterBar::takeTable);
    connect(&session, &Session::shownChanged, this, &FilterBar::takeCases);
}

void FilterBar::keyPressEvent(QKeyEvent* event)
{
    if (event->key() != Qt::Key_Escape)
        return QWidget::keyPressEvent(event);
    text_->clear();
    which_->setCurrentIndex(0);
    column_->setCurrentIndex(0);
    takeColumn();
    Q_EMIT casesDropped();
}

void FilterBar::takeTable()
{
    if (session_.isMatching())
        return;
    const auto& matching = session_.matching();
    const CaseTable* const table = matching ? matching->table() : nullptr;
    QStringList names = {tr("Any value")};
    if (table != nullptr) {
        const std::vector<std::string> header = uniqueHeader(caseColumns(table->patterns, {}));
        for (std::size_t i = 0; i < table->patterns.size(); ++i)
            names.push_back(shown(header[i + 1]));
    }
    QStringList before;
    for (int i = 0; i < column_->count(); ++i)
        before.push_back(column_->itemText(i));
    if (before == names && column_->currentIndex() <= 0)
        return;
    const int place = std::max(0, names.indexOf(column_->currentText()));
    column_->clear();
    column_->addItems(names);
    column_->setCurrentIndex(place);
    takeColumn();
}

// The value that was chosen stays chosen while it is there.
void FilterBar::takeColumn()
{
    const QString before = value_->currentText();
    const int column = column_->currentIndex() - 1;
    const auto& matching = session_.matching();
    value_->clear();
    value_->setVisible(column >= 0);
    if (column >= 0 && matching && matching->table() != nullptr) {
        for (const std::string& value :
             valuesOf(*matching->table(), static_cast<std::size_t>(column)))
            value_->addItem(shown(value), QByteArray::fromStdString(value));
        value_->setCurrentIndex(std::max(0, value_->findText(before)));
    }
    filter();
}

void FilterBar::takeCases()
{
    const std::size_t count = session_.filter().cases.size();
    cases_->setVisible(count > 0);
    cases_->setText(count == 1 ? tr("1 case  ✕") : tr("%1 cases  ✕").arg(count));
}

void FilterBar::filter()
{
    PathFilter filter;
    filter.cases = session_.filter().cases;
    filter.text = bytesOf(text_->text());
    filter.which = static_cast<PathFilter::Which>(which_->currentIndex());
    if (column_->currentIndex() > 0 && value_->currentIndex() >= 0)
        filter.value = PathFilter::Value{static_cast<std::size_t>(column_->currentIndex() - 1),
                                         value_->currentData().toByteArray().toStdString()};
    session_.filter(filter);
}

} // namespace casetable
