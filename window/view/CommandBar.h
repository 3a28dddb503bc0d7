#ifndef WINDOW_VIEW_COMMANDBAR_H
#define WINDOW_VIEW_COMMANDBAR_H

#include <QWidget>

class QLineEdit;
class QPushButton;

namespace casetable {

class Session;

/// The command line that gives what is shown. One that is typed or pasted here is taken with Enter.
class CommandBar : public QWidget {
    Q_OBJECT

public:
    /// The session must outlive it.
    explicit CommandBar(Session& session);

    QLineEdit& edit() { return *edit_; }

    void copy();

Q_SIGNALS:
    /// A command that was typed has become the setup.
    void taken();
    /// A sentence about what was done, or what is wrong.
    void told(const QString& sentence);

private:
    void takeCommand();
    void accept();

    Session& session_;
    QLineEdit* edit_;
    QPushButton* copy_;
};

} // namespace casetable

#endif
