#ifndef WINDOW_VIEW_GRIDVIEW_H
#define WINDOW_VIEW_GRIDVIEW_H

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include <QPoint>
#include <QStringList>
#include <QWidget>

#include "window/model/Grid.h"

class QComboBox;
class QLabel;
class QPushButton;
class QScrollArea;

namespace casetable {

class Session;
struct Matching;

/// The picture of a grid: fields coloured by their counts, holes hatched. The arrows go from field
/// to field; a click or Enter chooses the cases of one.
class GridPicture : public QWidget {
    Q_OBJECT

public:
    enum class Counted { Cases, Files };

    void setGrid(Grid grid);
    void count(Counted counted);

    /// Lets the fields grow, as far as they then still look like fields, to fill so much room.
    void fill(const QSize& room);

    const Grid& grid() const { return grid_; }

    /// Where a field is drawn.
    QRect fieldRect(std::size_t row, std::size_t column) const;

    QSize sizeHint() const override;

    /// What a field is, in words.
    QString description(std::size_t row, std::size_t column) const;

Q_SIGNALS:
    void fieldChosen(const std::vector<std::uint32_t>& cases);
    /// The field that the mouse or the keys point at; empty for none.
    void fieldPointed(const QString& description);

protected:
    void paintEvent(QPaintEvent* event) override;
    bool event(QEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void leaveEvent(QEvent* event) override;

private:
    struct Place {
        std::size_t row;
        std::size_t column;
    };

    std::optional<Place> placeAt(const QPoint& point) const;
    void choose(const Place& place);
    void measure();
    void layOut();
    std::size_t countOf(const Grid::Field& field) const;

    Grid grid_;
    QSize room_;
    Counted counted_ = Counted::Cases;
    int headWidth_ = 0;
    int headHeight_ = 0;
    QSize fieldSize_;
    bool areHeadsTurned_ = false;
    std::optional<Place> current_;
};

/// Two columns to choose, and their grid.
class GridView : public QWidget {
    Q_OBJECT

public:
    /// The session must outlive it.
    explicit GridView(Session& session);

    GridPicture& picture() { return *picture_; }
    QComboBox& rows() { return *rows_; }
    QComboBox& columns() { return *columns_; }

    /// The names of all columns of values, and the two that are chosen.
    QStringList names() const;
    std::vector<std::size_t> chosen() const;

    /// The whole picture; null where there is no grid.
    QPixmap drawn() const;

Q_SIGNALS:
    void casesChosen(const std::vector<std::uint32_t>& cases);
    void saveWanted();

protected:
    void showEvent(QShowEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void takeTable();
    void wantGrid();
    void takeGrid(const Grid& grid);
    void tell(const QString& sentence);

    Session& session_;
    QComboBox* rows_;
    QComboBox* columns_;
    QComboBox* counted_;
    QPushButton* save_;
    QScrollArea* area_;
    GridPicture* picture_;
    QLabel* told_;
    QString summary_;
    std::shared_ptr<const Matching> matching_; // Of which the columns are listed.
    bool isWanted_ = false;                    // A grid is wanted once this is seen.
};

} // namespace casetable

#endif
