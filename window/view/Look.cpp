#include "window/view/Look.h"

#include <array>

#include <QApplication>
#include <QFontDatabase>
#include <QFontInfo>
#include <QFontMetricsF>
#include <QHeaderView>
#include <QLabel>
#include <QProxyStyle>
#include <QScreen>
#include <QTableView>
#include <QWidget>

namespace casetable {

namespace {

struct Colours {
    QRgb onLight;
    QRgb onDark;
};

const std::array<Colours, 8> columnColours = {{{0xff0b5cba, 0xff78b7ff},
                                               {0xffa84300, 0xffffa066},
                                               {0xff13724a, 0xff67d6a0},
                                               {0xff8328ab, 0xffd79bf5},
                                               {0xffad1457, 0xffff8ab8},
                                               {0xff566500, 0xffcdd65f},
                                               {0xff006d77, 0xff5bd3de},
                                               {0xff6b4a26, 0xffd9b48c}}};

const std::array<QTextCharFormat::UnderlineStyle, 4> underlines = {
    QTextCharFormat::SingleUnderline, QTextCharFormat::DashUnderline, QTextCharFormat::DotLine,
    QTextCharFormat::DashDotLine};

// Cells with some room at their sides.
class RoomyStyle : public QProxyStyle {
public:
    int pixelMetric(PixelMetric metric, const QStyleOption* option,
                    const QWidget* widget) const override
    {
        if ((metric == PM_FocusFrameHMargin || metric == PM_HeaderMargin) && widget != nullptr)
            return em(widget->font(), 0.35);
        return QProxyStyle::pixelMetric(metric, option, widget);
    }
};

QColor chosen(const Colours& colours, const QPalette& palette)
{
    return QColor::fromRgb(isDark(palette) ? colours.onDark : colours.onLight);
}

} // namespace

bool isDark(const QPalette& palette)
{
    return palette.color(QPalette::Base).lightness() < palette.color(QPalette::Text).lightness();
}

QPalette darkPalette()
{
    const QColor ground(0x2b, 0x2d, 0x30);
    const QColor base(0x1f, 0x21, 0x24);
    const QColor text(0xe4, 0xe6, 0xe9);
    const QColor quiet(0x86, 0x8b, 0x92);
    QPalette palette;
    palette.setColor(QPalette::Window, ground);
    palette.setColor(QPalette::WindowText, text);
    palette.setColor(QPalette::Base, base);
    palette.setColor(QPalette::AlternateBase, QColor(0x25, 0x27, 0x2a));
    palette.setColor(QPalette::ToolTipBase, ground);
    palette.setColor(QPalette::ToolTipText, text);
    palette.setColor(QPalette::PlaceholderText, quiet);
    palette.setColor(QPalette::Text, text);
    palette.setColor(QPalette::Button, QColor(0x3b, 0x3e, 0x43));
    palette.setColor(QPalette::Light, QColor(0x4a, 0x4e, 0x54));
    palette.setColor(QPalette::Midlight, QColor(0x43, 0x46, 0x4b));
    palette.setColor(QPalette::Mid, QColor(0x26, 0x28, 0x2b));
    palette.setColor(QPalette::Dark, QColor(0x1a, 0x1c, 0x1e));
    palette.setColor(QPalette::Shadow, QColor(0x10, 0x11, 0x12));
    palette.setColor(QPalette::ButtonText, text);
    palette.setColor(QPalette::BrightText, Qt::white);
    palette.setColor(QPalette::Link, QColor(0x78, 0xb7, 0xff));
    palette.setColor(QPalette::Highlight, QColor(0x2f, 0x6f, 0xc4));
    palette.setColor(QPalette::HighlightedText, Qt::white);
    for (const QPalette::ColorRole role :
         {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, quiet);
    return palette;
}

QColor columnColour(std::size_t column, const QPalette& palette)
{
    return chosen(columnColours[column % columnColours.size()], palette);
}

QTextCharFormat::UnderlineStyle columnUnderline(std::size_t column)
{
    return underlines[column % underlines.size()];
}

QPen columnPen(std::size_t column, const QPalette& palette, qreal width)
{
    static const std::array<Qt::PenStyle, 4> styles = {Qt::SolidLine, Qt::DashLine, Qt::DotLine,
                                                       Qt::DashDotLine};
    return {columnColour(column, palette), width, styles[column % styles.size()], Qt::FlatCap};
}

QTextCharFormat columnFormat(std::size_t column, const QPalette& palette)
{
    const QColor colour = columnColour(column, palette);
    QColor tint = colour;
    tint.setAlpha(isDark(palette) ? 40 : 24);
    QTextCharFormat format;
    format.setForeground(colour);
    format.setBackground(tint);
    format.setUnderlineStyle(columnUnderline(column));
    format.setUnderlineColor(colour);
    format.setFontWeight(QFont::DemiBold);
    return format;
}

QColor quietColour(const QPalette& palette)
{
    return isDark(palette) ? QColor(0x8d, 0x93, 0x9b) : QColor(0x6b, 0x72, 0x7a);
}

QColor errorColour(const QPalette& palette)
{
    return isDark(palette) ? QColor(0xff, 0x8f, 0x85) : QColor(0xb4, 0x23, 0x18);
}

void setQuiet(QLabel& label)
{
    QPalette quiet = label.palette();
    quiet.setColor(QPalette::WindowText, quietColour(quiet));
    label.setPalette(quiet);
}

QFont pathFont()
{
    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    // Without a desktop there may be no such setting.
    if (!QFontInfo(font).fixedPitch()) {
        font.setFamily("monospace");
        font.setStyleHint(QFont::TypeWriter);
    }
    font.setPointSizeF(QApplication::font().pointSizeF());
    return font;
}

void makeRoomy(QWidget& widget)
{
    auto* const style = new RoomyStyle;
    style->setParent(&widget);
    widget.setStyle(style);
}

void ignoreSelectionInHeads(QTableView& table)
{
    for (QHeaderView* const head : {table.horizontalHeader(), table.verticalHeader()})
        head->setSelectionModel(new QItemSelectionModel(table.model(), head));
}

QSize roomOnScreen(const QFont& font)
{
    return QApplication::primaryScreen()->availableSize() - QSize(em(font, 1), em(font, 4));
}

int em(const QFont& font, qreal count)
{
    return static_cast<int>(QFontMetricsF(font).height() * count);
}

} // namespace casetable
