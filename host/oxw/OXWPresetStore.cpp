#include "OXWPresetStore.h"

#include <OXMError.h>

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonObject>
#include <QObject>
#include <QSaveFile>
#include <QSet>
#include <QStandardPaths>
#include <QThreadPool>

#ifdef Q_OS_LINUX
#include <sys/resource.h>
#include <unistd.h>
#endif

#include <algorithm>
#include <condition_variable>
#include <deque>
#include <mutex>

namespace {

QString tr(const char* text)
{
    return QCoreApplication::translate("OXWPresetStore", text);
}

QString shown(const QString& fileName)
{
    return QDir::toNativeSeparators(fileName);
}

void reportSkipped(const QString& fileName, const QString& reason)
{
    OXMError::emitError(nullptr, OXM::InvalidValue,
                        tr("Preset file %1 skipped: %2").arg(shown(fileName), reason));
}

// The part of a file name made from a preset name.
QString fileStem(const QString& name)
{
    QString stem;
    for (const QChar c : name.left(64)) {
        const bool plain = (c.isLetterOrNumber() && c.unicode() < 128) || c == QLatin1Char(' ') ||
                           c == QLatin1Char('-') || c == QLatin1Char('_');
        stem += plain ? c : QLatin1Char('_');
    }
    return stem.trimmed().isEmpty() ? QStringLiteral("preset") : stem;
}

// The document of a preset: its header names it and its handler.
bool serialize(const OXMObject& record, const QString& handlerKey, const QString& name,
               QByteArray& bytes, QString& error)
{
    const QJsonObject header{{QStringLiteral("kind"), QLatin1String(OXWPresetStore::Kind)},
                             {QStringLiteral("handler"), handlerKey},
                             {QStringLiteral("name"), name}};
    QString reason;
    if (OXMObjectSerializer::write(record, header, bytes, &reason))
        return true;
    error = tr("The preset \"%1\" can't be stored: %2.").arg(name, reason);
    return false;
}

// The worker gives way to the GUI thread: a nice value of 10 for the calling thread (Linux keeps
// nice values per thread), so that a background write takes the processor from the GUI only
// when it has little else to do.
void yieldToTheGuiThread()
{
#ifdef Q_OS_LINUX
    setpriority(PRIO_PROCESS, id_t(gettid()), 10);
#endif
}

QString fileIn(const std::vector<OXWPresetStore::Entry>& entries, const QString& name)
{
    for (const OXWPresetStore::Entry& entry : entries) {
        if (entry.name == name)
            return entry.fileName;
    }
    return QString();
}

} // namespace

// The records of one saveInBackground call. The worker only reads items and writes error, and
// once done is set (under the background's mutex) it touches nothing of the batch; the GUI
// thread deletes it after that.
struct OXWPresetStore::Batch
{
    struct Item
    {
        QString name;
        QString fileName;
        OXMObjectPtr record;
    };

    QString handlerKey;
    std::vector<Item> items;
    QString error;
    bool started = false; // GUI thread only
    bool done = false;    // under the background's mutex

    // On the worker: serializes and writes the items one after the other, all or none.
    void write();
};

struct OXWPresetStore::Background
{
    QObject receiver; // of the worker's queued calls, on the GUI thread
    std::mutex mutex; // of the batches' done
    std::condition_variable ended;
    std::deque<std::unique_ptr<Batch>> batches; // handed over and not yet collected
    // Last, so that it goes first: its destructor waits until the worker has returned.
    QThreadPool worker;

    Background() { worker.setMaxThreadCount(1); }
    bool isDone(const Batch& batch)
    {
        const std::lock_guard<std::mutex> lock(mutex);
        return batch.done;
    }
};

void OXWPresetStore::Batch::write()
{
    struct Written
    {
        QString fileName;
        bool replaced;
        QByteArray previous;
    };
    std::vector<Written> written;
    QString ignored;
    for (const Item& item : items) {
        Written w{item.fileName, false, QByteArray()};
        w.replaced =
            QFileInfo(item.fileName).isFile() && readBytes(item.fileName, w.previous, ignored);
        QByteArray bytes;
        if (!serialize(*item.record, handlerKey, item.name, bytes, error) ||
            !writeFile(item.fileName, bytes, error))
            break;
        written.push_back(w);
    }
    for (auto w = written.rbegin(); !error.isEmpty() && w != written.rend(); ++w) {
        if (w->replaced)
            writeFile(w->fileName, w->previous, ignored);
        else
            QFile::remove(w->fileName);
    }
}

OXWPresetStore::OXWPresetStore(const QString& handlerKey)
    : mHandlerKey(handlerKey), mBackground(std::make_unique<Background>())
{
    const QString folder = handlerKey.mid(handlerKey.lastIndexOf(QLatin1String("::")) + 2);
    mDirectory = QStandardPaths::writableLocation(QStandardPaths::AppDataLocation) +
                 QStringLiteral("/presets/") + fileStem(folder);
}

