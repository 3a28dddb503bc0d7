#ifndef WINDOW_VIEW_SUGGESTIONSDIALOG_H
#define WINDOW_VIEW_SUGGESTIONSDIALOG_H

#include <vector>

#include <QDialog>

#include "window/model/Suggestions.h"

class QDialogButtonBox;
class QLabel;
class QTreeWidget;

namespace casetable {

class Session;

/// Shows the templates that are suggested for the files, each with what it would give, and takes
/// those that are checked, in place of the templates of before.
class SuggestionsDialog : public QDialog {
    Q_OBJECT

public:
    /// Looks for suggestions at once. The session must outlive it.
    SuggestionsDialog(Session& session, QWidget* parent);

    QTreeWidget& list() { return *list_; }

private:
    void display(const std::vector<Suggestion>& suggestions);
    void take();

    Session& session_;
    QLabel* head_;
    QTreeWidget* list_;
    QDialogButtonBox* buttons_;
    std::vector<Suggestion> suggestions_;
};

} // namespace casetable

#endif
