#pragma once

#include <OXMObjectPtr.h>
#include <OXMObjectSerializer.h>

#include <QByteArray>
#include <QDateTime>
#include <QHash>
#include <QString>
#include <QStringList>

#include <functional>
#include <memory>
#include <vector>

class OXMObject;

// The user presets of one preset handler, one file per preset in a folder of the user's data
// (by default <AppDataLocation>/presets/<handler name>).
//
// A preset file is an object document of OXMObjectSerializer whose header says what it is:
//   "kind": "preset", "handler": "oxwclassificationtool::PresetClassificationHandler",
//   "name": "Bone"
// and whose root is the preset's record. The name is the one inside the file; the file name
// is only derived from it (characters other than letters, digits, space, '-' and '_' become
// '_', at most 64 of them, "-2", "-3", ... when taken) and carries the suffix ".oxwpreset".
// Files are written atomically (QSaveFile): a crash or a full disk leaves the previous file
// intact.
//
// Unusable files (not readable, broken or truncated JSON, a newer format version, no preset of
// this handler, a second file of a name already listed, larger than MaxFileSize) are left out
// of the list; each is reported once, as one line naming the file and the reason in the host's
// error channel (OXMError::emitError with OXM::InvalidValue). The listing remembers what it read
// of each file (by its time and size), so listing again reads only files that changed.
//
// Every operation answers true or false; the reason of a failure, a sentence for the user,
// is in error.
//
// Background writes (saveInBackground): the names and the folder are checked at once, then the
// records go to the store's one worker thread, started when the GUI thread is back in its event
// loop and running at a lower priority (nice 10), which serializes and writes them one after the
// other, all or none: when one fails, the files it wrote are removed and those it replaced get
// their previous bytes back, and the reason is reported once in the host's error channel
// (OXMError::emitError with OXM::InvalidValue, on the GUI thread). Until a write has ended, its
// names are listed and contained as if it had; load() and exportFile() of such a name, save(),
// remove(), importFile() and setDirectory() wait for it first, and so does the destructor:
// nothing is lost when the store goes. GUI thread only (the worker is the store's own).
class OXWPresetStore
{
public:
    static constexpr const char* Suffix = ".oxwpreset";
    static constexpr const char* Kind = "preset";
    static constexpr int MaxNameLength = 200;
    static constexpr qint64 MaxFileSize = 64 * 1024 * 1024;

    // handlerKey: the handler's identifier as "Namespace::Name"; the default folder is named
    // after its name part.
    explicit OXWPresetStore(const QString& handlerKey);
    ~OXWPresetStore();
    OXWPresetStore(const OXWPresetStore&) = delete;
    OXWPresetStore& operator=(const OXWPresetStore&) = delete;

    QString directory() const { return mDirectory; }
    void setDirectory(const QString& directory);

    struct Entry
    {
        QString name;
        QString fileName; // absolute
    };
    // The usable presets, sorted by name (case-insensitive, then exactly).
    std::vector<Entry> list() const;
    bool contains(const QString& name) const;

    // The reason why a preset can't be saved under name (empty, too long, control
    // characters); empty when it can.
    static QString checkName(const QString& name);

    bool load(const QString& name, OXMObjectSerializer::Document& document, QString& error) const;
    // Stores record as the preset name (replacing the file of that name if there is one).
    bool save(const QString& name, const OXMObject& record, QString& error);
    bool remove(const QString& name, QString& error);
    // Stores records[i] as the preset names[i] (replacing presets of those names) on the worker
    // thread; see above. The records are the store's from here on: nothing else may touch them
    // or objects they link to. False, with the reason and nothing handed over, when a name or
    // the folder can't be used.
    bool saveInBackground(const QStringList& names, std::vector<OXMObjectPtr> records,
                          QString& error);
    // Waits until every background write has ended and been reported.
    void waitForWrites() const;
    // Called on the GUI thread when a background write has ended, with whether it succeeded.
    void setWriteEndedCallback(std::function<void(bool stored)> callback);
    // Reads a preset file of any folder completely; its name is that in the file.
    bool readFile(const QString& fileName, OXMObjectSerializer::Document& document, QString& name,
                  QString& error) const;
    // Copies a preset file that readFile accepts into the folder, replacing a preset of its
    // name; name receives it.
    bool importFile(const QString& fileName, QString& name, QString& error);
    bool exportFile(const QString& name, const QString& fileName, QString& error) const;

    // The whole file when it is a file of at most MaxFileSize bytes; else false with the
    // reason (a phrase, without the file's name unless it is no file).
    static bool readBytes(const QString& fileName, QByteArray& bytes, QString& error);
    // Writes the file atomically (QSaveFile); false with a sentence naming the file.
    static bool writeFile(const QString& fileName, const QByteArray& bytes, QString& error);

private:
    struct Batch;
    struct Scan
    {
        QDateTime modified;
        qint64 size = -1;
        QString name;     // empty when unusable
        QString error;    // why it is unusable
        QString reported; // the reason last reported for it
    };

    // The scan of a file, read again only when it changed.
    Scan& scan(const QString& fileName) const;
    QString fileOf(const QString& name) const;
    // A file name for a new preset, neither on disk nor taken (file names to preset names).
    QString newFileName(const QString& name, const QHash<QString, QString>& taken = {}) const;
    // The header's name when the header is one of this store's presets.
    bool checkHeader(const QJsonObject& header, QString& name, QString& error) const;
    // Writes a preset file of the folder, holding the preset name, and remembers it as listed.
    bool writeBytes(const QString& fileName, const QByteArray& bytes, const QString& name,
                    QString& error) const;
    // Remembers a file just written as holding the preset name (it is listed without being
    // read again).
    void remember(const QString& path, const QString& name) const;
    // Creates the folder; false with the reason when it can't be written.
    bool prepareDirectory(QString& error) const;
    // The files of the background writes that have not ended, with their preset names.
    QHash<QString, QString> pendingFiles() const;
    bool isPending(const QString& name) const;
    // Hands the background writes that wait for it to the worker.
    void startWrites() const;
    // Reports the background writes that have ended and lets their records go.
    void collectWrites() const;

    QString mHandlerKey;
    QString mDirectory;
    mutable QHash<QString, Scan> mScans;
    struct Background;
    std::unique_ptr<Background> mBackground; // the worker and the writes that have not ended
    std::function<void(bool)> mWriteEnded;
};
