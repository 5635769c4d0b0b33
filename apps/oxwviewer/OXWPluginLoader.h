#pragma once

#include <QObject>
#include <QString>
#include <QStringList>
#include <QVector>

#include <memory>
#include <vector>

class OXMPluginInfo;
class QLibrary;
struct __OXMPlugin;

// Finds, loads, starts and stops the viewer's plug-ins.
//
// A plug-in is a shared library exporting `extern "C" OXMPluginInfo* oxmGetPluginInfo()`. The
// loader never links a plug-in: it opens the library with QLibrary, resolves the entry point,
// calls it and checks the record it answers (non-null, a name, a layout version of at least 1
// and a record size no smaller than the host's record).
//
// Directories: defaultDirectories() gives the folder "plugins" next to the executable and
// every folder of the environment variable OXW_PLUGIN_PATH (colon-separated, empty parts
// ignored); addDirectory adds more. loadAll scans them in that order, each folder sorted by
// file name. Only files whose names look like shared libraries (QLibrary::isLibrary) are
// tried; anything else in a plug-in folder (read-me files, data) is ignored. A folder that is
// missing or empty is not an error. A file reached twice (same canonical path, or a second
// name of an already loaded library) is loaded once; a second plug-in with the name of a loaded
// one is refused.
//
// Life cycle of one plug-in: Loaded -> initializeAll -> Initialized (or InitializeFailed) ->
// terminateAll -> Terminated (or TerminateFailed). initializeAll calls each record's
// initialize callback once, in load order, and must run once the main window exists;
// terminateAll calls the terminate callbacks of the initialized plug-ins in reverse order and
// must run before the main window goes. A missing callback counts as success.
//
// A plug-in whose initialize failed is NOT terminated: the host's contract is that terminate
// stops a started plug-in, and a failed start-up did not start it. Whatever such a plug-in
// left behind (for instance a docked panel) belongs to the main window and goes with it.
// Because objects of that plug-in may still run its code, its library is never unloaded;
// the same holds for a plug-in whose terminate failed and for one still initialized when the
// loader is destroyed. terminateAll unloads the libraries of the plug-ins it stopped and of
// those never started.
//
// Errors are values: every failure (a file that is not a loadable library, no entry point, a
// null or malformed record, a duplicate, a callback answering other than OXM::NoError) is
// reported through OXMError::emitError with a text naming the file, and loading goes on with
// the next file. Progress messages ("Loaded plug-in ...") are sent through the signal message.
//
// Everything runs on the GUI thread.
class OXWPluginLoader : public QObject
{
    Q_OBJECT
public:
    enum class State
    {
        Loaded,
        Initialized,
        InitializeFailed,
        Terminated,
        TerminateFailed
    };

    // What the loader knows about one loaded plug-in (a copy; stays valid after unloading).
    struct PluginDescription
    {
        QString filePath; // canonical path of the library
        QString name;
        QString vendor;
        QString copyright;
        QString description;
        QString version; // "major.minor.patch"
        State state = State::Loaded;
        // Why a callback failed (its result code); empty otherwise.
        QString problem;
        bool unloaded = false;
    };

    explicit OXWPluginLoader(QObject* parent = nullptr);
    ~OXWPluginLoader() override;
    OXWPluginLoader(const OXWPluginLoader&) = delete;
    OXWPluginLoader& operator=(const OXWPluginLoader&) = delete;

    // "<application dir>/plugins" followed by the folders of OXW_PLUGIN_PATH.
    static QStringList defaultDirectories();

    // The folders loadAll scans; starts as defaultDirectories().
    QStringList directories() const { return mDirectories; }
    void setDirectories(const QStringList& directories) { mDirectories = directories; }
    void addDirectory(const QString& directory);

    // Scans every folder and loads each library found; returns the number of plug-ins loaded
    // by this call.
    int loadAll();
    // Scans one folder; returns the number of plug-ins loaded.
    int loadDirectory(const QString& directory);
    // Loads one library; false (and an error reported) when it is not a usable plug-in.
    bool loadFile(const QString& filePath);

    // Calls initialize of every plug-in in the state Loaded; returns the number that failed.
    int initializeAll();
    // Calls terminate of every initialized plug-in, last loaded first, then unloads what may
    // be unloaded (see above); returns the number of callbacks that failed.
    int terminateAll();

    // The plug-ins loaded so far, in load order.
    QVector<PluginDescription> plugins() const;
    int pluginCount() const { return int(mPlugins.size()); }
    // The plug-in of that name, or null.
    const PluginDescription* findPlugin(const QString& name) const;
    // Number of failures reported since construction.
    int failureCount() const { return mFailureCount; }
    // Why files of the plug-in folders were not loaded, one sentence each naming the file.
    QStringList problems() const { return mProblems; }
    // One line per plug-in: "name version (state[: problem]) - description [file]", then one
    // line "Not loaded: ..." per problem.
    QString summary() const;

    static QString stateName(State state);

signals:
    // A progress message ("Loaded plug-in ..."); failures go to OXMError instead.
    void message(const QString& text);

private:
    struct Plugin;

    void fail(const QString& text);
    void unloadIfAllowed(Plugin& plugin);

    QStringList mDirectories;
    std::vector<std::unique_ptr<Plugin>> mPlugins;
    QStringList mProblems;
    int mFailureCount = 0;
};
