#include "OXWPluginLoader.h"

#include <OXMError.h>
#include <OXMPluginInfo.h>
#include <OXMenum.h>

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QLibrary>

// The host's handle of a loaded plug-in, handed to its callbacks. Plug-ins see it as an
// opaque pointer; the viewer is the only place that defines it.
struct __OXMPlugin
{
    OXMPluginInfo* info = nullptr;
    QString filePath;
};

struct OXWPluginLoader::Plugin
{
    std::unique_ptr<QLibrary> library;
    OXMPluginInfo* info = nullptr;
    __OXMPlugin handle;
    PluginDescription description;
};

namespace {

// A record larger than this is taken for garbage rather than a newer layout.
constexpr std::int32_t MaximumRecordSize = 64 * 1024;

QString fromRecordText(const char* text)
{
    return text ? QString::fromUtf8(text) : QString();
}

// The result code as text, for messages ("OXM::GenericError", "<invalid 42>").
QString codeText(OXMenum code)
{
    return code.toString();
}

// The code to report a failed callback with: the plug-in's own when it is a known value.
OXMenum reportCode(OXMenum code)
{
    const char* name = code.getName();
    return (name && *name) ? code : OXM::GenericError;
}

} // namespace

OXWPluginLoader::OXWPluginLoader(QObject* parent)
    : QObject(parent), mDirectories(defaultDirectories())
{
}

OXWPluginLoader::~OXWPluginLoader()
{
    // Plug-ins still initialized (terminateAll was not called) keep their libraries mapped:
    // their objects may outlive the loader.
    for (auto& p : mPlugins)
        unloadIfAllowed(*p);
}

QStringList OXWPluginLoader::defaultDirectories()
{
    QStringList dirs;
    dirs << QCoreApplication::applicationDirPath() + QStringLiteral("/plugins");
    const QString env = qEnvironmentVariable("OXW_PLUGIN_PATH");
    for (const QString& part : env.split(QLatin1Char(':'), Qt::SkipEmptyParts))
        dirs << part;
    return dirs;
}

void OXWPluginLoader::addDirectory(const QString& directory)
{
    if (!directory.isEmpty())
        mDirectories << directory;
}

int OXWPluginLoader::loadAll()
{
    int loaded = 0;
    for (const QString& dir : mDirectories)
        loaded += loadDirectory(dir);
    return loaded;
}

int OXWPluginLoader::loadDirectory(const QString& directory)
{
    QDir dir(directory);
    if (directory.isEmpty() || !dir.exists())
        return 0; // a missing folder is not an error
    const int before = pluginCount();
    const QStringList names = dir.entryList(QDir::Files, QDir::Name);
    for (const QString& name : names) {
        if (QLibrary::isLibrary(name))
            loadFile(dir.absoluteFilePath(name));
    }
    return pluginCount() - before;
}

bool OXWPluginLoader::loadFile(const QString& filePath)
{
    const QFileInfo fi(filePath);
    const QString canonical = fi.canonicalFilePath();
    if (canonical.isEmpty() || !fi.isFile()) {
        fail(tr("Plug-in file '%1' does not exist").arg(filePath));
        return false;
    }
    for (const auto& p : mPlugins) {
        if (p->description.filePath == canonical)
            return true; // the same file reached twice
    }

    auto library = std::make_unique<QLibrary>(canonical);
    library->setLoadHints(QLibrary::ResolveAllSymbolsHint);
    if (!library->load()) {
        fail(tr("Plug-in file '%1' could not be loaded: %2").arg(filePath, library->errorString()));
        return false;
    }
    auto entry = reinterpret_cast<OXMGetPluginInfoFunction>(library->resolve("oxmGetPluginInfo"));
    if (!entry) {
        fail(tr("Plug-in file '%1' is not a plug-in: it has no entry point oxmGetPluginInfo")
                 .arg(filePath));
        library->unload();
        return false;
    }
    OXMPluginInfo* info = entry();
    if (!info) {
        fail(tr("Plug-in file '%1': oxmGetPluginInfo returned no plug-in record").arg(filePath));
        library->unload();
        return false;
    }
    QString problem;
    if (info->recordSize < std::int32_t(sizeof(OXMPluginInfo)) ||
        info->recordSize > MaximumRecordSize)
        problem = tr("record size %1, expected at least %2")
                      .arg(info->recordSize)
                      .arg(int(sizeof(OXMPluginInfo)));
    else if (info->recordVersion < 1)
        problem = tr("record version %1").arg(info->recordVersion);
    else if (!info->name || !*info->name)
        problem = tr("no plug-in name");
    if (!problem.isEmpty()) {
        fail(tr("Plug-in file '%1' has a malformed plug-in record (%2)").arg(filePath, problem));
        library->unload();
        return false;
    }
    for (const auto& p : mPlugins) {
        if (p->description.unloaded)
            continue;
        if (p->info == info) {
            library->unload(); // a second name of a library that is loaded already
            return true;
        }
        if (p->description.name == QString::fromUtf8(info->name)) {
            fail(tr("Plug-in file '%1': a plug-in named '%2' is loaded already from '%3'")
                     .arg(filePath, p->description.name, p->description.filePath));
            library->unload();
            return false;
        }
    }

    auto plugin = std::make_unique<Plugin>();
    plugin->library = std::move(library);
    plugin->info = info;
    plugin->handle.info = info;
    plugin->handle.filePath = canonical;
    PluginDescription& d = plugin->description;
    d.filePath = canonical;
    d.name = QString::fromUtf8(info->name);
    d.vendor = fromRecordText(info->vendor);
    d.copyright = fromRecordText(info->copyright);
    d.description = fromRecordText(info->description);
    d.version = QStringLiteral("%1.%2.%3")
                    .arg(info->versionMajor)
                    .arg(info->versionMinor)
                    .arg(info->versionPatch);
    d.state = State::Loaded;
    emit message(tr("Loaded plug-in '%1' %2 from '%3'").arg(d.name, d.version, filePath));
    mPlugins.push_back(std::move(plugin));
    return true;
}

