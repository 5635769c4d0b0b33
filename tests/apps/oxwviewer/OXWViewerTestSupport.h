#pragma once

#include <OXMError.h>

#include <QFile>
#include <QRegularExpression>
#include <QStringList>
#include <QTemporaryDir>

#include <algorithm>

// Collects the messages of the host's error channel while it lives.
class OXWErrorCollector
{
public:
    OXWErrorCollector()
        : mId(OXMError::addHandler(
              [this](const OXMError::Message& m) { messages << m.toString(); }))
    {
    }
    ~OXWErrorCollector() { OXMError::removeHandler(mId); }
    OXWErrorCollector(const OXWErrorCollector&) = delete;
    OXWErrorCollector& operator=(const OXWErrorCollector&) = delete;
    // How many messages contain every one of the texts.
    int matching(const QStringList& texts) const
    {
        int found = 0;
        for (const QString& m : messages)
            found += std::all_of(texts.begin(), texts.end(),
                                 [&m](const QString& t) { return m.contains(t); });
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
    OXWPluginCallLog() { qputenv("OXW_TEST_PLUGIN_LOG", path().toLocal8Bit()); }
    ~OXWPluginCallLog() { qunsetenv("OXW_TEST_PLUGIN_LOG"); }
    OXWPluginCallLog(const OXWPluginCallLog&) = delete;
    OXWPluginCallLog& operator=(const OXWPluginCallLog&) = delete;

    QString path() const { return mDir.filePath(QStringLiteral("calls.log")); }
    // The recorded lines ("<plug-in> <event> window=<0|1>"), oldest first, of the plug-ins
    // whose names start with prefix.
    QStringList lines(const QString& prefix = QString()) const
    {
        QFile f(path());
        if (!f.open(QIODevice::ReadOnly))
            return {};
        return QString::fromUtf8(f.readAll())
            .split(QLatin1Char('\n'), Qt::SkipEmptyParts)
            .filter(QRegularExpression(QLatin1Char('^') + prefix));
    }

private:
    QTemporaryDir mDir;
};
