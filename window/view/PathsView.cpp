#include "window/view/PathsView.h"

#include <algorithm>
#include <cmath>

#include <QApplication>
#include <QHeaderView>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>
#include <QStyledItemDelegate>

#include "window/view/Look.h"

namespace casetable {

namespace {

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

// Bytes of other characters are part of words.
bool isLetter(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
           static_cast<unsigned char>(c) >= 0x80;
}

template <class Is> ByteRange run(const std::string& path, std::size_t offset, const Is& is)
{
    ByteRange range = {offset, offset + 1};
    while (range.begin > 0 && is(path[range.begin - 1]))
        --range.begin;
    while (range.end < path.size() && is(path[range.end]))
        ++range.end;
    return range;
}

std::size_t skipDigits(const std::string& path, std::size_t at)
{
    while (at < path.size() && isDigit(path[at]))
        ++at;
    return at;
}

// Digits with a fraction and an exponent, of which the one at `offset` is part. A "-" behind a word
// is taken for a sign where there is a fraction, as names are divided by "-" too, but seldom in
// front of a decimal number.
ByteRange numberAt(const std::string& path, std::size_t offset)
{
    const auto digitAt = [&path](std::size_t at) { return at < path.size() && isDigit(path[at]); };
    std::size_t begin = path.rfind('/', offset) + 1;
    for (;;) {
        while (!isDigit(path[begin]))
            ++begin;
        std::size_t end = skipDigits(path, begin);
        const bool hasFraction = end < path.size() && path[end] == '.' && digitAt(end + 1);
        if (hasFraction)
            end = skipDigits(path, end + 1);
        if (end < path.size() && (path[end] == 'e' || path[end] == 'E')) {
            const bool hasSign =
                end + 1 < path.size() && (path[end + 1] == '-' || path[end + 1] == '+');
            const std::size_t exponent = end + (hasSign ? 2 : 1);
            end = digitAt(exponent) ? skipDigits(path, exponent) : end;
        }
        if (offset < end) {
            const bool hasSign =
                hasFraction && begin > 1 && path[begin - 1] == '-' && isLetter(path[begin - 2]);
            return {hasSign ? begin - 1 : begin, end};
        }
        begin = end;
    }
}

// Values keep their colours in a selected row, and can be read there.
QPalette tintedPalette(QPalette palette)
{
    const QColor base = palette.color(QPalette::Base);
    const QColor full = palette.color(QPalette::Highlight);
    const double part = isDark(palette) ? 0.3 : 0.16;
    const auto mixed = [part](int to, int from) {
        return static_cast<int>(part * to + (1 - part) * from);
    };
    palette.setColor(QPalette::Highlight,
                     {mixed(full.red(), base.red()), mixed(full.green(), base.green()),
                      mixed(full.blue(), base.blue())});
    palette.setColor(QPalette::HighlightedText, palette.color(QPalette::Text));
    return palette;
}

} // namespace

ByteRange wordAt(const std::string& path, std::size_t offset)
{
    if (path.empty())
        return {0, 0};
    offset = std::min(offset, path.size() - 1);
    if (isDigit(path[offset]) || (path[offset] == '.' && offset + 1 < path.size() && offset > 0 &&
                                  isDigit(path[offset - 1]) && isDigit(path[offset + 1])))
        return numberAt(path, isDigit(path[offset]) ? offset : offset + 1);
    if (isLetter(path[offset]))
        return run(path, offset, isLetter);
    return {offset, offset + 1};
}

std::optional<ByteRange> wordFrom(const std::string& path, std::size_t offset)
{
    while (offset < path.size() && !isDigit(path[offset]) && !isLetter(path[offset]))
        ++offset;
    if (offset >= path.size())
        return std::nullopt;
    return wordAt(path, offset);
}

std::optional<ByteRange> wordBefore(const std::string& path, std::size_t offset)
{
    offset = std::min(offset, path.size());
    while (offset > 0 && !isDigit(path[offset - 1]) && !isLetter(path[offset - 1]))
        --offset;
    if (offset == 0)
        return std::nullopt;
    return wordAt(path, offset - 1);
}

// Draws paths, and tells where their bytes stand.
class PathsView::Delegate : public QStyledItemDelegate {
public:
    explicit Delegate(PathsView& view) : QStyledItemDelegate(&view), view_(view) {}

