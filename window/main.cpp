#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>
#include <vector>

#include <QApplication>
#include <QFileInfo>
#include <QSettings>
#include <QTimer>

#include "casetable/options/CommandLine.h"
#include "casetable/options/OptionTable.h"
#include "casetable/system/Console.h"
#include "casetable/system/ExitCode.h"
#include "casetable/system/Interrupt.h"
#include "casetable/system/OutputGuards.h"
#include "casetable/system/Processors.h"
#include "window/model/BackgroundJob.h"
#include "window/model/Saving.h"
#include "window/model/Session.h"
#include "window/view/Look.h"
#include "window/view/MainWindow.h"

namespace casetable {

namespace {

// The options that the window has of its own.
const char* const ownHelp =
    R"(  --grab FILE.png       Save a picture of the window once all is read, and exit
  --dark                Light text on a dark ground
  --help, --version     Print this help, or the version, and exit
)";

const OptionId ofReading[] = {OptionId::String,  OptionId::Number,    OptionId::Template,
                              OptionId::Aux,     OptionId::FromList,  OptionId::Null,
                              OptionId::Exclude, OptionId::Hidden,    OptionId::MaxDepth,
                              OptionId::Follow,  OptionId::KeepGoing, OptionId::Sort};

std::string help()
{
    std::string text = "Shows the files below ROOT, what is read from their paths, and the cases.\n"
                       "Usage: casetable-window [OPTIONS] [ROOT]\n"
                       "       casetable-window SETUP.casetable\n\nOptions, as of "
                       "casetable:\n";
    for (const OptionId id : ofReading) {
        const Option& option = optionOf(id);
        std::string line = "  ";
        if (option.letter != '\0')
            line += std::string("-") + option.letter + ',';
        line += option.name + (takesValue(option) ? std::string(" ") + option.argument : "");
        line += line.size() < 23 ? std::string(24 - line.size(), ' ') : "\n" + std::string(24, ' ');
        text += line + option.help + '\n';
    }
    return text + "\nOptions of its own:\n" + ownHelp;
}

// What was typed, without what Qt took.
struct Typed {
    std::vector<std::string> words;
    std::string grab; // Empty for none.
    bool isDark = false;
    bool wantsHelp = false;
    bool wantsVersion = false;
};

// Whether the next word is the value of an option that ends this one.
bool awaitsValue(const std::string& word)
{
    if (word.size() < 2 || word[0] != '-')
        return false;
    if (word[1] == '-') {
        const Option* const option = optionNamed(word);
        return option != nullptr && takesValue(*option);
    }
    for (std::size_t i = 1; i < word.size(); ++i) {
        const Option* const option = optionOfLetter(word[i]);
        if (option != nullptr && takesValue(*option))
            return i + 1 == word.size();
    }
    return false;
}

Typed readTyped(int argc, char** argv)
{
    Typed typed;
    for (int i = 1; i < argc; ++i) {
        const std::string word = argv[i];
        if (word == "--grab" && i + 1 < argc)
            typed.grab = argv[++i];
        else if (word.rfind("--grab=", 0) == 0)
            typed.grab = word.substr(7);
        else if (word == "--grab")
            failUsage("--grab: its FILE.png is missing");
        else if (word == "--dark")
            typed.isDark = true;
        else if (word == "--help" || word == "-h")
            typed.wantsHelp = true;
        else if (word == "--version")
            typed.wantsVersion = true;
        else if (word == "--") {
            typed.words.insert(typed.words.end(), argv + i, argv + argc);
            break;
        } else {
            typed.words.push_back(word);
            if (awaitsValue(word) && i + 1 < argc)
                typed.words.emplace_back(argv[++i]);
        }
    }
    return typed;
}

// Whether nothing was typed but what may be the name of a setup file. It may be that of a folder,
// too, but to look at it may take for ever.
bool mayNameSetupFile(const Setup& setup)
{
    Setup named;
    named.root = setup.root;
    return isSetupFile(setup.root) && setup == named;
}

// Where a setup file is named, that is the root of it.
Setup setupOf(const std::vector<std::string>& words)
{
    const ReadSetup read = readSetup(words);
    if (!read.leftOut.empty())
        failUsage(read.leftOut.front() + ": casetable-window has no such option; it saves by menu");
    if (read.setup.hasSource())
        static_cast<void>(checkedSource(read.setup));
    return read.setup;
}

// Once nothing has been read or looked for since it was last looked, all is drawn.
void grabWhenIdle(const Session& session, MainWindow& window, const std::string& file)
{
    auto* const timer = new QTimer(&window);
    const auto look = [timer, wasIdle = false, &session, &window, file]() mutable {
        if (!session.isIdle() || !wasIdle) {
            wasIdle = session.isIdle();
            return;
        }
        timer->stop();
        const bool isSaved = window.grab().save(QFile::decodeName(file.c_str()), "PNG");
        if (!isSaved)
            Console().error(file + ": the picture cannot be written");
        const std::string& error = session.walkEnd().error;
        if (!error.empty())
            Console().error(error);
        const ExitCode code = error.empty() ? ExitCode::Cases : ExitCode::ImportFailed;
        QApplication::exit(static_cast<int>(isSaved ? code : ExitCode::OutputFailed));
    };
    QObject::connect(timer, &QTimer::timeout, &window, look);
    timer->start(30);
}

int run(int& argc, char** argv)
{
    const Typed typed = readTyped(argc, argv);
    if (typed.wantsHelp || typed.wantsVersion) {
        const std::string text =
            typed.wantsHelp ? help() : "casetable-window " CASETABLE_VERSION "\n";
        static_cast<void>(std::fputs(text.c_str(), stdout));
        return 0;
    }
    const Setup setup = setupOf(typed.words);
    // Nobody would see in the window what is wrong with it.
    if (!typed.grab.empty() && mayNameSetupFile(setup) &&
        !QFileInfo(QFile::decodeName(setup.root.c_str())).isDir())
        static_cast<void>(readSetupFile(setup.root));
    // A picture needs no screen, nor what Qt says about that.
    if (!typed.grab.empty()) {
        if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
            qputenv("QT_QPA_PLATFORM", "offscreen");
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    }
    QApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
    int qtArguments = 1;
    QApplication application(qtArguments, argv);
    QApplication::setOrganizationName("casetable");
    QApplication::setApplicationName("casetable-window");
    QApplication::setDesktopFileName("casetable-window");
    QApplication::setStyle("Fusion");
    if (typed.isDark)
        QApplication::setPalette(darkPalette());

    // A picture shows the window as it is at first, and changes nothing of the user's. Without a
    // screen there is no desktop either that says how large text is.
    if (!typed.grab.empty())
        QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, "/dev/null");
    if (QApplication::platformName() == "offscreen") {
        QFont font = QApplication::font();
        font.setPointSizeF(10);
        QApplication::setFont(font);
    }

    Session session(availableProcessors());
    MainWindow window(session);
    if (!typed.grab.empty())
        window.resize(1280, 720);
    window.show();
    if (mayNameSetupFile(setup))
        window.openPath(setup.root);
    else if (setup != Setup())
        session.open(setup);
    if (!typed.grab.empty())
        grabWhenIdle(session, window, typed.grab);
    return QApplication::exec();
}

} // namespace

} // namespace casetable

int main(int argc, char** argv)
{
    using namespace casetable;

    takeBrokenWritesAsFailures();
    int code = static_cast<int>(ExitCode::ImportFailed);
    try {
        code = run(argc, argv);
    } catch (const Failure& failure) {
        Console().error(failure.what(), failure.excerpt);
        code = static_cast<int>(failure.code);
    } catch (const std::exception& failure) {
        Console().error(failure.what());
    }
    // A job that was left to itself would be waited for.
    if (BackgroundJob::isAnyLeft())
        std::_Exit(code);
    return code;
}
