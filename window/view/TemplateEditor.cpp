#include "window/view/TemplateEditor.h"

#include <algorithm>
#include <string>
#include <vector>

#include <QKeyEvent>
#include <QLabel>
#include <QPlainTextEdit>
#include <QSyntaxHighlighter>
#include <QVBoxLayout>

#include "casetable/templates/Template.h"
#include "window/model/Session.h"
#include "window/model/Text.h"
#include "window/view/Look.h"

namespace casetable {

namespace {

// Changes are undone for the whole window, and Tab leads on.
class Edit : public QPlainTextEdit {
public:
    Edit()
    {
        setUndoRedoEnabled(false);
        setTabChangesFocus(true);
        setLineWrapMode(NoWrap);
    }

protected:
    bool event(QEvent* event) override
    {
        // Otherwise the edit takes the keys for itself, and does nothing.
        if (event->type() == QEvent::ShortcutOverride) {
            auto* const key = static_cast<QKeyEvent*>(event);
            if (key->matches(QKeySequence::Undo) || key->matches(QKeySequence::Redo)) {
                event->ignore();
                return false;
            }
        }
        return QPlainTextEdit::event(event);
    }
};

std::vector<std::string> linesOf(const QTextDocument& document)
{
    std::vector<std::string> lines;
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next())
        lines.push_back(bytesOf(block.text()));
    if (lines.size() == 1 && lines.front().empty())
        lines.clear();
    return lines;
}

} // namespace

class TemplateEditor::Highlighter : public QSyntaxHighlighter {
public:
    Highlighter(QTextDocument* document, const TemplateEditor& editor)
        : QSyntaxHighlighter(document), editor_(editor)
    {
    }

protected:
    void highlightBlock(const QString& text) override
    {
        const std::string bytes = bytesOf(text);
        const auto line = static_cast<std::size_t>(currentBlock().blockNumber());
        markColumns(bytes);
        const auto& problem = editor_.session_.problem();
        if (problem && problem->line == line)
            markProblem(bytes, problem->position);
    }

private:
    // In UTF-16 units of the line.
    static int placeOf(const std::string& bytes, std::size_t offset)
    {
        return editable(std::string_view(bytes).substr(0, offset)).size();
    }

    void markColumns(const std::string& bytes)
    {
        if (bytes.find_first_not_of(" \t") == std::string::npos)
            return;
        try {
            const Template pathTemplate(bytes);
            std::vector<std::string> names = editor_.session_.columnNames();
            markElements(bytes, pathTemplate, pathTemplate.elements(), names);
        } catch (const TemplateError&) {
            // Its place is marked.
        }
    }

    void markElements(const std::string& bytes, const Template& pathTemplate,
                      const std::vector<TemplateElement>& elements, std::vector<std::string>& names)
    {
        for (const TemplateElement& element : elements) {
            const int from = placeOf(bytes, element.position);
            const int to = placeOf(bytes, element.position + element.length);
            if (element.kind == TemplateElement::Kind::Column ||
                element.kind == TemplateElement::Kind::Again)
                setFormat(
                    from, to - from,
                    columnFormat(columnIndex(names, pathTemplate.columns()[element.column].name),
                                 editor_.palette()));
            markElements(bytes, pathTemplate, element.elements, names);
        }
    }

    // A place behind the last byte is shown at that.
    void markProblem(const std::string& bytes, std::size_t position)
    {
        if (bytes.empty())
            return;
        const std::size_t begin = std::min(position, bytes.size() - 1);
        QTextCharFormat wrong;
        wrong.setForeground(errorColour(editor_.palette()));
        wrong.setUnderlineStyle(QTextCharFormat::WaveUnderline);
        wrong.setUnderlineColor(errorColour(editor_.palette()));
        const int from = placeOf(bytes, begin);
        setFormat(from, std::max(1, placeOf(bytes, bytes.size()) - from), wrong);
    }

    const TemplateEditor& editor_;
};

TemplateEditor::TemplateEditor(Session& session)
    : session_(session), edit_(new Edit), reason_(new QLabel)
{
    edit_->setFont(pathFont());
    edit_->setPlaceholderText(
        tr("A template describes whole paths:  wing{wing}/Mach{Mach:number}/**\n"
           "Type one, select a value in a path below and press Enter, or press Suggest."));
    edit_->setAccessibleName(tr("Templates, one a line"));
    QPalette wrong = palette();
    wrong.setColor(QPalette::WindowText, errorColour(palette()));
    reason_->setPalette(wrong);
    reason_->setWordWrap(true);
    reason_->setAccessibleName(tr("What is wrong with the template"));
    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(em(font(), 0.2));
    layout->addWidget(edit_, 1);
    layout->addWidget(reason_);
    setFocusProxy(edit_);
    highlighter_ = new Highlighter(edit_->document(), *this);
    connect(edit_, &QPlainTextEdit::textChanged, this, &TemplateEditor::takeText);
    connect(&session, &Session::setupChanged, this, &TemplateEditor::takeSetup);
    takeSetup();
}

void TemplateEditor::takeText()
{
    const std::vector<std::string> lines = linesOf(*edit_->document());
    if (lines == session_.setup().templates)
        return; // Only the formats have changed.
    Setup setup = session_.setup();
    setup.by = Setup::By::Templates;
    setup.templates = lines;
    session_.change(setup, "templates");
}

void TemplateEditor::takeSetup()
{
    const std::vector<std::string>& lines = session_.setup().templates;
    if (linesOf(*edit_->document()) != lines) {
        QStringList texts;
        for (const std::string& line : lines)
            texts.push_back(editable(line));
        const QSignalBlocker blocker(edit_);
        const int place = edit_->textCursor().position();
        edit_->setPlainText(texts.join('\n'));
        QTextCursor cursor = edit_->textCursor();
        cursor.setPosition(std::min(place, edit_->document()->characterCount() - 1));
        edit_->setTextCursor(cursor);
    }
    {
        const QSignalBlocker blocker(edit_);
        highlighter_->rehighlight();
    }
    const auto& problem = session_.problem();
    const bool isShown = problem && session_.setup().by == Setup::By::Templates;
    reason_->setVisible(isShown);
    if (isShown) {
        const QString line = lines.size() > 1 ? tr("Line %1: ").arg(problem->line + 1) : QString();
        reason_->setText(line + shown(problem->reason));
    }
}

} // namespace casetable
