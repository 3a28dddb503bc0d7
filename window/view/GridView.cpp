#include "window/view/GridView.h"

#include <algorithm>
#include <cmath>

#include <QComboBox>
#include <QHBoxLayout>
#include <QHelpEvent>
#include <QLabel>
#include <QMouseEvent>
#include <QPainter>
#include <QPushButton>
#include <QScrollArea>
#include <QToolTip>
#include <QVBoxLayout>

#include "window/model/Session.h"
#include "window/model/Text.h"
#include "window/view/Look.h"

namespace casetable {

namespace {

// The more, the stronger; a field with one is seen well beside a hole.
QColor fieldColour(std::size_t count, std::size_t most, const QPalette& palette)
{
    const double part =
        most <= 1 ? 0.55
                  : 0.25 + 0.75 * std::sqrt(static_cast<double>(count) / static_cast<double>(most));
    const QColor full = columnColour(0, palette);
    const QColor& ground = palette.color(QPalette::Base);
    const auto mixed = [part](int to, int from) {
        return static_cast<int>(part * to + (1 - part) * from);
    };
    return {mixed(full.red(), ground.red()), mixed(full.green(), ground.green()),
            mixed(full.blue(), ground.blue())};
}

QString counted(std::size_t count, const QString& one, const QString& many)
{
    return QString::number(count) + ' ' + (count == 1 ? one : many);
}

int widest(const std::vector<std::string>& texts, const QFontMetrics& metrics)
{
    int width = 0;
    for (const std::string& text : texts)
        width = std::max(width, metrics.horizontalAdvance(shown(text)));
    return width;
}

} // namespace

void GridPicture::setGrid(Grid grid)
{
    grid_ = std::move(grid);
    current_.reset();
    setMouseTracking(true);
    setFocusPolicy(Qt::StrongFocus);
    setAccessibleName(
        tr("Grid of %1 by %2 values").arg(grid_.rows.size()).arg(grid_.columns.size()));
    layOut();
}

void GridPicture::count(Counted counted)
{
    counted_ = counted;
    layOut();
}

void GridPicture::fill(const QSize& room)
{
    room_ = room;
    layOut();
}

void GridPicture::layOut()
{
    measure();
    updateGeometry();
    resize(sizeHint());
    update();
}

// Heads that are wider than the fields can be are turned.
void GridPicture::measure()
{
    const QFontMetrics metrics(font());
    const int limit = em(font(), 12);
    headWidth_ = std::min(widest(grid_.rows, metrics), limit) + em(font(), 0.8);
    const int headText = std::min(widest(grid_.columns, metrics), limit);
    const int countText = metrics.horizontalAdvance(
        QString::number(counted_ == Counted::Cases ? grid_.mostCases() : grid_.mostFiles()));
    const int narrow = std::max(em(font(), 1.6), countText + em(font(), 0.8));
    areHeadsTurned_ = headText + em(font(), 0.8) > 3 * narrow;
    fieldSize_ = QSize(areHeadsTurned_ ? narrow : std::max(narrow, headText + em(font(), 0.8)),
                       em(font(), 1.7));
    headHeight_ = areHeadsTurned_ ? headText + em(font(), 0.8) : em(font(), 1.6);
    if (grid_.fields.empty())
        return;
    const auto grown = [](int least, int room, std::size_t count, int most) {
        return std::max(least, std::min(room / static_cast<int>(count), most));
    };
    fieldSize_ = QSize(grown(fieldSize_.width(), room_.width() - headWidth_ - 2,
                             grid_.columns.size(), em(font(), 6)),
                       grown(fieldSize_.height(), room_.height() - headHeight_ - 2,
                             grid_.rows.size(), em(font(), 3)));
}

QSize GridPicture::sizeHint() const
{
    return {headWidth_ + static_cast<int>(grid_.columns.size()) * fieldSize_.width() + 2,
            headHeight_ + static_cast<int>(grid_.rows.size()) * fieldSize_.height() + 2};
}

QRect GridPicture::fieldRect(std::size_t row, std::size_t column) const
{
    return {headWidth_ + static_cast<int>(column) * fieldSize_.width(),
            headHeight_ + static_cast<int>(row) * fieldSize_.height(), fieldSize_.width() - 2,
            fieldSize_.height() - 2};
}

std::size_t GridPicture::countOf(const Grid::Field& field) const
{
    return counted_ == Counted::Cases ? field.cases.size() : field.fileCount;
}

void GridPicture::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QFontMetrics metrics(font());
    painter.setPen(columnColour(grid_.rowColumn, palette()));
    for (std::size_t row = 0; row < grid_.rows.size(); ++row) {
        const QRect field = fieldRect(row, 0);
        const int width = headWidth_ - em(font(), 0.4);
        painter.drawText(QRect(0, field.top(), width, field.height()),
                         Qt::AlignRight | Qt::AlignVCenter,
                         metrics.elidedText(shown(grid_.rows[row]), Qt::ElideMiddle, width));
    }
    painter.setPen(columnColour(grid_.columnColumn, palette()));
    for (std::size_t column = 0; column < grid_.columns.size(); ++column) {
        const QRect field = fieldRect(0, column);
        const int length = areHeadsTurned_ ? headHeight_ - em(font(), 0.8) : field.width();
        const QString head =
            metrics.elidedText(shown(grid_.columns[column]), Qt::ElideMiddle, length);
        painter.save();
        if (areHeadsTurned_) {
            painter.translate(field.center().x(), headHeight_ - em(font(), 0.4));
            painter.rotate(-90);
            painter.drawText(QRect(0, -fieldSize_.width() / 2, headHeight_, fieldSize_.width()),
                             Qt::AlignLeft | Qt::AlignVCenter, head);
        } else {
            painter.drawText(QRect(field.left(), 0, field.width(), headHeight_), Qt::AlignCenter,
                             head);
        }
        painter.restore();
    }
    const std::size_t most = counted_ == Counted::Cases ? grid_.mostCases() : grid_.mostFiles();
    for (std::size_t row = 0; row < grid_.rows.size(); ++row) {
        for (std::size_t column = 0; column < grid_.columns.size(); ++column) {
            const Grid::Field& field = grid_.field(row, column);
            const QRect rect = fieldRect(row, column);
            if (field.cases.empty()) {
                painter.fillRect(rect, palette().color(QPalette::AlternateBase));
                painter.fillRect(rect, QBrush(errorColour(palette()), Qt::BDiagPattern));
            } else {
                const QColor colour = fieldColour(countOf(field), most, palette());
                painter.fillRect(rect, colour);
                painter.setPen(colour.lightness() < 140 ? Qt::white : Qt::black);
                painter.drawText(rect, Qt::AlignCenter, QString::number(countOf(field)));
            }
            if (current_ && current_->row == row && current_->column == column) {
                painter.setPen(QPen(palette().color(QPalette::Text), 2));
                painter.setBrush(Qt::NoBrush);
                painter.drawRect(rect);
            }
        }
    }
}