OXWPresetStore::~OXWPresetStore()
{
    mWriteEnded = nullptr; // its owner may be half gone
    waitForWrites();
}

void OXWPresetStore::setDirectory(const QString& directory)
{
    waitForWrites();
    mDirectory = directory;
    mScans.clear();
}

QString OXWPresetStore::checkName(const QString& name)
{
    if (name.trimmed().isEmpty())
        return tr("A preset needs a name.");
    if (name.size() > MaxNameLength)
        return tr("A preset name has at most %1 characters; this one has %2.")
            .arg(MaxNameLength)
            .arg(name.size());
    const bool control = std::any_of(name.begin(), name.end(), [](QChar c) {
        return c.category() == QChar::Other_Control || c.category() == QChar::Separator_Line ||
               c.category() == QChar::Separator_Paragraph;
    });
    if (control)
        return tr("A preset name can't contain line breaks, tabs or other control characters.");
    return QString();
}

std::vector<OXWPresetStore::Entry> OXWPresetStore::list() const
{
    // Filtered here: a name filter would make QDir compile a regular expression every time.
    const QFileInfoList files =
        QDir(mDirectory).entryInfoList(QDir::Files | QDir::Hidden, QDir::Name);
    std::vector<Entry> entries;
    QSet<QString> names;
    QHash<QString, Scan> kept;
    const QHash<QString, QString> pending = pendingFiles();
    for (auto p = pending.begin(); p != pending.end(); ++p) {
        names.insert(p.value());
        entries.push_back({p.value(), p.key()});
    }
    for (const QFileInfo& file : files) {
        const QString path = file.absoluteFilePath();
        if (!path.endsWith(QLatin1String(Suffix)) || pending.contains(path))
            continue; // no preset file, or listed as it is being written
        Scan& s = scan(path);
        QString reason = s.error;
        if (reason.isEmpty() && names.contains(s.name))
            reason = tr("another file holds a preset of the name \"%1\"").arg(s.name);
        if (reason.isEmpty()) {
            names.insert(s.name);
            entries.push_back({s.name, path});
        } else if (s.reported != reason) {
            reportSkipped(path, reason);
            s.reported = reason;
        }
        kept.insert(path, s);
    }
    mScans = kept; // files that went are forgotten
    std::sort(entries.begin(), entries.end(), [](const Entry& a, const Entry& b) {
        const int c = a.name.compare(b.name, Qt::CaseInsensitive);
        return c != 0 ? c < 0 : a.name < b.name;
    });
    return entries;
}

bool OXWPresetStore::contains(const QString& name) const
{
    return !fileOf(name).isEmpty();
}

OXWPresetStore::Scan& OXWPresetStore::scan(const QString& fileName) const
{
    const QFileInfo info(fileName);
    const auto cached = mScans.find(fileName);
    if (cached != mScans.end() && cached->modified == info.lastModified() &&
        cached->size == info.size())
        return *cached;
    Scan s;
    s.modified = info.lastModified();
    s.size = info.size();
    QByteArray bytes;
    QJsonObject header;
    QString name;
    if (readBytes(fileName, bytes, s.error) &&
        OXMObjectSerializer::readHeader(bytes, header, &s.error) &&
        checkHeader(header, name, s.error))
        s.name = name;
    return *mScans.insert(fileName, s);
}

QString OXWPresetStore::fileOf(const QString& name) const
{
    return fileIn(list(), name);
}

QString OXWPresetStore::newFileName(const QString& name, const QHash<QString, QString>& taken) const
{
    const QString stem = QDir(mDirectory).absoluteFilePath(fileStem(name));
    QString candidate = stem + QLatin1String(Suffix);
    for (int n = 2; QFileInfo::exists(candidate) || taken.contains(candidate); ++n)
        candidate = stem + QLatin1Char('-') + QString::number(n) + QLatin1String(Suffix);
    return candidate;
}

bool OXWPresetStore::readBytes(const QString& fileName, QByteArray& bytes, QString& error)
{
    const QFileInfo info(fileName);
    if (!info.isFile()) {
        error = tr("%1 is no file").arg(shown(fileName));
        return false;
    }
    if (info.size() > MaxFileSize) {
        error = tr("the file is larger than %1 MiB").arg(MaxFileSize / (1024 * 1024));
        return false;
    }
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly)) {
        error = tr("the file can't be read (%1)").arg(file.errorString());
        return false;
    }
    bytes = file.read(info.size() + 1); // one more: a file that grew meanwhile is seen
    if (bytes.size() > MaxFileSize) {
        error = tr("the file is larger than %1 MiB").arg(MaxFileSize / (1024 * 1024));
        return false;
    }
    return true;
}

