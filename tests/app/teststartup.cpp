#include "app/apperror.h"
#include "app/appstate.h"
#include "app/appwindows.h"
#include "app/settingsstore.h"
#include "app/startup.h"
#include "support/scriptedprompt.h"
#include "support/tempprofile.h"

#include <QDir>
#include <QFile>
#include <QSettings>

#include <gtest/gtest.h>

namespace {

// The windowing side as start-up sees it; records what it was asked to do.
class RecordedWindows : public AppWindows
{
public:
    QStringList calls;
    bool failLoad = false;

    void InitCommonControls() override { calls << QStringLiteral("init"); }
    void LoadMainWindow() override
    {
        calls << QStringLiteral("load");
        if (failLoad)
            throw AppError(AppError::PathNotFound, QStringLiteral("Path not found"));
    }
    void ShowMainWindow() override { calls << QStringLiteral("main"); }
    void ShowRecorderWindow() override { calls << QStringLiteral("recorder"); }
    void ProcessEvents() override { calls << QStringLiteral("events"); }
    void UnloadAllWindows() override { calls << QStringLiteral("unload"); }
    void EndProcess() override { calls << QStringLiteral("end"); }
};

QByteArray catalogueBytes(const QString &stationName)
{
    const QString text = QStringLiteral("2.1\r\n\u00B1\r\n# c\r\n") + stationName +
                         QStringLiteral("\u00B1Jazz\u00B1128\u00B1mp3\u00B1Fav\u00B1.\\x.mp3\u00B1True\u00B13\u00B1\u00B1\u00B1"
                                        "http://a.example:8000/\u00B1http://a.example/\r\n");
    QByteArray bytes("\xFF\xFE", 2);
    bytes.append(reinterpret_cast<const char *>(text.utf16()), text.size() * 2);
    return bytes;
}

class StartupTest : public ProfileTest
{
protected:
    // One start of the program: a fresh process state over the same profile.
    bool start(const QString &commandLine = {})
    {
        windows.calls.clear();
        prompt = ScriptedPrompt();
        trace.clear();
        state = std::make_unique<AppState>(profile.installFolder(), prompt,
                                           TraceHook([this](const QString &line) { trace << line; }));
        startup = std::make_unique<Startup>(*state, windows);
        return startup->SubMain(commandLine);
    }

    void install(const QString &name, const QByteArray &bytes)
    {
        TempProfile::writeFile(profile.installFolder() + u'/' + name, bytes);
    }

    QString data(const QString &name) const { return profile.dataFolder() + name; }

