#ifndef WINDOW_VIEW_AUXEDITOR_H
#define WINDOW_VIEW_AUXEDITOR_H

#include <QWidget>

namespace casetable {

class RowTable;
class Session;

/// Edits the auxiliary files: a row each, of a wildcard and a tag, with the number of files that it
/// selects. A bad one is red, with the validator's message as its tool tip.
class AuxEditor : public QWidget {
    Q_OBJECT

public:
    /// The session must outlive it.
    explicit AuxEditor(Session& session);

    RowTable& table() { return *table_; }

private:
    void takeSetup();
    void takeResults();
    void takeText(int row, int column);

    Session& session_;
    RowTable* table_;
};

} // namespace casetable

#endif
