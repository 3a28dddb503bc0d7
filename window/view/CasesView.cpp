#include "window/view/CasesView.h"

#include <algorithm>

#include <QHeaderView>
#include <QKeyEvent>
#include <QPainter>

#include "casetable/system/ExitCode.h"
#include "window/model/Text.h"
#include "window/view/Look.h"

namespace casetable {

namespace {

// Of so many rows the widths of columns are taken.
const int measuredRows = 100;

// So many cases stay selected in another order.
const std::size_t mostKept = 1000;

} // namespace

// Heads of values have the line of their column.
class CasesView::Header : public QHeaderView {
public:
    Header(const CasesModel& model, const Session& session)
        : QHeaderView(Qt::Horizontal), model_(model), session_(session)
    {
        setSectionsClickable(true);
        setHighlightSections(false);
        setSortIndicatorShown(false);
    }

    // The key by which the table is sorted first, if it is by this column.
    const SortKey* keyOf(int section) const
    {
        const auto& keys = session_.sortKeys();
        const bool is = !keys.empty() && keys.front().column == static_cast<std::size_t>(section);
        return is ? &keys.front() : nullptr;
    }

protected:
    void paintSection(QPainter* painter, const QRect& rect, int section) const override
    {
        painter->save();
        QHeaderView::paintSection(painter, rect, section);
        painter->restore();
        const auto& columns = model_.columns();
        const auto at = static_cast<std::size_t>(section);
        if (at >= columns.size())
            return;
        painter->save();
        if (columns[at].isValue()) {
            const int height = std::max(2, em(font(), 0.12));
            painter->setPen(columnPen(at - 1, palette(), height));
            const int y = rect.bottom() - height / 2 - 1;
            painter->drawLine(rect.left() + 3, y, rect.right() - 3, y);
        }
        if (const SortKey* const key = keyOf(section)) {
            const qreal size = em(font(), 0.26);
            const bool isLeft = columns[at].isNumber();
            const QPointF middle(isLeft ? rect.left() + 2.2 * size : rect.right() - 2.2 * size,
                                 rect.center().y());
            const qreal up = key->isDescending ? 1 : -1;
            painter->setRenderHint(QPainter::Antialiasing);
            painter->setPen(Qt::NoPen);
            painter->setBrush(palette().color(QPalette::ButtonText));
            painter->drawPolygon(QPolygonF({middle + QPointF(0, up * size * 0.7),
                                            middle + QPointF(-size, -up * size * 0.7),
                                            middle + QPointF(size, -up * size * 0.7)}));
        }
        painter->restore();
    }

private:
    const CasesModel& model_;
    const Session& session_;
};

CasesView::CasesView(Session& session, CasesModel& model) : session_(session), model_(model)
{
    auto* const header = new Header(model, session);
    setHorizontalHeader(header);
    setModel(&model);
    ignoreSelectionInHeads(*this);
    setSelectionBehavior(SelectRows);
    setSelectionMode(ExtendedSelection);
    setAlternatingRowColors(true);
    setShowGrid(false);
    setWordWrap(false);
    setTabKeyNavigation(false);
    setHorizontalScrollMode(ScrollPerPixel);
    setAccessibleName(tr("Cases"));
    setAccessibleDescription(tr("The cases that are selected show their files"));
    makeRoomy(*this);
    makeRoomy(*header);
    verticalHeader()->hide();
    verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    verticalHeader()->setMinimumSectionSize(1);
    verticalHeader()->setDefaultSectionSize(em(font(), 1.5));
    connect(header, &QHeaderView::sectionClicked, this, &CasesView::sortBy);
    connect(&model, &QAbstractItemModel::modelReset, this, &CasesView::fitColumns);
    connect(&model, &QAbstractItemModel::modelReset, this, &CasesView::keepChosen);
    fitColumns();
}

// Widths that the user has set stay while the columns do.
void CasesView::fitColumns()
{
    std::vector<QString> header;
    for (int column = 0; column < model_.columnCount(); ++column)
        header.push_back(model_.headerData(column, Qt::Horizontal, Qt::DisplayRole).toString());
    if (header == header_)
        return;
    header_ = header;
    const QFontMetrics metrics(font());
    const int rows = std::min(model_.rowCount(), measuredRows);
    for (int column = 0; column < model_.columnCount(); ++column) {
        int width =
            metrics.horizontalAdvance(header[static_cast<std::size_t>(column)]) + em(font(), 2.2);
        for (int row = 0; row < rows; ++row)
            width = std::max(width, metrics.horizontalAdvance(shown(model_.cell(row, column))) +
                                        em(font(), 1.4));
        setColumnWidth(column, std::min(width, em(font(), 24)));
    }
}

// In another order they are the same cases.
void CasesView::keepChosen()
{
    const std::vector<std::uint32_t>& chosen = session_.filter().cases;
    if (!chosen.empty() && chosen.size() <= mostKept)
        follow(chosen);
}

void CasesView::paintEvent(QPaintEvent* event)
{
    QTableView::paintEvent(event);
    if (model_.rowCount() > 0)
        return;
    QString text;
    const auto& matching = session_.matching();
    if (session_.isWalking() || session_.isMatching())
        text = tr("Reading paths…");
    else if (matching && !matching->failure.empty())
        text = shown(matching->failure);
    else if (matching)
        text = session_.setup().by == Setup::By::Markers
                   ? tr("No path has these markers.\nEach path says why.")
                   : tr("No path fits the templates.\nEach says why; Suggest… finds others.");
    else if (session_.problem())
        text = tr("The templates cannot be read yet.\nBelow them stands why.");
    else if (session_.files().count() > 0)
        text = tr("The cases stand here once paths are read.\n"
                  "Select a value in a path and press Enter to name it,\nor press Suggest.");
    QPainter painter(viewport());
    painter.setPen(quietColour(palette()));
    const int margin = em(font(), 2);
    painter.drawText(viewport()->rect().adjusted(margin, margin, -margin, -margin),
                     Qt::AlignCenter | Qt::TextWordWrap, text);
}

void CasesView::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Escape)
        return clearSelection();
    if ((event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) &&
        currentIndex().isValid())
        return sortBy(currentIndex().column());
    QTableView::keyPressEvent(event);
}

