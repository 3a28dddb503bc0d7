#ifndef WINDOW_VIEW_MAINWINDOW_H
#define WINDOW_VIEW_MAINWINDOW_H

#include <string>

#include <QMainWindow>
#include <QTimer>

#include "window/model/CasesModel.h"
#include "window/model/Copying.h"
#include "window/model/PathsModel.h"
#include "window/model/Session.h"

class QAction;
class QButtonGroup;
class QLabel;
class QMenu;
class QProgressBar;
class QSplitter;
class QStackedWidget;
class QTabWidget;
class QToolButton;

namespace casetable {

class AuxEditor;
class CasesView;
class CommandBar;
class FilterBar;
class GridView;
class MarkersEditor;
class NamingBar;
class PathsView;
class TemplateEditor;

/// The window: all views of one session, and the menus.
class MainWindow : public QMainWindow {
    Q_OBJECT

public:
    /// The session must outlive it.
    explicit MainWindow(Session& session);
    ~MainWindow() override;

    /// Takes a folder, with the reading as it is.
    void openFolder(const std::string& folder);
    /// Takes a file with the paths of files, one a line.
    void openList(const std::string& file);
    /// Takes a setup that was saved.
    void openSetup(const std::string& file);
    /// What of these a path is: a folder, a setup by its ending, or a list. All of them return at
    /// once.
    void openPath(const std::string& path);

    void saveSetup(const std::string& file);
    void savePicture(const QString& file);

    enum class Panel { Templates, Markers, Aux };
    void showPanel(Panel panel);

    /// A sentence for the status bar.
    void tell(const QString& sentence);
    /// The same for something that still goes on, which stays until the next sentence.
    void tellMeanwhile(const QString& sentence);
    /// The same for something that failed, which stays too.
    void tellFailure(const QString& sentence);

    PathsView& paths() { return *paths_; }
    CasesView& cases() { return *cases_; }
    GridView& grid() { return *grid_; }
    TemplateEditor& templates() { return *templates_; }
    MarkersEditor& markers() { return *markers_; }
    AuxEditor& aux() { return *aux_; }
    NamingBar& naming() { return *naming_; }
    FilterBar& filters() { return *filters_; }
    CommandBar& command() { return *command_; }
    QTabWidget& tables() { return *tables_; }
    QToolButton& stop() { return *stop_; }
    QLabel& message() { return *message_; }

protected:
    void closeEvent(QCloseEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    QWidget* makeRootBar();
    QWidget* makeReadingPanel();
    QWidget* makePathsPanel();
    QWidget* makeTables();
    void makeMenus();
    void makeFileMenu();
    void makeEditMenu();
    void makeFilesMenu();
    void makeViewMenu();
    void makeStatusBar();
    QAction* add(QMenu* menu, const QString& text, const QKeySequence& key,
                 const std::function<void()>& act);
    void addFlag(QMenu* menu, const QString& text, bool Setup::*flag);

    void askForFolder();
    QString beginOfDialog(const QString& wanted) const;
    void askForList();
    void askForSetup();
    QString askWhereToSave(const QString& name);
    void askAndSave(Rows rows, const QString& name);
    void askForMissing();
    void askWhereToSaveSetup();
    void askWhereToSavePicture();
    void askForDepth();
    void askForExcluded();
    void askForName();
    void suggest();
    void copy();
    void copyPaths();
    void copyTable();
    void copyLater(const QString& sentence, const QString& asWords, std::function<Copy()> make);
    void takeCopy(const Copy& copy, const QString& sentence, const QString& asWords);

    void takeSetup();
    void runInBackground(std::function<std::function<void()>()> act);
    std::function<bool()> openingNow();
    void takeOpened(const std::string& file, const ReadSetup& read);
    void takeSaved(const QString& sentence, const QString& error);
    void endMessage();
    void takeProgress();
    void takeMatching();
    void chooseCases(std::vector<std::uint32_t> cases);
    void followPath();
    void openContainingFolder();
    void explainPath();
    void takeRecent();
    void restore();

    Session& session_;
    PathsModel pathsModel_;
    CasesModel casesModel_;
    std::string setupFile_;
    std::size_t copied_ = 0; // Counts copies, as only the last counts.
    std::size_t opened_ = 0; // Counts what was opened, as only the last counts.
    bool isClosing_ = false; // Once a file is written.

    QLabel* root_ = nullptr;
    QToolButton* open_ = nullptr;
    QMenu* recent_ = nullptr;
    QToolButton* stop_ = nullptr;
    QToolButton* reload_ = nullptr;
    QButtonGroup* panels_ = nullptr;
    QStackedWidget* panel_ = nullptr;
    TemplateEditor* templates_ = nullptr;
    MarkersEditor* markers_ = nullptr;
    AuxEditor* aux_ = nullptr;
    FilterBar* filters_ = nullptr;
    PathsView* paths_ = nullptr;
    QLabel* hint_ = nullptr;
    NamingBar* naming_ = nullptr;
    CasesView* cases_ = nullptr;
    GridView* grid_ = nullptr;
    QTabWidget* tables_ = nullptr;
    CommandBar* command_ = nullptr;
    QSplitter* rows_ = nullptr;
    QSplitter* halves_ = nullptr;
    QLabel* message_ = nullptr;
    QTimer fading_{this}; // Takes a sentence away that is no failure.
    QLabel* walked_ = nullptr;
    QLabel* counts_ = nullptr;
    QProgressBar* busy_ = nullptr;
    QAction* undo_ = nullptr;
    QAction* redo_ = nullptr;
    std::vector<QAction*> saves_; // Of tables.
    QAction* saveSetup_ = nullptr;
    std::vector<std::pair<QAction*, bool Setup::*>> flags_;
};

} // namespace casetable

#endif
