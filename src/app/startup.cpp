#include "app/startup.h"

#include "base/apperror.h"
#include "base/apppaths.h"
#include "app/programparts.h"
#include "base/appinfo.h"
#include "app/appwindows.h"
#include "base/prompt.h"
#include "base/settingsstore.h"
#include "catalogue/stationnames.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

#include <optional>

namespace {

// Steps that prepare the data folder must not stop start-up: a failing
// statement is skipped and the next one runs.
template <typename Statement>
void tolerate(Statement &&statement)
{
    try {
        statement();
    } catch (...) {
    }
}

void copyOver(const QString &from, const QString &to)
{
    QFile::remove(to);
    QFile::copy(from, to);
}

std::optional<QByteArray> readWhole(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    QByteArray bytes = file.readAll();
    if (file.error() != QFileDevice::NoError)
        return std::nullopt;
    return bytes;
}

// Written beside the target and renamed over it: the old file stays whole
// until the new one is complete.
bool writeWhole(const QString &path, const QByteArray &bytes)
{
    QSaveFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && file.commit();
}

QByteArray identityOf(const QByteArray &bytes)
{
    return QByteArray::number(bytes.size()) + ' ' +
           QCryptographicHash::hash(bytes, QCryptographicHash::Sha256).toHex();
}

// Backups are never overwritten: one that holds another list stays, and this
// list goes to the first free numbered name after it ("name.2", "name.3", ...).
bool keepBackup(const QString &base, const QByteArray &bytes)
{
    for (int n = 1;; ++n) {
        const QString path = n == 1 ? base : base + u'.' + QString::number(n);
        if (!QFileInfo::exists(path))
            return writeWhole(path, bytes);
        if (readWhole(path) == bytes)
            return true;
    }
}

} // namespace

QString Startup::fatalTitle()
{
    return tr("Tunecatch about to Terminate!");
}

Startup::Startup(ProgramParts &parts, AppWindows &windows) : m_parts(parts), m_windows(windows) {}

bool Startup::isUpgradeVersion(int version)
{
    switch (version) {
    case 21:
    case 23:
    case 25:
    case 26:
    case 27:
    case 31:
        return true;
    default:
        return false;
    }
}

bool Startup::SubMain(const QString &commandLine)
{
    const TraceHook &trace = m_parts.trace;
    try {
        trace.trace(QStringLiteral("1: Main Init - start"));

        m_parts.appearance.skin.skinStartup();
        trace.trace(QStringLiteral("2: Main Init - Skin On"));

        m_windows.initCommonControls();
        trace.trace(QStringLiteral("3: Main Init - XP / Vista Theme"));
        m_parts.appearance.theme.init();

        trace.trace(QStringLiteral("4: Main Init - Process Data Folder"));
        m_dataFolder = AppPaths::dataFolder();
        trace.trace(QStringLiteral("5: Main Init - Data Folder: ") + m_dataFolder);

        prepareDataFolder();

        loadStartupSettings();
        trace.trace(QStringLiteral("9: Main Init - Settings loaded"));

        m_parts.playerTexts = PlayerTexts::standard();
        trace.trace(QStringLiteral("10: Main Init - Stations loaded"));

        m_parts.launch.commandArg = StationNames::trimBlanks(commandLine);
        if (m_parts.launch.commandArg.size() < 2) {
            trace.trace(QStringLiteral("11: Main Init - Load data structures "));
            m_parts.catalogue.load(m_parts.prompt, AppInfo::title);
            trace.trace(QStringLiteral("12: Main Init - Load Main Screen"));
            m_windows.loadMainWindow();
            m_windows.processEvents();
            trace.trace(QStringLiteral("13: Main Init - Show Main Screen"));
            m_windows.showMainWindow();
        } else {
            m_parts.launch.launchMode = true;
            trace.trace(QStringLiteral("11: Main Init - Command Arg : ") + m_parts.launch.commandArg);
            m_windows.showRecorderWindow();
        }
        m_windowShown = true;
    } catch (const AppError &e) {
        m_parts.prompt.message(tr("Main Error: %1 : %2").arg(e.number()).arg(e.description()), fatalTitle(),
                               Prompt::Icon::Critical);
    } catch (const std::exception &e) {
        m_parts.prompt.message(tr("Main Error: 51 : %1").arg(QString::fromLocal8Bit(e.what())), fatalTitle(),
                               Prompt::Icon::Critical);
    }
    return m_windowShown;
}