void CasesView::sortBy(int section)
{
    // The columns that are shown may no longer be those of the reading.
    if (session_.isMatching() || section < 0 || section >= model_.columnCount())
        return;
    const SortKey* const now = static_cast<Header*>(horizontalHeader())->keyOf(section);
    Setup setup = session_.setup();
    setup.sort.clear();
    try {
        if (now == nullptr || !now->isDescending)
            setup.sort = {session_.sortValue({static_cast<std::size_t>(section), now != nullptr})};
    } catch (const Failure& failure) {
        Q_EMIT session_.failed(shown(failure.what()));
        return;
    }
    session_.change(setup);
}

std::vector<std::uint32_t> CasesView::selectedCases() const
{
    std::vector<std::uint32_t> cases;
    for (const QItemSelectionRange& range : selectionModel()->selection()) {
        if (range.height() == model_.rowCount())
            return {};
        for (int row = range.top(); row <= range.bottom(); ++row)
            cases.push_back(static_cast<std::uint32_t>(model_.caseOf(row)));
    }
    std::sort(cases.begin(), cases.end());
    cases.erase(std::unique(cases.begin(), cases.end()), cases.end());
    return cases;
}

void CasesView::follow(const std::vector<std::uint32_t>& cases)
{
    isFollowing_ = true;
    QItemSelection selection;
    for (const std::uint32_t each : cases) {
        const int row = model_.rowOf(each);
        if (row < model_.rowCount())
            selection.select(model_.index(row, 0), model_.index(row, model_.columnCount() - 1));
    }
    selectionModel()->select(selection, QItemSelectionModel::ClearAndSelect);
    if (!selection.isEmpty())
        scrollTo(selection.front().topLeft());
    isFollowing_ = false;
}

void CasesView::selectionChanged(const QItemSelection& now, const QItemSelection& before)
{
    QTableView::selectionChanged(now, before);
    if (!isFollowing_)
        Q_EMIT casesChosen();
}

std::vector<std::uint32_t> CasesView::casesToCopy() const
{
    std::vector<bool> isWanted(static_cast<std::size_t>(model_.rowCount()),
                               session_.filter().cases.empty());
    for (const std::uint32_t each : session_.filter().cases)
        isWanted[each] = true;
    std::vector<std::uint32_t> cases;
    for (int row = 0; row < model_.rowCount(); ++row) {
        const std::size_t each = model_.caseOf(row);
        if (isWanted[each])
            cases.push_back(static_cast<std::uint32_t>(each));
    }
    return cases;
}

} // namespace casetable
