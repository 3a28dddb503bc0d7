#include <algorithm>
#include <cstddef>
#include <functional>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <QAction>
#include <QApplication>
#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include "tests/casetable/support/Program.h"
#include "tests/casetable/support/TemporaryTree.h"
#include "tests/window/OpenWindow.h"
#include "window/model/BackgroundJob.h"
#include "window/view/ColumnsDialog.h"

// What goes from the window into files, and comes from them.

namespace casetable {
namespace tests {

namespace {

// A file of which the system keeps those waiting who write it, until somebody reads.
class Pipe {
public:
    explicit Pipe(const std::string& path) : path_(path)
    {
        EXPECT_EQ(::mkfifo(path.c_str(), 0600), 0);
    }

    // All that is written, once somebody does; the window goes on meanwhile.
    std::string read()
    {
        std::string bytes;
        const int file = ::open(path_.c_str(), O_RDONLY | O_NONBLOCK);
        EXPECT_TRUE(QTest::qWaitFor(
            [&bytes, file] {
                char buffer[4096];
                const ssize_t count = ::read(file, buffer, sizeof buffer);
                bytes.append(buffer, static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
                return count == 0 && !bytes.empty();
            },
            20000));
        ::close(file);
        return bytes;
    }

private:
    const std::string path_;
};

// Answers the modal dialogs that come, one after the other.
class Dialogs {
public:
    using Answer = std::function<void(QWidget& dialog)>;

    explicit Dialogs(std::vector<Answer> answers) : answers_(std::move(answers))
    {
        QApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
        QObject::connect(&timer_, &QTimer::timeout, [this] {
            QWidget* const dialog = QApplication::activeModalWidget();
            if (dialog == nullptr || !dialog->isVisible() || areDone() || isAnswering_)
                return;
            isAnswering_ = true;
            answers_[answered_++](*dialog);
            isAnswering_ = false;
        });
        timer_.start(10);
    }

