#ifndef WINDOW_VIEW_PATHSVIEW_H
#define WINDOW_VIEW_PATHSVIEW_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <QTableView>
#include <QTextLayout>

#include "window/model/PathsModel.h"
#include "window/model/Text.h"

namespace casetable {

/// Paths with what is read of them in colour. In one path bytes can be selected, with the mouse and
/// with the keys: Ctrl+Left and Ctrl+Right select the word or number that is next, as a double
/// click selects one; Left and Right move, with Shift they select, with Ctrl and Shift by words and
/// numbers; Enter asks for a name.
class PathsView : public QTableView {
    Q_OBJECT

public:
    /// Both must outlive it.
    PathsView(const Session& session, PathsModel& model);
    ~PathsView() override;

    /// Bytes of a path, of which the end may stand in front of the begin while they are selected.
    struct Selected {
        std::size_t file;
        std::string path;
        std::size_t anchor;
        std::size_t caret;

        std::size_t begin() const { return std::min(anchor, caret); }
        std::size_t end() const { return std::max(anchor, caret); }
        std::string bytes() const { return path.substr(begin(), end() - begin()); }
    };

    /// None while no byte is.
    std::optional<Selected> selectedBytes() const;
    void selectBytes(int row, std::size_t begin, std::size_t end);
    void clearBytes();
    /// Selects nothing any more, and goes on behind what was selected.
    void endBytes();

    /// Where a byte of a row's path is shown, in the viewport; the row must be seen.
    QPoint placeOf(int row, std::size_t offset) const;

    const PathsModel& paths() const { return model_; }

    /// The files in the selected rows, in the order of the rows.
    std::vector<std::uint32_t> selectedFiles() const;

Q_SIGNALS:
    void bytesSelected();
    void nameWanted();
    /// The rows that are selected changed, by the user.
    void rowsChosen();

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void selectionChanged(const QItemSelection& now, const QItemSelection& before) override;
    void currentChanged(const QModelIndex& now, const QModelIndex& before) override;

private:
    class Delegate;

    std::size_t offsetAt(int row, const QPoint& point) const;
    bool isThere(const Selected& bytes) const;
    void dropStaleBytes();
    void keepCurrent();
    void selectNext(bool isRight);
    void moveCaret(std::size_t offset, bool selects);
    void showCaret();
    void fitColumns();

    const Session& session_;
    PathsModel& model_;
    Delegate* delegate_;
    std::optional<Selected> selected_;
    std::optional<Selected> current_; // The path that has the keys, and no bytes of it.
    bool isDragging_ = false;
};

/// What a double click at `offset` of the path selects: a number or a word.
struct ByteRange {
    std::size_t begin;
    std::size_t end;
};
ByteRange wordAt(const std::string& path, std::size_t offset);

/// The word or number that `offset` is in, or else the next one behind it.
std::optional<ByteRange> wordFrom(const std::string& path, std::size_t offset);

/// The word or number that ends at `offset` or has it inside, or else the next one in front.
std::optional<ByteRange> wordBefore(const std::string& path, std::size_t offset);

} // namespace casetable

#endif
