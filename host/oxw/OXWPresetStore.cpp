#include "OXWPresetStore.h"

#include <OXMError.h>

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonObject>
#include <QSaveFile>
#include <QSet>
#include <QStandardPaths>

#include <algorithm>

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

} // namespace

OXWPresetStore::OXWPresetStore(const QString& handlerKey) : mHandlerKey(handlerKey)
{
    const QString folder = handlerKey.mid(handlerKey.lastIndexOf(QLatin1String("::")) + 2);
    mDirectory = QStandardPaths::writableLocation(QStandardPaths::AppDataLocation) +
                 QStringLiteral("/presets/") + fileStem(folder);
}

void OXWPresetStore::setDirectory(const QString& directory)
{
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
    const QFileInfoList files = QDir(mDirectory)
                                    .entryInfoList({QStringLiteral("*") + QLatin1String(Suffix)},
                                                   QDir::Files | QDir::Hidden, QDir::Name);
    std::vector<Entry> entries;
    QSet<QString> names;
    QHash<QString, Scan> kept;
    for (const QFileInfo& file : files) {
        const QString path = file.absoluteFilePath();
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
    for (const Entry& entry : list()) {
        if (entry.name == name)
            return entry.fileName;
    }
    return QString();
}

QString OXWPresetStore::newFileName(const QString& name) const
{
    const QString stem = QDir(mDirectory).filePath(fileStem(name));
    QString candidate = stem + QLatin1String(Suffix);
    for (int n = 2; QFileInfo::exists(candidate); ++n)
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
    error = checkName(name);
    if (!error.isEmpty() || !prepareDirectory(error))
        return false;
    const QJsonObject header{{QStringLiteral("kind"), QLatin1String(Kind)},
                             {QStringLiteral("handler"), mHandlerKey},
                             {QStringLiteral("name"), name}};
    QByteArray bytes;
    QString reason;
    if (!OXMObjectSerializer::write(record, header, bytes, &reason)) {
        error = tr("The preset \"%1\" can't be stored: %2.").arg(name, reason);
        return false;
    }
    const QString existing = fileOf(name);
    return writeBytes(existing.isEmpty() ? newFileName(name) : existing, bytes, name, error);
}

bool OXWPresetStore::remove(const QString& name, QString& error)
{
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
    // What was written need not be read again to be listed.
    const QFileInfo written(path);
    Scan s;
    s.modified = written.lastModified();
    s.size = written.size();
    s.name = name;
    mScans.insert(path, s);
    return true;
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