bool OXWPresetStore::checkHeader(const QJsonObject& header, QString& name, QString& error) const
{
    const QString handler = header.value(QStringLiteral("handler")).toString();
    name = header.value(QStringLiteral("name")).toString();
    if (header.value(QStringLiteral("kind")).toString() != QLatin1String(Kind))
        error = tr("the file holds no preset");
    else if (handler != mHandlerKey)
        error = tr("the file holds a preset of another kind (%1)").arg(handler);
    else if (!checkName(name).isEmpty())
        error = tr("the preset in the file has no valid name");
    return error.isEmpty();
}

bool OXWPresetStore::load(const QString& name, OXMObjectSerializer::Document& document,
                          QString& error) const
{
    if (isPending(name))
        waitForWrites();
    const QString fileName = fileOf(name);
    QString fileNameInside;
    if (fileName.isEmpty()) {
        error = tr("There is no preset named \"%1\".").arg(name);
        return false;
    }
    if (!readFile(fileName, document, fileNameInside, error))
        return false;
    if (fileNameInside == name)
        return true;
    error = tr("The file of the preset \"%1\" changed meanwhile.").arg(name);
    document = OXMObjectSerializer::Document();
    return false;
}

bool OXWPresetStore::save(const QString& name, const OXMObject& record, QString& error)
{
    waitForWrites();
    error = checkName(name);
    QByteArray bytes;
    if (!error.isEmpty() || !prepareDirectory(error) ||
        !serialize(record, mHandlerKey, name, bytes, error))
        return false;
    const QString existing = fileOf(name);
    return writeBytes(existing.isEmpty() ? newFileName(name) : existing, bytes, name, error);
}

bool OXWPresetStore::remove(const QString& name, QString& error)
{
    waitForWrites();
    const QString fileName = fileOf(name);
    QFile file(fileName);
    if (fileName.isEmpty()) {
        error = tr("There is no preset named \"%1\".").arg(name);
        return false;
    }
    if (!file.remove()) {
        error = tr("The preset \"%1\" can't be removed (%2).").arg(name, file.errorString());
        return false;
    }
    mScans.remove(fileName);
    return true;
}

bool OXWPresetStore::readFile(const QString& fileName, OXMObjectSerializer::Document& document,
                              QString& name, QString& error) const
{
    QByteArray bytes;
    QString reason;
    if (!readBytes(fileName, bytes, reason) ||
        !OXMObjectSerializer::read(bytes, document, &reason) ||
        !checkHeader(document.header, name, reason)) {
        document = OXMObjectSerializer::Document();
        error = tr("%1 is no usable preset file: %2.").arg(shown(fileName), reason);
        return false;
    }
    return true;
}

bool OXWPresetStore::importFile(const QString& fileName, QString& name, QString& error)
{
    waitForWrites();
    OXMObjectSerializer::Document document;
    QByteArray bytes;
    if (!readFile(fileName, document, name, error) || !prepareDirectory(error) ||
        !readBytes(fileName, bytes, error))
        return false;
    const QString existing = fileOf(name);
    return writeBytes(existing.isEmpty() ? newFileName(name) : existing, bytes, name, error);
}

bool OXWPresetStore::exportFile(const QString& name, const QString& fileName, QString& error) const
{
    if (isPending(name))
        waitForWrites();
    const QString source = fileOf(name);
    QByteArray bytes;
    if (source.isEmpty()) {
        error = tr("There is no preset named \"%1\".").arg(name);
        return false;
    }
    return readBytes(source, bytes, error) && writeFile(fileName, bytes, error);
}

bool OXWPresetStore::writeBytes(const QString& fileName, const QByteArray& bytes,
                                const QString& name, QString& error) const
{
    const QString path = QFileInfo(fileName).absoluteFilePath();
    mScans.remove(path);
    if (!writeFile(fileName, bytes, error))
        return false;
    remember(path, name);
    return true;
}

void OXWPresetStore::remember(const QString& path, const QString& name) const
{
    const QFileInfo written(path);
    Scan s;
    s.modified = written.lastModified();
    s.size = written.size();
    s.name = name;
    mScans.insert(path, s);
}

bool OXWPresetStore::writeFile(const QString& fileName, const QByteArray& bytes, QString& error)
{
    QSaveFile file(fileName);
    if (!file.open(QIODevice::WriteOnly)) {
        error = tr("%1 can't be written (%2).").arg(shown(fileName), file.errorString());
        return false;
    }
    if (file.write(bytes) != bytes.size() || !file.commit()) {
        error = tr("%1 could not be written completely (%2); the previous file is unchanged.")
                    .arg(shown(fileName), file.errorString());
        return false;
    }
    return true;
}

