#ifndef WINDOW_VIEW_TEMPLATEEDITOR_H
#define WINDOW_VIEW_TEMPLATEEDITOR_H

#include <QWidget>

class QLabel;
class QPlainTextEdit;

namespace casetable {

class Session;

/// Edits the templates, one a line. Columns have their colours; where a template cannot be read on
/// is underlined, with the reason below.
class TemplateEditor : public QWidget {
    Q_OBJECT

public:
    /// The session must outlive it.
    explicit TemplateEditor(Session& session);

    QPlainTextEdit& edit() { return *edit_; }
    QLabel& reason() { return *reason_; }

private:
    class Highlighter;

    void takeText();
    void takeSetup();

    Session& session_;
    QPlainTextEdit* edit_;
    QLabel* reason_;
    Highlighter* highlighter_;
};

} // namespace casetable

#endif
