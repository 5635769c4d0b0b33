#pragma once

#include <OXMError.h>

#include <QByteArray>
#include <QFile>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <ostream>

// Readable GoogleTest output for Qt strings.
inline void PrintTo(const QString& s, std::ostream* os)
{
    *os << '"' << s.toStdString() << '"';
}
inline void PrintTo(const QStringList& list, std::ostream* os)
{
    *os << "{";
    for (int i = 0; i < list.size(); ++i)
        *os << (i ? ", \"" : "\"") << list[i].toStdString() << '"';
    *os << "}";
}

// Collects the messages of the host's error channel while it lives.
class OXWErrorCollector
{
public:
    OXWErrorCollector()
    {
        mId =
            OXMError::addHandler([this](const OXMError::Message& m) { messages << m.toString(); });
    }
    ~OXWErrorCollector() { OXMError::removeHandler(mId); }
    OXWErrorCollector(const OXWErrorCollector&) = delete;
    OXWErrorCollector& operator=(const OXWErrorCollector&) = delete;

    // The messages that contain every one of the given texts.
    QStringList matching(const QStringList& texts) const
    {
        QStringList found;
        for (const QString& m : messages) {
            bool all = true;
            for (const QString& t : texts)
                all = all && m.contains(t);
            if (all)
                found << m;
        }
        return found;
    }

    QStringList messages;

private:
    int mId = 0;
};

// Points the test plug-ins' call log (OXW_TEST_PLUGIN_LOG) at a fresh file while it lives.
class OXWPluginCallLog
{
public:
    OXWPluginCallLog()
    {
        mPath = mDir.filePath(QStringLiteral("calls.log"));
        qputenv("OXW_TEST_PLUGIN_LOG", mPath.toLocal8Bit());
    }
    ~OXWPluginCallLog() { qunsetenv("OXW_TEST_PLUGIN_LOG"); }
    OXWPluginCallLog(const OXWPluginCallLog&) = delete;
    OXWPluginCallLog& operator=(const OXWPluginCallLog&) = delete;

    QString path() const { return mPath; }

    // The recorded lines, oldest first; with a plug-in name only that plug-in's lines.
    QStringList lines(const QString& plugin = QString()) const
    {
        QFile f(mPath);
        if (!f.open(QIODevice::ReadOnly))
            return {};
        QStringList all =
            QString::fromUtf8(f.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
        if (plugin.isEmpty())
            return all;
        QStringList mine;
        for (const QString& l : all) {
            if (l.startsWith(plugin + QLatin1Char(' ')))
                mine << l;
        }
        return mine;
    }

private:
    QTemporaryDir mDir;
    QString mPath;
};