    RecordedWindows windows;
    ScriptedPrompt prompt;
    QStringList trace;
    std::unique_ptr<AppState> state;
    std::unique_ptr<Startup> startup;
};

TEST_F(StartupTest, FirstStartPreparesTheDataFolderAndTakesOverTheInstalledCatalogue)
{
    install(QStringLiteral("Stations.txt"), catalogueBytes(QStringLiteral("Jazz One")));
    install(QStringLiteral("sample.mp3"), "sample-bytes");
    install(QStringLiteral("laudAndClear.mp3"), "loud-bytes");

    ASSERT_TRUE(start(QStringLiteral(" ")));

    EXPECT_EQ(trace, QStringList({
                         QStringLiteral("1: Main Init - start"),
                         QStringLiteral("2: Main Init - Skin On"),
                         QStringLiteral("3: Main Init - XP / Vista Theme"),
                         QStringLiteral("4: Main Init - Process Data Folder"),
                         QStringLiteral("5: Main Init - Data Folder: ") + profile.dataFolder(),
                         QStringLiteral("8: Main Init - stations installed"),
                         QStringLiteral("9: Main Init - Settings loaded"),
                         QStringLiteral("10: Main Init - Stations loaded"),
                         QStringLiteral("11: Main Init - Load data structures "),
                         QStringLiteral("12: Main Init - Load Main Screen"),
                         QStringLiteral("13: Main Init - Show Main Screen"),
                     }));
    EXPECT_EQ(windows.calls, QStringList({QStringLiteral("init"), QStringLiteral("load"), QStringLiteral("events"),
                                          QStringLiteral("main")}));
    EXPECT_EQ(TempProfile::readFile(data(QStringLiteral("Rec/sample.mp3"))), "sample-bytes");
    EXPECT_EQ(TempProfile::readFile(data(QStringLiteral("Rec/laudAndClear.mp3"))), "loud-bytes");
    EXPECT_EQ(TempProfile::readFile(data(QStringLiteral("Stations.txt"))), catalogueBytes(QStringLiteral("Jazz One")));
    EXPECT_FALSE(QFile::exists(profile.installFolder() + QStringLiteral("/Stations.txt")));
    ASSERT_EQ(state->catalogue.StationCount(), 1);
    EXPECT_EQ(state->catalogue.at(1).Name, QStringLiteral("Jazz One"));
    EXPECT_EQ(SettingsStore::GetSetting(SettingsStore::V), QStringLiteral("32"));
    EXPECT_EQ(SettingsStore::GetSetting(SettingsStore::TrimMP3Tool), AppState::DefaultTrimTool);
    EXPECT_FALSE(state->LaunchMode);
    EXPECT_TRUE(prompt.shown.isEmpty());

    // The second start leaves the catalogue and the recordings alone.
    QFile::remove(data(QStringLiteral("Rec/sample.mp3")));
    ASSERT_TRUE(start());
    EXPECT_FALSE(trace.join(u'\n').contains(QStringLiteral("8: ")));
    EXPECT_FALSE(QFile::exists(data(QStringLiteral("Rec/sample.mp3"))));
    EXPECT_EQ(TempProfile::readFile(data(QStringLiteral("Stations.txt"))), catalogueBytes(QStringLiteral("Jazz One")));
}

TEST_F(StartupTest, AnInstallerCatalogueReplacesTheUsersOneKeepingABackup)
{
    ASSERT_TRUE(start());
    TempProfile::writeFile(data(QStringLiteral("Stations.txt")), catalogueBytes(QStringLiteral("Mine")));
    install(QStringLiteral("Stations.txt"), catalogueBytes(QStringLiteral("Shipped")));

    ASSERT_TRUE(start());

    EXPECT_TRUE(trace.contains(QStringLiteral("8: Main Init - stations updated")));
    EXPECT_EQ(TempProfile::readFile(data(QStringLiteral("Stations.vn.bak"))), catalogueBytes(QStringLiteral("Mine")));
    EXPECT_EQ(TempProfile::readFile(data(QStringLiteral("Stations.txt"))), catalogueBytes(QStringLiteral("Shipped")));
    EXPECT_FALSE(QFile::exists(profile.installFolder() + QStringLiteral("/Stations.txt")));
    EXPECT_EQ(state->catalogue.at(1).Name, QStringLiteral("Shipped"));
}

TEST_F(StartupTest, OnlyTheSixOldVersionMarkersUpgradeTheCatalogue)
{
    ASSERT_TRUE(start()); // makes the data folder: later starts are not first starts
    const QList<std::pair<QString, bool>> rows = {
        {QStringLiteral("21"), true},  {QStringLiteral("23"), true},  {QStringLiteral("25"), true},
        {QStringLiteral("26"), true},  {QStringLiteral("27"), true},  {QStringLiteral("31"), true},
        {QStringLiteral("22"), false}, {QStringLiteral("24"), false}, {QStringLiteral("28"), false},
        {QStringLiteral("30"), false}, {QStringLiteral("32"), false}, {QStringLiteral("40"), false},
        {QStringLiteral("27 old"), true},
    };
    for (const auto &[marker, upgrades] : rows) {
        SCOPED_TRACE(marker.toStdString());
        QFile::remove(data(QStringLiteral("Stations.vn.bak31")));
        TempProfile::writeFile(data(QStringLiteral("Stations.txt")), catalogueBytes(QStringLiteral("Mine")));
        SettingsStore::SaveSetting(SettingsStore::V, marker);
        ASSERT_TRUE(start());
        EXPECT_EQ(QFile::exists(data(QStringLiteral("Stations.vn.bak31"))), upgrades);
        EXPECT_EQ(SettingsStore::GetSetting(SettingsStore::V), upgrades ? QStringLiteral("32") : marker);
    }
}

TEST_F(StartupTest, AnUpgradeMovesTheOldCatalogueAsideForTheInstalledOne)
{
    ASSERT_TRUE(start());
    QSettings(QSettings::NativeFormat, QSettings::UserScope, QStringLiteral("Tunecatch"), QStringLiteral("Tunecatch"))
        .remove(QStringLiteral("CONFIG/V")); // no marker reads as 27
    TempProfile::writeFile(data(QStringLiteral("Stations.txt")), catalogueBytes(QStringLiteral("Old")));
    install(QStringLiteral("Stations.txt"), catalogueBytes(QStringLiteral("New")));

    ASSERT_TRUE(start());

    EXPECT_EQ(TempProfile::readFile(data(QStringLiteral("Stations.vn.bak31"))), catalogueBytes(QStringLiteral("Old")));
    EXPECT_EQ(TempProfile::readFile(data(QStringLiteral("Stations.txt"))), catalogueBytes(QStringLiteral("New")));
    EXPECT_EQ(SettingsStore::GetSetting(SettingsStore::V), QStringLiteral("32"));
}

TEST_F(StartupTest, AnArgumentOfTwoCharactersOpensTheRecorderWithoutLoadingTheCatalogue)
{
    ASSERT_TRUE(start());
    TempProfile::writeFile(data(QStringLiteral("Stations.txt")), catalogueBytes(QStringLiteral("Mine")));
    ASSERT_TRUE(start(QStringLiteral("  -a host:8000/live -w My Station  ")));

    EXPECT_TRUE(state->LaunchMode);
    EXPECT_EQ(state->CommandArg, QStringLiteral("-a host:8000/live -w My Station"));
    EXPECT_EQ(trace.last(), QStringLiteral("11: Main Init - Command Arg : -a host:8000/live -w My Station"));
    EXPECT_EQ(windows.calls, QStringList({QStringLiteral("init"), QStringLiteral("recorder")}));
    EXPECT_EQ(state->catalogue.StationCount(), 0);

    ASSERT_TRUE(start(QStringLiteral("  x  ")));
    EXPECT_FALSE(state->LaunchMode);
    EXPECT_TRUE(windows.calls.contains(QStringLiteral("main")));
}

TEST_F(StartupTest, TrimToolRuleKeepsAOneCharacterCommandAndFillsAnEmptyOne)
{
    SettingsStore::SaveSetting(SettingsStore::TrimMP3Tool, QStringLiteral("x"));
    ASSERT_TRUE(start());
    EXPECT_EQ(state->TrimToolCommand, QStringLiteral("x"));
    EXPECT_EQ(SettingsStore::GetSetting(SettingsStore::TrimMP3Tool), QStringLiteral("x"));

    SettingsStore::SaveSetting(SettingsStore::TrimMP3Tool, QString());
    ASSERT_TRUE(start());
    EXPECT_EQ(state->TrimToolCommand, AppState::DefaultTrimTool);
}

TEST_F(StartupTest, SettingsThatDoNotConvertEndStartUpWithTheMainError)
{
    SettingsStore::SaveSetting(SettingsStore::AppSkinOn, QStringLiteral("yes"));
    EXPECT_FALSE(start());
    EXPECT_EQ(trace, QStringList{QStringLiteral("1: Main Init - start")});
    ASSERT_EQ(prompt.shown.size(), 1);
    EXPECT_EQ(prompt.shown[0].text, QStringLiteral("Main Error: 13 : Type mismatch"));
    EXPECT_EQ(prompt.shown[0].title, QStringLiteral("Tunecatch about to Terminate!"));
    EXPECT_EQ(prompt.shown[0].icon, Prompt::Icon::Critical);
    EXPECT_TRUE(windows.calls.isEmpty());

    for (const char *on : {"true", "TRUE", "1", "0", "False"}) {
        SettingsStore::SaveSetting(SettingsStore::AppSkinOn, QString::fromLatin1(on));
        EXPECT_TRUE(start()) << on;
    }
}

TEST_F(StartupTest, ThemeReadsItsLeadingNumber)
{
    const QList<std::pair<QString, int>> rows = {
        {QStringLiteral("1x"), 1}, {QStringLiteral("x1"), 0}, {QStringLiteral("0"), 0}};
    for (const auto &[stored, theme] : rows) {
        SettingsStore::SaveSetting(SettingsStore::Theme, stored);
        ASSERT_TRUE(start());
        EXPECT_EQ(state->skinParam.ThemeIndex(), theme) << stored.toStdString();
    }
    QSettings(QSettings::NativeFormat, QSettings::UserScope, QStringLiteral("Tunecatch"), QStringLiteral("Tunecatch"))
        .remove(QStringLiteral("CONFIG/Theme"));
    ASSERT_TRUE(start());
    EXPECT_EQ(state->skinParam.ThemeIndex(), 1);
}

TEST_F(StartupTest, AFailingMainWindowEndsStartUpButAMissingCatalogueDoesNot)
{
    windows.failLoad = true;
    EXPECT_FALSE(start());
    EXPECT_EQ(prompt.texts(), QStringList({Catalogue::DamagedMessage, QStringLiteral("Main Error: 76 : Path not found")}));
    EXPECT_FALSE(windows.calls.contains(QStringLiteral("main")));
}

TEST_F(StartupTest, AnUnusableDataFolderStillShowsTheMainWindow)
{
    TempProfile::writeFile(profile.root() + QStringLiteral("/not-a-folder"), "x");
    profile.setAppData(profile.root() + QStringLiteral("/not-a-folder"));
    install(QStringLiteral("Stations.txt"), catalogueBytes(QStringLiteral("Shipped")));

    ASSERT_TRUE(start());

    EXPECT_EQ(state->DataFolder, profile.root() + QStringLiteral("/not-a-folder/Tunecatch/"));
    EXPECT_TRUE(windows.calls.contains(QStringLiteral("main")));
    EXPECT_EQ(prompt.texts(), QStringList{Catalogue::DamagedMessage});
}

TEST_F(StartupTest, ClosingSavesAChangedCatalogueStoresTheFiltersAndRunsOnce)
{
    ASSERT_TRUE(start());
    TempProfile::writeFile(data(QStringLiteral("Stations.txt")), catalogueBytes(QStringLiteral("Mine")));
    ASSERT_TRUE(start());
    state->catalogue.at(1).Rating = 5;
    state->catalogue.Dirty = true;
    state->GenreFilter = QStringLiteral("Jazz");
    state->CategoryFilter = QStringLiteral("Fav");
    state->RatingFilter = QStringLiteral("5");
    windows.calls.clear();

    startup->Close();
    startup->Close();

    EXPECT_EQ(windows.calls, QStringList({QStringLiteral("events"), QStringLiteral("unload"), QStringLiteral("end")}));
    EXPECT_FALSE(state->catalogue.Dirty);
    EXPECT_EQ(TempProfile::readFile(data(QStringLiteral("Stations.txt.bck"))), catalogueBytes(QStringLiteral("Mine")));
    EXPECT_EQ(SettingsStore::GetSetting(SettingsStore::OptGenre), QStringLiteral("Jazz"));
    EXPECT_EQ(SettingsStore::GetSetting(SettingsStore::OptCategory), QStringLiteral("Fav"));
    EXPECT_EQ(SettingsStore::GetSetting(SettingsStore::OptType), QString());
    EXPECT_EQ(SettingsStore::GetSetting(SettingsStore::OptRating), QStringLiteral("5"));

    ASSERT_TRUE(start());
    EXPECT_EQ(state->catalogue.at(1).Rating, 5);
    EXPECT_EQ(state->GenreFilter, QStringLiteral("Jazz"));
}

} // namespace