std::optional<GridPicture::Place> GridPicture::placeAt(const QPoint& point) const
{
    if (point.x() < headWidth_ || point.y() < headHeight_)
        return std::nullopt;
    const auto column = static_cast<std::size_t>((point.x() - headWidth_) / fieldSize_.width());
    const auto row = static_cast<std::size_t>((point.y() - headHeight_) / fieldSize_.height());
    if (row >= grid_.rows.size() || column >= grid_.columns.size())
        return std::nullopt;
    return Place{row, column};
}

QString GridPicture::description(std::size_t row, std::size_t column) const
{
    const Grid::Field& field = grid_.field(row, column);
    return shown(grid_.rows[row]) + QString::fromUtf8(" × ") + shown(grid_.columns[column]) + ": " +
           (field.cases.empty() ? tr("no case")
                                : counted(field.cases.size(), tr("case"), tr("cases")) + ", " +
                                      counted(field.fileCount, tr("file"), tr("files")));
}

bool GridPicture::event(QEvent* event)
{
    if (event->type() == QEvent::ToolTip) {
        const auto* const help = static_cast<QHelpEvent*>(event);
        if (const auto place = placeAt(help->pos()))
            QToolTip::showText(help->globalPos(), description(place->row, place->column), this);
        else
            QToolTip::hideText();
        return true;
    }
    return QWidget::event(event);
}

