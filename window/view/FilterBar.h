#ifndef WINDOW_VIEW_FILTERBAR_H
#define WINDOW_VIEW_FILTERBAR_H

#include <QWidget>

class QComboBox;
class QLineEdit;
class QToolButton;

namespace casetable {

class Session;

/// Which paths are shown: by text, by matched or not, by a column's value, and by the cases that
/// were chosen.
class FilterBar : public QWidget {
    Q_OBJECT

public:
    /// The session must outlive it.
    explicit FilterBar(Session& session);

    QLineEdit& text() { return *text_; }
    QComboBox& which() { return *which_; }
    QComboBox& column() { return *column_; }
    QComboBox& value() { return *value_; }
    QToolButton& cases() { return *cases_; }

Q_SIGNALS:
    /// The user wants the files of all cases again.
    void casesDropped();

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    void takeTable();
    void takeColumn();
    void takeCases();
    void filter();

    Session& session_;
    QLineEdit* text_;
    QComboBox* which_;
    QComboBox* column_;
    QComboBox* value_;
    QToolButton* cases_;
};

} // namespace casetable

#endif