int OXWPluginLoader::initializeAll()
{
    int failed = 0;
    for (auto& p : mPlugins) {
        PluginDescription& d = p->description;
        if (d.state != State::Loaded || d.unloaded)
            continue;
        const OXMenum result =
            p->info->initialize ? p->info->initialize(&p->handle) : OXMenum(OXM::NoError);
        if (result == OXM::NoError) {
            d.state = State::Initialized;
            emit message(tr("Initialized plug-in '%1'").arg(d.name));
        } else {
            d.state = State::InitializeFailed;
            d.problem = codeText(result);
            ++failed;
            ++mFailureCount;
            OXMError::emitError(nullptr, reportCode(result),
                                tr("Plug-in '%1' from file '%2' failed to initialize (%3)")
                                    .arg(d.name, d.filePath, codeText(result)));
        }
    }
    return failed;
}

int OXWPluginLoader::terminateAll()
{
    int failed = 0;
    for (auto it = mPlugins.rbegin(); it != mPlugins.rend(); ++it) {
        Plugin& p = **it;
        PluginDescription& d = p.description;
        if (d.state != State::Initialized)
            continue;
        const OXMenum result =
            p.info->terminate ? p.info->terminate(&p.handle) : OXMenum(OXM::NoError);
        if (result == OXM::NoError) {
            d.state = State::Terminated;
            emit message(tr("Terminated plug-in '%1'").arg(d.name));
        } else {
            d.state = State::TerminateFailed;
            d.problem = codeText(result);
            ++failed;
            ++mFailureCount;
            OXMError::emitError(nullptr, reportCode(result),
                                tr("Plug-in '%1' from file '%2' failed to terminate (%3)")
                                    .arg(d.name, d.filePath, codeText(result)));
        }
    }
    for (auto it = mPlugins.rbegin(); it != mPlugins.rend(); ++it)
        unloadIfAllowed(**it);
    return failed;
}

QVector<OXWPluginLoader::PluginDescription> OXWPluginLoader::plugins() const
{
    QVector<PluginDescription> list;
    list.reserve(int(mPlugins.size()));
    for (const auto& p : mPlugins)
        list.push_back(p->description);
    return list;
}

const OXWPluginLoader::PluginDescription* OXWPluginLoader::findPlugin(const QString& name) const
{
    for (const auto& p : mPlugins) {
        if (p->description.name == name)
            return &p->description;
    }
    return nullptr;
}

QString OXWPluginLoader::summary() const
{
    QStringList lines;
    for (const auto& p : mPlugins) {
        const PluginDescription& d = p->description;
        const QString state = d.problem.isEmpty()
                                  ? stateName(d.state)
                                  : QStringLiteral("%1: %2").arg(stateName(d.state), d.problem);
        lines << QStringLiteral("%1 %2 (%3) - %4 [%5]")
                     .arg(d.name, d.version, state, d.description, d.filePath);
    }
    for (const QString& problem : mProblems)
        lines << tr("Not loaded: %1").arg(problem);
    return lines.join(QLatin1Char('\n'));
}

QString OXWPluginLoader::stateName(State state)
{
    switch (state) {
    case State::Loaded:
        return tr("loaded");
    case State::Initialized:
        return tr("running");
    case State::InitializeFailed:
        return tr("failed to initialize");
    case State::Terminated:
        return tr("stopped");
    case State::TerminateFailed:
        return tr("failed to terminate");
    }
    return QString();
}

void OXWPluginLoader::fail(const QString& text)
{
    ++mFailureCount;
    mProblems << text;
    OXMError::emitError(nullptr, OXM::GenericError, text);
}

void OXWPluginLoader::unloadIfAllowed(Plugin& plugin)
{
    PluginDescription& d = plugin.description;
    if (d.unloaded || !(d.state == State::Loaded || d.state == State::Terminated))
        return;
    plugin.info = nullptr; // the record lives in the library
    plugin.handle.info = nullptr;
    plugin.library->unload();
    d.unloaded = true;
}