void GridPicture::mouseMoveEvent(QMouseEvent* event)
{
    const auto place = placeAt(event->pos());
    Q_EMIT fieldPointed(place ? description(place->row, place->column) : QString());
}

void GridPicture::leaveEvent(QEvent* /*event*/)
{
    Q_EMIT fieldPointed({});
}

void GridPicture::mousePressEvent(QMouseEvent* event)
{
    if (const auto place = placeAt(event->pos())) {
        current_ = place;
        choose(*place);
    }
}

void GridPicture::choose(const Place& place)
{
    update();
    Q_EMIT fieldPointed(description(place.row, place.column));
    Q_EMIT fieldChosen(grid_.field(place.row, place.column).cases);
}

void GridPicture::keyPressEvent(QKeyEvent* event)
{
    if (grid_.fields.empty())
        return QWidget::keyPressEvent(event);
    Place place = current_.value_or(Place{0, 0});
    const int key = event->key();
    if (key == Qt::Key_Return || key == Qt::Key_Enter || key == Qt::Key_Space)
        return choose(place);
    if (key == Qt::Key_Left && place.column > 0)
        --place.column;
    else if (key == Qt::Key_Right && place.column + 1 < grid_.columns.size())
        ++place.column;
    else if (key == Qt::Key_Up && place.row > 0)
        --place.row;
    else if (key == Qt::Key_Down && place.row + 1 < grid_.rows.size())
        ++place.row;
    else if (current_)
        return QWidget::keyPressEvent(event);
    current_ = place;
    update();
    Q_EMIT fieldPointed(description(place.row, place.column));
}

GridView::GridView(Session& session)
    : session_(session), rows_(new QComboBox), columns_(new QComboBox), counted_(new QComboBox),
      save_(new QPushButton(tr("Save picture…"))), area_(new QScrollArea),
      picture_(new GridPicture), told_(new QLabel)
{
    rows_->setAccessibleName(tr("Column for the rows of the grid"));
    columns_->setAccessibleName(tr("Column for the columns of the grid"));
    counted_->setAccessibleName(tr("What is counted"));
    counted_->addItems({tr("cases"), tr("files")});
    for (QComboBox* const box : {rows_, columns_, counted_}) {
        box->setSizeAdjustPolicy(QComboBox::AdjustToContents);
        connect(box, qOverload<int>(&QComboBox::activated), this, &GridView::wantGrid);
    }
    area_->setWidget(picture_);
    area_->setBackgroundRole(QPalette::Base);
    area_->setFrameShape(QFrame::NoFrame);
    told_->setWordWrap(true);
    told_->setTextFormat(Qt::PlainText);
    auto* const choice = new QHBoxLayout;
    choice->addWidget(rows_);
    choice->addWidget(new QLabel(tr("by")));
    choice->addWidget(columns_);
    choice->addWidget(new QLabel(tr("counting")));
    choice->addWidget(counted_);
    choice->addStretch(1);
    choice->addWidget(save_);
    auto* const layout = new QVBoxLayout(this);
    layout->addLayout(choice);
    layout->addWidget(area_, 1);
    layout->addWidget(told_);
    connect(picture_, &GridPicture::fieldChosen, this, &GridView::casesChosen);
    connect(picture_, &GridPicture::fieldPointed, this, [this](const QString& description) {
        told_->setText(description.isEmpty() ? summary_ : description);
    });
    connect(save_, &QPushButton::clicked, this, &GridView::saveWanted);
    connect(&session, &Session::matchingChanged, this, &GridView::takeTable);
    connect(&session, &Session::gridMade, this, &GridView::takeGrid);
    takeTable();
}

