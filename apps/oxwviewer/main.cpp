// The viewer executable: application, main window, plug-ins.

#include "OXWLogPane.h"
#include "OXWPluginLoader.h"
#include "OXWSampleScene.h"
#include "OXWSceneTreeView.h"
#include "OXWSliceView.h"
#include "OXWViewerWindow.h"
#include "OXWVolumeView.h"

#include <OXWClassificationToolGUI.h>

#include <OXMError.h>
#include <OXMScene.h>
#include <OXMTulvoRights.h>
#include <OXMVolumeRenderObject.h>
#include <OXWApplication.h>
#include <OXWTaskProgress.h>

#include <QAction>
#include <QMenu>
#include <QSplitter>

#include <QApplication>
#include <QCommandLineParser>
#include <QGuiApplication>
#include <QPixmap>
#include <QScreen>
#include <QSurfaceFormat>
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
    // The 3D view draws with OpenGL: the format VTK needs, for every GL widget.
    QSurfaceFormat::setDefaultFormat(QVTKOpenGLNativeWidget::defaultFormat());
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
    const QCommandLineOption sampleSizeOption(
        QStringLiteral("sample-size"),
        QStringLiteral("Edge length in voxels of the built-in sample volumes (default 256)."),
        QStringLiteral("voxels"), QStringLiteral("256"));
    parser.addOption(screenshotOption);
    parser.addOption(sampleSizeOption);
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
    } else if (const QScreen* screen = QGuiApplication::primaryScreen()) {
        // Most of the screen, centred.
        const QRect area = screen->availableGeometry();
        const QSize size = (area.size() * 0.85).boundedTo(QSize(1920, 1200));
        window->resize(size);
        window->move(area.center() - QPoint(size.width() / 2, size.height() / 2));
    }

    // The built-in sample: two CT-like phantoms, the 16-bit one selected. The scene tree writes
    // the application's selection lists, the slice view shows the current object with its
    // classification and follows every change of it.
    bool sizeOk = false;
    const int sampleSize = parser.value(sampleSizeOption).toInt(&sizeOk);
    OXWSampleScene::Result sample;
    OXWTaskProgress::beginStatusBarCallback();
    const bool sampleBuilt = OXWSampleScene::build(&app, sizeOk ? sampleSize : -1, sample);
    OXWTaskProgress::endStatusBarCallback();
    if (!sampleBuilt)
        window->logPane()->appendMessage(
            QObject::tr("The built-in sample could not be built (sample size %1).")
                .arg(parser.value(sampleSizeOption)));

    // The scene tree on the left; the 3D view, largest, over the slices.
    auto* views = new QSplitter(window.get());
    auto* tree = new OXWSceneTreeView(views);
    auto* pictures = new QSplitter(Qt::Vertical, views);
    auto* volumeView = new OXWVolumeView(pictures);
    auto* slices = new OXWSliceView(pictures);
    pictures->setStretchFactor(0, 3);
    pictures->setStretchFactor(1, 1);
    views->setStretchFactor(0, 0);
    views->setStretchFactor(1, 1);
    views->setSizes({200, 1000});
    QObject::connect(tree, &OXWSceneTreeView::currentObjectChanged, slices,
                     &OXWSliceView::setObject);
    QObject::connect(tree, &OXWSceneTreeView::currentObjectChanged, volumeView,
                     &OXWVolumeView::setObject);
    QAction* resetCamera = window->viewMenu()->addAction(QObject::tr("Reset 3D view"));
    resetCamera->setShortcut(QKeySequence(QStringLiteral("Ctrl+R")));
    QObject::connect(resetCamera, &QAction::triggered, volumeView, &OXWVolumeView::resetCamera);
    tree->setApplication(&app);
    if (sample.volume16)
        tree->selectObject(sample.volume16);
    window->setCentralWidget(views);

    // The classification tool, docked beside the views (the plug-in will dock it itself).
    window->createTool(new OXWClassificationToolGUI(nullptr, "OXWClassificationToolGUI"),
                       OXWDockWindow::Vertical);

    // Trying the tool without the right to edit: the rights of the open file live in the scene.
    QAction* lock = window->editMenu()->addAction(QObject::tr("Lock classification"));
    lock->setCheckable(true);
    lock->setEnabled(sample.scene && sample.scene->getRights());
    QObject::connect(lock, &QAction::toggled, [&sample](bool locked) {
        if (OXMTulvoRights* rights = sample.scene ? sample.scene->getRights() : nullptr)
            rights->setAllowClassificationEdit(!locked);
    });

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
