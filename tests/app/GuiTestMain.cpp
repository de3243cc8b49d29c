// Runs the GUI tests on the offscreen platform: no display needed.
#include <gtest/gtest.h>

#include <QApplication>
#include <QSettings>
#include <QTemporaryDir>

#include "find/TextFolding.h"

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    // The remembered report folder goes to a settings file of this run only.
    const QTemporaryDir settings;
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, settings.path());
    QApplication app(argc, argv);
    installTextFold();
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
