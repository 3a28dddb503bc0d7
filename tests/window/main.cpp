#include <cstdio>
#include <cstdlib>

#include <gtest/gtest.h>

#include <QApplication>
#include <QSettings>
#include <QTemporaryDir>

// Settings are those of the test alone. A walk that hangs must not be waited for in the end.
int main(int argc, char** argv)
{
    testing::InitGoogleTest(&argc, argv);
    // There need be no screen.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    int code = 0;
    {
        const QTemporaryDir settings;
        QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, settings.path());
        QApplication application(argc, argv);
        QApplication::setOrganizationName("casetable");
        QApplication::setApplicationName("tests");
        QApplication::setStyle("Fusion");
        code = RUN_ALL_TESTS();
    }
    std::fflush(nullptr);
    std::_Exit(code);
}
