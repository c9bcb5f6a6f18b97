#include "support/tempprofile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSettings>

using namespace Qt::StringLiterals;

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
    QFile::setPermissions(base + u"/runtime"_s,
                          QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
    qputenv("XDG_DATA_HOME", QFile::encodeName(base + u"/data"_s));
    qputenv("XDG_CONFIG_HOME", QFile::encodeName(base + u"/config"_s));
    qputenv("XDG_RUNTIME_DIR", QFile::encodeName(base + u"/runtime"_s));
    qunsetenv("APPDATA");
    // QSettings caches its folders for the life of the process; point it here explicitly.
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, base + u"/config"_s);
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
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return file.readAll();
}

QByteArray TempProfile::utf16File(const QString &text)
{
    QByteArray bytes("\xFF\xFE");
    for (const QChar c : text) {
        bytes.append(char(c.unicode() & 0xFF));
        bytes.append(char(c.unicode() >> 8));
    }
    return bytes;
}

void TempProfile::writeFile(const QString &path, const QByteArray &bytes)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate)) << path.toStdString();
    file.write(bytes);
}
