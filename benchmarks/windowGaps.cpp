// Measures how long the window is without an answer while it works on many files.
//   windowGaps FOLDER|LIST TEMPLATE
// The template is typed, and reads the files. Prints for each thing that a user does the longest
// gap of the event loop, the gap that 99.9 % are no longer than, what part of the gaps is longer
// than 50 ms, and how long the work took until all was shown. Of a changed template, prints when
// the rows that are seen have their new values, and when all files are matched.

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include <sys/resource.h>

#include <QApplication>
#include <QComboBox>
#include <QElapsedTimer>
#include <QEvent>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QScrollBar>
#include <QSettings>
#include <QTabWidget>
#include <QTimer>

#include "casetable/system/Processors.h"
#include "window/model/Session.h"
#include "window/view/CasesView.h"
#include "window/view/FilterBar.h"
#include "window/view/GridView.h"
#include "window/view/MainWindow.h"
#include "window/view/PathsView.h"
#include "window/view/TemplateEditor.h"

namespace casetable {

namespace {

// Asks the event loop as often as it answers.
class Gaps {
public:
    Gaps()
    {
        timer_.setTimerType(Qt::PreciseTimer);
        timer_.setInterval(1);
        QObject::connect(&timer_, &QTimer::timeout, [this] { note(); });
        timer_.start();
        since_.start();
    }

    void begin()
    {
        gaps_.clear();
        since_.start();
    }

    void print(const char* what, double seconds)
    {
        note();
        std::sort(gaps_.begin(), gaps_.end());
        const auto late =
            std::count_if(gaps_.begin(), gaps_.end(), [](double gap) { return gap > 50; });
        std::printf("%-28s %8.1f ms longest %8.1f ms at 99.9 %% %6.2f %% above 50 ms %8.2f s until "
                    "all is shown\n",
                    what, gaps_.back(), gaps_[gaps_.size() * 999 / 1000],
                    100.0 * static_cast<double>(late) / static_cast<double>(gaps_.size()), seconds);
        static_cast<void>(std::fflush(stdout));
    }

private:
    void note()
    {
        gaps_.push_back(static_cast<double>(since_.nsecsElapsed()) / 1e6);
        since_.start();
    }

    QTimer timer_;
    QElapsedTimer since_;
    std::vector<double> gaps_;
};

// Notes that a widget is painted.
class Painted : public QObject {
public:
    explicit Painted(QWidget& widget) { widget.installEventFilter(this); }

    bool take() { return std::exchange(is_, false); }

protected:
    bool eventFilter(QObject* /*watched*/, QEvent* event) override
    {
        is_ = is_ || event->type() == QEvent::Paint;
        return false;
    }

private:
    bool is_ = false;
};

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

class User {
public:
    explicit User(Session& session) : session_(session) {}

    void does(const char* what, const std::function<void()>& act)
    {
        QElapsedTimer time;
        time.start();
        gaps_.begin();
        act();
        waitFor([this] { return session_.isIdle(); });
        waitFor([n = 0]() mutable { return ++n > 20; });
        gaps_.print(what, static_cast<double>(time.nsecsElapsed()) / 1e9);
    }

    static void types(QWidget& widget, const QString& text)
    {
        for (const QChar c : text) {
            QKeyEvent press(QEvent::KeyPress, 0, Qt::NoModifier, QString(c));
            QApplication::sendEvent(&widget, &press);
            QElapsedTimer pause;
            pause.start();
            waitFor([&pause] { return pause.elapsed() > 60; });
        }
    }

