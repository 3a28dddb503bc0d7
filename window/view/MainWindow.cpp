#include "window/view/MainWindow.h"

#include <algorithm>
#include <exception>
#include <new>
#include <utility>

#include <QAction>
#include <QApplication>
#include <QButtonGroup>
#include <QClipboard>
#include <QCloseEvent>
#include <QDesktopServices>
#include <QDialog>
#include <QDialogButtonBox>
#include <QDir>
#include <QDragEnterEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QImage>
#include <QInputDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QMimeData>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QRegExp>
#include <QSaveFile>
#include <QSettings>
#include <QSplitter>
#include <QStackedWidget>
#include <QStatusBar>
#include <QTabWidget>
#include <QToolButton>
#include <QUrl>
#include <QVBoxLayout>

#include "casetable/system/ExitCode.h"
#include "casetable/writing/Formats.h"
#include "window/model/BackgroundJob.h"
#include "window/model/Saving.h"
#include "window/model/Text.h"
#include "window/view/AuxEditor.h"
#include "window/view/CasesView.h"
#include "window/view/ColumnsDialog.h"
#include "window/view/CommandBar.h"
#include "window/view/FilterBar.h"
#include "window/view/GridView.h"
#include "window/view/Look.h"
#include "window/view/MarkersEditor.h"
#include "window/view/NamingBar.h"
#include "window/view/PathsView.h"
#include "window/view/SuggestionsDialog.h"
#include "window/view/TemplateEditor.h"

