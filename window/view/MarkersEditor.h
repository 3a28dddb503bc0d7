#ifndef WINDOW_VIEW_MARKERSEDITOR_H
#define WINDOW_VIEW_MARKERSEDITOR_H

#include <QWidget>

namespace casetable {

class RowTable;
class Session;

/// Edits the markers: a row each, of the marker and the type of what stands behind it.
class MarkersEditor : public QWidget {
    Q_OBJECT

public:
    /// The session must outlive it.
    explicit MarkersEditor(Session& session);

    RowTable& table() { return *table_; }

private:
    void takeSetup();
    void takeText(int row, int column);
    void takeType(int row, bool isNumber);

    Session& session_;
    RowTable* table_;
};

} // namespace casetable

#endif