    // Takes turns between two templates that read the same files; the second is there at first.
    void changesTheTemplate(MainWindow& window, const QString& one, const QString& other)
    {
        Painted painted(*window.paths().viewport());
        std::vector<double> shown;
        std::vector<double> matched;
        for (int i = 0; i < 10; ++i) {
            painted.take();
            QElapsedTimer time;
            time.start();
            window.templates().edit().setPlainText(i % 2 == 0 ? one : other);
            // The loop has gone round, so the painting of which it was told has ended.
            waitFor([&painted] { return painted.take(); });
            shown.push_back(static_cast<double>(time.nsecsElapsed()) / 1e6);
            waitFor([this] { return session_.isIdle(); });
            matched.push_back(static_cast<double>(time.nsecsElapsed()) / 1e9);
        }
        std::printf("changing the template: rows shown after %.1f ms (%.1f to %.1f), all matched "
                    "after %.2f s (%.2f to %.2f)\n",
                    median(shown), *std::min_element(shown.begin(), shown.end()),
                    *std::max_element(shown.begin(), shown.end()), median(matched),
                    *std::min_element(matched.begin(), matched.end()),
                    *std::max_element(matched.begin(), matched.end()));
    }

private:
    static void waitFor(const std::function<bool()>& isReached)
    {
        do
            QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
        while (!isReached());
    }

    Session& session_;
    Gaps gaps_;
};

void measure(const std::string& path, const QString& typed)
{
    Session session(availableProcessors());
    MainWindow window(session);
    window.resize(1280, 720);
    window.show();
    User user(session);
    user.does("nothing", [] {});
    user.does("walking", [&] { window.openPath(path); });
    user.does("typing a template", [&] {
        window.templates().edit().setFocus();
        User::types(window.templates().edit(), typed);
    });
    user.does("typing on", [&] { User::types(window.templates().edit(), "[.{x}]"); });
    user.does("undoing", [&] { session.undo(); });
    user.does("redoing", [&] { session.redo(); });
    const int last = window.cases().model()->columnCount() - 1;
    user.does("sorting", [&] { Q_EMIT window.cases().horizontalHeader()->sectionClicked(last); });
    user.does("sorting by a value",
              [&] { Q_EMIT window.cases().horizontalHeader()->sectionClicked(1); });
    user.does("filtering by text", [&] { User::types(window.filters().text(), "1"); });
    user.does("dropping the filter", [&] { window.filters().text().clear(); });
    user.does("selecting a case", [&] { window.cases().selectRow(3); });
    user.does("selecting all cases", [&] { window.cases().selectAll(); });
    user.does("selecting no case", [&] { window.cases().clearSelection(); });
    user.does("selecting all paths", [&] { window.paths().selectAll(); });
    user.does("selecting a path", [&] { window.paths().selectRow(5); });
    user.does("scrolling", [&] {
        QScrollBar& bar = *window.paths().verticalScrollBar();
        for (int i = 0; i < 100; ++i) {
            bar.setValue(bar.maximum() / 100 * i);
            QCoreApplication::processEvents();
        }
    });
    user.changesTheTemplate(window, typed, typed + "[.{x}]");
    user.does("naming", [&] {
        session.name({std::string(session.files().path(0)), 0, 1, "named"});
    });
    user.does("looking at the grid", [&] { window.tables().setCurrentIndex(1); });
    rusage usage = {};
    ::getrusage(RUSAGE_SELF, &usage);
    std::printf("%zu files, %zu cases, %.0f bytes a file at most\n", session.files().count(),
                static_cast<std::size_t>(window.cases().model()->rowCount()),
                static_cast<double>(usage.ru_maxrss) * 1024 /
                    static_cast<double>(session.files().count()));
}

} // namespace

} // namespace casetable

int main(int argc, char** argv)
{
    if (argc != 3) {
        static_cast<void>(std::fputs("usage: windowGaps FOLDER|LIST TEMPLATE\n", stderr));
        return 2;
    }
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    const std::string path = argv[1];
    const QString typed = QString::fromUtf8(argv[2]);
    int qtArguments = 1;
    QApplication application(qtArguments, argv);
    QApplication::setStyle("Fusion");
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, "/dev/null");
    casetable::measure(path, typed);
    return 0;
}
