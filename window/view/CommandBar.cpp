#include "window/view/CommandBar.h"

#include <stdexcept>

#include <QApplication>
#include <QClipboard>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include "casetable/system/ExitCode.h"
#include "window/model/CommandText.h"
#include "window/model/Session.h"
#include "window/model/Text.h"
#include "window/view/Look.h"

namespace casetable {

CommandBar::CommandBar(Session& session)
    : session_(session), edit_(new QLineEdit), copy_(new QPushButton(tr("Copy")))
{
    auto* const label = new QLabel(tr("&Command:"));
    label->setBuddy(edit_);
    edit_->setFont(pathFont());
    edit_->setAccessibleName(tr("The casetable command that gives this table"));
    edit_->setPlaceholderText(
        tr("The casetable command stands here; one that you paste is taken with Enter"));
    copy_->setToolTip(tr("Copy the command that gives this table"));
    auto* const layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(label);
    layout->addWidget(edit_, 1);
    layout->addWidget(copy_);
    connect(edit_, &QLineEdit::returnPressed, this, &CommandBar::accept);
    connect(copy_, &QPushButton::clicked, this, &CommandBar::copy);
    connect(&session, &Session::setupChanged, this, &CommandBar::takeCommand);
    connect(&session, &Session::matchingChanged, this, &CommandBar::takeCommand);
    takeCommand();
}

// What is being typed here stays.
void CommandBar::takeCommand()
{
    const Setup& setup = session_.effective();
    const bool isComplete = setup.hasSource() && setup.hasReading();
    copy_->setEnabled(isComplete);
    if (edit_->hasFocus() && edit_->isModified())
        return;
    edit_->setText(setup.hasSource() ? editable(commandLine(setup)) : QString());
    edit_->setCursorPosition(0);
    edit_->setModified(false);
}

void CommandBar::copy()
{
    QApplication::clipboard()->setText(editable(commandLine(session_.effective())));
    Q_EMIT told(tr("The command is copied."));
}

void CommandBar::accept()
{
    try {
        std::vector<std::string> words = commandWords(bytesOf(edit_->text()));
        if (!words.empty() && (words.front() == "casetable" || words.front() == "$"))
            words.erase(words.begin());
        ReadSetup read = readSetup(words);
        edit_->setModified(false);
        session_.change(forOpenFiles(read.setup, session_.setup()));
        Q_EMIT taken();
        takeCommand();
        QStringList leftOut;
        for (const std::string& option : read.leftOut)
            leftOut.push_back(shown(option));
        Q_EMIT told(leftOut.isEmpty()
                        ? tr("The command is taken.")
                        : tr("The command is taken, but for what says nothing about reading: %1.")
                              .arg(leftOut.join(", ")));
    } catch (const std::exception& failure) {
        Q_EMIT told(shown(failure.what()));
    }
}

} // namespace casetable