namespace casetable {

namespace {

const int mostRecent = 10;
const int messageMilliseconds = 8000;

// Of so many selected paths the cases are shown.
const std::size_t mostFollowed = 1000;

std::string bytesOfFile(const QString& file)
{
    return QFile::encodeName(file).toStdString();
}

QString counted(std::size_t count, const QString& one, const QString& many)
{
    return QLocale(QLocale::English).toString(static_cast<qulonglong>(count)) + ' ' +
           (count == 1 ? one : many);
}

// Of a file dialog, a line for each format. That which spreadsheets take comes first.
QStringList filtersOfFormats()
{
    QStringList filters;
    for (const Format& format : formats()) {
        QStringList endings;
        for (const char* const ending : format.endings)
            endings.push_back(QString("*") + ending);
        const QString filter =
            QString("%1 (%2)").arg(QString(format.name).toUpper(), endings.join(' '));
        if (&format == formatNamed("csv"))
            filters.push_front(filter);
        else if (!endings.isEmpty())
            filters.push_back(filter);
    }
    return filters;
}

// A name without an ending gets the first of the filter that was chosen.
QString withEnding(const QString& file, const QString& filter)
{
    if (!QFileInfo(file).suffix().isEmpty())
        return file;
    const int begin = filter.indexOf('*') + 1;
    return file + filter.mid(begin, filter.indexOf(QRegExp("[ )]"), begin) - begin);
}

// Puts a folder or a setup first among the recent ones.
void remember(const std::string& root)
{
    QSettings settings;
    QStringList recent = settings.value("recent").toStringList();
    const QString name = QFileInfo(QFile::decodeName(root.c_str())).absoluteFilePath();
    recent.removeAll(name);
    recent.push_front(name);
    settings.setValue("recent", QStringList(recent.mid(0, mostRecent)));
}

// The name of the template's column that reads just these bytes; empty for none.
std::string columnOf(const PathsView::Selected& bytes, const PathsModel& paths,
                     const Session& session)
{
    const int row = paths.rowOf(bytes.file);
    const PathRead* const read = row < 0 ? nullptr : paths.read(row);
    if (read == nullptr || !session.reading()->templates())
        return {};
    for (const PathPiece& piece : read->pieces) {
        if (piece.kind == PathPiece::Kind::Value && piece.begin == bytes.begin() &&
            piece.begin + piece.length == bytes.end())
            return session.reading()->patterns()[piece.column].pattern;
    }
    return {};
}

} // namespace

MainWindow::MainWindow(Session& session)
    : session_(session), pathsModel_(session), casesModel_(session)
{
    setWindowTitle("casetable");
    setWindowIcon(QIcon(":/casetable.svg"));
    setAcceptDrops(true);
    auto* const centre = new QWidget;
    auto* const layout = new QVBoxLayout(centre);
    const int gap = em(font(), 0.5);
    layout->setContentsMargins(gap, gap, gap, gap);
    layout->setSpacing(gap);
    layout->addWidget(makeRootBar());
    rows_ = new QSplitter(Qt::Vertical);
    halves_ = new QSplitter(Qt::Horizontal);
    halves_->addWidget(makePathsPanel());
    halves_->addWidget(makeTables());
    halves_->setStretchFactor(0, 3);
    halves_->setStretchFactor(1, 2);
    halves_->setChildrenCollapsible(false);
    rows_->addWidget(makeReadingPanel());
    rows_->addWidget(halves_);
    rows_->setStretchFactor(0, 0);
    rows_->setStretchFactor(1, 1);
    rows_->setChildrenCollapsible(false);
    for (QSplitter* const splitter : {rows_, halves_})
        splitter->setHandleWidth(gap);
    layout->addWidget(rows_, 1);
    command_ = new CommandBar(session);
    layout->addWidget(command_);
    setCentralWidget(centre);
    makeStatusBar();
    makeMenus();

    connect(&session, &Session::setupChanged, this, &MainWindow::takeSetup);
    connect(&session, &Session::progressed, this, &MainWindow::takeProgress);
    connect(&session, &Session::matchingChanged, this, &MainWindow::takeMatching);
    connect(&session, &Session::shownChanged, this, &MainWindow::takeMatching);
    connect(&session, &Session::failed, this, &MainWindow::tellFailure);
    connect(&session, &Session::saved, this, &MainWindow::takeSaved);
    connect(command_, &CommandBar::told, this, &MainWindow::tell);
    connect(command_, &CommandBar::taken, this, [this] { ++opened_; });
    connect(paths_, &PathsView::nameWanted, this, &MainWindow::askForName);
    connect(paths_, &PathsView::rowsChosen, this, &MainWindow::followPath);
    connect(paths_, &PathsView::bytesSelected, this, &MainWindow::takeMatching);
    connect(naming_, &NamingBar::closed, this, [this] {
        paths_->endBytes();
        paths_->setFocus();
        hint_->setVisible(true);
    });
    connect(cases_, &CasesView::casesChosen, this,
            [this] { chooseCases(cases_->selectedCases()); });
    connect(grid_, &GridView::casesChosen, this, &MainWindow::chooseCases);
    connect(grid_, &GridView::saveWanted, this, &MainWindow::askWhereToSavePicture);
    connect(filters_, &FilterBar::casesDropped, this, [this] {
        cases_->follow({});
        chooseCases({});
    });
    restore();
    takeSetup();
    takeProgress();
    takeMatching();
    showPanel(session.setup().by == Setup::By::Markers ? Panel::Markers : Panel::Templates);
    paths_->setFocus();
}

MainWindow::~MainWindow() = default;

QWidget* MainWindow::makeRootBar()
{
    auto* const bar = new QWidget;
    auto* const layout = new QHBoxLayout(bar);
    layout->setContentsMargins(0, 0, 0, 0);
    open_ = new QToolButton;
    open_->setText(tr("Open folder…"));
    open_->setPopupMode(QToolButton::MenuButtonPopup);
    open_->setToolButtonStyle(Qt::ToolButtonTextOnly);
    recent_ = new QMenu(open_);
    open_->setMenu(recent_);
    open_->setToolTip(tr("Open a folder; recent ones are in the menu"));
    root_ = new QLabel;
    root_->setFont(pathFont());
    root_->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    root_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    root_->setAccessibleName(tr("Folder"));
    reload_ = new QToolButton;
    reload_->setText(tr("Read again"));
    reload_->setToolTip(tr("List the files anew (F5)"));
    stop_ = new QToolButton;
    stop_->setText(tr("Stop"));
    stop_->setToolTip(tr("Stop listing files; those found so far stay"));
    layout->addWidget(open_);
    layout->addWidget(root_, 1);
    layout->addWidget(stop_);
    layout->addWidget(reload_);
    connect(open_, &QToolButton::clicked, this, &MainWindow::askForFolder);
    connect(recent_, &QMenu::aboutToShow, this, &MainWindow::takeRecent);
    connect(stop_, &QToolButton::clicked, this, [this] { session_.stopWalk(); });
    connect(reload_, &QToolButton::clicked, this, [this] { session_.walkAgain(); });
    return bar;
}

QWidget* MainWindow::makeReadingPanel()
{
    auto* const panel = new QWidget;
    auto* const layout = new QVBoxLayout(panel);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(em(font(), 0.3));
    auto* const head = new QHBoxLayout;
    head->setSpacing(0);
    panels_ = new QButtonGroup(this);
    panel_ = new QStackedWidget;
    templates_ = new TemplateEditor(session_);
    markers_ = new MarkersEditor(session_);
    aux_ = new AuxEditor(session_);
    int id = 0;
    for (const QString& text : {tr("Templates"), tr("Markers"), tr("Auxiliary files")}) {
        auto* const button = new QToolButton;
        button->setText(text);
        button->setCheckable(true);
        // The one that is down is told by its text too.
        connect(button, &QToolButton::toggled, button, [button](bool isDown) {
            QFont font = button->font();
            font.setBold(isDown);
            button->setFont(font);
        });
        button->setToolButtonStyle(Qt::ToolButtonTextOnly);
        panels_->addButton(button, id++);
        head->addWidget(button);
    }
    head->addStretch(1);
    auto* const suggest = new QToolButton;
    suggest->setText(tr("Suggest…"));
    suggest->setToolTip(tr("Find templates for these files, and see what each would give"));
    connect(suggest, &QToolButton::clicked, this, &MainWindow::suggest);
    head->addWidget(suggest);
    panel_->addWidget(templates_);
    panel_->addWidget(markers_);
    panel_->addWidget(aux_);
    layout->addLayout(head);
    layout->addWidget(panel_, 1);
    panel->setMinimumHeight(em(font(), 5));
    connect(panels_, &QButtonGroup::idClicked, this, [this](int which) {
        showPanel(static_cast<Panel>(which));
        panel_->currentWidget()->setFocus();
    });
    return panel;
}

QWidget* MainWindow::makePathsPanel()
{
    auto* const panel = new QWidget;
    auto* const layout = new QVBoxLayout(panel);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(em(font(), 0.3));
    filters_ = new FilterBar(session_);
    paths_ = new PathsView(session_, pathsModel_);
    paths_->setContextMenuPolicy(Qt::ActionsContextMenu);
    hint_ = new QLabel;
    hint_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    hint_->setWordWrap(true);
    hint_->setTextFormat(Qt::PlainText);
    setQuiet(*hint_);
    naming_ = new NamingBar(session_);
    layout->addWidget(filters_);
    layout->addWidget(paths_, 1);
    layout->addWidget(hint_);
    layout->addWidget(naming_);
    return panel;
}

QWidget* MainWindow::makeTables()
{
    tables_ = new QTabWidget;
    tables_->setDocumentMode(true);
    cases_ = new CasesView(session_, casesModel_);
    grid_ = new GridView(session_);
    tables_->addTab(cases_, tr("Cases"));
    tables_->addTab(grid_, tr("Grid"));
    return tables_;
}

void MainWindow::makeStatusBar()
{
    message_ = new QLabel;
    message_->setTextFormat(Qt::PlainText);
    message_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    message_->setAccessibleName(tr("Message"));
    walked_ = new QLabel;
    counts_ = new QLabel;
    busy_ = new QProgressBar;
    busy_->setRange(0, 0);
    busy_->setTextVisible(false);
    busy_->setFixedSize(em(font(), 5), em(font(), 0.6));
    busy_->setAccessibleName(tr("Files are being read"));
    statusBar()->addWidget(message_, 1);
    fading_.setObjectName("fading");
    fading_.setSingleShot(true);
    connect(&fading_, &QTimer::timeout, this, &MainWindow::endMessage);
    statusBar()->addPermanentWidget(busy_);
    for (QLabel* const label : {counts_, walked_}) {
        label->setContentsMargins(em(font(), 0.6), 0, em(font(), 0.6), 0);
        statusBar()->addPermanentWidget(label);
    }
    message_->setContentsMargins(em(font(), 0.6), 0, 0, 0);
}

QAction* MainWindow::add(QMenu* menu, const QString& text, const QKeySequence& key,
                         const std::function<void()>& act)
{
    QAction* const action = menu->addAction(text);
    action->setShortcut(key);
    connect(action, &QAction::triggered, this, act);
    return action;
}

void MainWindow::addFlag(QMenu* menu, const QString& text, bool Setup::*flag)
{
    QAction* const action = add(menu, text, {}, [this, flag] {
        Setup setup = session_.setup();
        setup.*flag = !(setup.*flag);
        session_.change(setup);
    });
    action->setCheckable(true);
    flags_.emplace_back(action, flag);
}

void MainWindow::makeMenus()
{
    makeFileMenu();
    makeEditMenu();
    makeFilesMenu();
    makeViewMenu();
}

void MainWindow::makeFileMenu()
{
    QMenu* const menu = menuBar()->addMenu(tr("&File"));
    add(menu, tr("&Open folder…"), QKeySequence::Open, [this] { askForFolder(); });
    add(menu, tr("Open &list of paths…"), QKeySequence("Ctrl+L"), [this] { askForList(); });
    add(menu, tr("Open s&etup…"), QKeySequence("Ctrl+Shift+O"), [this] { askForSetup(); });
    menu->addSeparator();
    const auto addSave = [this, menu](const QString& text, const QKeySequence& key,
                                      const std::function<void()>& act) {
        saves_.push_back(add(menu, text, key, act));
    };
    addSave(tr("&Save cases…"), QKeySequence::Save, [this] { askAndSave(Rows::Cases, "cases"); });
    addSave(tr("Save &files…"), {}, [this] { askAndSave(Rows::Files, "files"); });
    addSave(tr("Save &unmatched files…"), {}, [this] { askAndSave(Rows::Unmatched, "unmatched"); });
    addSave(tr("Save &missing combinations…"), {}, [this] { askForMissing(); });
    menu->addSeparator();
    saveSetup_ = add(menu, tr("Save se&tup…"), QKeySequence("Ctrl+Shift+S"),
                     [this] { askWhereToSaveSetup(); });
    add(menu, tr("Save &picture of the grid…"), QKeySequence("Ctrl+Shift+G"),
        [this] { askWhereToSavePicture(); });
    menu->addSeparator();
    add(menu, tr("&Quit"), QKeySequence::Quit, [this] { close(); });
}

void MainWindow::makeEditMenu()
{
    QMenu* const menu = menuBar()->addMenu(tr("&Edit"));
    undo_ = add(menu, tr("&Undo"), QKeySequence::Undo, [this] { session_.undo(); });
    redo_ = add(menu, tr("&Redo"), QKeySequence::Redo, [this] { session_.redo(); });
    redo_->setShortcuts({QKeySequence("Ctrl+Shift+Z"), QKeySequence("Ctrl+Y")});
    menu->addSeparator();
    add(menu, tr("&Copy"), QKeySequence::Copy, [this] { copy(); });
    add(menu, tr("Copy &table"), QKeySequence("Ctrl+T"), [this] { copyTable(); });
    add(menu, tr("Copy co&mmand"), QKeySequence("Ctrl+Shift+C"), [this] { command_->copy(); });
    menu->addSeparator();
    add(menu, tr("&Name the selected value…"), QKeySequence("F2"), [this] { askForName(); });
    add(menu, tr("&Suggest templates…"), QKeySequence("Ctrl+G"), [this] { suggest(); });
}

void MainWindow::makeFilesMenu()
{
    QMenu* const menu = menuBar()->addMenu(tr("F&iles"));
    add(menu, tr("&Read again"), QKeySequence::Refresh, [this] { session_.walkAgain(); });
    add(menu, tr("S&top"), QKeySequence("Ctrl+."), [this] { session_.stopWalk(); });
    menu->addSeparator();
    addFlag(menu, tr("&Hidden files"), &Setup::hidden);
    addFlag(menu, tr("&Follow links to folders"), &Setup::follow);
    addFlag(menu, tr("&Leave out folders that cannot be read"), &Setup::keepGoing);
    add(menu, tr("&Deepest level…"), {}, [this] { askForDepth(); });
    add(menu, tr("Leave out by &pattern…"), {}, [this] { askForExcluded(); });
    menu->addSeparator();
    QAction* const folder = add(menu, tr("&Open the file's folder"), QKeySequence("Ctrl+Return"),
                                [this] { openContainingFolder(); });
    QAction* const explain =
        add(menu, tr("E&xplain the path…"), QKeySequence("Ctrl+E"), [this] { explainPath(); });
    auto* const copyAction = new QAction(tr("Copy path"), paths_);
    connect(copyAction, &QAction::triggered, this, &MainWindow::copyPaths);
    paths_->addActions({copyAction, explain, folder});
}

void MainWindow::makeViewMenu()
{
    QMenu* const menu = menuBar()->addMenu(tr("&View"));
    add(menu, tr("&Templates"), QKeySequence("Alt+1"), [this] {
        showPanel(Panel::Templates);
        templates_->setFocus();
    });
    add(menu, tr("&Markers"), QKeySequence("Alt+2"), [this] {
        showPanel(Panel::Markers);
        markers_->setFocus();
    });
    add(menu, tr("&Auxiliary files"), QKeySequence("Alt+3"), [this] {
        showPanel(Panel::Aux);
        aux_->setFocus();
    });
    add(menu, tr("&Paths"), QKeySequence("Alt+4"), [this] { paths_->setFocus(); });
    add(menu, tr("&Cases"), QKeySequence("Alt+5"), [this] {
        tables_->setCurrentWidget(cases_);
        cases_->setFocus();
    });
    add(menu, tr("&Grid"), QKeySequence("Alt+6"), [this] {
        tables_->setCurrentWidget(grid_);
        grid_->picture().setFocus();
    });
    add(menu, tr("C&ommand"), QKeySequence("Alt+7"), [this] { command_->edit().setFocus(); });
    add(menu, tr("&Filter paths"), QKeySequence::Find, [this] {
        filters_->text().setFocus();
        filters_->text().selectAll();
    });
}

// Both of them read; the one that is shown is that in effect.
void MainWindow::showPanel(Panel panel)
{
    panels_->button(static_cast<int>(panel))->setChecked(true);
    panel_->setCurrentIndex(static_cast<int>(panel));
    if (panel == Panel::Aux)
        return;
    const Setup::By by = panel == Panel::Markers ? Setup::By::Markers : Setup::By::Templates;
    if (session_.setup().by == by)
        return;
    Setup setup = session_.setup();
    setup.by = by;
    session_.change(setup);
}

void MainWindow::tell(const QString& sentence)
{
    message_->setPalette(palette());
    message_->setText(sentence);
    message_->setToolTip({});
    fading_.start(messageMilliseconds);
}

void MainWindow::tellMeanwhile(const QString& sentence)
{
    tell(sentence);
    fading_.stop();
}

// That files are missing is told as long as they are.
void MainWindow::endMessage()
{
    const std::string& error = session_.walkEnd().error;
    if (error.empty())
        message_->clear();
    else
        tellFailure(shown(error));
}

void MainWindow::tellFailure(const QString& sentence)
{
    fading_.stop();
    QPalette wrong = palette();
    wrong.setColor(QPalette::WindowText, errorColour(palette()));
    message_->setPalette(wrong);
    message_->setText(sentence);
    message_->setToolTip(sentence);
}

void MainWindow::openFolder(const std::string& folder)
{
    ++opened_;
    Setup setup = session_.setup();
    setup.root = folder;
    setup.list.reset();
    setup.nullSeparated = false;
    if (haveSameSource(setup, session_.setup()))
        session_.walkAgain();
    else
        session_.change(setup);
    remember(folder);
    endMessage();
}

void MainWindow::openList(const std::string& file)
{
    ++opened_;
    Setup setup = session_.setup();
    setup.root.clear();
    setup.list = file;
    setup.hidden = setup.follow = setup.keepGoing = false;
    session_.change(setup);
    endMessage();
}

// Looks at files on another thread, as the system may keep that waiting.
void MainWindow::runInBackground(std::function<std::function<void()>()> act)
{
    try {
        session_.background().run(*this, std::move(act));
    } catch (const Failure& failure) {
        tellFailure(shown(failure.what()));
    }
}

// What tells, on the window's thread, whether nothing else has been opened since.
std::function<bool()> MainWindow::openingNow()
{
    return [this, number = ++opened_] { return number == opened_; };
}

void MainWindow::openSetup(const std::string& file)
{
    tellMeanwhile(tr("Opening %1…").arg(shown(file)));
    runInBackground([this, file, isWanted = openingNow()]() -> std::function<void()> {
        ReadSetup read;
        QString error;
        try {
            read = readSetupFile(file);
        } catch (const std::exception& failure) {
            error = shown(failure.what());
        }
        return [this, file, isWanted, read, error] {
            if (!isWanted())
                return;
            if (error.isEmpty())
                takeOpened(file, read);
            else
                tellFailure(error);
        };
    });
}

void MainWindow::takeOpened(const std::string& file, const ReadSetup& read)
{
    session_.open(read.setup);
    setupFile_ = file;
    remember(file);
    QStringList leftOut;
    for (const std::string& option : read.leftOut)
        leftOut.push_back(shown(option));
    tell(leftOut.isEmpty()
             ? tr("Opened: %1").arg(shown(file))
             : tr("Opened, but for what says nothing about reading: %1.").arg(leftOut.join(", ")));
}

void MainWindow::openPath(const std::string& path)
{
    tellMeanwhile(tr("Opening %1…").arg(shown(path)));
    runInBackground([this, path, isWanted = openingNow()]() -> std::function<void()> {
        const QFileInfo info(QFile::decodeName(path.c_str()));
        const bool isFolder = info.isDir();
        const bool isFile = info.isFile();
        return [this, path, isWanted, isFolder, isFile] {
            if (!isWanted())
                return;
            endMessage();
            if (isSetupFile(path) && !isFolder)
                openSetup(path);
            else if (isFile)
                openList(path);
            else
                openFolder(path);
        };
    });
}

void MainWindow::saveSetup(const std::string& file)
{
    Setup setup = session_.setup();
    // An order by a column that is gone would be refused when it is opened.
    if (!session_.problem())
        setup.sort = session_.effective().sort;
    const bool isByMarkers = setup.by == Setup::By::Markers;
    const bool leavesOut = isByMarkers ? !setup.templates.empty() : !setup.markers.empty();
    const QString sentence = !leavesOut ? tr("Saved: %1")
                             : isByMarkers
                                 ? tr("Saved, without the templates, which are not used: %1")
                                 : tr("Saved, without the markers, which are not used: %1");
    setupFile_ = file;
    session_.write(file, sentence.arg(shown(file)),
                   [setup, file] { casetable::saveSetup(setup, file); });
}

void MainWindow::savePicture(const QString& file)
{
    const QImage picture = grid_->drawn().toImage();
    if (picture.isNull())
        return tellFailure(tr("There is no grid to save."));
    session_.write(bytesOfFile(file), tr("Saved: %1").arg(file), [picture, file] {
        const QByteArray format = QFileInfo(file).suffix().toLatin1();
        QSaveFile output(file); // Keeps the file of before where it fails.
        if (!output.open(QIODevice::WriteOnly) || !picture.save(&output, format) ||
            !output.commit())
            throw Failure(ExitCode::OutputFailed,
                          bytesOfFile(file) + ": the picture cannot be written");
    });
}

void MainWindow::takeSaved(const QString& sentence, const QString& error)
{
    if (error.isEmpty())
        tell(sentence);
    else
        tellFailure(error);
    // A file that could not be written keeps the window open, with all that it would have held.
    if (isClosing_ && (!error.isEmpty() || session_.saving().empty())) {
        isClosing_ = false;
        if (error.isEmpty())
            close();
    }
}

// A dialog looks at the folder where it begins, which must not be one that hangs.
QString MainWindow::beginOfDialog(const QString& wanted) const
{
    if (!BackgroundJob::isAnyLeft() && !session_.isWalking())
        return wanted;
    return QDir::home().filePath(QFileInfo(wanted).fileName());
}

void MainWindow::askForFolder()
{
    QString begin = QFile::decodeName(session_.setup().root.c_str());
    if (!begin.isEmpty())
        begin += '/';
    const QString folder =
        QFileDialog::getExistingDirectory(this, tr("Open a folder"), beginOfDialog(begin));
    if (!folder.isEmpty())
        openFolder(bytesOfFile(folder));
}

void MainWindow::askForList()
{
    const QString file = QFileDialog::getOpenFileName(this, tr("Open a list of paths, one a line"),
                                                      beginOfDialog({}));
    if (!file.isEmpty())
        openList(bytesOfFile(file));
}

void MainWindow::askForSetup()
{
    const QString file = QFileDialog::getOpenFileName(this, tr("Open a setup"), beginOfDialog({}),
                                                      tr("Setups (*.casetable)"));
    if (!file.isEmpty())
        openSetup(bytesOfFile(file));
}

// Empty for nowhere.
QString MainWindow::askWhereToSave(const QString& name)
{
    const QStringList filters = filtersOfFormats();
    QString filter = filters.front();
    const QString file = QFileDialog::getSaveFileName(
        this, tr("Save the table"), beginOfDialog(name + ".csv"), filters.join(";;"), &filter);
    return file.isEmpty() ? file : withEnding(file, filter);
}

void MainWindow::askAndSave(Rows rows, const QString& name)
{
    const QString file = askWhereToSave(name);
    if (!file.isEmpty())
        session_.save(bytesOfFile(file), {rows, {}});
}

// Those of the grid are offered.
void MainWindow::askForMissing()
{
    const QStringList names = grid_->names();
    if (names.size() < 2)
        return tell(tr("Combinations need a reading with two columns or more."));
    const auto asked = session_.matching();
    ColumnsDialog dialog(tr("Combinations of the values of these columns, of which there is no "
                            "case:"),
                         names, grid_->chosen(), this);
    if (dialog.exec() != QDialog::Accepted)
        return;
    const QString file = askWhereToSave("missing");
    if (file.isEmpty())
        return;
    if (session_.matching() != asked)
        return tellFailure(tr("The columns are others now; choose them again."));
    session_.save(bytesOfFile(file), {Rows::Missing, dialog.chosen()});
}

void MainWindow::askWhereToSaveSetup()
{
    QString file = QFileDialog::getSaveFileName(
        this, tr("Save the setup"),
        beginOfDialog(setupFile_.empty() ? "campaign.casetable"
                                         : QFile::decodeName(setupFile_.c_str())),
        tr("Setups (*.casetable)"));
    if (file.isEmpty())
        return;
    if (!isSetupFile(bytesOfFile(file)))
        file += ".casetable";
    saveSetup(bytesOfFile(file));
}

void MainWindow::askWhereToSavePicture()
{
    const QString file =
        QFileDialog::getSaveFileName(this, tr("Save the picture of the grid"),
                                     beginOfDialog("grid.png"), tr("Pictures (*.png)"));
    if (!file.isEmpty())
        savePicture(file);
}

void MainWindow::askForDepth()
{
    Setup setup = session_.setup();
    bool isTaken = false;
    const int depth = QInputDialog::getInt(
        this, tr("Deepest level"),
        tr("Go no deeper than so many levels; the files in the folder itself have 1.\n0 is any."),
        static_cast<int>(setup.maxDepth.value_or(0)), 0, 1'000'000, 1, &isTaken);
    if (!isTaken)
        return;
    setup.maxDepth.reset();
    if (depth > 0)
        setup.maxDepth = static_cast<std::size_t>(depth);
    session_.change(setup);
}

void MainWindow::askForExcluded()
{
    Setup setup = session_.setup();
    QStringList lines;
    for (const std::string& glob : setup.excluded)
        lines.push_back(editable(glob));
    bool isTaken = false;
    const QString text = QInputDialog::getMultiLineText(
        this, tr("Leave out by pattern"),
        tr("Leave out what any of these matches, one a line, as lines of an ignore file do:"),
        lines.join('\n'), &isTaken);
    if (!isTaken)
        return;
    setup.excluded.clear();
    for (const QString& line : text.split('\n', Qt::SkipEmptyParts))
        setup.excluded.push_back(bytesOf(line));
    session_.change(setup);
}

void MainWindow::askForName()
{
    const auto selected = paths_->selectedBytes();
    if (!selected) {
        tell(tr("Select the value in a path first: with the mouse, or with Ctrl+→."));
        return;
    }
    hint_->setVisible(false);
    naming_->ask({selected->path, selected->begin(), selected->end(),
                  columnOf(*selected, pathsModel_, session_)});
}

void MainWindow::suggest()
{
    if (session_.files().count() == 0) {
        tell(tr("Open a folder first."));
        return;
    }
    showPanel(Panel::Templates);
    (new SuggestionsDialog(session_, this))->show();
}

// What has the focus is copied.
void MainWindow::copy()
{
    QWidget* const focused = QApplication::focusWidget();
    if (auto* const edit = qobject_cast<QLineEdit*>(focused))
        edit->copy();
    else if (auto* const text = qobject_cast<QPlainTextEdit*>(focused))
        text->copy();
    else if (focused == cases_)
        copyTable();
    else if (focused == paths_)
        copyPaths();
}

void MainWindow::copyPaths()
{
    const QString asWords = tr("%1 of them are no plain text, and stand as words of a shell.");
    if (const auto selected = paths_->selectedBytes()) {
        ++copied_;
        return takeCopy(copyOfBytes(selected->bytes()), tr("The bytes are copied."),
                        tr("They are no plain text, and stand as a word of a shell."));
    }
    const std::vector<std::uint32_t> files = paths_->selectedFiles();
    if (files.empty())
        return tell(tr("Choose a path first."));
    copyLater(tr("Copied: %1.").arg(counted(files.size(), tr("path"), tr("paths"))), asWords,
              [files, all = session_.files()] { return copyOfPaths(all, files); });
}

void MainWindow::copyTable()
{
    const auto& matching = session_.matching();
    if (!matching || !matching->import || session_.isMatching())
        return tell(tr("There is no table yet."));
    const std::vector<std::uint32_t> cases = cases_->casesToCopy();
    copyLater(
        tr("Copied: %1, for a spreadsheet to paste.")
            .arg(counted(cases.size(), tr("case"), tr("cases"))),
        tr("%1 of the cells are no text in UTF-8, and stand as words of a shell."),
        [matching = matching, cases] { return copyOfCases(matching->import->table(), cases); });
}

// Has another thread make a large text.
void MainWindow::copyLater(const QString& sentence, const QString& asWords,
                           std::function<Copy()> make)
{
    runInBackground([this, sentence, asWords, make = std::move(make),
                     number = ++copied_]() -> std::function<void()> {
        Copy copy;
        QString error;
        try {
            copy = make();
        } catch (const std::bad_alloc&) {
            error = tr("not enough memory");
        } catch (const std::exception& failure) {
            error = shown(failure.what());
        }
        return [this, sentence, asWords, number, copy, error] {
            if (number != copied_)
                return;
            if (error.isEmpty())
                takeCopy(copy, sentence, asWords);
            else
                tellFailure(error);
        };
    });
}

// What stands there in another form is told.
void MainWindow::takeCopy(const Copy& copy, const QString& sentence, const QString& asWords)
{
    QApplication::clipboard()->setText(copy.text);
    QString told = sentence;
    if (copy.asWords > 0)
        told += ' ' + (asWords.contains("%1") ? asWords.arg(copy.asWords) : asWords);
    tell(told);
}

void MainWindow::takeSetup()
{
    const Setup& setup = session_.setup();
    const std::string source = setup.list ? *setup.list : setup.root;
    root_->setText(source.empty() ? tr("No folder is open") : shown(source));
    root_->setToolTip(shown(source));
    setWindowTitle(source.empty() ? "casetable"
                                  : shown(source) + QString::fromUtf8(" — casetable"));
    undo_->setEnabled(session_.canUndo());
    redo_->setEnabled(session_.canRedo());
    saveSetup_->setEnabled(setup.hasSource() || setup.hasReading());
    reload_->setEnabled(setup.hasSource());
    for (const auto& [action, flag] : flags_) {
        action->setChecked(setup.*flag);
        action->setEnabled(!setup.list);
    }
    const int panel = panels_->checkedId();
    if (panel == static_cast<int>(Panel::Templates) && setup.by == Setup::By::Markers)
        showPanel(Panel::Markers);
    else if (panel == static_cast<int>(Panel::Markers) && setup.by == Setup::By::Templates)
        showPanel(Panel::Templates);
    std::size_t auxRows = 0;
    for (const Setup::AuxRow& row : setup.auxRows)
        auxRows += row.wildcard.empty() && row.tag.empty() ? 0 : 1;
    panels_->button(static_cast<int>(Panel::Aux))
        ->setText(auxRows == 0 ? tr("Auxiliary files") : tr("Auxiliary files (%1)").arg(auxRows));
    if (session_.problem())
        counts_->setToolTip(tr("The template is not complete; the table is that of before."));
    else
        counts_->setToolTip({});
    takeMatching();
}

void MainWindow::takeProgress()
{
    const bool isWalking = session_.isWalking();
    stop_->setVisible(isWalking);
    reload_->setVisible(!isWalking);
    if (!session_.setup().hasSource()) {
        walked_->clear();
        return;
    }
    const Walk::Progress progress = session_.progress();
    const Walk::End& end = session_.walkEnd();
    QString text = counted(progress.files, tr("file"), tr("files"));
    if (progress.folders > 0)
        text += tr(" in %1").arg(counted(progress.folders, tr("folder"), tr("folders")));
    text += QString(", %1 s").arg(progress.seconds, 0, 'f', 1);
    if (end.isStopped)
        text += tr(", stopped");
    if (!end.error.empty())
        text += tr(", failed");
    if (end.hiddenLeftOut > 0)
        text += tr(", %1 hidden left out").arg(end.hiddenLeftOut);
    if (!end.warnings.empty())
        text += ", " + counted(end.warnings.size(), tr("warning"), tr("warnings"));
    QStringList warnings;
    for (const std::string& warning : end.warnings)
        warnings.push_back(shown(warning));
    walked_->setToolTip(isWalking ? shown(progress.current) : warnings.mid(0, 30).join('\n'));
    walked_->setText(text);
    if (isWalking && message_->text().isEmpty())
        message_->setToolTip({});
    takeMatching();
}

void MainWindow::takeMatching()
{
    const auto& matching = session_.matching();
    const bool isBusy = session_.isMatching() || session_.isWalking();
    busy_->setVisible(isBusy);
    const bool hasTable = matching && matching->import;
    for (QAction* const save : saves_)
        save->setEnabled(hasTable && !session_.isMatching());
    QString text;
    if (hasTable) {
        text = tr("%1 of %2 in %3")
                   .arg(QLocale(QLocale::English)
                            .toString(static_cast<qulonglong>(matching->import->matchedCount())),
                        counted(matching->files.count(), tr("file"), tr("files")),
                        counted(matching->import->table().caseCount(), tr("case"), tr("cases")));
    }
    counts_->setText(text);
    tables_->setTabText(0, hasTable ? tr("Cases (%1)").arg(matching->import->table().caseCount())
                                    : tr("Cases"));

    const int row = paths_->currentIndex().row();
    QString hint = tr("Select a value in a path, with the mouse or Ctrl+→, and press Enter to name "
                      "it.");
    if (const auto selected = paths_->selectedBytes())
        hint = tr("Press Enter to name “%1”.").arg(shown(selected->bytes()));
    else if (pathsModel_.rowCount() == 0)
        hint.clear();
    else if (row >= 0 && row < pathsModel_.rowCount()) {
        const PathRead* const read = pathsModel_.read(row);
        if (read != nullptr && !read->isMatched)
            hint = tr("Not matched: %1.").arg(shown(read->reason));
    }
    hint_->setText(hint);
}

void MainWindow::chooseCases(std::vector<std::uint32_t> cases)
{
    PathFilter filter = session_.filter();
    if (filter.cases == cases)
        return;
    filter.cases = std::move(cases);
    session_.filter(filter);
}

// The cases of the selected paths are shown in the table, unless those chose the paths.
void MainWindow::followPath()
{
    takeMatching();
    if (!session_.filter().cases.empty())
        return;
    std::vector<std::uint32_t> cases;
    for (const QItemSelectionRange& range : paths_->selectionModel()->selection()) {
        for (int row = range.top(); row <= range.bottom() && cases.size() < mostFollowed; ++row) {
            if (const auto each = pathsModel_.caseOf(row))
                cases.push_back(static_cast<std::uint32_t>(*each));
        }
    }
    cases_->follow(cases);
}

void MainWindow::openContainingFolder()
{
    const int row = paths_->currentIndex().row();
    if (row < 0 || session_.setup().list)
        return tell(tr("Choose a file of a folder first."));
    const std::string path = session_.setup().root + '/' + pathsModel_.path(row);
    const QString folder = QFile::decodeName(path.substr(0, path.rfind('/')).c_str());
    if (!QDesktopServices::openUrl(QUrl::fromLocalFile(QFileInfo(folder).absoluteFilePath())))
        tellFailure(tr("%1: there is no program that shows folders").arg(folder));
}

void MainWindow::explainPath()
{
    const int row = paths_->currentIndex().row();
    const std::string lines = row < 0 ? std::string() : pathsModel_.explanation(row);
    if (lines.empty())
        return tell(tr("Choose a path first, and by what paths are read."));
    auto* const dialog = new QDialog(this);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setWindowTitle(tr("How the path is read"));
    auto* const text = new QPlainTextEdit(QString::fromStdString(lines));
    text->setReadOnly(true);
    text->setTabChangesFocus(true);
    text->setLineWrapMode(QPlainTextEdit::NoWrap); // Marks stand below bytes of the path.
    text->setFont(pathFont());
    text->setAccessibleName(tr("How the path is read"));
    auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Close);
    connect(buttons, &QDialogButtonBox::rejected, dialog, &QDialog::reject);
    auto* const layout = new QVBoxLayout(dialog);
    layout->addWidget(text, 1);
    layout->addWidget(buttons);
    dialog->resize(em(font(), 50), em(font(), 18));
    dialog->show();
}

