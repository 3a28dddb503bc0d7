#include "window/view/MainWindow.h"

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <tuple>
#include <vector>

#include <gtest/gtest.h>

#include <QClipboard>
#include <QComboBox>
#include <QDesktopServices>
#include <QDialog>
#include <QDialogButtonBox>
#include <QDropEvent>
#include <QHeaderView>
#include <QImage>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMimeData>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScreen>
#include <QSettings>
#include <QTabWidget>
#include <QTableWidget>
#include <QTextBlock>
#include <QTextLayout>
#include <QTimer>
#include <QToolButton>
#include <QTreeWidget>
#include <QUrl>

#include "tests/casetable/support/Program.h"
#include "tests/casetable/support/TemporaryTree.h"
#include "tests/window/OpenWindow.h"
#include "window/view/AuxEditor.h"
#include "window/view/CasesView.h"
#include "window/view/CommandBar.h"
#include "window/view/FilterBar.h"
#include "window/view/GridView.h"
#include "window/view/Look.h"
#include "window/view/MarkersEditor.h"
#include "window/view/NamingBar.h"
#include "window/view/PathsView.h"
#include "window/view/RowTable.h"
#include "window/view/SuggestionsDialog.h"
#include "window/view/TemplateEditor.h"

namespace casetable {
namespace tests {

namespace {

// Selects bytes with the mouse.
void drag(PathsView& paths, int row, std::size_t begin, std::size_t end)
{
    paths.scrollTo(paths.model()->index(row, 0));
    const QPoint from = paths.placeOf(row, begin);
    const QPoint to = paths.placeOf(row, end);
    QTest::mousePress(paths.viewport(), Qt::LeftButton, {}, from);
    QTest::mouseMove(paths.viewport(), (from + to) / 2);
    // As the mouse of the test does not hold its button while it moves.
    QMouseEvent move(QEvent::MouseMove, to, Qt::NoButton, Qt::LeftButton, {});
    QApplication::sendEvent(paths.viewport(), &move);
    QTest::mouseRelease(paths.viewport(), Qt::LeftButton, {}, to);
}

void clickHead(CasesView& cases, int column)
{
    QHeaderView& head = *cases.horizontalHeader();
    QTest::mouseClick(head.viewport(), Qt::LeftButton, {},
                      QPoint(head.sectionViewportPosition(column) + head.sectionSize(column) / 2,
                             head.height() / 2));
}

void clickCell(QAbstractItemView& view, int row, int column,
               Qt::KeyboardModifiers modifiers = Qt::NoModifier)
{
    QTest::mouseClick(view.viewport(), Qt::LeftButton, modifiers,
                      view.visualRect(view.model()->index(row, column)).center());
}

// Types into a cell, and ends with Enter.
void type(QTableWidget& table, int row, int column, const QString& text)
{
    table.setCurrentCell(row, column);
    table.editItem(table.item(row, column));
    auto* const edit = qobject_cast<QLineEdit*>(QApplication::focusWidget());
    ASSERT_NE(edit, nullptr);
    edit->selectAll();
    QTest::keyClicks(edit, text);
    QTest::keyClick(edit, Qt::Key_Return);
    QCoreApplication::processEvents();
}

// Without a screen nobody can drag, and an application passes on no drop that was not dragged.
struct DropTaker : public RowTable {
    using RowTable::dropEvent;
};

// Takes addresses in place of the desktop.
class UrlTaker : public QObject {
    Q_OBJECT

public:
    Q_INVOKABLE void take(const QUrl& url) { taken = url; }