    // A path laid out in one line, with its formats.
    struct Line {
        ShownText text;
        std::unique_ptr<QTextLayout> layout;
    };

    Line lineOf(int row) const
    {
        Line line;
        line.text = ShownText(view_.model_.path(row));
        line.layout = std::make_unique<QTextLayout>(line.text.text(), pathFont());
        QTextOption option;
        option.setWrapMode(QTextOption::NoWrap);
        option.setTextDirection(Qt::LeftToRight);
        line.layout->setTextOption(option);
        line.layout->setFormats(formatsOf(row, line.text));
        line.layout->beginLayout();
        QTextLine textLine = line.layout->createLine();
        textLine.setLineWidth(1e6);
        line.layout->endLayout();
        return line;
    }

    static int margin() { return em(pathFont(), 0.4); }

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override
    {
        paintGround(painter, option, index.row());
        if (index.column() == PathsModel::PathColumn)
            paintPath(painter, option, index.row());
        else
            paintCase(painter, option, index);
    }

    QSize sizeHint(const QStyleOptionViewItem& /*option*/,
                   const QModelIndex& /*index*/) const override
    {
        return {em(pathFont(), 10), rowHeight()};
    }

    static int rowHeight() { return em(pathFont(), 1.5); }

private:
    QVector<QTextLayout::FormatRange> formatsOf(int row, const ShownText& text) const
    {
        const QPalette palette = view_.palette();
        QVector<QTextLayout::FormatRange> formats;
        const auto add = [&](std::size_t begin, std::size_t end, const QTextCharFormat& format) {
            const int from = text.placeOf(begin);
            const int to = text.placeOf(end);
            if (to > from)
                formats.push_back({from, to - from, format});
        };
        QTextCharFormat quiet;
        quiet.setForeground(quietColour(palette));
        const PathRead* const read = view_.model_.read(row);
        if (read != nullptr && read->fitting) {
            QTextCharFormat wrong;
            wrong.setForeground(errorColour(palette));
            wrong.setUnderlineStyle(QTextCharFormat::WaveUnderline);
            wrong.setUnderlineColor(errorColour(palette));
            const std::string path = view_.model_.path(row);
            add(0, *read->fitting, quiet);
            add(*read->fitting, std::min(path.find('/', *read->fitting + 1), path.size()), wrong);
        }
        if (read != nullptr) {
            for (const PathPiece& piece : read->pieces) {
                if (piece.kind == PathPiece::Kind::Quiet)
                    add(piece.begin, piece.begin + piece.length, quiet);
                if (piece.kind == PathPiece::Kind::Value)
                    add(piece.begin, piece.begin + piece.length,
                        columnFormat(piece.column, palette));
            }
        }
        if (view_.selected_ && view_.selected_->file == view_.model_.fileOf(row)) {
            QTextCharFormat selected;
            selected.setForeground(QApplication::palette().color(QPalette::HighlightedText));
            selected.setBackground(QApplication::palette().color(QPalette::Highlight));
            add(view_.selected_->begin(), view_.selected_->end(), selected);
        }
        return formats;
    }

    void paintGround(QPainter* painter, const QStyleOptionViewItem& option, int row) const
    {
        const bool isSelected = option.state & QStyle::State_Selected;
        const bool hasKeys = view_.hasFocus() && view_.currentIndex().row() == row;
        if (isSelected || hasKeys)
            painter->fillRect(option.rect, option.palette.color(QPalette::Highlight));
        else if (row % 2 == 1)
            painter->fillRect(option.rect, option.palette.color(QPalette::AlternateBase));
    }

    void paintCase(QPainter* painter, const QStyleOptionViewItem& option,
                   const QModelIndex& index) const
    {
        const PathRead* const read = view_.model_.read(index.row());
        const bool isUnmatched = read != nullptr && !read->isMatched;
        painter->save();
        painter->setFont(option.font);
        painter->setPen(isUnmatched ? errorColour(option.palette) : quietColour(option.palette));
        const QString text =
            isUnmatched ? QString(QChar(0x2717)) : index.data(Qt::DisplayRole).toString();
        painter->drawText(option.rect.adjusted(0, 0, -margin(), 0),
                          Qt::AlignRight | Qt::AlignVCenter, text);
        painter->restore();
    }

