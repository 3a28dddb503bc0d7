#ifndef WINDOW_VIEW_NAMINGBAR_H
#define WINDOW_VIEW_NAMINGBAR_H

#include <optional>

#include <QFrame>

#include "window/model/Naming.h"

class QLabel;
class QLineEdit;
class QPushButton;

namespace casetable {

class Session;

/// Asks for the name of selected bytes, and shows the template that comes of it while the name is
/// typed. Enter takes it, Esc closes.
class NamingBar : public QFrame {
    Q_OBJECT

public:
    /// The session must outlive it.
    explicit NamingBar(Session& session);

    /// Opens it for bytes of a path. The name that they have is proposed, or else the word that
    /// stands in front of them.
    void ask(const NamedBytes& bytes);

    QLineEdit& nameEdit() { return *name_; }

Q_SIGNALS:
    void closed();

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    void lookUp();
    void show(const NamedTemplates& result, const QString& error);
    void accept();
    void take();
    void close();

    Session& session_;
    QLabel* title_;
    QLineEdit* name_;
    QLabel* preview_;
    QPushButton* add_;
    NamedBytes bytes_;
    std::string column_;                   // That reads them already; empty for none.
    std::optional<NamedTemplates> result_; // For the name as it is.
    bool isWanted_ = false;                // Enter was pressed before the result was there.
};

} // namespace casetable

#endif
