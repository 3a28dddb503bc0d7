#ifndef TESTS_WINDOW_OPENWINDOW_H
#define TESTS_WINDOW_OPENWINDOW_H

#include <cstddef>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <QApplication>
#include <QTest>

#include "window/model/Session.h"
#include "window/view/CasesView.h"
#include "window/view/MainWindow.h"
#include "window/view/PathsView.h"

namespace casetable {
namespace tests {

using Texts = std::vector<std::string>;
using Table = std::vector<Texts>;

/// The files of a small tree, in byte order.
inline const Texts campaign = {"notes.txt", "wingA/Mach0.80/flow.vtu", "wingA/Mach0.80/solver.log",
                               "wingA/Mach0.85/flow.vtu", "wingB/Mach0.80/flow.vtu"};

/// A template that reads all of them but the first.
inline const std::string both = "wing{wing}/Mach{Mach:number}/*";

/// A window on the screen of the test, which is none, and its session.
class OpenWindow {
public:
    OpenWindow() : window(session)
    {
        window.resize(1280, 720);
        window.show();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window));
    }

    /// With a folder, once its files are there.
    explicit OpenWindow(const std::string& folder) : OpenWindow()
    {
        window.openFolder(folder);
        settle();
    }

    /// Waits until nothing is being read or looked for.
    void settle()
    {
        QCoreApplication::processEvents();
        EXPECT_TRUE(QTest::qWaitFor([this] { return session.isIdle(); }, 20000));
        QCoreApplication::processEvents();
    }

    /// Sets templates as if they had been typed.
    void read(const Texts& templates)
    {
        Setup setup = session.setup();
        setup.by = Setup::By::Templates;
        setup.templates = templates;
        session.change(setup);
        settle();
    }

    /// The table that is shown, a text for each cell, row by row, the header first.
    Table table()
    {
        const QAbstractItemModel& model = *window.cases().model();
        Table rows(1);
        for (int column = 0; column < model.columnCount(); ++column)
            rows[0].push_back(model.headerData(column, Qt::Horizontal).toString().toStdString());
        for (int row = 0; row < model.rowCount(); ++row) {
            rows.emplace_back();
            for (int column = 0; column < model.columnCount(); ++column)
                rows.back().push_back(
                    model.data(model.index(row, column)).toString().toStdString());
        }
        return rows;
    }

    /// The paths that are shown.
    Texts shownPaths()
    {
        const QAbstractItemModel& model = *window.paths().model();
        Texts paths;
        for (int row = 0; row < model.rowCount(); ++row)
            paths.push_back(window.paths().paths().path(row));
        return paths;
    }

    Session session{2};
    MainWindow window;
};

} // namespace tests
} // namespace casetable

#endif