    void paintPath(QPainter* painter, const QStyleOptionViewItem& option, int row) const
    {
        painter->save();
        painter->setClipRect(option.rect);
        const Line line = lineOf(row);
        const QTextLine textLine = line.layout->lineAt(0);
        const QPointF origin(option.rect.left() + margin(),
                             option.rect.top() + (option.rect.height() - textLine.height()) / 2);
        painter->setPen(option.palette.color(QPalette::Text));
        line.layout->draw(painter, origin);
        const PathRead* const read = view_.model_.read(row);
        if (read != nullptr)
            paintLeftOut(painter, option, *read, line, origin);
        paintCaret(painter, option, row, line, origin);
        qreal right = origin.x() + textLine.naturalTextWidth() + 2 * margin();
        if (const auto aux = view_.model_.auxOf(row))
            right = paintTag(painter, option, *aux, right);
        if (read != nullptr && !read->isMatched)
            paintReason(painter, option, *read, right);
        painter->restore();
    }

    // A small wedge below the line.
    static void paintLeftOut(QPainter* painter, const QStyleOptionViewItem& option,
                             const PathRead& read, const Line& line, const QPointF& origin)
    {
        const QTextLine textLine = line.layout->lineAt(0);
        const qreal size = em(pathFont(), 0.22);
        for (const PathPiece& piece : read.pieces) {
            if (piece.kind != PathPiece::Kind::LeftOut)
                continue;
            const qreal x = origin.x() + textLine.cursorToX(line.text.placeOf(piece.begin));
            const qreal y = origin.y() + textLine.ascent() + 1;
            painter->setRenderHint(QPainter::Antialiasing);
            painter->setPen(Qt::NoPen);
            painter->setBrush(quietColour(option.palette));
            painter->drawPolygon(
                QPolygonF({{x, y}, {x - size, y + size * 1.3}, {x + size, y + size * 1.3}}));
        }
    }

    void paintCaret(QPainter* painter, const QStyleOptionViewItem& option, int row,
                    const Line& line, const QPointF& origin) const
    {
        if (!view_.hasFocus() || !view_.selected_ ||
            view_.selected_->file != view_.model_.fileOf(row))
            return;
        const QTextLine textLine = line.layout->lineAt(0);
        const qreal x = origin.x() + textLine.cursorToX(line.text.placeOf(view_.selected_->caret));
        painter->setPen(QPen(option.palette.color(QPalette::Text), 1.5));
        painter->drawLine(QPointF(x, origin.y()), QPointF(x, origin.y() + textLine.height()));
    }

    // Returns where the next thing may stand.
    qreal paintTag(QPainter* painter, const QStyleOptionViewItem& option, std::size_t aux,
                   qreal left) const
    {
        const auto& rows = view_.session_.setup().auxRows;
        if (aux >= rows.size())
            return left;
        const QString tag = shown(rows[aux].tag);
        const QFontMetricsF metrics(option.font);
        const qreal height = metrics.height() * 1.1;
        const QRectF chip(left, option.rect.center().y() - height / 2 + 0.5,
                          metrics.horizontalAdvance(tag) + metrics.height() * 0.8, height);
        painter->setRenderHint(QPainter::Antialiasing);
        painter->setPen(quietColour(option.palette));
        painter->setBrush(option.palette.color(QPalette::Button));
        painter->drawRoundedRect(chip, height / 2, height / 2);
        painter->setFont(option.font);
        painter->setPen(option.palette.color(QPalette::ButtonText));
        painter->drawText(chip, Qt::AlignCenter, tag);
        return chip.right() + margin();
    }

    static void paintReason(QPainter* painter, const QStyleOptionViewItem& option,
                            const PathRead& read, qreal left)
    {
        QFont font = option.font;
        font.setItalic(true);
        const int space = option.rect.right() - static_cast<int>(left) - margin();
        if (space < em(font, 3))
            return;
        painter->setFont(font);
        painter->setPen(errorColour(option.palette));
        painter->drawText(QRectF(left, option.rect.top(), space, option.rect.height()),
                          Qt::AlignLeft | Qt::AlignVCenter,
                          QFontMetrics(font).elidedText(shown(read.reason), Qt::ElideRight, space));
    }