void MainWindow::takeRecent()
{
    recent_->clear();
    const QStringList recent = QSettings().value("recent").toStringList();
    for (const QString& name : recent)
        connect(recent_->addAction(name), &QAction::triggered, this,
                [this, name] { openPath(bytesOfFile(name)); });
    if (recent.isEmpty())
        recent_->addAction(tr("No folder was opened yet"))->setEnabled(false);
}

void MainWindow::restore()
{
    QSettings settings;
    if (!restoreGeometry(settings.value("geometry").toByteArray()))
        resize(QSize(1280, 720).boundedTo(roomOnScreen(font())));
    if (!rows_->restoreState(settings.value("rows").toByteArray()))
        rows_->setSizes({em(font(), 8), em(font(), 30)});
    if (!halves_->restoreState(settings.value("halves").toByteArray()))
        halves_->setSizes({760, 500});
}

// A file that is being written is waited for, but by somebody who wants to wait.
void MainWindow::closeEvent(QCloseEvent* event)
{
    if (!session_.saving().empty() && !isClosing_) {
        isClosing_ = true;
        event->ignore();
        return tellMeanwhile(tr("Saving %1, and closing then. Close again to give that up.")
                                 .arg(shown(session_.saving().front())));
    }
    QSettings settings;
    settings.setValue("geometry", saveGeometry());
    settings.setValue("rows", rows_->saveState());
    settings.setValue("halves", halves_->saveState());
    QMainWindow::closeEvent(event);
}

void MainWindow::dragEnterEvent(QDragEnterEvent* event)
{
    if (event->mimeData()->hasUrls() && event->mimeData()->urls().front().isLocalFile())
        event->acceptProposedAction();
}

void MainWindow::dropEvent(QDropEvent* event)
{
    event->acceptProposedAction();
    openPath(bytesOfFile(event->mimeData()->urls().front().toLocalFile()));
}

} // namespace casetable
