// The viewer executable: application, main window, plug-ins.

#include "OXWLogPane.h"
#include "OXWPluginLoader.h"
#include "OXWViewerWindow.h"

#include <OXMError.h>
#include <OXWApplication.h>

#include <QApplication>
#include <QCommandLineParser>
#include <QGuiApplication>
#include <QPixmap>
#include <QTextStream>
#include <QTimer>

#include <cstdio>
#include <memory>

#if defined(__SANITIZE_ADDRESS__)
// Qt 5.15's offscreen platform plugin does not free its screen objects when the application
// goes; the leak is Qt's.
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
    QApplication qapp(argc, argv);
    QApplication::setApplicationName(QStringLiteral("oxwviewer"));
    QApplication::setApplicationVersion(QStringLiteral("0.1"));

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("OXW volume viewer"));
    parser.addHelpOption();
    parser.addVersionOption();
    const QCommandLineOption screenshotOption(
        QStringLiteral("screenshot"),
        QStringLiteral("Start up, save the window as a PNG image to <file> and quit."),
        QStringLiteral("file"));
    const QCommandLineOption pluginDirOption(
        QStringLiteral("plugin-dir"),
        QStringLiteral("Also load the plug-ins of <directory> (may be given several times)."),
        QStringLiteral("directory"));
    const QCommandLineOption noPluginsOption(QStringLiteral("no-plugins"),
                                             QStringLiteral("Do not load any plug-in."));
    parser.addOption(screenshotOption);
    parser.addOption(pluginDirOption);
    parser.addOption(noPluginsOption);
    parser.process(qapp);

    // Errors also go to stderr (the log pane shows them too).
    const int stderrHandler = OXMError::addHandler([](const OXMError::Message& m) {
        std::fprintf(stderr, "oxwviewer: %s\n", qPrintable(m.toString()));
    });

    OXWApplication app;
    OXWPluginLoader loader;
    for (const QString& dir : parser.values(pluginDirOption))
        loader.addDirectory(dir);

    auto window = std::make_unique<OXWViewerWindow>(&app);
    window->attachPluginLoader(&loader);
    const QString screenshotFile = parser.value(screenshotOption);
    if (!screenshotFile.isEmpty()) {
        window->resize(1280, 800);
        if (QGuiApplication::platformName() == QLatin1String("offscreen"))
            window->setFixedSize(1280, 800);
    }

    if (!parser.isSet(noPluginsOption)) {
        const int loaded = loader.loadAll();
        window->logPane()->appendMessage(QObject::tr("%1 plug-in(s) loaded from %2")
                                             .arg(loaded)
                                             .arg(loader.directories().join(QStringLiteral(", "))));
    } else {
        window->logPane()->appendMessage(QObject::tr("Plug-ins disabled (--no-plugins)"));
    }
    window->show();
    loader.initializeAll();

    int exitCode = 0;
    if (!screenshotFile.isEmpty()) {
        QTimer::singleShot(0, window.get(), [&window, &screenshotFile, &exitCode] {
            const QPixmap shot = window->grab();
            if (shot.isNull() || !shot.save(screenshotFile, "PNG")) {
                std::fprintf(stderr, "oxwviewer: could not write the screenshot '%s'\n",
                             qPrintable(screenshotFile));
                exitCode = 1;
            }
            QApplication::quit();
        });
    }
    const int runResult = qapp.exec();

    loader.terminateAll(); // before the window goes
    window.reset();
    OXMError::removeHandler(stderrHandler);
    return exitCode != 0 ? exitCode : runResult;
}
