#include "window/view/NamingBar.h"

#include <algorithm>

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include "casetable/templates/Template.h"
#include "window/model/Session.h"
#include "window/model/Text.h"
#include "window/view/Look.h"

namespace casetable {

namespace {

bool isNamePart(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
}

// The word in front of the bytes, as in "Mach0.8", often says what they are.
std::string proposedName(const NamedBytes& bytes)
{
    std::size_t end = bytes.begin;
    while (end > 0 && !isNamePart(bytes.path[end - 1]) && bytes.path[end - 1] != '/' &&
           !(bytes.path[end - 1] >= '0' && bytes.path[end - 1] <= '9'))
        --end;
    std::size_t begin = end;
    while (begin > 0 && isNamePart(bytes.path[begin - 1]))
        --begin;
    while (begin < end && bytes.path[begin] == '_')
        ++begin;
    while (end > begin && bytes.path[end - 1] == '_')
        --end;
    const std::string name = bytes.path.substr(begin, end - begin);
    return name == "case" || name == "path" || name == "files" ? "" : name;
}

bool hasColumn(const std::vector<std::string>& templates, const std::string& name)
{
    return std::any_of(templates.begin(), templates.end(), [&name](const std::string& text) {
        try {
            const Template read(text);
            return std::any_of(read.columns().begin(), read.columns().end(),
                               [&name](const TemplateColumn& each) { return each.name == name; });
        } catch (const TemplateError&) {
            return false;
        }
    });
}

// An order by the column that had the one name is one by that which has the other now.
void renameInOrder(std::vector<std::string>& sort, const std::string& from, const std::string& to)
{
    for (std::string& key : sort) {
        if (key == from)
            key = to;
        else if (key == '-' + from)
            key = '-' + to;
    }
}

} // namespace

NamingBar::NamingBar(Session& session)
    : session_(session), title_(new QLabel), name_(new QLineEdit), preview_(new QLabel),
      add_(new QPushButton(tr("Name it")))
{
    setFrameShape(QFrame::StyledPanel);
    setAutoFillBackground(true);
    name_->setPlaceholderText(tr("Name of the column"));
    name_->setAccessibleName(tr("Name of the column"));
    name_->setFixedWidth(em(font(), 12));
    name_->setFont(pathFont());
    preview_->setFont(pathFont());
    preview_->setTextInteractionFlags(Qt::TextSelectableByMouse);
    preview_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    preview_->setWordWrap(true);
    preview_->setAccessibleName(tr("The template that comes of it"));
    add_->setDefault(true);
    // The template has a line of its own, as it is seldom short.
    auto* const row = new QHBoxLayout;
    row->addWidget(title_);
    row->addWidget(name_);
    row->addStretch(1);
    row->addWidget(add_);
    auto* const layout = new QVBoxLayout(this);
    layout->addLayout(row);
    layout->addWidget(preview_);
    connect(name_, &QLineEdit::textChanged, this, &NamingBar::lookUp);
    connect(name_, &QLineEdit::returnPressed, this, &NamingBar::accept);
    connect(add_, &QPushButton::clicked, this, &NamingBar::accept);
    connect(&session, &Session::named, this, &NamingBar::show);
    // What was found for the templates of before would undo what was done to them since.
    connect(&session, &Session::setupChanged, this, [this] {
        if (isVisible())
            lookUp();
    });
    setVisible(false);
}

void NamingBar::ask(const NamedBytes& bytes)
{
    bytes_ = bytes;
    column_ = bytes.name;
    isWanted_ = false;
    title_->setText(
        tr("Name of “%1”:")
            .arg(shown(bytes.path.substr(bytes.begin, bytes.end - bytes.begin)).left(24)));
    const QString name = editable(bytes.name.empty() ? proposedName(bytes) : bytes.name);
    if (name_->text() == name)
        lookUp();
    name_->setText(name);
    name_->selectAll();
    setVisible(true);
    name_->setFocus();
}

void NamingBar::lookUp()
{
    result_.reset();
    isWanted_ = false;
    bytes_.name = bytesOf(name_->text());
    add_->setEnabled(false);
    if (bytes_.name.empty())
        preview_->setText(tr("Type a name for the values here."));
    else
        session_.name(bytes_);
}

void NamingBar::show(const NamedTemplates& result, const QString& error)
{
    QPalette colours = palette();
    if (!error.isEmpty())
        colours.setColor(QPalette::WindowText, errorColour(palette()));
    preview_->setPalette(colours);
    preview_->setText(error.isEmpty() ? shown(result.templates[result.index]) : error);
    add_->setEnabled(error.isEmpty());
    if (error.isEmpty())
        result_ = result;
    if (result_ && isWanted_)
        take();
}

void NamingBar::accept()
{
    isWanted_ = true;
    if (result_)
        take();
}

void NamingBar::take()
{
    Setup setup = session_.setup();
    setup.by = Setup::By::Templates;
    setup.templates = result_->templates;
    if (!column_.empty() && !hasColumn(setup.templates, column_))
        renameInOrder(setup.sort, column_, bytes_.name);
    close();
    session_.change(setup);
}

void NamingBar::close()
{
    isWanted_ = false;
    result_.reset();
    setVisible(false);
    Q_EMIT closed();
}

void NamingBar::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Escape)
        return close();
    QFrame::keyPressEvent(event);
}

} // namespace casetable
