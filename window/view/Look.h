#ifndef WINDOW_VIEW_LOOK_H
#define WINDOW_VIEW_LOOK_H

#include <cstddef>

#include <QColor>
#include <QFont>
#include <QPalette>
#include <QPen>
#include <QSize>
#include <QString>
#include <QTextCharFormat>

class QLabel;
class QTableView;
class QWidget;

namespace casetable {

/// Whether the palette has light text on a dark ground.
bool isDark(const QPalette& palette);

/// A palette of light text on a dark ground.
QPalette darkPalette();

/// The colour of a column's values and name, by its index. It can be read on the palette's base.
QColor columnColour(std::size_t column, const QPalette& palette);

/// How a column's values and name are underlined, so that they are told apart without colour too.
QTextCharFormat::UnderlineStyle columnUnderline(std::size_t column);

/// A pen that draws the same line.
QPen columnPen(std::size_t column, const QPalette& palette, qreal width);

/// Colour, underline and a tint behind, for the values of a column in a text.
QTextCharFormat columnFormat(std::size_t column, const QPalette& palette);

/// For what is there but not to be looked at, and for what is wrong.
QColor quietColour(const QPalette& palette);
QColor errorColour(const QPalette& palette);

/// Has a text stand back.
void setQuiet(QLabel& label);

/// For paths, templates and commands: of a fixed width, and as large as other text.
QFont pathFont();

/// Gives the cells of a table, or of its head, some room at their sides.
void makeRoomy(QWidget& widget);

/// Keeps the heads of a table from looking at its selection, which costs a question for each row.
/// The table has its model.
void ignoreSelectionInHeads(QTableView& table);

/// The largest size at which a window is seen whole, with the frame that it gets.
QSize roomOnScreen(const QFont& font);

/// A part of a length in the font's own measure, so that distances scale with the text.
int em(const QFont& font, qreal count);

} // namespace casetable

#endif
