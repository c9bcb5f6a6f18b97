#include "support/tempprofile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSettings>

namespace {

const char *const Variables[4] = {"XDG_DATA_HOME", "XDG_CONFIG_HOME", "XDG_RUNTIME_DIR", "APPDATA"};

} // namespace

TempProfile::TempProfile()
{
    for (int i = 0; i < 4; ++i) {
        m_had[i] = qEnvironmentVariableIsSet(Variables[i]);
        m_saved[i] = qgetenv(Variables[i]);
    }
    const QString base = m_dir.path();
    for (const char *sub : {"data", "config", "runtime", "install"})
        QDir().mkpath(base + u'/' + QLatin1StringView(sub));
    QFile::setPermissions(base + QStringLiteral("/runtime"),
                          QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
    qputenv("XDG_DATA_HOME", QFile::encodeName(base + QStringLiteral("/data")));
    qputenv("XDG_CONFIG_HOME", QFile::encodeName(base + QStringLiteral("/config")));
    qputenv("XDG_RUNTIME_DIR", QFile::encodeName(base + QStringLiteral("/runtime")));
    qunsetenv("APPDATA");
    // QSettings caches its folders for the life of the process; point it here explicitly.
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, base + QStringLiteral("/config"));
}

TempProfile::~TempProfile()
{
    for (int i = 0; i < 4; ++i) {
        if (m_had[i])
            qputenv(Variables[i], m_saved[i]);
        else
            qunsetenv(Variables[i]);
    }
}

QString TempProfile::dataFolder() const
{
    const QByteArray appData = qgetenv("APPDATA");
    const QString base = appData.isEmpty() ? m_dir.path() + QStringLiteral("/data") : QFile::decodeName(appData);
    return base + QStringLiteral("/Tunecatch/");
}

QString TempProfile::installFolder() const
{
    return m_dir.path() + QStringLiteral("/install");
}

QString TempProfile::configFile() const
{
    return m_dir.path() + QStringLiteral("/config/Tunecatch/Tunecatch.conf");
}

void TempProfile::setAppData(const QString &value)
{
    qputenv("APPDATA", QFile::encodeName(value));
}

QByteArray TempProfile::readFile(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return file.readAll();
}

void TempProfile::writeFile(const QString &path, const QByteArray &bytes)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate)) << path.toStdString();
    file.write(bytes);
}
