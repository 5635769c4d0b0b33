// The viewer executable: application, main window, plug-ins.

#include "OXWDocumentController.h"
#include "OXWLogPane.h"
#include "OXWPluginLoader.h"
#include "OXWSampleScene.h"
#include "OXWSceneTreeView.h"
#include "OXWSliceView.h"
#include "OXWViewerOptions.h"
#include "OXWViewerWindow.h"
#include "OXWVolumeOpener.h"
#include "OXWVolumeView.h"

#include <OXMError.h>
#include <OXMObjectLink.h>
#include <OXMScene.h>
#include <OXMSingleton.h>
#include <OXMTulvoRights.h>
#include <OXMVolumeRenderObject.h>
#include <OXWApplication.h>
#include <OXWPreferenceDialog.h>
#include <OXWPreferenceManager.h>
#include <OXWTaskProgress.h>

#include <QAction>
#include <QMenu>
#include <QSplitter>
#include <QStandardPaths>

#include <QApplication>
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

namespace {

// Most of the screen, centred; a fixed size for a screenshot.
void placeWindow(QWidget* window, bool screenshot)
{
    if (screenshot) {
        window->resize(1280, 800);
    } else if (const QScreen* screen = QGuiApplication::primaryScreen()) {
        const QRect area = screen->availableGeometry();
        const QSize size = (area.size() * 0.85).boundedTo(QSize(1920, 1200));
        window->resize(size);
        window->move(area.center() - QPoint(size.width() / 2, size.height() / 2));
    }
}

// The scene tree on the left; the 3D view, largest, over the slices. Both views show the
// tree's current object and follow every change of it.
OXWSceneTreeView* buildViews(OXWViewerWindow* window, OXWApplication* app)
{
    auto* views = new QSplitter(window);
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
    tree->setApplication(app);
    window->setCentralWidget(views);
    return tree;
}

// File ▸ Open volume..., Open Recent, before Quit; files dropped on the window open too.
void addFileActions(OXWViewerWindow* window, OXWVolumeOpener* opener)
{
    QMenu* file = window->fileMenu();
    auto* open = new QAction(QObject::tr("&Open volume..."), file);
    open->setShortcut(QKeySequence::Open);
    QObject::connect(open, &QAction::triggered, opener, &OXWVolumeOpener::openWithDialog);
    auto* recent = new QMenu(QObject::tr("Open &Recent"), file);
    opener->setRecentMenu(recent);
    file->insertAction(window->quitAction(), open);
    file->insertMenu(window->quitAction(), recent);
    file->insertSeparator(window->quitAction());
    QObject::connect(window, &OXWViewerWindow::filesDropped, opener, &OXWVolumeOpener::open);
}

// Trying the tool without the right to edit: the rights of the open file live in the scene.
void addLockAction(OXWViewerWindow* window, OXWApplication* app)
{
    QAction* lock = window->editMenu()->addAction(QObject::tr("Lock classification"));
    lock->setCheckable(true);
    QObject::connect(lock, &QAction::toggled, [app](bool locked) {
        OXMObjectLink link;
        auto* scene =
            app->getValue(OXM::Scene, link) ? dynamic_cast<OXMScene*>(link.getLink()) : nullptr;
        if (OXMTulvoRights* rights = scene ? scene->getRights() : nullptr)
            rights->setAllowClassificationEdit(!locked);
    });
}

// Edit ▸ Preferences...: the preferences that the plug-ins registered, stored in the user's
// configuration folder.
void addPreferencesAction(OXWViewerWindow* window, OXWPreferenceManager* preferences)
{
    preferences->setStorageDirectory(
        QStandardPaths::writableLocation(QStandardPaths::AppConfigLocation) +
        QStringLiteral("/preferences"));
    window->editMenu()->addSeparator();
    QAction* open = window->editMenu()->addAction(QObject::tr("Preferences..."));
    open->setObjectName(QStringLiteral("mPreferencesAction"));
    open->setMenuRole(QAction::PreferencesRole);
    QObject::connect(open, &QAction::triggered, window, [window, preferences] {
        OXWPreferenceDialog dialog(preferences, window);
        dialog.exec();
    });
}

void loadPlugins(OXWPluginLoader& loader, OXWViewerWindow* window, bool disabled)
{
    if (disabled) {
        window->logPane()->appendMessage(QObject::tr("Plug-ins disabled (--no-plugins)"));
        return;
    }
    const int loaded = loader.loadAll();
    window->logPane()->appendMessage(QObject::tr("%1 plug-in(s) loaded from %2")
                                         .arg(loaded)
                                         .arg(loader.directories().join(QStringLiteral(", "))));
}

// Writes the window to the file once the event loop runs, and quits; false on failure.
void scheduleScreenshot(QWidget* window, const QString& file, int& exitCode)
{
    QTimer::singleShot(0, window, [window, file, &exitCode] {
        const QPixmap shot = window->grab();
        if (shot.isNull() || !shot.save(file, "PNG")) {
            std::fprintf(stderr, "oxwviewer: could not write the screenshot '%s'\n",
                         qPrintable(file));
            exitCode = 1;
        }
        QApplication::quit();
    });
}

} // namespace

