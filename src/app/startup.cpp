#include "app/startup.h"

#include "app/apperror.h"
#include "app/apppaths.h"
#include "app/appstate.h"
#include "app/appwindows.h"
#include "app/prompt.h"
#include "app/settingsstore.h"
#include "catalogue/stationnames.h"

#include <QDir>
#include <QFile>

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
    const QString catalogue = data + u'/' + AppState::CatalogueFileName;
    const QString installed = install + AppState::CatalogueFileName;

    // A data folder that is not there yet marks the first start after installation.
    bool firstStart = false;
    tolerate([&] { firstStart = !QDir(data).exists(); });
    tolerate([&] { QDir().mkpath(data); });
    tolerate([&] { QDir().mkpath(data + QStringLiteral("/Rec")); });

    int version = 0;
    tolerate([&] { version = SettingsStore::GetNumber(SettingsStore::V, 27); });

    if (firstStart) {
        tolerate([&] {
            copyOver(install + QStringLiteral("sample.mp3"), data + QStringLiteral("/Rec/sample.mp3"));
        });
        tolerate([&] {
            copyOver(install + QStringLiteral("laudAndClear.mp3"), data + QStringLiteral("/Rec/laudAndClear.mp3"));
        });
        // A new profile is already current: without the marker the next start
        // would take it for an old one and move its catalogue aside.
        tolerate([&] { SettingsStore::SaveNumber(SettingsStore::V, UpgradedVersion); });
    } else if (IsUpgradeVersion(version)) {
        tolerate([&] { copyOver(catalogue, data + QStringLiteral("/Stations.vn.bak31")); });
        tolerate([&] { QFile::remove(catalogue); });
        tolerate([&] { QFile::copy(installed, catalogue); });
        tolerate([&] { SettingsStore::SaveNumber(SettingsStore::V, UpgradedVersion); });
    }

    if (AppPaths::FileExists(installed)) {
        if (!AppPaths::FileExists(catalogue)) {
            tolerate([&] { QFile::copy(installed, catalogue); });
            m_state.trace.Trace(QStringLiteral("8: Main Init - stations installed"));
        } else {
            tolerate([&] { copyOver(catalogue, data + QStringLiteral("/Stations.vn.bak")); });
            tolerate([&] { QFile::remove(catalogue); });
            tolerate([&] { QFile::copy(installed, catalogue); });
            m_state.trace.Trace(QStringLiteral("8: Main Init - stations updated"));
        }
        tolerate([&] { QFile::remove(installed); });
    }
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