// The columns that were chosen stay chosen while they are there.
void GridView::takeTable()
{
    if (session_.isMatching() || (matching_ != nullptr && matching_ == session_.matching()))
        return;
    matching_ = session_.matching();
    const CaseTable* const table = matching_ ? matching_->table() : nullptr;
    QStringList names;
    if (table != nullptr) {
        const std::vector<std::string> header = uniqueHeader(caseColumns(table->patterns, {}));
        for (std::size_t i = 0; i < table->patterns.size(); ++i)
            names.push_back(shown(header[i + 1]));
    }
    int fallback = 0;
    for (QComboBox* const box : {rows_, columns_}) {
        const QString before = box->currentText();
        box->clear();
        box->addItems(names);
        const int place = names.indexOf(before);
        box->setCurrentIndex(place >= 0 ? place : std::min(fallback, names.size() - 1));
        ++fallback;
    }
    if (rows_->currentIndex() == columns_->currentIndex() && names.size() > 1)
        columns_->setCurrentIndex(rows_->currentIndex() == 0 ? 1 : 0);
    wantGrid();
}

void GridView::tell(const QString& sentence)
{
    summary_ = sentence;
    told_->setText(sentence);
}

void GridView::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    if (isWanted_)
        wantGrid();
}

void GridView::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    picture_->fill(area_->viewport()->size());
}

void GridView::wantGrid()
{
    isWanted_ = !isVisible();
    const CaseTable* const table = matching_ ? matching_->table() : nullptr;
    const int row = rows_->currentIndex();
    const int column = columns_->currentIndex();
    const bool hasTwo = table != nullptr && table->patterns.size() > 1;
    if (hasTwo && row != column) {
        if (!isWanted_)
            session_.makeGrid(static_cast<std::size_t>(row), static_cast<std::size_t>(column));
        return;
    }
    picture_->setGrid({});
    save_->setEnabled(false);
    tell(hasTwo ? tr("Choose two different columns.")
                : tr("A grid needs a reading with two columns or more."));
}

void GridView::takeGrid(const Grid& grid)
{
    picture_->count(counted_->currentIndex() == 0 ? GridPicture::Counted::Cases
                                                  : GridPicture::Counted::Files);
    picture_->fill(area_->viewport()->size());
    picture_->setGrid(grid);
    save_->setEnabled(!grid.fields.empty());
    if (grid.isTooLarge)
        return tell(tr("One of these columns has more than %1 values; choose another.")
                        .arg(Grid::mostValues));
    QString told =
        grid.fields.empty() ? tr("There are no cases with both values.")
        : grid.holes() == 0
            ? tr("Every combination has a case.")
            : tr("%1 of %2 combinations are missing.").arg(grid.holes()).arg(grid.fields.size());
    if (grid.leftOut > 0)
        told += ' ' + tr("Not shown, as they lack a value: %1.")
                          .arg(counted(grid.leftOut, tr("case"), tr("cases")));
    tell(told);
}

QStringList GridView::names() const
{
    QStringList names;
    for (int i = 0; i < rows_->count(); ++i)
        names.push_back(rows_->itemText(i));
    return names;
}

std::vector<std::size_t> GridView::chosen() const
{
    return {static_cast<std::size_t>(rows_->currentIndex()),
            static_cast<std::size_t>(columns_->currentIndex())};
}

QPixmap GridView::drawn() const
{
    return picture_->grid().fields.empty() ? QPixmap() : picture_->grab();
}

} // namespace casetable