    bool areDone() const { return answered_ == answers_.size(); }

private:
    std::vector<Answer> answers_;
    std::size_t answered_ = 0;
    bool isAnswering_ = false;
    QTimer timer_;
};

// Types a name into a dialog for files.
Dialogs::Answer typesFile(const std::string& file)
{
    return [file](QWidget& dialog) {
        auto* const edit = dialog.findChild<QLineEdit*>("fileNameEdit");
        ASSERT_NE(edit, nullptr);
        edit->selectAll();
        QTest::keyClicks(edit, QString::fromStdString(file));
        QTest::keyClick(edit, Qt::Key_Return);
    };
}

void trigger(MainWindow& window, const QString& text)
{
    for (QAction* const action : window.findChildren<QAction*>()) {
        if (action->text() == text)
            return action->trigger();
    }
    ADD_FAILURE() << text.toStdString();
}

} // namespace

TEST(WindowFiles, SavesTheTableInTheFormatOfTheEnding)
{
    const TemporaryTree tree(campaign);
    const TemporaryTree target;
    OpenWindow open(tree.path());
    open.read({both});
    for (const std::string name : {"t.csv", "t.tsv", "t.json", "t.vtt"}) {
        open.session.save(target.path(name));
        open.settle();
        run(tree, {"-t", both, "-o", target.path("expected-" + name), tree.path()});
        EXPECT_EQ(target.content(name), target.content("expected-" + name));
    }
    open.session.save(target.path("t.sqlite"));
    open.settle();
    EXPECT_TRUE(target.exists("t.sqlite")) << open.window.message().text().toStdString();
}

TEST(WindowFiles, SaysThatATableIsCsvWhereItsNameStandsForNoFormat)
{
    const TemporaryTree tree(campaign);
    const TemporaryTree target;
    OpenWindow open(tree.path());
    open.read({both});
    open.session.save(target.path("t.xlsx"));
    open.settle();
    EXPECT_EQ(open.window.message().text().toStdString(),
              "Saved as CSV, as its name stands for no format: " + target.path("t.xlsx"));
    EXPECT_EQ(target.content("t.xlsx").substr(0, 9), "case,wing");
}

TEST(WindowFiles, SavesOtherRowsAsTheProgramDoes)
{
    const TemporaryTree tree(campaign);
    const TemporaryTree target;
    OpenWindow open(tree.path());
    casetable::Setup setup = open.session.setup();
    setup.templates = {both};
    setup.auxRows = {{"*.log", "log"}};
    setup.sort = {"-Mach"};
    open.session.change(setup);
    open.settle();
    const std::vector<std::tuple<SavedRows, Texts>> rows = {
        {{Rows::Cases, {}}, {"--aux=*.log=log", "--sort=-Mach"}},
        {{Rows::Files, {}}, {"--aux=*.log=log", "--sort=-Mach", "--files"}},
        {{Rows::Unmatched, {}}, {"--unmatched"}},
        {{Rows::Missing, {0, 1}}, {"--sort=-Mach", "--missing=wing,Mach"}},
        {{Rows::Missing, {1, 0}}, {"--sort=-Mach", "--missing=Mach,wing"}}};
    for (const auto& [saved, words] : rows) {
        for (const std::string name : {"t.csv", "t.tsv", "t.json", "t.vtt"}) {
            open.session.save(target.path(name), saved);
            open.settle();
            Texts arguments = words;
            arguments.insert(arguments.end(),
                             {"-t", both, "-o", target.path("expected-" + name), tree.path()});
            EXPECT_EQ(run(tree, arguments).exitCode, 0);
            EXPECT_EQ(target.content(name), target.content("expected-" + name)) << words.back();
        }
    }
}

TEST(WindowFiles, SaysThatRowsCannotBeSortedByAColumnThatTheyLack)
{
    const TemporaryTree tree(campaign);
    const TemporaryTree target;
    OpenWindow open(tree.path());
    open.read({both});
    casetable::Setup setup = open.session.setup();
    setup.sort = {"files"};
    open.session.change(setup);
    open.settle();
    open.session.save(target.path("t.csv"), {Rows::Files, {}});
    open.settle();
    EXPECT_EQ(open.window.message().text().toStdString(),
              "Saved, not sorted, as these rows cannot be so: " + target.path("t.csv"));
    run(tree, {"--files", "-t", both, "-o", target.path("expected.csv"), tree.path()});
    EXPECT_EQ(target.content("t.csv"), target.content("expected.csv"));
    open.session.save(target.path("t.sqlite"), {Rows::Missing, {0, 1}});
    open.settle();
    EXPECT_NE(open.window.message().text().indexOf("--missing"), -1);
}

TEST(WindowFiles, AsksForTheColumnsOfMissingCombinations)
{
    const TemporaryTree tree(campaign);
    const TemporaryTree target;
    OpenWindow open(tree.path());
    open.read({both});
    Dialogs dialogs({[](QWidget& dialog) {
                         auto& columns = dynamic_cast<ColumnsDialog&>(dialog);
                         EXPECT_EQ(columns.chosen(), std::vector<std::size_t>({0, 1}));
                         QTest::keyClick(&columns.list(), Qt::Key_Space);
                         const auto* const buttons = columns.findChild<QDialogButtonBox*>();
                         EXPECT_FALSE(buttons->button(QDialogButtonBox::Ok)->isEnabled());
                         QTest::keyClick(&columns.list(), Qt::Key_Space);
                         QTest::keyClick(&columns, Qt::Key_Return);
                     },
                     typesFile(target.path("missing"))});
    trigger(open.window, "Save &missing combinations…");
    open.settle();
    EXPECT_TRUE(dialogs.areDone());
    EXPECT_EQ(target.content("missing.csv"), "wing,Mach\nB,0.85\n");
}

TEST(WindowFiles, SavesUnderANameThatIsTyped)
{
    const TemporaryTree tree(campaign);
    const TemporaryTree target;
    OpenWindow open(tree.path());
    open.read({both});
    const Dialogs dialogs({typesFile(target.path("cases"))});
    QTest::keyClick(&open.window, Qt::Key_S, Qt::ControlModifier);
    open.settle();
    EXPECT_TRUE(dialogs.areDone());
    EXPECT_EQ(target.content("cases.csv").substr(0, 9), "case,wing");
}

TEST(WindowFiles, SavesASetupUnderANameThatIsTyped)
{
    const TemporaryTree tree(campaign);
    const TemporaryTree target;
    OpenWindow open(tree.path());
    open.read({both});
    const Dialogs dialogs({typesFile(target.path("c"))});
    QTest::keyClick(&open.window, Qt::Key_S, Qt::ControlModifier | Qt::ShiftModifier);
    open.settle();
    EXPECT_TRUE(dialogs.areDone());
    EXPECT_EQ(target.content("c.casetable"), commandLine(open.session.setup()) + '\n');
}

TEST(WindowFiles, AsksForAFolderAListAndASetup)
{
    const TemporaryTree tree(campaign);
    const TemporaryTree files;
    files.file("list.txt", "b/T2\n");
    files.file("c.casetable", "casetable -n T " + tree.path("wingA") + "\n");
    OpenWindow open;
    const Dialogs dialogs({typesFile(tree.path()), typesFile(files.path("list.txt")),
                           typesFile(files.path("c.casetable"))});
    trigger(open.window, "&Open folder…");
    open.settle();
    EXPECT_EQ(open.shownPaths(), campaign);
    trigger(open.window, "Open &list of paths…");
    open.settle();
    EXPECT_EQ(open.shownPaths(), Texts({"b/T2"}));
    trigger(open.window, "Open s&etup…");
    open.settle();
    EXPECT_EQ(open.session.setup().root, tree.path("wingA"));
    EXPECT_TRUE(dialogs.areDone());
}

TEST(WindowFiles, TellsWhyATableCannotBeSavedAndLosesNothing)
{
    const TemporaryTree tree(campaign);
    OpenWindow open(tree.path());
    open.read({both});
    const Table table = open.table();
    open.session.save(tree.path("missing/t.csv"));
    open.settle();
    EXPECT_NE(open.window.message().text().indexOf("missing/t.csv"), -1);
    open.session.save(tree.path("wingA/Mach0.80/flow.vtu"));
    open.settle();
    EXPECT_NE(open.window.message().text().indexOf("flow.vtu"), -1);
    EXPECT_EQ(tree.content("wingA/Mach0.80/flow.vtu"), "");
    EXPECT_EQ(open.table(), table);
}

TEST(WindowFiles, ClosesOnceAFileIsSaved)
{
    const TemporaryTree tree(campaign);
    const TemporaryTree target;
    Pipe pipe(target.path("pipe"));
    OpenWindow open(tree.path());
    open.read({both});
    open.session.save(target.path("pipe"));
    EXPECT_FALSE(open.window.close());
    EXPECT_TRUE(open.window.isVisible());
    EXPECT_NE(open.window.message().text().indexOf("pipe, and closing then"), -1);
    open.session.save(target.path("another.csv"));
    EXPECT_EQ(pipe.read().substr(0, 9), "case,wing");
    open.settle();
    EXPECT_FALSE(open.window.isVisible());
}

TEST(WindowFiles, GivesASaveUpWhenItIsClosedTwice)
{
    const TemporaryTree tree(campaign);
    const TemporaryTree target;
    Pipe pipe(target.path("pipe"));
    {
        OpenWindow open(tree.path());
        open.read({both});
        open.session.save(target.path("pipe"));
        EXPECT_FALSE(open.window.close());
        EXPECT_TRUE(open.window.close());
    }
    EXPECT_TRUE(BackgroundJob::isAnyLeft());
    EXPECT_EQ(pipe.read().substr(0, 9), "case,wing");
    EXPECT_TRUE(QTest::qWaitFor([] { return !BackgroundJob::isAnyLeft(); }, 20000));
}

TEST(WindowFiles, StaysOpenWhereAFileCannotBeSaved)
{
    const TemporaryTree tree(campaign);
    OpenWindow open(tree.path());
    open.read({both});
    open.session.save(tree.path("missing/t.csv"));
    EXPECT_FALSE(open.window.close());
    open.settle();
    EXPECT_TRUE(open.window.isVisible());
    EXPECT_NE(open.window.message().text().indexOf("missing/t.csv"), -1);
}

TEST(WindowFiles, WritesAFileOnlyOnceAtATime)
{
    const TemporaryTree tree(campaign);
    const TemporaryTree target;
    Pipe pipe(target.path("pipe"));
    OpenWindow open(tree.path());
    open.read({both});
    open.session.save(target.path("pipe"));
    open.session.save(target.path("pipe"));
    EXPECT_NE(open.window.message().text().indexOf("pipe is still being written"), -1);
    open.session.save(target.path("t.csv"));
    EXPECT_TRUE(QTest::qWaitFor([&open] { return open.session.saving().size() == 1; }, 20000));
    EXPECT_TRUE(target.exists("t.csv"));
    pipe.read();
    open.settle();
}

TEST(WindowFiles, SavesNoTableWhileAnotherReadingIsMatched)
{
    const TemporaryTree tree(campaign);
    const TemporaryTree target;
    OpenWindow open(tree.path());
    open.read({both});
    casetable::Setup setup = open.session.setup();
    setup.templates = {"wing{wing}/**"};
    open.session.change(setup);
    ASSERT_TRUE(open.session.isMatching());
    open.session.save(target.path("t.csv"));
    EXPECT_EQ(open.window.message().text(), "there is no table yet");
    open.settle();
    EXPECT_FALSE(target.exists("t.csv"));
}

TEST(WindowFiles, SavesASetupWithoutAnOrderThatDoesNotCount)
{
    const TemporaryTree tree(campaign);
    const TemporaryTree target;
    OpenWindow open(tree.path());
    open.read({both});
    casetable::Setup setup = open.session.setup();
    setup.sort = {"wing", "gone"};
    open.session.change(setup);
    open.settle();
    open.window.saveSetup(target.path("c.casetable"));
    open.settle();
    setup.sort.clear();
    EXPECT_EQ(target.content("c.casetable"), commandLine(setup) + '\n');
}

TEST(WindowFiles, SavesNoTableOfAWalkThatFailed)
{
    const TemporaryTree tree;
    OpenWindow open(tree.path("missing"));
    open.read({both});
    const std::string error = open.session.walkEnd().error;
    ASSERT_NE(error, "");
    open.window.message().clear();
    open.session.save(tree.path("t.csv"));
    open.settle();
    EXPECT_FALSE(tree.exists("t.csv"));
    EXPECT_EQ(open.window.message().text().toStdString(), error);
}

} // namespace tests
} // namespace casetable
