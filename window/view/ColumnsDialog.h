#ifndef WINDOW_VIEW_COLUMNSDIALOG_H
#define WINDOW_VIEW_COLUMNSDIALOG_H

#include <cstddef>
#include <vector>

#include <QDialog>

class QDialogButtonBox;
class QListWidget;

namespace casetable {

/// Asks for two columns or more.
class ColumnsDialog : public QDialog {
    Q_OBJECT

public:
    /// `chosen` are the indices among `names` of those that are checked at first.
    ColumnsDialog(const QString& question, const QStringList& names,
                  const std::vector<std::size_t>& chosen, QWidget* parent);

    std::vector<std::size_t> chosen() const;

    QListWidget& list() { return *list_; }

private:
    void takeChoice();

    QListWidget* list_;
    QDialogButtonBox* buttons_;
};

} // namespace casetable

#endif