bool OXWPresetStore::prepareDirectory(QString& error) const
{
    if (!QDir().mkpath(mDirectory)) {
        error = tr("The preset folder %1 can't be created.").arg(shown(mDirectory));
        return false;
    }
    // A folder that nobody may write counts as read-only also for a user whom the system
    // would let write anyway (root).
    const QFileInfo folder(mDirectory);
    const QFile::Permissions write = QFile::WriteOwner | QFile::WriteGroup | QFile::WriteOther;
    if (!folder.isWritable() || !(folder.permissions() & write)) {
        error = tr("The preset folder %1 is read-only.").arg(shown(mDirectory));
        return false;
    }
    return true;
}

// --- background writes -------------------------------------------------------------------------

bool OXWPresetStore::saveInBackground(const QStringList& names, std::vector<OXMObjectPtr> records,
                                      QString& error)
{
    error = names.size() == int(records.size()) ? QString() : tr("Every preset needs a name.");
    for (const QString& name : names) {
        if (error.isEmpty())
            error = checkName(name);
    }
    if (!error.isEmpty() || !prepareDirectory(error))
        return false;
    auto batch = std::make_unique<Batch>();
    batch->handlerKey = mHandlerKey;
    QHash<QString, QString> taken = pendingFiles();
    const std::vector<Entry> listed = list();
    for (int i = 0; i < names.size(); ++i) {
        QString fileName = taken.key(names[i]); // of a write that has not ended, or this one
        if (fileName.isEmpty())
            fileName = fileIn(listed, names[i]);
        if (fileName.isEmpty())
            fileName = newFileName(names[i], taken);
        taken.insert(fileName, names[i]);
        batch->items.push_back({names[i], fileName, records[std::size_t(i)]});
    }
    records.clear(); // the batch holds the only references before the worker starts
    Background& background = *mBackground;
    background.batches.push_back(std::move(batch));
    // Started when the GUI thread is back in its event loop (or waits for the write): woken
    // now, the worker could take the processor from the rest of the GUI thread's turn.
    QMetaObject::invokeMethod(
        &background.receiver, [this] { startWrites(); }, Qt::QueuedConnection);
    return true;
}

void OXWPresetStore::startWrites() const
{
    Background* background = mBackground.get();
    for (const std::unique_ptr<Batch>& batch : background->batches) {
        if (batch->started)
            continue;
        batch->started = true;
        Batch* handedOver = batch.get();
        background->worker.start([this, handedOver, background] {
            yieldToTheGuiThread();
            handedOver->write();
            const std::lock_guard<std::mutex> lock(background->mutex);
            handedOver->done = true;
            QMetaObject::invokeMethod(
                &background->receiver, [this] { collectWrites(); }, Qt::QueuedConnection);
            background->ended.notify_all();
        });
    }
}

void OXWPresetStore::waitForWrites() const
{
    startWrites();
    Background& background = *mBackground;
    {
        std::unique_lock<std::mutex> lock(background.mutex);
        background.ended.wait(lock, [&background] {
            return std::all_of(background.batches.begin(), background.batches.end(),
                               [](const std::unique_ptr<Batch>& batch) { return batch->done; });
        });
    }
    collectWrites();
}

void OXWPresetStore::setWriteEndedCallback(std::function<void(bool)> callback)
{
    mWriteEnded = std::move(callback);
}

QHash<QString, QString> OXWPresetStore::pendingFiles() const
{
    QHash<QString, QString> files;
    for (const std::unique_ptr<Batch>& batch : mBackground->batches) {
        for (const Batch::Item& item : batch->items)
            files.insert(item.fileName, item.name);
    }
    return files;
}

bool OXWPresetStore::isPending(const QString& name) const
{
    const auto& batches = mBackground->batches;
    return std::any_of(batches.begin(), batches.end(), [&name](const auto& batch) {
        return std::any_of(batch->items.begin(), batch->items.end(),
                           [&name](const Batch::Item& item) { return item.name == name; });
    });
}

void OXWPresetStore::collectWrites() const
{
    auto& batches = mBackground->batches;
    while (!batches.empty() && mBackground->isDone(*batches.front())) {
        const std::unique_ptr<Batch> batch = std::move(batches.front());
        batches.pop_front();
        for (const Batch::Item& item : batch->items) {
            if (batch->error.isEmpty())
                remember(item.fileName, item.name); // listed without being read again
        }
        if (!batch->error.isEmpty())
            OXMError::emitError(nullptr, OXM::InvalidValue, batch->error);
        if (mWriteEnded)
            mWriteEnded(batch->error.isEmpty());
    } // the records go here, on the GUI thread
}