    QUrl taken;
};

} // namespace

TEST(Window, ListsTheFilesOfAFolderAtOnce)
{
    const TemporaryTree tree(campaign);
    OpenWindow open(tree.path());
    EXPECT_EQ(open.shownPaths(), campaign);
    EXPECT_FALSE(open.window.stop().isVisible());
}

TEST(Window, TakesAFolderThatIsDropped)
{
    const TemporaryTree tree(campaign);
    OpenWindow open;
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(QString::fromStdString(tree.path()))});
    QDragEnterEvent enter(QPoint(5, 5), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(&open.window, &enter);
    EXPECT_TRUE(enter.isAccepted());
    QDropEvent drop(QPointF(5, 5), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(&open.window, &drop);
    open.settle();
    EXPECT_EQ(open.session.setup().root, tree.path());
    EXPECT_EQ(open.shownPaths(), campaign);
}

TEST(Window, RemembersTheFoldersOpenedLast)
{
    const TemporaryTree tree(campaign);
    const TemporaryTree other(Texts{"a"});
    {
        OpenWindow open(tree.path());
        open.window.openFolder(other.path());
        open.settle();
    }
    const QStringList recent = QSettings().value("recent").toStringList();
    EXPECT_EQ(recent.mid(0, 2), QStringList({QString::fromStdString(other.path()),
                                             QString::fromStdString(tree.path())}));
}

TEST(Window, TellsWhyAFolderCannotBeRead)
{
    const TemporaryTree tree;
    OpenWindow open(tree.path("missing"));
    EXPECT_NE(open.window.message().text().indexOf("missing"), -1)
        << open.window.message().text().toStdString();
}

TEST(Window, TellsWhyAFolderCannotBeReadAgainOnceAnotherSentenceHasGone)
{
    const TemporaryTree tree;
    OpenWindow open(tree.path("missing"));
    const QString error = open.window.message().text();
    open.window.tell("Something else.");
    EXPECT_EQ(open.window.message().text(), "Something else.");
    auto* const fading = open.window.findChild<QTimer*>("fading");
    ASSERT_TRUE(fading != nullptr && fading->isActive());
    fading->start(0);
    EXPECT_TRUE(QTest::qWaitFor([&] { return open.window.message().text() == error; }, 20000));
    EXPECT_FALSE(fading->isActive());

    const TemporaryTree other(Texts{"a"});
    open.window.openFolder(other.path());
    open.window.tell("Something else.");
    open.settle();
    fading->start(0);
    EXPECT_TRUE(QTest::qWaitFor([&] { return open.window.message().text().isEmpty(); }, 20000));
}

TEST(Window, ShowsWhereATemplateIsWrongUntilItIsMended)
{
    const TemporaryTree tree(campaign);
    OpenWindow open(tree.path());
    QPlainTextEdit& edit = open.window.templates().edit();
    QTest::keyClicks(&edit, "wing{wing}/Mach{Mach:numbe");
    open.settle();
    ASSERT_TRUE(open.session.problem().has_value());
    EXPECT_TRUE(open.window.templates().reason().isVisible());
    EXPECT_FALSE(open.window.templates().reason().text().isEmpty());
    bool isUnderlined = false;
    for (const auto& range : edit.document()->firstBlock().layout()->formats())
        isUnderlined =
            isUnderlined || range.format.underlineStyle() == QTextCharFormat::WaveUnderline;
    EXPECT_TRUE(isUnderlined);

    QTest::keyClicks(&edit, "r}/*");
    open.settle();
    EXPECT_FALSE(open.session.problem().has_value());
    EXPECT_FALSE(open.window.templates().reason().isVisible());
    EXPECT_EQ(open.table(), Table({{"case", "wing", "Mach", "files"},
                                   {"0", "A", "0.80", "2"},
                                   {"1", "A", "0.85", "1"},
                                   {"2", "B", "0.80", "1"}}));
}

TEST(Window, KeepsTheTableOfBeforeWhileATemplateIsWrong)
{
    const TemporaryTree tree(campaign);
    OpenWindow open(tree.path());
    open.read({both});
    const Table before = open.table();
    const QString command = open.window.command().edit().text();
    open.window.templates().edit().moveCursor(QTextCursor::End);
    QTest::keyClicks(&open.window.templates().edit(), "{");
    open.settle();
    EXPECT_TRUE(open.session.problem().has_value());
    EXPECT_EQ(open.table(), before);
    EXPECT_EQ(open.window.command().edit().text(), command);
}

TEST(Window, ReadsByMarkersThatAreTypedAndOrdered)
{
    const TemporaryTree tree(campaign);
    OpenWindow open(tree.path());
    QTest::keyClick(&open.window, Qt::Key_2, Qt::AltModifier);
    RowTable& table = open.window.markers().table();
    type(table, 0, 0, "Mach");
    type(table, 1, 0, "wing");
    qobject_cast<QComboBox*>(table.cellWidget(0, 1))->setFocus();
    QTest::keyClick(table.cellWidget(0, 1), Qt::Key_Down);
    open.settle();
    EXPECT_EQ(open.table().size(), 1U); // "wing" is not behind "Mach".
    table.setCurrentCell(1, 0);
    QTest::keyClick(&table, Qt::Key_Up, Qt::AltModifier);
    open.settle();
    EXPECT_EQ(open.table(), Table({{"case", "wing", "Mach", "files"},
                                   {"0", "A", "0.80", "2"},
                                   {"1", "A", "0.85", "1"},
                                   {"2", "B", "0.80", "1"}}));

    table.setCurrentCell(0, 0);
    QTest::keyClick(&table, Qt::Key_Delete);
    open.settle();
    EXPECT_EQ(open.table(),
              Table({{"case", "Mach", "files"}, {"0", "0.80", "3"}, {"1", "0.85", "1"}}));
}

TEST(Window, OrdersMarkersThatAreDragged)
{
    const TemporaryTree tree(campaign);
    OpenWindow open(tree.path());
    casetable::Setup setup = open.session.setup();
    setup.by = casetable::Setup::By::Markers;
    setup.markers = {{"a", false}, {"b", false}, {"c", false}};
    open.session.change(setup);
    open.settle();
    RowTable& table = open.window.markers().table();
    const auto order = [&open] {
        std::string order;
        for (const auto& marker : open.session.setup().markers)
            order += marker.text;
        return order;
    };
    // Drops the row on the upper or lower part of another; there is nobody to drag without a
    // screen.
    const auto drop = [&table](int from, int onto, bool isBelow) {
        table.setCurrentCell(from, 0);
        const QRect rect = table.visualRect(table.model()->index(onto, 0));
        const QPointF place(rect.center().x(), isBelow ? rect.bottom() - 1 : rect.top() + 1);
        const std::unique_ptr<QMimeData> data(
            table.model()->mimeData({table.model()->index(from, 0)}));
        QDropEvent event(place, Qt::MoveAction, data.get(), Qt::LeftButton, Qt::NoModifier);
        (table.*&DropTaker::dropEvent)(&event);
    };
    const std::vector<std::tuple<int, int, bool, std::string>> drops = {
        {0, 2, true, "bca"}, {2, 0, false, "abc"}, {0, 1, true, "bac"},
        {0, 0, true, "bac"}, {2, 1, false, "bca"}, {0, 3, true, "cab"}};
    for (const auto& [from, onto, isBelow, expected] : drops) {
        drop(from, onto, isBelow);
        open.settle();
        EXPECT_EQ(order(), expected) << from << " onto " << onto;
        EXPECT_EQ(table.filledRows(), 3);
    }
}

TEST(Window, OpensTheFolderOfAFile)
{
    const TemporaryTree tree(campaign);
    OpenWindow open(tree.path());
    UrlTaker taker;
    QDesktopServices::setUrlHandler("file", &taker, "take");
    QTest::keyClick(&open.window, Qt::Key_Return, Qt::ControlModifier);
    EXPECT_NE(open.window.message().text().indexOf("Choose a file"), -1);
    clickCell(open.window.paths(), 3, 0);
    QTest::keyClick(&open.window, Qt::Key_Return, Qt::ControlModifier);
    QDesktopServices::unsetUrlHandler("file");
    EXPECT_EQ(taker.taken,
              QUrl::fromLocalFile(QString::fromStdString(tree.path("wingA/Mach0.85"))));
}

TEST(Window, SuggestsTemplatesAndShowsWhatTheyGive)
{
    const TemporaryTree tree(campaign);
    OpenWindow open(tree.path());
    QTest::keyClick(&open.window, Qt::Key_G, Qt::ControlModifier);
    auto* const dialog = open.window.findChild<SuggestionsDialog*>();
    ASSERT_NE(dialog, nullptr);
    open.settle();
    ASSERT_GT(dialog->list().topLevelItemCount(), 0);
    EXPECT_NE(dialog->list().topLevelItem(0)->text(1).indexOf(" of 5"), -1);
    EXPECT_TRUE(open.session.setup().templates.empty());
    QTest::keyClick(dialog->findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Ok),
                    Qt::Key_Space);
    open.settle();
    EXPECT_FALSE(open.session.setup().templates.empty());
    EXPECT_GT(open.table().size(), 1U);
}

TEST(Window, ShowsAColumnOfSeveralTemplatesInOneColour)
{
    const TemporaryTree tree({"a1_b1.x", "a2_b2.x", "a3_b3.x", "b4/c.y", "b5/c.y", "b6/c.y"});
    OpenWindow open(tree.path());
    open.read({"a{a}_b{b}.x", "b{b}/c.y"});
    const QPalette palette = open.window.palette();
    const QTextDocument& lines = *open.window.templates().edit().document();
    const auto colourAt = [](const QTextBlock& block, int place) {
        for (const auto& range : block.layout()->formats()) {
            if (range.start <= place && place < range.start + range.length)
                return range.format.foreground().color();
        }
        return QColor();
    };
    EXPECT_EQ(colourAt(lines.firstBlock(), 1), columnColour(0, palette));
    EXPECT_EQ(colourAt(lines.firstBlock(), 6), columnColour(1, palette));
    EXPECT_EQ(colourAt(lines.lastBlock(), 1), columnColour(1, palette));

    SuggestionsDialog dialog(open.session, nullptr);
    dialog.setAttribute(Qt::WA_DeleteOnClose, false);
    const auto columns = [](const Texts& names) {
        std::vector<SuggestedColumn> columns;
        for (const std::string& name : names)
            columns.push_back({name, false, 1, {"x"}});
        return columns;
    };
    Q_EMIT open.session.suggested(
        {{"{x}{b}", 1, 1, columns({"x", "b"})}, {"{a}{x}{y}", 1, 1, columns({"a", "x", "y"})}});
    const auto colourOf = [&dialog](int suggestion, int column) {
        return dialog.list().topLevelItem(suggestion)->child(column)->foreground(0).color();
    };
    EXPECT_EQ(colourOf(0, 0), columnColour(2, palette));
    EXPECT_EQ(colourOf(0, 1), columnColour(1, palette));
    EXPECT_EQ(colourOf(1, 0), columnColour(0, palette));
    EXPECT_EQ(colourOf(1, 1), columnColour(2, palette));
    EXPECT_EQ(colourOf(1, 2), columnColour(3, palette));
    open.settle();
}

TEST(Window, MakesATemplateOfAValueThatIsSelectedAndNamed)
{
    const TemporaryTree tree(campaign);
    OpenWindow open(tree.path());
    PathsView& paths = open.window.paths();
    drag(paths, 1, 10, 14);
    ASSERT_TRUE(paths.selectedBytes().has_value());
    EXPECT_EQ(paths.selectedBytes()->bytes(), "0.80");
    QTest::keyClick(&paths, Qt::Key_Return);
    EXPECT_EQ(open.window.naming().nameEdit().text(), "Mach");
    QTest::keyClicks(&open.window.naming().nameEdit(), "m");
    QTest::keyClick(&open.window.naming().nameEdit(), Qt::Key_Return);
    open.settle();
    EXPECT_EQ(open.session.setup().templates, Texts({"*/Mach{m:number}/flow.vtu"}));
    EXPECT_FALSE(open.window.naming().isVisible());
    EXPECT_EQ(open.table(),
              Table({{"case", "m", "files"}, {"0", "0.80", "2"}, {"1", "0.85", "1"}}));
}

TEST(Window, SelectsValuesWithTheKeysToo)
{
    const TemporaryTree tree(campaign);
    OpenWindow open(tree.path());
    PathsView& paths = open.window.paths();
    paths.setFocus();
    paths.setCurrentIndex(paths.model()->index(1, 1));
    for (int i = 0; i < 4; ++i)
        QTest::keyClick(&paths, Qt::Key_Right);
    QTest::keyClick(&paths, Qt::Key_Right, Qt::ShiftModifier);
    ASSERT_TRUE(paths.selectedBytes().has_value());
    EXPECT_EQ(paths.selectedBytes()->bytes(), "A");
    QTest::keyClick(&paths, Qt::Key_Left, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(paths.selectedBytes()->bytes(), "wing");
    QTest::keyClick(&paths, Qt::Key_Escape);
    QTest::keyClick(&paths, Qt::Key_Return);
    EXPECT_FALSE(open.window.naming().isVisible());
    EXPECT_FALSE(open.window.message().text().isEmpty());
}

TEST(Window, SelectsTheNextValueWithOneKey)
{
    const TemporaryTree tree(campaign);
    OpenWindow open(tree.path());
    PathsView& paths = open.window.paths();
    paths.setFocus();
    paths.setCurrentIndex(paths.model()->index(1, 1));
    const std::vector<std::pair<int, std::string>> steps = {
        {Qt::Key_Right, "wingA"}, {Qt::Key_Right, "Mach"}, {Qt::Key_Right, "0.80"},
        {Qt::Key_Right, "flow"},  {Qt::Key_Right, "vtu"},  {Qt::Key_Right, "vtu"},
        {Qt::Key_Left, "flow"},   {Qt::Key_Left, "0.80"},  {Qt::Key_Left, "Mach"}};
    for (const auto& [key, expected] : steps) {
        QTest::keyClick(&paths, static_cast<Qt::Key>(key), Qt::ControlModifier);
        ASSERT_TRUE(paths.selectedBytes().has_value());
        EXPECT_EQ(paths.selectedBytes()->bytes(), expected);
    }
}

TEST(Window, GoesOnInThePathWhereAValueWasNamed)
{
    const TemporaryTree tree(campaign);
    OpenWindow open(tree.path());
    PathsView& paths = open.window.paths();
    paths.setFocus();
    paths.setCurrentIndex(paths.model()->index(3, 1));
    const auto nameNext = [&](int words, const QString& name) {
        for (int i = 0; i < words; ++i)
            QTest::keyClick(&paths, Qt::Key_Right, Qt::ControlModifier);
        QTest::keyClick(&paths, Qt::Key_Return);
        open.window.naming().nameEdit().selectAll();
        QTest::keyClicks(&open.window.naming().nameEdit(), name);
        QTest::keyClick(&open.window.naming().nameEdit(), Qt::Key_Return);
        open.settle();
    };
    nameNext(3, "M");
    EXPECT_EQ(paths.currentIndex().row(), 3);
    nameNext(1, "what");
    EXPECT_EQ(open.table()[0], Texts({"case", "M", "what", "files"}));
}

TEST(Window, StaysInThePathThatAFilterLeaves)
{
    const TemporaryTree tree(campaign);
    OpenWindow open(tree.path());
    PathsView& paths = open.window.paths();
    paths.setCurrentIndex(paths.model()->index(3, 1));
    QTest::keyClicks(&open.window.filters().text(), "flow");
    open.settle();
    ASSERT_EQ(open.shownPaths().size(), 3U);
    EXPECT_EQ(paths.currentIndex().row(), 1);
}

TEST(Window, RenamesTheColumnOfAValueThatIsNamedAgain)
{
    const TemporaryTree tree(campaign);
    OpenWindow open(tree.path());
    open.read({both});
    clickHead(open.window.cases(), 2);
    open.settle();
    PathsView& paths = open.window.paths();
    drag(paths, 1, 10, 14);
    QTest::keyClick(&paths, Qt::Key_Return);
    EXPECT_EQ(open.window.naming().nameEdit().text(), "Mach");
    QTest::keyClicks(&open.window.naming().nameEdit(), "M");
    QTest::keyClick(&open.window.naming().nameEdit(), Qt::Key_Return);
    open.settle();
    EXPECT_EQ(open.session.setup().templates, Texts({"wing{wing}/Mach{M:number}/*"}));
    EXPECT_EQ(open.session.setup().sort, Texts({"M"}));
}

TEST(Window, SelectsANumberByADoubleClick)
{
    const TemporaryTree tree(campaign);
    OpenWindow open(tree.path());
    PathsView& paths = open.window.paths();
    QTest::mouseDClick(paths.viewport(), Qt::LeftButton, {}, paths.placeOf(1, 12));
    ASSERT_TRUE(paths.selectedBytes().has_value());
    EXPECT_EQ(paths.selectedBytes()->bytes(), "0.80");
}

TEST(Window, KeepsInSightWhatIsNamed)
{
    Texts many;
    for (int i = 10; i < 60; ++i)
        many.push_back("T" + std::to_string(i));
    const TemporaryTree tree(many);
    OpenWindow open(tree.path());
    PathsView& paths = open.window.paths();
    const int row = paths.rowAt(paths.viewport()->height() - 1) - 1; // The last that is seen whole.
    paths.selectBytes(row, 1, 3);
    QTest::keyClick(&paths, Qt::Key_Return);
    QCoreApplication::processEvents();
    ASSERT_TRUE(open.window.naming().isVisible());
    const QRect seen = paths.visualRect(paths.model()->index(row, 1));
    EXPECT_LE(seen.bottom(), paths.viewport()->height());
}

TEST(Window, SaysWhyBytesCannotBeNamed)
{
    const TemporaryTree tree(campaign);
    OpenWindow open(tree.path());
    PathsView& paths = open.window.paths();
    drag(paths, 1, 2, 8);
    QTest::keyClick(&paths, Qt::Key_F2);
    QTest::keyClicks(&open.window.naming().nameEdit(), "x");
    QTest::keyClick(&open.window.naming().nameEdit(), Qt::Key_Return);
    open.settle();
    EXPECT_TRUE(open.window.naming().isVisible());
    EXPECT_TRUE(open.session.setup().templates.empty());
    QTest::keyClick(&open.window.naming().nameEdit(), Qt::Key_Escape);
    EXPECT_FALSE(open.window.naming().isVisible());
}

TEST(Window, ShowsTheCaseOfEachPath)
{
    const TemporaryTree tree(campaign);
    OpenWindow open(tree.path());
    open.read({both});
    const QAbstractItemModel& model = *open.window.paths().model();
    EXPECT_EQ(model.data(model.index(0, 0)).toString(), "");
    EXPECT_EQ(model.data(model.index(1, 0)).toString(), "0");
    EXPECT_EQ(model.data(model.index(4, 0)).toString(), "2");
}

TEST(Window, ExplainsEachPathAsTheProgramDoes)
{
    const TemporaryTree tree({" a<b>/Mach1", "wingA/Mach0.80\xff"});
    OpenWindow open(tree.path());
    casetable::Setup setup = open.session.setup();
    for (const Texts& words :
         {Texts({"-t", "wing{wing}/Mach{Mach:number}"}), Texts({"-n", "Mach"})}) {
        setup.by =
            words[0] == "-t" ? casetable::Setup::By::Templates : casetable::Setup::By::Markers;
        setup.templates = {words[1]};
        setup.markers = {{words[1], true}};
        open.session.change(setup);
        open.settle();
        const QAbstractItemModel& model = *open.window.paths().model();
        for (int row = 0; row < 2; ++row) {
            const std::string path = open.shownPaths()[static_cast<std::size_t>(row)];
            QString text =
                QString::fromStdString(run(tree, {words[0], words[1], "--explain", path}).output);
            ASSERT_FALSE(text.isEmpty());
            text.chop(1);
            const QModelIndex index = model.index(row, 1);
            EXPECT_EQ(model.data(index, Qt::AccessibleDescriptionRole).toString(), text);
            EXPECT_EQ(model.data(index, Qt::ToolTipRole).toString(),
                      "<pre>" + text.toHtmlEscaped() + "</pre>");
        }
    }
}

TEST(Window, ShowsTheExplanationOfThePathThatIsChosen)
{
    const TemporaryTree tree(campaign);
    OpenWindow open(tree.path());
    QTest::keyClick(&open.window, Qt::Key_E, Qt::ControlModifier);
    EXPECT_NE(open.window.message().text().indexOf("Choose a path"), -1);
    open.read({both});
    clickCell(open.window.paths(), 0, 0);
    QTest::keyClick(&open.window, Qt::Key_E, Qt::ControlModifier);
    const auto* const dialog = open.window.findChild<QDialog*>();
    ASSERT_NE(dialog, nullptr);
    EXPECT_EQ(dialog->findChild<QPlainTextEdit*>()->toPlainText().toStdString(),
              run(tree, {"-t", both, "--explain", campaign[0]}).output);
}

TEST(Window, FiltersPathsByTextMatchAndValue)
{
    const TemporaryTree tree(campaign);
    OpenWindow open(tree.path());
    open.read({both});
    FilterBar& filters = open.window.filters();
    QTest::keyClick(&open.window, Qt::Key_F, Qt::ControlModifier);
    QTest::keyClicks(&filters.text(), "log");
    open.settle();
    EXPECT_EQ(open.shownPaths(), Texts({campaign[2]}));
    QTest::keyClick(&filters.text(), Qt::Key_Escape);
    open.settle();
    EXPECT_EQ(open.shownPaths(), campaign);

    filters.which().setFocus();
    QTest::keyClick(&filters.which(), Qt::Key_End);
    open.settle();
    EXPECT_EQ(open.shownPaths(), Texts({campaign[0]}));
    QTest::keyClick(&filters.which(), Qt::Key_Home);

    filters.column().setFocus();
    QTest::keyClick(&filters.column(), Qt::Key_End);
    open.settle();
    filters.value().setFocus();
    QTest::keyClick(&filters.value(), Qt::Key_End);
    open.settle();
    EXPECT_EQ(open.shownPaths(), Texts({campaign[3]}));
}

TEST(Window, CopiesPathsAndSelectedBytes)
{
    const TemporaryTree tree(campaign);
    OpenWindow open(tree.path());
    PathsView& paths = open.window.paths();
    paths.setFocus();
    clickCell(paths, 1, 0);
    clickCell(paths, 3, 0, Qt::ShiftModifier);
    QTest::keyClick(&paths, Qt::Key_C, Qt::ControlModifier);
    open.settle();
    EXPECT_EQ(QApplication::clipboard()->text().toStdString(),
              campaign[1] + '\n' + campaign[2] + '\n' + campaign[3]);
    drag(paths, 1, 0, 5);
    QTest::keyClick(&paths, Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(QApplication::clipboard()->text(), "wingA");
}

TEST(Window, SaysWhichCopiedPathsAreNoPlainText)
{
    const TemporaryTree tree({"a", "b\xff", "c\nd"});
    OpenWindow open(tree.path());
    PathsView& paths = open.window.paths();
    paths.setFocus();
    paths.selectAll();
    QTest::keyClick(&paths, Qt::Key_C, Qt::ControlModifier);
    open.settle();
    EXPECT_EQ(QApplication::clipboard()->text().toStdString(), "a\n$'b\\377'\n$'c\\012d'");
    EXPECT_EQ(open.window.message().text(),
              "Copied: 3 paths. 2 of them are no plain text, and stand as words of a shell.");
    paths.selectBytes(1, 1, 2);
    QTest::keyClick(&paths, Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(QApplication::clipboard()->text().toStdString(), "$'\\377'");
    EXPECT_NE(open.window.message().text().indexOf("word of a shell"), -1);
}

TEST(Window, CopiesTheSelectedCasesInTheirOrder)
{
    const TemporaryTree tree(campaign);
    OpenWindow open(tree.path());
    open.read({both});
    clickHead(open.window.cases(), 2);
    open.settle();
    CasesView& cases = open.window.cases();
    clickCell(cases, 2, 1);
    clickCell(cases, 0, 1, Qt::ControlModifier);
    open.settle();
    QTest::keyClick(&cases, Qt::Key_C, Qt::ControlModifier);
    open.settle();
    EXPECT_EQ(QApplication::clipboard()->text(),
              "case\twing\tMach\tfiles\n0\tA\t0.80\t2\n1\tA\t0.85\t1\n");
}

TEST(Window, CopiesAllCasesWhereOneIsOnlyThatOfThePath)
{
    const TemporaryTree tree(campaign);
    OpenWindow open(tree.path());
    open.read({both});
    clickCell(open.window.paths(), 1, 0);
    open.settle();
    QTest::keyClick(&open.window, Qt::Key_T, Qt::ControlModifier);
    open.settle();
    EXPECT_EQ(QApplication::clipboard()->text(), "case\twing\tMach\tfiles\n"
                                                 "0\tA\t0.80\t2\n1\tA\t0.85\t1\n2\tB\t0.80\t1\n");
    EXPECT_EQ(open.window.message().text(), "Copied: 3 cases, for a spreadsheet to paste.");
}

TEST(Window, CopiesThePathThatHasTheKeysWhereNoneIsSelected)
{
    const TemporaryTree tree(campaign);
    OpenWindow open(tree.path());
    PathsView& paths = open.window.paths();
    paths.setFocus();
    clickCell(paths, 2, 0);
    open.session.walkAgain();
    open.settle();
    QTest::keyClick(&paths, Qt::Key_C, Qt::ControlModifier);
    open.settle();
    EXPECT_EQ(QApplication::clipboard()->text().toStdString(), campaign[2]);
}

TEST(Window, CopiesNothingWhereThereAreNoPaths)
{
    OpenWindow open;
    QApplication::clipboard()->setText("kept");
    open.window.paths().setFocus();
    QTest::keyClick(&open.window.paths(), Qt::Key_C, Qt::ControlModifier);
    open.settle();
    EXPECT_EQ(QApplication::clipboard()->text(), "kept");
}

TEST(Window, KeepsTheFolderWhenAReadingIsUndone)
{
    const TemporaryTree tree(campaign);
    const TemporaryTree other(Texts{"wingC/Mach1/x"});
    OpenWindow open(tree.path());
    open.read({both});
    open.window.openFolder(other.path());
    open.settle();
    EXPECT_EQ(open.table().size(), 2U);
    QTest::keyClick(&open.window, Qt::Key_Z, Qt::ControlModifier);
    open.settle();
    EXPECT_TRUE(open.session.setup().templates.empty());
    EXPECT_EQ(open.session.setup().root, other.path());
}

TEST(Window, SortsCasesAtAClickOnTheHead)
{
    const TemporaryTree tree(campaign);
    OpenWindow open(tree.path());
    open.read({both});
    CasesView& cases = open.window.cases();
    clickHead(cases, 2);
    open.settle();
    EXPECT_EQ(open.session.setup().sort, Texts({"Mach"}));
    clickHead(cases, 2);
    open.settle();
    EXPECT_EQ(open.session.setup().sort, Texts({"-Mach"}));
    EXPECT_EQ(open.table()[1], Texts({"1", "A", "0.85", "1"}));
    clickHead(cases, 2);
    open.settle();
    EXPECT_TRUE(open.session.setup().sort.empty());
    EXPECT_EQ(open.table()[1], Texts({"0", "A", "0.80", "2"}));
}

TEST(Window, KeepsChosenCasesSelectedInAnotherOrder)
{
    const TemporaryTree tree(campaign);
    OpenWindow open(tree.path());
    open.read({both});
    CasesView& cases = open.window.cases();
    clickCell(cases, 0, 1);
    open.settle();
    clickHead(cases, 2);
    clickHead(cases, 2);
    open.settle();
    EXPECT_EQ(cases.selectedCases(), std::vector<std::uint32_t>({0}));
    EXPECT_EQ(open.shownPaths(), Texts({campaign[1], campaign[2]}));
}

TEST(Window, ShowsTheFilesOfSelectedCases)
{
    const TemporaryTree tree(campaign);
    OpenWindow open(tree.path());
    open.read({both});
    CasesView& cases = open.window.cases();
    clickCell(cases, 0, 1);
    open.settle();
    EXPECT_EQ(open.shownPaths(), Texts({campaign[1], campaign[2]}));
    clickCell(cases, 2, 1, Qt::ControlModifier);
    open.settle();
    EXPECT_EQ(open.shownPaths(), Texts({campaign[1], campaign[2], campaign[4]}));
    QTest::keyClick(&cases, Qt::Key_Escape);
    open.settle();
    EXPECT_EQ(open.shownPaths(), campaign);
}

TEST(Window, ShowsTheCaseOfASelectedPath)
{
    const TemporaryTree tree(campaign);
    OpenWindow open(tree.path());
    open.read({both});
    PathsView& paths = open.window.paths();
    clickCell(paths, 4, 0);
    open.settle();
    EXPECT_EQ(open.window.cases().selectedCases(), std::vector<std::uint32_t>({2}));
    EXPECT_EQ(open.shownPaths(), campaign);
}

TEST(Window, MarksABadAuxiliaryRowAndCountsTheFilesOfAGoodOne)
{
    const TemporaryTree tree(campaign);
    OpenWindow open(tree.path());
    open.read({both});
    QTest::keyClick(&open.window, Qt::Key_3, Qt::AltModifier);
    RowTable& table = open.window.aux().table();
    type(table, 0, 0, "*.log");
    type(table, 0, 1, "a=b");
    open.settle();
    EXPECT_FALSE(table.item(0, 1)->toolTip().isEmpty());
    type(table, 0, 1, "log");
    type(table, 1, 0, "*.nothing");
    type(table, 1, 1, "nothing");
    open.settle();
    EXPECT_EQ(table.item(0, 2)->text(), "1");
    EXPECT_TRUE(table.item(0, 1)->toolTip().isEmpty());
    EXPECT_EQ(table.item(1, 0)->toolTip(), "Invalid pattern.");
    EXPECT_EQ(open.window.paths().paths().auxOf(2), std::optional<std::size_t>(0));
    EXPECT_EQ(open.window.paths().paths().auxOf(1), std::nullopt);
    EXPECT_EQ(open.table()[0], Texts({"case", "wing", "Mach", "log", "log files", "files"}));
    EXPECT_EQ(open.window.command().edit().text().indexOf("nothing"), -1);
}

TEST(Window, LeavesACellAloneInWhichSomebodyTypes)
{
    const TemporaryTree tree(campaign);
    OpenWindow open(tree.path());
    open.read({both});
    QTest::keyClick(&open.window, Qt::Key_3, Qt::AltModifier);
    RowTable& table = open.window.aux().table();
    type(table, 0, 0, "*.log");
    table.setCurrentCell(0, 1);
    table.editItem(table.item(0, 1));
    QTest::keyClicks(QApplication::focusWidget(), "lo");
    open.read({both, "{name}.txt"});
    QTest::keyClicks(QApplication::focusWidget(), "g");
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
    open.settle();
    EXPECT_EQ(open.session.setup().auxRows[0].tag, "log");
}

TEST(Window, ShowsTheCasesOfAFieldOfTheGrid)
{
    const TemporaryTree tree(campaign);
    OpenWindow open(tree.path());
    open.read({both});
    QTest::keyClick(&open.window, Qt::Key_6, Qt::AltModifier);
    open.settle();
    GridPicture& picture = open.window.grid().picture();
    ASSERT_EQ(picture.grid().fields.size(), 4U);
    EXPECT_EQ(picture.grid().holes(), 1U);
    EXPECT_EQ(picture.description(0, 1), QString::fromUtf8("A × 0.85: 1 case, 1 file"));
    QTest::mouseClick(&picture, Qt::LeftButton, {}, picture.fieldRect(0, 1).center());
    open.settle();
    EXPECT_EQ(open.shownPaths(), Texts({campaign[3]}));
    QTest::keyClick(&picture, Qt::Key_Left);
    QTest::keyClick(&picture, Qt::Key_Return);
    open.settle();
    EXPECT_EQ(open.shownPaths(), Texts({campaign[1], campaign[2]}));
}

TEST(Window, ShowsTheHeadsOfTheGridInTheColoursOfTheirColumns)
{
    const TemporaryTree tree(campaign);
    OpenWindow open(tree.path());
    open.read({"{x}/Mach{Mach:number}/{file}"});
    QTest::keyClick(&open.window, Qt::Key_6, Qt::AltModifier);
    open.window.grid().rows().setCurrentIndex(2);
    Q_EMIT open.window.grid().rows().activated(2);
    open.settle();
    GridPicture& picture = open.window.grid().picture();
    const QImage image = picture.grab().toImage();
    const QRect field = picture.fieldRect(0, 0);
    // Whether there is text in the colour, which is paler at its edges.
    const auto shows = [&](const QRect& part, std::size_t column) {
        const int hue = columnColour(column, picture.palette()).hue();
        for (int y = part.top(); y <= part.bottom(); ++y) {
            for (int x = part.left(); x <= part.right(); ++x) {
                const QColor pixel = image.pixelColor(x, y);
                if (pixel.saturation() > 60 && std::abs(pixel.hue() - hue) < 8)
                    return true;
            }
        }
        return false;
    };
    const QRect left(0, field.top(), field.left() - 1, field.height());
    const QRect above(field.left(), 0, field.width(), field.top() - 1);
    EXPECT_TRUE(shows(left, 2));
    EXPECT_TRUE(shows(above, 1));
    EXPECT_FALSE(shows(left, 1) || shows(left, 0));
}

TEST(Window, SaysThatAGridHasNoCases)
{
    const TemporaryTree tree(campaign);
    OpenWindow open(tree.path());
    open.read({"none{a}/{b}"});
    open.window.tables().setCurrentWidget(&open.window.grid());
    open.settle();
    QStringList told;
    for (const QLabel* const label : open.window.grid().findChildren<QLabel*>())
        told.push_back(label->text());
    EXPECT_TRUE(told.contains("There are no cases with both values."))
        << told.join('|').toStdString();
}

TEST(Window, SavesThePictureOfTheGrid)
{
    const TemporaryTree tree(campaign);
    OpenWindow open(tree.path());
    open.read({both});
    open.window.tables().setCurrentWidget(&open.window.grid());
    open.settle();
    const QString file = QString::fromStdString(tree.path("grid.png"));
    open.window.savePicture(file);
    open.settle();
    EXPECT_FALSE(QPixmap(file).isNull());
    tree.file("grid.nonsense", "before");
    open.window.savePicture(QString::fromStdString(tree.path("grid.nonsense")));
    open.settle();
    EXPECT_EQ(tree.content("grid.nonsense"), "before");
    open.window.savePicture(QString::fromStdString(tree.path("missing/grid.png")));
    open.settle();
    EXPECT_NE(open.window.message().text().indexOf("cannot be written"), -1);
}

TEST(Window, UndoesAndRedoesWhatWasTyped)
{
    const TemporaryTree tree(campaign);
    OpenWindow open(tree.path());
    open.read({both});
    QPlainTextEdit& edit = open.window.templates().edit();
    edit.setFocus();
    edit.moveCursor(QTextCursor::End);
    QTest::keyClicks(&edit, ".vtu");
    open.settle();
    EXPECT_EQ(open.session.setup().templates, Texts({both + ".vtu"}));
    QTest::keyClick(&edit, Qt::Key_Z, Qt::ControlModifier);
    open.settle();
    EXPECT_EQ(open.session.setup().templates, Texts({both}));
    EXPECT_EQ(edit.toPlainText().toStdString(), both);
    QTest::keyClick(&edit, Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
    open.settle();
    EXPECT_EQ(edit.toPlainText().toStdString(), both + ".vtu");
    QTest::keyClick(&edit, Qt::Key_Z, Qt::ControlModifier);
    QTest::keyClick(&edit, Qt::Key_Z, Qt::ControlModifier);
    open.settle();
    EXPECT_TRUE(open.session.setup().templates.empty());
    EXPECT_EQ(open.table(), Table({{}}));
}

TEST(Window, BringsBackAReadingThatACommandOrASetupReplaced)
{
    const TemporaryTree tree(campaign);
    const TemporaryTree other(Texts{"T1"});
    OpenWindow open(tree.path());
    open.read({both});
    casetable::Setup setup;
    setup.root = other.path();
    setup.templates = {"T{T}"};
    open.session.change(setup);
    open.session.undo();
    open.settle();
    EXPECT_EQ(open.session.setup().templates, Texts({both}));
    EXPECT_EQ(open.session.setup().root, other.path());
    setup.root = tree.path();
    open.session.open(setup);
    open.session.undo();
    open.settle();
    EXPECT_EQ(open.session.setup().templates, Texts({both}));
}

TEST(Window, RedoesAfterAnotherChoiceOfFiles)
{
    const TemporaryTree tree(campaign);
    OpenWindow open(tree.path());
    open.read({both});
    open.session.undo();
    casetable::Setup setup = open.session.setup();
    setup.hidden = true;
    open.session.change(setup);
    ASSERT_TRUE(open.session.canRedo());
    open.session.redo();
    open.settle();
    EXPECT_EQ(open.session.setup().templates, Texts({both}));
    EXPECT_TRUE(open.session.setup().hidden);
}

TEST(Window, CopiesACommandThatGivesItsTable)
{
    const TemporaryTree tree(campaign);
    OpenWindow open(tree.path());
    open.read({both});
    clickHead(open.window.cases(), 3);
    open.settle();
    QTest::keyClick(&open.window, Qt::Key_C, Qt::ControlModifier | Qt::ShiftModifier);
    const std::string command = QApplication::clipboard()->text().toStdString();
    EXPECT_EQ(command, "casetable -t '" + both + "' --sort=files " + tree.path());
    QTest::keyClick(&open.window, Qt::Key_T, Qt::ControlModifier);
    open.settle();
    std::string table = QApplication::clipboard()->text().toStdString();
    for (char& c : table)
        c = c == '\t' ? ',' : c;
    EXPECT_EQ(run(tree, {"-t", both, "--sort=files", "-f", "csv", tree.path()}), prints(table));
}

TEST(Window, TakesACommandThatIsPasted)
{
    const TemporaryTree tree(campaign);
    OpenWindow open;
    QLineEdit& edit = open.window.command().edit();
    QTest::keyClick(&open.window, Qt::Key_7, Qt::AltModifier);
    edit.clear();
    QApplication::clipboard()->setText(
        QString::fromStdString("casetable -n Mach --aux '*.log=log' -o out.csv " + tree.path()));
    QTest::keyClick(&edit, Qt::Key_V, Qt::ControlModifier);
    QTest::keyClick(&edit, Qt::Key_Return);
    open.settle();
    EXPECT_EQ(open.table().size(), 3U);
    EXPECT_EQ(open.session.setup().auxRows.size(), 1U);
    EXPECT_NE(open.window.message().text().indexOf("--output"), -1);

    edit.selectAll();
    QTest::keyClicks(&edit, "casetable 'a");
    QTest::keyClick(&edit, Qt::Key_Return);
    EXPECT_EQ(open.window.message().text(), "the quote ' is not closed");
    EXPECT_EQ(edit.text(), "casetable 'a");
    EXPECT_EQ(open.table().size(), 3U);
}

TEST(Window, OpensWhatWasWantedLast)
{
    const TemporaryTree tree(campaign);
    const TemporaryTree other(Texts{"a"});
    tree.file("c.casetable", "casetable -n T " + tree.path() + "\n");
    OpenWindow open;
    open.window.openPath(tree.path());
    open.window.openPath(tree.path("c.casetable"));
    open.window.openFolder(other.path());
    open.settle();
    EXPECT_EQ(open.shownPaths(), Texts({"a"}));
    EXPECT_FALSE(open.session.setup().hasReading());

    open.window.openPath(tree.path("c.casetable"));
    open.window.command().edit().setText(QString::fromStdString("-n b " + tree.path("wingB")));
    QTest::keyClick(&open.window.command().edit(), Qt::Key_Return);
    open.settle();
    EXPECT_EQ(open.session.setup().root, tree.path("wingB"));
}

TEST(Window, OpensASetupThatItHasSaved)
{
    const TemporaryTree tree(campaign);
    const TemporaryTree target;
    casetable::Setup saved;
    {
        OpenWindow open(tree.path());
        open.read({both, "{name}.txt"});
        casetable::Setup setup = open.session.setup();
        setup.auxRows = {{"*.log", "log"}};
        open.session.change(setup);
        saved = open.session.setup();
        open.window.saveSetup(target.path("c.casetable"));
        open.settle();
    }
    EXPECT_EQ(target.content("c.casetable"), commandLine(saved) + '\n');
    OpenWindow open;
    open.window.openPath(target.path("c.casetable"));
    open.settle();
    EXPECT_TRUE(open.session.setup() == saved);
    EXPECT_EQ(open.table().size(), 5U);
}

TEST(Window, TellsWhatASetupCannotKeep)
{
    const TemporaryTree tree;
    OpenWindow open;
    casetable::Setup setup;
    setup.root = tree.path();
    setup.auxRows = {{"*.log", "a=b"}};
    open.session.change(setup);
    open.window.saveSetup(tree.path("c.casetable"));
    open.settle();
    EXPECT_FALSE(tree.exists("c.casetable"));
    EXPECT_NE(open.window.message().text().indexOf("a=b"), -1);
    setup.auxRows.clear();
    setup.by = casetable::Setup::By::Markers;
    setup.markers = {{"T", true}};
    setup.templates = {both};
    open.session.change(setup);
    open.window.saveSetup(tree.path("c.casetable"));
    open.settle();
    EXPECT_NE(open.window.message().text().indexOf("without the templates"), -1);
    tree.file("left.casetable", "casetable -n T -o out.csv " + tree.path() + "\n");
    open.window.openSetup(tree.path("left.casetable"));
    open.settle();
    EXPECT_NE(open.window.message().text().indexOf("--output"), -1);
}

TEST(Window, TellsWhatIsWrongWithASetup)
{
    const TemporaryTree tree;
    tree.file("bad.casetable", "casetable --nonsense x\n");
    OpenWindow open;
    open.window.openPath(tree.path("bad.casetable"));
    open.settle();
    EXPECT_NE(open.window.message().text().indexOf("--nonsense"), -1);
    open.window.openSetup(tree.path("none.casetable"));
    open.settle();
    EXPECT_NE(open.window.message().text().indexOf("none.casetable"), -1);
}

TEST(Window, TakesAPastedReadingForTheOpenFolder)
{
    const TemporaryTree tree(campaign);
    OpenWindow open(tree.path());
    QLineEdit& edit = open.window.command().edit();
    edit.setText(QString::fromStdString("casetable -t '" + both + "'"));
    QTest::keyClick(&edit, Qt::Key_Return);
    open.settle();
    EXPECT_EQ(open.session.setup().root, tree.path());
    clickHead(open.window.cases(), 3);
    open.settle();
    EXPECT_EQ(open.session.setup().sort, Texts({"files"}));
}

TEST(Window, KeepsAPastedReadingThoughASetupWasToBeOpened)
{
    const TemporaryTree tree(campaign);
    const TemporaryTree setups;
    setups.file("c.casetable", "casetable -n T " + tree.path("wingA") + "\n");
    OpenWindow open(tree.path());
    open.window.openSetup(setups.path("c.casetable"));
    QLineEdit& edit = open.window.command().edit();
    edit.setText(QString::fromStdString("casetable -t '" + both + "'"));
    QTest::keyClick(&edit, Qt::Key_Return);
    open.settle();
    EXPECT_EQ(open.session.setup().templates, Texts({both}));
    EXPECT_EQ(open.session.setup().root, tree.path());
}

TEST(Window, TakesAPastedReadingForTheOpenList)
{
    const TemporaryTree tree;
    tree.file("list", std::string("a/T1\0b/T2\0", 10));
    OpenWindow open;
    casetable::Setup setup;
    setup.list = tree.path("list");
    setup.nullSeparated = true;
    setup.excluded = {"b/"};
    open.session.change(setup);
    QLineEdit& edit = open.window.command().edit();
    edit.setText("casetable -n T");
    QTest::keyClick(&edit, Qt::Key_Return);
    open.settle();
    EXPECT_EQ(open.shownPaths(), Texts({"a/T1"}));
    EXPECT_EQ(open.table().size(), 2U);
}

TEST(Window, DropsTheFilesOfASourceThatIsGone)
{
    const TemporaryTree tree(campaign);
    OpenWindow open(tree.path());
    open.read({both});
    casetable::Setup setup = open.session.setup();
    setup.root.clear();
    open.session.open(setup);
    open.settle();
    EXPECT_EQ(open.shownPaths(), Texts());
    EXPECT_EQ(open.session.matching(), nullptr);
    EXPECT_EQ(open.table(), Table({{}}));
}

TEST(Window, ShowsNoFilesOfAFilterThatTheyHaveOutrun)
{
    const TemporaryTree tree(campaign);
    OpenWindow open(tree.path());
    PathFilter filter;
    filter.text = "vtu";
    open.session.filter(filter);
    open.session.walkAgain();
    EXPECT_EQ(open.session.shownFiles(), nullptr);
    std::size_t early = 0;
    QObject::connect(&open.session, &Session::shownChanged, [&] {
        const std::vector<std::uint32_t>* const shown = open.session.shownFiles();
        if (shown != nullptr && !shown->empty() && shown->back() >= open.session.files().count())
            ++early;
    });
    open.settle();
    EXPECT_EQ(early, 0U);
    EXPECT_EQ(open.shownPaths().size(), 3U);
}

TEST(Window, DropsSelectedBytesWithTheirPath)
{
    const TemporaryTree tree(campaign);
    const TemporaryTree other(Texts{"a", "b"});
    OpenWindow open(tree.path());
    open.window.paths().selectBytes(1, 10, 14);
    ASSERT_TRUE(open.window.paths().selectedBytes().has_value());
    open.window.openFolder(other.path());
    open.settle();
    EXPECT_FALSE(open.window.paths().selectedBytes().has_value());
}

TEST(Window, TellsWhereTheWorkingFolderOfASetupIsGone)
{
    const TemporaryTree tree;
    tree.file("gone/x", "");
    const std::filesystem::path before = std::filesystem::current_path();
    OpenWindow open;
    casetable::Setup setup;
    setup.root = "relative";
    open.session.change(setup);
    open.settle();
    std::filesystem::current_path(tree.path("gone"));
    std::filesystem::remove_all(tree.path("gone"));
    open.window.message().clear();
    open.window.saveSetup(tree.path("c.casetable"));
    open.settle();
    std::filesystem::current_path(before);
    EXPECT_NE(open.window.message().text(), "");
    EXPECT_FALSE(tree.exists("c.casetable"));
}

TEST(Window, ReadsAListOfPaths)
{
    const TemporaryTree tree;
    tree.file("list.txt", "b/T2\na/T1\n");
    OpenWindow open;
    open.window.openPath(tree.path("list.txt"));
    open.read({"*/T{T:number}"});
    EXPECT_EQ(open.shownPaths(), Texts({"a/T1", "b/T2"}));
    EXPECT_EQ(open.table().size(), 3U);
}

TEST(Window, HasANameForAllThatCanBeReachedByKeys)
{
    OpenWindow open;
    for (const QWidget* widget : open.window.findChildren<QWidget*>()) {
        const bool isReached = (widget->focusPolicy() & Qt::TabFocus) && widget->isVisible() &&
                               widget->focusProxy() == nullptr;
        const auto* const button = qobject_cast<const QAbstractButton*>(widget);
        const bool isInside = widget->objectName().startsWith("qt_");
        if (!isReached || isInside)
            continue;
        EXPECT_TRUE(!widget->accessibleName().isEmpty() ||
                    (button != nullptr && !button->text().isEmpty()))
            << widget->metaObject()->className() << ' ' << widget->objectName().toStdString();
    }
}

TEST(Window, IsNoLargerAtFirstThanTheScreen)
{
    QSettings().remove("geometry");
    Session session(1);
    const MainWindow window(session);
    const QSize screen = QApplication::primaryScreen()->availableSize();
    EXPECT_LT(window.width(), screen.width());
    EXPECT_LT(window.height(), screen.height());
}

TEST(WordAt, FindsNumbersAndWords)
{
    const std::vector<std::tuple<std::string, std::size_t, std::string>> rows = {
        {"Mach0.80/x", 1, "Mach"},
        {"Mach0.80/x", 4, "0.80"},
        {"Mach0.80/x", 5, "0.80"},
        {"AoA-2.5", 4, "-2.5"},
        {"run-12", 5, "12"},
        {"Re6.5e6/x", 2, "6.5e6"},
        {"Re1.2E+07", 8, "1.2E+07"},
        {"a_b", 1, "_"},
        {"v1.", 2, "."},
        {"1e", 0, "1"},
        {"größe1", 1, "größe"},
        {"a", 9, "a"},
        {"r2c3", 3, "3"}};
    for (const auto& [path, offset, expected] : rows) {
        const ByteRange range = wordAt(path, offset);
        EXPECT_EQ(path.substr(range.begin, range.end - range.begin), expected) << path;
    }
}

TEST(WordAt, FindsWhatIsNextToAPlace)
{
    const std::string path = "_a-1/b.";
    const auto text = [&path](const std::optional<ByteRange>& range) {
        return range ? path.substr(range->begin, range->end - range->begin) : "none";
    };
    const std::vector<std::tuple<std::size_t, std::string, std::string>> rows = {
        {0, "a", "none"}, {1, "a", "none"}, {2, "1", "a"},    {3, "1", "a"},   {4, "b", "1"},
        {5, "b", "1"},    {6, "none", "b"}, {7, "none", "b"}, {9, "none", "b"}};
    for (const auto& [offset, from, before] : rows) {
        EXPECT_EQ(text(wordFrom(path, offset)), from) << offset;
        EXPECT_EQ(text(wordBefore(path, offset)), before) << offset;
    }
}

} // namespace tests
} // namespace casetable

#include "WindowTest.moc"
