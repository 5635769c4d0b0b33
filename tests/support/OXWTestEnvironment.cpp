#include "OXWTestEnvironment.h"

#include <QByteArray>
#include <QDebug>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

namespace {

QTemporaryDir& privateFolder()
{
    static QTemporaryDir folder(QDir::tempPath() + QStringLiteral("/oxw-test-XXXXXX"));
    return folder;
}

} // namespace

bool oxwtest::enterPrivateEnvironment()
{
    const QTemporaryDir& folder = privateFolder();
    if (!folder.isValid()) {
        qCritical("cannot make the private folder of the test program: %s",
                  qPrintable(folder.errorString()));
        return false;
    }
    // The folder itself (mode 0700) is the runtime folder, as XDG asks of one.
    const QByteArray root = QFile::encodeName(folder.path());
    const struct
    {
        const char* variable;
        const char* below;
    } folders[] = {{"HOME", ""},
                   {"XDG_RUNTIME_DIR", ""},
                   {"XDG_CONFIG_HOME", "/.config"},
                   {"XDG_DATA_HOME", "/.local/share"},
                   {"XDG_CACHE_HOME", "/.cache"}};
    for (const auto& f : folders) {
        const QByteArray path = root + f.below;
        if (!QDir().mkpath(QFile::decodeName(path)) || !qputenv(f.variable, path)) {
            qCritical("cannot set up %s in %s", f.variable, root.constData());
            return false;
        }
    }
    qputenv("FONTCONFIG_FILE", OXW_TEST_FONTCONFIG_FILE);
    qputenv("LC_ALL", "C.UTF-8");
    qunsetenv("LANGUAGE");
    return true;
}
