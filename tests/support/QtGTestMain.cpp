// main() of the test programs that need a QApplication: widgets, pixmaps, fonts, cursors.
// Runs on the offscreen platform unless the environment chooses another, in the private
// surroundings of OXWTestEnvironment.h.

#include "OXWTestEnvironment.h"

#include <QApplication>
#include <QSurfaceFormat>

#include <gtest/gtest.h>

#if defined(__SANITIZE_ADDRESS__)
// Qt 5.15's offscreen platform plugin does not free its screen objects when the application
// goes. The leak is Qt's, happens even when a test program only lists its tests (as test
// discovery does at build time), and would fail every sanitizer run.
extern "C" const char* __lsan_default_suppressions()
{
    return "leak:libqoffscreen.so\n"
           "leak:QScreen::QScreen\n"
           "leak:QPlatformScreen::QPlatformScreen\n"
           "leak:QWindowSystemInterface::handleScreenAdded\n";
}
#endif

int main(int argc, char** argv)
{
    if (!oxwtest::enterPrivateEnvironment()) {
        return 1;
    }
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    // Every GL widget gets the OpenGL 3.2 core context that VTK's widget draws with.
    QSurfaceFormat format;
    format.setRenderableType(QSurfaceFormat::OpenGL);
    format.setVersion(3, 2);
    format.setProfile(QSurfaceFormat::CoreProfile);
    format.setDepthBufferSize(8);
    format.setAlphaBufferSize(8);
    format.setSwapBehavior(QSurfaceFormat::DoubleBuffer);
    QSurfaceFormat::setDefaultFormat(format);
    QApplication app(argc, argv);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