int main(int argc, char** argv)
{
    const OXWViewerOptions options = OXWViewerOptions::parse(argc, argv);
    if (options.exitCode >= 0)
        return options.exitCode;
    // The 3D view draws with OpenGL: the format VTK needs, for every GL widget.
    QSurfaceFormat::setDefaultFormat(QVTKOpenGLNativeWidget::defaultFormat());
    QApplication qapp(argc, argv);
    QApplication::setApplicationName(QStringLiteral("oxwviewer"));
    QApplication::setApplicationVersion(QStringLiteral("0.1"));

    // Errors also go to stderr (the log pane shows them too).
    const int stderrHandler = OXMError::addHandler([](const OXMError::Message& m) {
        std::fprintf(stderr, "oxwviewer: %s\n", qPrintable(m.toString()));
    });

    OXWApplication app;
    OXWPreferenceManager preferences;
    OXMSingleton<OXWPreferenceManager>::setInstance(&preferences);
    OXWPluginLoader loader;
    for (const QString& dir : options.pluginDirectories)
        loader.addDirectory(dir);
    auto window = std::make_unique<OXWViewerWindow>(&app);
    window->attachPluginLoader(&loader);
    placeWindow(window.get(), !options.screenshot.isEmpty());

    // The built-in sample: two CT-like phantoms, the 16-bit one selected.
    OXWSampleScene::Result sample;
    OXWTaskProgress::beginStatusBarCallback();
    const bool sampleBuilt = OXWSampleScene::build(&app, options.sampleSize, sample);
    OXWTaskProgress::endStatusBarCallback();
    if (!sampleBuilt)
        window->logPane()->appendMessage(
            QObject::tr("The built-in sample could not be built (sample size %1).")
                .arg(options.sampleSize));
    OXWSceneTreeView* tree = buildViews(window.get(), &app);
    if (sample.volume16)
        tree->selectObject(sample.volume16);
    auto* opener = new OXWVolumeOpener(window.get());
    opener->setInteractive(options.screenshot.isEmpty());
    addFileActions(window.get(), opener);
    auto* document = new OXWDocumentController(&app, window.get());
    document->addActions(window->fileMenu(), window->quitAction());
    window->setCloseGuard([document] { return document->mayDiscardChanges(); });

    addLockAction(window.get(), &app);
    addPreferencesAction(window.get(), &preferences);
    loadPlugins(loader, window.get(), options.noPlugins);
    window->show();
    loader.initializeAll();

    int exitCode = 0;
    if (!opener->open(options.files) && !options.screenshot.isEmpty())
        exitCode = 1;
    if (!options.screenshot.isEmpty() && exitCode == 0)
        scheduleScreenshot(window.get(), options.screenshot, exitCode);
    const int runResult = exitCode == 0 ? qapp.exec() : 0;

    loader.terminateAll(); // before the window goes
    window.reset();
    OXMSingleton<OXWPreferenceManager>::clearInstance(&preferences);
    OXMError::removeHandler(stderrHandler);
    return exitCode != 0 ? exitCode : runResult;
}
