#include "app/startup.h"

#include "app/apperror.h"
#include "app/apppaths.h"
#include "app/appstate.h"
#include "app/appwindows.h"
#include "app/prompt.h"
#include "app/settingsstore.h"
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

Startup::Startup(AppState &state, AppWindows &windows) : m_state(state), m_windows(windows) {}

bool Startup::IsUpgradeVersion(int version)
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
    const TraceHook &trace = m_state.trace;
    try {
        trace.Trace(QStringLiteral("1: Main Init - start"));

        m_state.skin.SkinStartup();
        trace.Trace(QStringLiteral("2: Main Init - Skin On"));

        m_windows.InitCommonControls();
        trace.Trace(QStringLiteral("3: Main Init - XP / Vista Theme"));
        m_state.skinParam.Init();

        trace.Trace(QStringLiteral("4: Main Init - Process Data Folder"));
        m_state.DataFolder = AppPaths::DataFolder();
        trace.Trace(QStringLiteral("5: Main Init - Data Folder: ") + m_state.DataFolder);

        prepareDataFolder();

        loadStartupSettings();
        trace.Trace(QStringLiteral("9: Main Init - Settings loaded"));

        m_state.playerTexts = PlayerTexts::standard();
        trace.Trace(QStringLiteral("10: Main Init - Stations loaded"));

        m_state.CommandArg = StationNames::TrimBlanks(commandLine);
        if (m_state.CommandArg.size() < 2) {
            trace.Trace(QStringLiteral("11: Main Init - Load data structures "));
            m_state.catalogue.Load(m_state.prompt, AppState::AppTitle);
            trace.Trace(QStringLiteral("12: Main Init - Load Main Screen"));
            m_windows.LoadMainWindow();
            m_windows.ProcessEvents();
            trace.Trace(QStringLiteral("13: Main Init - Show Main Screen"));
            m_windows.ShowMainWindow();
        } else {
            m_state.LaunchMode = true;
            trace.Trace(QStringLiteral("11: Main Init - Command Arg : ") + m_state.CommandArg);
            m_windows.ShowRecorderWindow();
        }
        m_windowShown = true;
    } catch (const AppError &e) {
        m_state.prompt.message(QStringLiteral("Main Error: %1 : %2").arg(e.number()).arg(e.description()),
                               FatalTitle, Prompt::Icon::Critical);
    } catch (const std::exception &e) {
        m_state.prompt.message(QStringLiteral("Main Error: 51 : ") + QString::fromLocal8Bit(e.what()), FatalTitle,
                               Prompt::Icon::Critical);
    }
    return m_windowShown;
}

void Startup::prepareDataFolder()
{
    const QString data = m_state.DataFolder;
    const QString install = m_state.InstallFolder + u'/';

    // A data folder that is not there yet marks the first start after installation.
    bool firstStart = false;
    tolerate([&] { firstStart = !QDir(data).exists(); });
    tolerate([&] { QDir().mkpath(data); });
    tolerate([&] { QDir().mkpath(data + QStringLiteral("/Rec")); });

    int version = 0;
    tolerate([&] { version = SettingsStore::GetNumber(SettingsStore::V, 27); });
    const bool upgrade = !firstStart && IsUpgradeVersion(version);

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
        tolerate([&] { SettingsStore::SaveNumber(SettingsStore::V, UpgradedVersion); });
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
    const QString installedPath = m_state.InstallFolder + u'/' + AppState::CatalogueFileName;
    const std::optional<QByteArray> installed = readWhole(installedPath);
    if (!installed)
        return;
    const QByteArray identity = identityOf(*installed);
    const QString takenPath = m_state.DataFolder + u'/' + TakenOverFileName;
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
    const QString data = m_state.DataFolder + u'/';
    const QString cataloguePath = data + AppState::CatalogueFileName;
    const bool existed = AppPaths::FileExists(cataloguePath);
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
    m_state.trace.Trace(own ? QStringLiteral("8: Main Init - stations updated")
                            : QStringLiteral("8: Main Init - stations installed"));
    return true;
}

void Startup::loadStartupSettings()
{
    m_state.GenreFilter = SettingsStore::GetSetting(SettingsStore::OptGenre);
    m_state.CategoryFilter = SettingsStore::GetSetting(SettingsStore::OptCategory);
    m_state.TypeFilter = SettingsStore::GetSetting(SettingsStore::OptType);
    m_state.RatingFilter = SettingsStore::GetSetting(SettingsStore::OptRating);
    m_state.TrimToolCommand = SettingsStore::GetSetting(SettingsStore::TrimMP3Tool);
    if (m_state.TrimToolCommand.size() < 2) {
        m_state.ApplyDefaultTrimTool();
        SettingsStore::SaveSetting(SettingsStore::TrimMP3Tool, m_state.TrimToolCommand);
    }
}

void Startup::Terminate()
{
    m_windows.UnloadAllWindows();
    Close();
}

void Startup::Close()
{
    if (m_closing)
        return;
    m_closing = true;

    if (m_state.catalogue.Dirty) {
        try {
            m_state.catalogue.Save();
        } catch (const AppError &e) {
            // The previous list survives as the ".bck" backup the save made first.
            m_state.prompt.message(QStringLiteral("The station list could not be saved: ") + e.description(),
                                   AppState::AppTitle, Prompt::Icon::Critical);
        }
    }
    SettingsStore::SaveSetting(SettingsStore::OptGenre, m_state.GenreFilter);
    SettingsStore::SaveSetting(SettingsStore::OptCategory, m_state.CategoryFilter);
    SettingsStore::SaveSetting(SettingsStore::OptType, m_state.TypeFilter);
    SettingsStore::SaveSetting(SettingsStore::OptRating, m_state.RatingFilter);

    tolerate([this] { m_windows.ProcessEvents(); });
    tolerate([this] { m_windows.UnloadAllWindows(); });
    tolerate([this] { m_state.skin.RemoveSkin(); });
    tolerate([this] { m_windows.EndProcess(); });
}