    PathsView& view_;
};

PathsView::PathsView(const Session& session, PathsModel& model)
    : session_(session), model_(model), delegate_(new Delegate(*this))
{
    setModel(&model);
    ignoreSelectionInHeads(*this);
    setItemDelegate(delegate_);
    setPalette(tintedPalette(palette()));
    setSelectionBehavior(SelectRows);
    setSelectionMode(ExtendedSelection);
    setShowGrid(false);
    setWordWrap(false);
    setTabKeyNavigation(false);
    setVerticalScrollMode(ScrollPerItem);
    setHorizontalScrollMode(ScrollPerPixel);
    setAccessibleName(tr("Paths"));
    setAccessibleDescription(
        tr("Select a value in a path, with Ctrl+Right, and press Enter to name it"));
    makeRoomy(*horizontalHeader());
    verticalHeader()->hide();
    verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    verticalHeader()->setMinimumSectionSize(1);
    verticalHeader()->setDefaultSectionSize(Delegate::rowHeight());
    horizontalHeader()->setHighlightSections(false);
    horizontalHeader()->setSectionsClickable(false);
    horizontalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    horizontalHeader()->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    connect(&model, &QAbstractItemModel::modelReset, this, &PathsView::fitColumns);
    connect(&model, &QAbstractItemModel::modelReset, this, &PathsView::dropStaleBytes);
    connect(&model, &QAbstractItemModel::modelReset, this, &PathsView::keepCurrent);
    connect(&model, &QAbstractItemModel::rowsInserted, this, &PathsView::fitColumns);
    connect(&model, &QAbstractItemModel::dataChanged, viewport(), qOverload<>(&QWidget::update));
    fitColumns();
}

PathsView::~PathsView() = default;

// Rows that are not seen may have longer paths; what is cut of them comes with scrolling.
void PathsView::fitColumns()
{
    const int digits =
        QString::number(std::max<std::size_t>(session_.files().count(), 1000)).size();
    const int caseWidth = QFontMetrics(font()).horizontalAdvance('0') * digits + em(font(), 1.6);
    std::size_t longest = 0;
    const int sampled = std::min(model_.rowCount(), 200);
    for (int row = 0; row < sampled; ++row)
        longest = std::max(longest, model_.path(row).size());
    const int needed = static_cast<int>(std::ceil(QFontMetricsF(pathFont()).horizontalAdvance('x') *
                                                  static_cast<double>(longest + 2)));
    setColumnWidth(PathsModel::CaseColumn, caseWidth);
    setColumnWidth(PathsModel::PathColumn,
                   std::max(needed + em(font(), 1), viewport()->width() - caseWidth));
    viewport()->update();
}

void PathsView::resizeEvent(QResizeEvent* event)
{
    QTableView::resizeEvent(event);
    fitColumns();
    // What is being named stays in sight, though the question takes room below.
    const int row = selectedBytes() ? model_.rowOf(selected_->file) : -1;
    if (row >= 0) {
        scrollTo(model_.index(row, PathsModel::PathColumn));
        showCaret();
    }
}

void PathsView::paintEvent(QPaintEvent* event)
{
    QTableView::paintEvent(event);
    if (model_.rowCount() > 0)
        return;
    QString text;
    if (!session_.setup().hasSource())
        text = tr("Open a folder, or drop one here.");
    else if (session_.isWalking())
        text = tr("Looking for files…");
    else if (!session_.walkEnd().error.empty())
        text = shown(session_.walkEnd().error);
    else if (session_.files().count() == 0)
        text = tr("There are no files here.\nHidden ones can be taken too: Files ▸ Hidden files.");
    else
        text = tr("No file fits the filter. Press Esc in the filter to see all.");
    QPainter painter(viewport());
    painter.setPen(quietColour(palette()));
    const int margin = em(font(), 2);
    painter.drawText(viewport()->rect().adjusted(margin, margin, -margin, -margin),
                     Qt::AlignCenter | Qt::TextWordWrap, text);
}

std::optional<PathsView::Selected> PathsView::selectedBytes() const
{
    if (!selected_ || selected_->begin() == selected_->end())
        return std::nullopt;
    return selected_;
}

void PathsView::selectBytes(int row, std::size_t begin, std::size_t end)
{
    setCurrentIndex(model_.index(row, PathsModel::PathColumn));
    selected_ = Selected{model_.fileOf(row), model_.path(row), begin, end};
    viewport()->update();
    Q_EMIT bytesSelected();
}

void PathsView::clearBytes()
{
    selected_.reset();
    viewport()->update();
    Q_EMIT bytesSelected();
}

void PathsView::endBytes()
{
    if (selected_)
        selected_->anchor = selected_->caret = selected_->end();
    viewport()->update();
    Q_EMIT bytesSelected();
}

// The file may have another index now, or be gone.
bool PathsView::isThere(const Selected& bytes) const
{
    const Files& files = session_.files();
    return bytes.file < files.count() && files.path(bytes.file) == bytes.path;
}

void PathsView::dropStaleBytes()
{
    if (selected_ && !isThere(*selected_))
        clearBytes();
}

// A changed reading or filter makes the rows anew; the keys stay with their path, wherever the view
// has been scrolled.
void PathsView::keepCurrent()
{
    const int row = current_ && isThere(*current_) ? model_.rowOf(current_->file) : -1;
    if (row < 0)
        return;
    const bool scrolls = hasAutoScroll();
    setAutoScroll(false);
    selectionModel()->setCurrentIndex(model_.index(row, PathsModel::PathColumn),
                                      QItemSelectionModel::NoUpdate);
    setAutoScroll(scrolls);
}

void PathsView::currentChanged(const QModelIndex& now, const QModelIndex& before)
{
    QTableView::currentChanged(now, before);
    if (now.isValid())
        current_ = Selected{model_.fileOf(now.row()), model_.path(now.row()), 0, 0};
}

QPoint PathsView::placeOf(int row, std::size_t offset) const
{
    const QRect rect = visualRect(model_.index(row, PathsModel::PathColumn));
    const Delegate::Line line = delegate_->lineOf(row);
    const qreal x = line.layout->lineAt(0).cursorToX(line.text.placeOf(offset));
    return {rect.left() + Delegate::margin() + static_cast<int>(std::lround(x)), rect.center().y()};
}

std::size_t PathsView::offsetAt(int row, const QPoint& point) const
{
    const QRect rect = visualRect(model_.index(row, PathsModel::PathColumn));
    const Delegate::Line line = delegate_->lineOf(row);
    const int place =
        line.layout->lineAt(0).xToCursor(point.x() - rect.left() - Delegate::margin());
    return line.text.offsetAt(place);
}

void PathsView::mousePressEvent(QMouseEvent* event)
{
    const QModelIndex index = indexAt(event->pos());
    QTableView::mousePressEvent(event);
    if (event->button() != Qt::LeftButton)
        return;
    isDragging_ = false;
    if (!index.isValid() || index.column() != PathsModel::PathColumn ||
        (event->modifiers() & Qt::ControlModifier))
        return clearBytes();
    const std::size_t offset = offsetAt(index.row(), event->pos());
    const bool extends = (event->modifiers() & Qt::ShiftModifier) && selected_ &&
                         selected_->file == model_.fileOf(index.row());
    selected_ = Selected{model_.fileOf(index.row()), model_.path(index.row()),
                         extends ? selected_->anchor : offset, offset};
    isDragging_ = true;
    viewport()->update();
    Q_EMIT bytesSelected();
}

void PathsView::mouseMoveEvent(QMouseEvent* event)
{
    if (!isDragging_ || !selected_)
        return QTableView::mouseMoveEvent(event);
    const int row = model_.rowOf(selected_->file);
    if (row >= 0)
        moveCaret(offsetAt(row, event->pos()), true);
}

void PathsView::mouseReleaseEvent(QMouseEvent* event)
{
    isDragging_ = false;
    QTableView::mouseReleaseEvent(event);
}

void PathsView::mouseDoubleClickEvent(QMouseEvent* event)
{
    const QModelIndex index = indexAt(event->pos());
    if (!index.isValid() || index.column() != PathsModel::PathColumn)
        return;
    const QRect rect = visualRect(index);
    const Delegate::Line line = delegate_->lineOf(index.row());
    const int place = line.layout->lineAt(0).xToCursor(
        event->pos().x() - rect.left() - Delegate::margin(), QTextLine::CursorOnCharacter);
    const ByteRange word = wordAt(model_.path(index.row()), line.text.offsetAt(place));
    selectBytes(index.row(), word.begin, word.end);
}

void PathsView::moveCaret(std::size_t offset, bool selects)
{
    selected_->caret = offset;
    if (!selects)
        selected_->anchor = offset;
    showCaret();
    viewport()->update();
    Q_EMIT bytesSelected();
}

void PathsView::selectNext(bool isRight)
{
    const auto word = isRight ? wordFrom(selected_->path, selected_->end())
                              : wordBefore(selected_->path, selected_->begin());
    if (!word)
        return;
    selected_->anchor = word->begin;
    moveCaret(word->end, true);
}

void PathsView::showCaret()
{
    const int row = model_.rowOf(selected_->file);
    if (row < 0)
        return;
    const int x = placeOf(row, selected_->caret).x();
    const int margin = em(pathFont(), 1);
    QScrollBar* const bar = horizontalScrollBar();
    if (x < margin)
        bar->setValue(bar->value() + x - 4 * margin);
    else if (x > viewport()->width() - margin)
        bar->setValue(bar->value() + x - viewport()->width() + 4 * margin);
}

void PathsView::keyPressEvent(QKeyEvent* event)
{
    const int row = currentIndex().row();
    const bool selects = event->modifiers() & Qt::ShiftModifier;
    const bool byWord = event->modifiers() & Qt::ControlModifier;
    const int key = event->key();
    if ((key == Qt::Key_Return || key == Qt::Key_Enter) && event->modifiers() == Qt::NoModifier) {
        Q_EMIT nameWanted();
        return;
    }
    if (key == Qt::Key_Escape && selected_)
        return clearBytes();
    const bool isSideways =
        key == Qt::Key_Left || key == Qt::Key_Right || key == Qt::Key_Home || key == Qt::Key_End;
    if (!isSideways || row < 0 || ((key == Qt::Key_Home || key == Qt::Key_End) && byWord)) {
        QTableView::keyPressEvent(event);
        return;
    }
    if (!selected_ || selected_->file != model_.fileOf(row))
        selected_ = Selected{model_.fileOf(row), model_.path(row), 0, 0};
    if (byWord && !selects)
        return selectNext(key == Qt::Key_Right);
    const ShownText text(selected_->path);
    const std::size_t caret = selected_->caret;
    std::size_t offset = 0;
    if (key == Qt::Key_End)
        offset = selected_->path.size();
    else if (key == Qt::Key_Right)
        offset = byWord && caret < selected_->path.size() ? wordAt(selected_->path, caret).end
                                                          : text.next(caret);
    else if (key == Qt::Key_Left)
        offset =
            byWord && caret > 0 ? wordAt(selected_->path, caret - 1).begin : text.previous(caret);
    moveCaret(offset, selects);
}

void PathsView::selectionChanged(const QItemSelection& now, const QItemSelection& before)
{
    QTableView::selectionChanged(now, before);
    if (selected_ && currentIndex().isValid() &&
        selected_->file != model_.fileOf(currentIndex().row()) && !isDragging_) {
        selected_.reset();
        Q_EMIT bytesSelected();
    }
    viewport()->update();
    Q_EMIT rowsChosen();
}

std::vector<std::uint32_t> PathsView::selectedFiles() const
{
    std::vector<std::uint32_t> files;
    for (const QItemSelectionRange& range : selectionModel()->selection()) {
        for (int row = range.top(); row <= range.bottom(); ++row)
            files.push_back(static_cast<std::uint32_t>(model_.fileOf(row)));
    }
    // The one that has the keys is shown as if it was selected.
    if (files.empty() && currentIndex().isValid())
        files.push_back(static_cast<std::uint32_t>(model_.fileOf(currentIndex().row())));
    // Files stand in the order of their indices.
    std::sort(files.begin(), files.end());
    files.erase(std::unique(files.begin(), files.end()), files.end());
    return files;
}

} // namespace casetable
