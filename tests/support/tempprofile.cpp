#include "support/tempprofile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSettings>
#include <QStringEncoder>

using namespace Qt::StringLiterals;

namespace {

const char *const variables[5] = {"XDG_DATA_HOME", "XDG_CONFIG_HOME", "XDG_RUNTIME_DIR", "XDG_CACHE_HOME",
                                  "APPDATA"};
// The folders the first four variables point to, and the installation's.
const char *const folders[5] = {"data", "config", "runtime", "cache", "install"};

} // namespace

TempProfile::TempProfile()
{
    for (int i = 0; i < 5; ++i) {
        m_had[i] = qEnvironmentVariableIsSet(variables[i]);
        m_saved[i] = qgetenv(variables[i]);
    }
    const QString base = m_dir.path();
    for (const char *sub : folders)
        QDir().mkpath(base + u'/' + QLatin1StringView(sub));
    QFile::setPermissions(base + u"/runtime"_s,
                          QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
    for (int i = 0; i < 4; ++i)
        qputenv(variables[i], QFile::encodeName(base + u'/' + QLatin1StringView(folders[i])));
    qunsetenv("APPDATA");
    // QSettings caches its folders for the life of the process; point it here explicitly.
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, base + u"/config"_s);
}

TempProfile::~TempProfile()
{
    for (int i = 0; i < 5; ++i) {
        if (m_had[i])
            qputenv(variables[i], m_saved[i]);
        else
            qunsetenv(variables[i]);
    }
}

QString TempProfile::dataFolder() const
{
    const QByteArray appData = qgetenv("APPDATA");
    const QString base = appData.isEmpty() ? m_dir.path() + u"/data"_s : QFile::decodeName(appData);
    return base + u"/Tunecatch/"_s;
}

QString TempProfile::installFolder() const
{
    return m_dir.path() + u"/install"_s;
}

QString TempProfile::configFile() const
{
    return m_dir.path() + u"/config/Tunecatch/Tunecatch.conf"_s;
}

void TempProfile::setAppData(const QString &value)
{
    qputenv("APPDATA", QFile::encodeName(value));
}

QByteArray TempProfile::readFile(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QByteArray TempProfile::utf16File(const QString &text)
{
    return QStringEncoder(QStringConverter::Utf16LE, QStringConverter::Flag::WriteBom)(text);
}

void TempProfile::writeFile(const QString &path, const QByteArray &bytes)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate)) << path.toStdString();
    file.write(bytes);
}