void Startup::prepareDataFolder()
{
    const QString data = m_dataFolder;
    const QString install = m_parts.installFolder + u'/';

    // A data folder that is not there yet marks the first start after installation.
    bool firstStart = false;
    tolerate([&] { firstStart = !QDir(data).exists(); });
    tolerate([&] { QDir().mkpath(data); });
    tolerate([&] { QDir().mkpath(data + QStringLiteral("/Rec")); });

    int version = 0;
    tolerate([&] { version = SettingsStore::getNumber(SettingsStore::V, 27); });
    const bool upgrade = !firstStart && isUpgradeVersion(version);

    if (firstStart) {
        tolerate([&] {
            copyOver(install + QStringLiteral("sample.mp3"), data + QStringLiteral("/Rec/sample.mp3"));
        });
        tolerate([&] {
            copyOver(install + QStringLiteral("laudAndClear.mp3"),
                     data + QStringLiteral("/Rec/laudAndClear.mp3"));
        });
    }
    tolerate([&] { takeOverInstalledList(upgrade); });
    // A new profile is current at once: without the marker the next start
    // would take it for an old one.
    if (firstStart || upgrade)
        tolerate([&] { SettingsStore::saveNumber(SettingsStore::V, upgradedVersion); });
}

// The rules for an installed station list, all in one place:
// - each installed file is taken over once: its identity is remembered in the
//   data folder, so a copy the installation folder cannot lose (a read-only
//   folder) is never taken over again;
// - the user's list is replaced only after a backup holds it;
// - the installed copy is deleted once taken over, where the folder allows it;
// - an old data folder (upgrade) only names its backup apart; without a new
//   installed list it keeps its own.
void Startup::takeOverInstalledList(bool upgrade)
{
    const QString installedPath = m_parts.installFolder + u'/' + catalogueFileName;
    const std::optional<QByteArray> installed = readWhole(installedPath);
    if (!installed)
        return;
    const QByteArray identity = identityOf(*installed);
    const QString takenPath = m_dataFolder + u'/' + takenOverFileName;
    const QByteArray taken = readWhole(takenPath).value_or(QByteArray());
    if (!taken.split('\n').contains(identity)) {
        if (!replaceCatalogue(*installed, upgrade) || !writeWhole(takenPath, taken + identity + '\n'))
            return;
    }
    QFile::remove(installedPath);
}

// True when the data folder's list is the installed one and whatever it held
// before is in a backup.
bool Startup::replaceCatalogue(const QByteArray &installed, bool upgrade)
{
    const QString data = m_dataFolder + u'/';
    const QString cataloguePath = data + catalogueFileName;
    const bool existed = AppPaths::fileExists(cataloguePath);
    const std::optional<QByteArray> own = readWhole(cataloguePath);
    if (existed && !own)
        return false; // a list that cannot be read cannot be backed up either
    if (own == installed)
        return true;
    // An upgrade from an old version keeps its backup apart from an installer's.
    const QString backup =
        data + (upgrade ? QStringLiteral("Stations.vn.bak31") : QStringLiteral("Stations.vn.bak"));
    if (own && !keepBackup(backup, *own))
        return false;
    if (!writeWhole(cataloguePath, installed))
        return false;
    m_parts.trace.trace(own ? QStringLiteral("8: Main Init - stations updated")
                            : QStringLiteral("8: Main Init - stations installed"));
    return true;
}

void Startup::loadStartupSettings()
{
    m_parts.filters.load();
    TrimTool &trim = m_parts.trimTool;
    trim.command = SettingsStore::getSetting(SettingsStore::TrimMP3Tool);
    if (trim.command.size() < 2) {
        trim.applyDefault();
        SettingsStore::saveSetting(SettingsStore::TrimMP3Tool, trim.command);
    }
}

void Startup::terminate()
{
    m_windows.unloadAllWindows();
    close();
}

void Startup::close()
{
    if (m_closing)
        return;
    m_closing = true;

    if (m_parts.catalogue.dirty) {
        try {
            m_parts.catalogue.save();
        } catch (const AppError &e) {
            // The previous list survives as the ".bck" backup the save made first.
            m_parts.prompt.message(tr("The station list could not be saved: %1").arg(e.description()),
                                   AppInfo::title, Prompt::Icon::Critical);
        }
    }
    m_parts.filters.save();

    tolerate([this] { m_windows.processEvents(); });
    tolerate([this] { m_windows.unloadAllWindows(); });
    tolerate([this] { m_parts.appearance.skin.removeSkin(); });
    tolerate([this] { m_windows.endProcess(); });
}
