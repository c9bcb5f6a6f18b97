#include "base/apperror.h"
#include "app/programparts.h"
#include "app/appwindows.h"
#include "base/settingsstore.h"
#include "app/startup.h"
#include "support/scriptedprompt.h"
#include "support/tempprofile.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QScopeGuard>
#include <QSettings>

#include <gtest/gtest.h>

#ifdef __linux__
#include <linux/capability.h>
#include <sys/syscall.h>
#include <unistd.h>
#endif

using namespace Qt::StringLiterals;

namespace {

// The windowing side as start-up sees it; records what it was asked to do.
class RecordedWindows : public AppWindows
{
public:
    QStringList calls;
    bool failLoad = false;
    void initCommonControls() override { calls << u"init"_s; }
    void loadMainWindow() override
    {
        calls << u"load"_s;
        if (failLoad)
            throw AppError(AppError::PathNotFound, u"Path not found"_s);
    }
    void showMainWindow() override { calls << u"main"_s; }
    void showRecorderWindow() override { calls << u"recorder"_s; }
    void processEvents() override { calls << u"events"_s; }
    void unloadAllWindows() override { calls << u"unload"_s; }
    void endProcess() override { calls << u"end"_s; }
};

QByteArray catalogueBytes(const QString &stationName)
{
    return TempProfile::utf16File(u"2.1\r\n\u00B1\r\n# c\r\n"_s + stationName +
                                  u"\u00B1Jazz\u00B1128\u00B1mp3\u00B1Fav\u00B1.\\x.mp3\u00B1True\u00B13"
                                  "\u00B1\u00B1\u00B1http://a.example:8000/\u00B1http://a.example/\r\n"_s);
}

// Root writes into any folder whatever its permission bits. For its lifetime
// this gives up that override on the calling thread, so that a read-only
// folder refuses the test as it refuses an ordinary user.
class PermissionBitsBindRoot
{
public:
    PermissionBitsBindRoot() { setOverride(false); }
    ~PermissionBitsBindRoot() { setOverride(true); }
    Q_DISABLE_COPY_MOVE(PermissionBitsBindRoot)

private:
    static void setOverride(bool on)
    {
#ifdef __linux__
        __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
        __user_cap_data_struct caps[_LINUX_CAPABILITY_U32S_3] = {};
        if (syscall(SYS_capget, &header, caps) != 0)
            return;
        const __u32 bit = 1u << CAP_DAC_OVERRIDE;
        caps[0].effective = on ? caps[0].effective | (caps[0].permitted & bit) : caps[0].effective & ~bit;
        syscall(SYS_capset, &header, caps);
#else
        Q_UNUSED(on);
#endif
    }
};

void removeSetting(const char *key)
{
    QSettings(QSettings::NativeFormat, QSettings::UserScope, u"Tunecatch"_s, u"Tunecatch"_s)
        .remove(u"CONFIG/"_s + QLatin1StringView(key));
}

class StartupTest : public ProfileTest
{
public:
    // One start of the program: a fresh process state over the same profile.
    bool start(const QString &commandLine = {})
    {
        windows.calls.clear();
        prompt = ScriptedPrompt();
        trace.clear();
        state = std::make_unique<ProgramParts>(profile.installFolder(), prompt,
                                           TraceHook([this](const QString &line) { trace << line; }));
        startup = std::make_unique<Startup>(*state, windows);
        return startup->SubMain(commandLine);
    }
    void install(const QString &name, const QByteArray &bytes)
    {
        TempProfile::writeFile(profile.installFolder() + u'/' + name, bytes);
    }
    QString data(const char *name) const { return profile.dataFolder() + QLatin1StringView(name); }
    QByteArray dataFile(const char *name) const { return TempProfile::readFile(data(name)); }
    QStringList backups() const
    {
        return QDir(profile.dataFolder()).entryList({u"Stations.vn.bak*"_s}, QDir::Files, QDir::Name);
    }
    QStringList stationTraces() const { return trace.filter(QRegularExpression(u"^8: "_s)); }
    // The data folder as a profile that never saw a station list, and no installed one.
    void forgetStationFiles()
    {
        QDir folder(profile.dataFolder());
        for (const QString &name : folder.entryList({u"Stations*"_s}, QDir::Files))
            folder.remove(name);
        QFile::remove(profile.installFolder() + u"/Stations.txt"_s);
    }
    RecordedWindows windows;
    ScriptedPrompt prompt;
    QStringList trace;
    std::unique_ptr<ProgramParts> state;
    std::unique_ptr<Startup> startup;
};

TEST_F(StartupTest, FirstStartPreparesTheDataFolderAndTakesOverTheInstalledCatalogue)
{
    install(u"Stations.txt"_s, catalogueBytes(u"Jazz One"_s));
    install(u"sample.mp3"_s, "sample-bytes");
    install(u"laudAndClear.mp3"_s, "loud-bytes");
    ASSERT_TRUE(start(u" "_s));
    EXPECT_EQ(trace.join(u'|'),
              u"1: Main Init - start|2: Main Init - Skin On|3: Main Init - XP / Vista Theme|"
              "4: Main Init - Process Data Folder|5: Main Init - Data Folder: "_s +
                  profile.dataFolder() +
                  u"|8: Main Init - stations installed|9: Main Init - Settings loaded|"
                  "10: Main Init - Stations loaded|11: Main Init - Load data structures |"
                  "12: Main Init - Load Main Screen|13: Main Init - Show Main Screen"_s);
    EXPECT_EQ(windows.calls.join(u','), u"init,load,events,main"_s);
    EXPECT_EQ(dataFile("Rec/sample.mp3"), "sample-bytes");
    EXPECT_EQ(dataFile("Rec/laudAndClear.mp3"), "loud-bytes");
    EXPECT_EQ(dataFile("Stations.txt"), catalogueBytes(u"Jazz One"_s));
    EXPECT_FALSE(QFile::exists(profile.installFolder() + u"/Stations.txt"_s));
    ASSERT_EQ(state->catalogue.stationCount(), 1);
    EXPECT_EQ(state->catalogue.at(1).Name, u"Jazz One"_s);
    EXPECT_EQ(SettingsStore::getSetting(SettingsStore::V), u"32"_s);
    EXPECT_EQ(SettingsStore::getSetting(SettingsStore::TrimMP3Tool), TrimTool::defaultCommand);
    EXPECT_FALSE(state->launch.launchMode);
    EXPECT_TRUE(prompt.shown.isEmpty());
    // The second start leaves the catalogue and the recordings alone.
    QFile::remove(data("Rec/sample.mp3"));
    ASSERT_TRUE(start());
    EXPECT_FALSE(trace.join(u'\n').contains(u"8: "_s));
    EXPECT_FALSE(QFile::exists(data("Rec/sample.mp3")));
    EXPECT_EQ(dataFile("Stations.txt"), catalogueBytes(u"Jazz One"_s));
}

TEST_F(StartupTest, TheInstalledListIsTakenOverOncePerFileAndNeverWithoutABackup)
{
    ASSERT_TRUE(start()); // makes the data folder: later starts are not first starts
    const QByteArray mine = catalogueBytes(u"Mine"_s);
    const QByteArray shipped = catalogueBytes(u"Shipped"_s);
    const QByteArray *none = nullptr;
    struct Row
    {
        const char *what;
        const char *version;   // nullptr: the settings file was deleted, so V reads 27
        const QByteArray *own; // the data folder's list before the start
        int installs;          // 0: nothing installed; 1: a new list; 2: a list also taken before
        bool becomesShipped;
        const char *backupOfMine; // the one backup afterwards, holding the user's list
        const char *traced;       // the "8: Main Init - " line, if any
    };
    const Row rows[] = {
        {"nothing installed", "32", &mine, 0, false, nullptr, nullptr},
        {"settings deleted, nothing installed", nullptr, &mine, 0, false, nullptr, nullptr},
        {"first list", "32", none, 1, true, nullptr, "stations installed"},
        {"new list", "32", &mine, 1, true, "Stations.vn.bak", "stations updated"},
        {"old folder, new list", "27", &mine, 1, true, "Stations.vn.bak31", "stations updated"},
        {"settings deleted, new list", nullptr, &mine, 1, true, "Stations.vn.bak31", "stations updated"},
        {"list taken before", "32", &mine, 2, false, nullptr, nullptr},
        {"settings deleted, list taken before", nullptr, &mine, 2, false, nullptr, nullptr},
        {"own list is the new one", "32", &shipped, 1, true, nullptr, nullptr}};
    for (const Row &row : rows) {
        SCOPED_TRACE(row.what);
        forgetStationFiles();
        for (int i = 0; i < row.installs; ++i) {
            install(u"Stations.txt"_s, shipped);
            ASSERT_TRUE(i + 1 == row.installs || start());
        }
        if (row.own)
            TempProfile::writeFile(data("Stations.txt"), *row.own);
        if (row.version)
            SettingsStore::saveSetting(SettingsStore::V, QString::fromLatin1(row.version));
        else
            removeSetting("V");
        ASSERT_TRUE(start());
        EXPECT_EQ(dataFile("Stations.txt"), row.becomesShipped ? shipped : mine);
        EXPECT_EQ(backups(),
                  row.backupOfMine ? QStringList{QString::fromLatin1(row.backupOfMine)} : QStringList());
        if (row.backupOfMine) {
            EXPECT_EQ(dataFile(row.backupOfMine), mine);
        }
        EXPECT_EQ(stationTraces(), row.traced
                                       ? QStringList{u"8: Main Init - "_s + QLatin1StringView(row.traced)}
                                       : QStringList());
        EXPECT_FALSE(QFile::exists(profile.installFolder() + u"/Stations.txt"_s));
        EXPECT_EQ(SettingsStore::getSetting(SettingsStore::V), u"32"_s);
        // The same file placed again is not taken over a second time.
        const QByteArray now = dataFile("Stations.txt");
        const QByteArray edited = now + now;
        TempProfile::writeFile(data("Stations.txt"), edited);
        install(u"Stations.txt"_s, shipped);
        ASSERT_TRUE(start());
        EXPECT_EQ(dataFile("Stations.txt"), row.installs == 0 ? shipped : edited);
    }
}

TEST_F(StartupTest, OnlySixOldMarkersNameTheBackupOfAnUpgradeAndStoreTheCurrentOne)
{
    ASSERT_TRUE(start());
    const std::pair<const char *, bool> rows[] = {
        {"21", true},  {"23", true},  {"25", true},    {"26", true},  {"27", true},
        {"31", true},  {"22", false}, {"24", false},   {"28", false}, {"30", false},
        {"32", false}, {"40", false}, {"27 old", true}};
    // "27 old": the leading number counts.
    for (const auto &[marker, upgrades] : rows) {
        SCOPED_TRACE(marker);
        forgetStationFiles();
        TempProfile::writeFile(data("Stations.txt"), catalogueBytes(u"Mine"_s));
        install(u"Stations.txt"_s, catalogueBytes(u"Shipped"_s));
        SettingsStore::saveSetting(SettingsStore::V, QString::fromLatin1(marker));
        ASSERT_TRUE(start());
        EXPECT_EQ(backups(), QStringList{upgrades ? u"Stations.vn.bak31"_s : u"Stations.vn.bak"_s});
        EXPECT_EQ(state->catalogue.at(1).Name, u"Shipped"_s);
        EXPECT_EQ(SettingsStore::getSetting(SettingsStore::V),
                  upgrades ? u"32"_s : QString::fromLatin1(marker));
    }
}

TEST_F(StartupTest, AReadOnlyInstallationKeepsItsListAndTheUsersListSurvivesEveryStart)
{
    ASSERT_TRUE(start());
    const QByteArray mine = catalogueBytes(u"Mine"_s);
    TempProfile::writeFile(data("Stations.txt"), mine);
    const QString folder = profile.installFolder();
    const auto installReadOnly = [&](const QByteArray &bytes) {
        QFile::setPermissions(folder, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        install(u"Stations.txt"_s, bytes);
        QFile::setPermissions(folder, QFile::ReadOwner | QFile::ExeOwner | QFile::ReadGroup |
                                          QFile::ExeGroup | QFile::ReadOther | QFile::ExeOther);
    };
    const auto restore = qScopeGuard(
        [&] { QFile::setPermissions(folder, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner); });
    const PermissionBitsBindRoot bound;
    installReadOnly(catalogueBytes(u"Shipped"_s));
    ASSERT_TRUE(start());
    ASSERT_TRUE(QFile::exists(folder + u"/Stations.txt"_s)) << "the folder should have refused the deletion";
    EXPECT_EQ(stationTraces(), QStringList{u"8: Main Init - stations updated"_s});
    EXPECT_EQ(dataFile("Stations.vn.bak"), mine);
    // The user's edits outlive every later start with the same installed file.
    const QByteArray edited = catalogueBytes(u"Mine, edited"_s);
    TempProfile::writeFile(data("Stations.txt"), edited);
    for (int i = 0; i < 2; ++i) {
        ASSERT_TRUE(start());
        EXPECT_EQ(dataFile("Stations.txt"), edited);
        EXPECT_TRUE(stationTraces().isEmpty());
    }
    // A new version's list is taken once more; the older backup stays as it was.
    installReadOnly(catalogueBytes(u"Shipped 2"_s));
    ASSERT_TRUE(start());
    ASSERT_TRUE(start());
    EXPECT_EQ(state->catalogue.at(1).Name, u"Shipped 2"_s);
    EXPECT_EQ(backups(), QStringList({u"Stations.vn.bak"_s, u"Stations.vn.bak.2"_s}));
    EXPECT_EQ(dataFile("Stations.vn.bak"), mine);
    EXPECT_EQ(dataFile("Stations.vn.bak.2"), edited);
}

TEST_F(StartupTest, AnArgumentOfTwoCharactersOpensTheRecorderWithoutLoadingTheCatalogue)
{
    ASSERT_TRUE(start());
    TempProfile::writeFile(data("Stations.txt"), catalogueBytes(u"Mine"_s));
    ASSERT_TRUE(start(u"  -a host:8000/live -w My Station  "_s));
    EXPECT_TRUE(state->launch.launchMode);
    EXPECT_EQ(state->launch.commandArg, u"-a host:8000/live -w My Station"_s);
    EXPECT_EQ(trace.last(), u"11: Main Init - Command Arg : -a host:8000/live -w My Station"_s);
    EXPECT_EQ(windows.calls.join(u','), u"init,recorder"_s);
    EXPECT_EQ(state->catalogue.stationCount(), 0);
    ASSERT_TRUE(start(u"  x  "_s));
    EXPECT_FALSE(state->launch.launchMode);
    EXPECT_TRUE(windows.calls.contains(u"main"_s));
}

TEST_F(StartupTest, StoredSettingsAreReadByTheirRules)
{
    // The trim tool keeps a one-character command and fills an empty one.
    for (const auto &[stored, read] : {std::pair{u"x"_s, u"x"_s}, {QString(), TrimTool::defaultCommand}}) {
        SettingsStore::saveSetting(SettingsStore::TrimMP3Tool, stored);
        ASSERT_TRUE(start());
        EXPECT_EQ(state->trimTool.command, read);
    }
    // The theme reads its leading number; none stored is theme 1.
    for (const auto &[stored, theme] : {std::pair{"1x", 1}, {"x1", 0}, {"", 1}}) {
        if (*stored)
            SettingsStore::saveSetting(SettingsStore::Theme, QString::fromLatin1(stored));
        else
            removeSetting("Theme");
        ASSERT_TRUE(start());
        EXPECT_EQ(state->appearance.theme.themeIndex(), theme) << stored;
    }
}

TEST_F(StartupTest, FailuresEndStartUpWithTheMainErrorOnlyWhenTheyCannotBeSkipped)
{
    SettingsStore::saveSetting(SettingsStore::AppSkinOn, u"yes"_s);
    EXPECT_FALSE(start());
    EXPECT_EQ(trace, QStringList{u"1: Main Init - start"_s});
    ASSERT_EQ(prompt.shown.size(), 1);
    EXPECT_EQ(prompt.shown[0].text, u"Main Error: 13 : Type mismatch"_s);
    EXPECT_TRUE(windows.calls.isEmpty());
    SettingsStore::saveSetting(SettingsStore::AppSkinOn, u"TRUE"_s);
    // A missing catalogue is only reported; a failing main window ends start-up.
    windows.failLoad = true;
    EXPECT_FALSE(start());
    ASSERT_EQ(prompt.texts().size(), 2);
    EXPECT_EQ(prompt.texts()[0].section(u'\n', 0, 0), Catalogue::damagedMessage());
    EXPECT_EQ(prompt.texts()[1], u"Main Error: 76 : Path not found"_s);
    EXPECT_FALSE(windows.calls.contains(u"main"_s));
    windows.failLoad = false;
    // A backup that cannot be written: the user's list stays, and the
    // installed one waits for a later start.
    const QByteArray mine = catalogueBytes(u"Mine"_s);
    TempProfile::writeFile(data("Stations.txt"), mine);
    ASSERT_TRUE(QFile::link(profile.root() + u"/gone/Stations.vn.bak"_s, data("Stations.vn.bak")));
    install(u"Stations.txt"_s, catalogueBytes(u"Shipped"_s));
    ASSERT_TRUE(start());
    EXPECT_EQ(dataFile("Stations.txt"), mine);
    EXPECT_TRUE(QFile::exists(profile.installFolder() + u"/Stations.txt"_s));
    QFile::remove(data("Stations.vn.bak"));
    ASSERT_TRUE(start());
    EXPECT_EQ(dataFile("Stations.vn.bak"), mine);
    // An unusable data folder still shows the main window.
    TempProfile::writeFile(profile.root() + u"/not-a-folder"_s, "x");
    profile.setAppData(profile.root() + u"/not-a-folder"_s);
    install(u"Stations.txt"_s, catalogueBytes(u"Shipped"_s));
    ASSERT_TRUE(start());
    EXPECT_EQ(startup->dataFolder(), profile.root() + u"/not-a-folder/Tunecatch/"_s);
    EXPECT_TRUE(windows.calls.contains(u"main"_s));
    ASSERT_EQ(prompt.texts().size(), 1);
    EXPECT_EQ(prompt.texts()[0].section(u'\n', 0, 0), Catalogue::damagedMessage());
}

TEST_F(StartupTest, ClosingSavesAChangedCatalogueStoresTheFiltersAndRunsOnce)
{
    ASSERT_TRUE(start());
    TempProfile::writeFile(data("Stations.txt"), catalogueBytes(u"Mine"_s));
    ASSERT_TRUE(start());
    state->catalogue.at(1).Rating = 5;
    state->catalogue.dirty = true;
    state->filters.genre = u"Jazz"_s;
    state->filters.category = u"Fav"_s;
    state->filters.rating = u"5"_s;
    windows.calls.clear();
    startup->close();
    startup->close();
    EXPECT_EQ(windows.calls.join(u','), u"events,unload,end"_s);
    EXPECT_FALSE(state->catalogue.dirty);
    EXPECT_EQ(dataFile("Stations.txt.bck"), catalogueBytes(u"Mine"_s));
    EXPECT_EQ(SettingsStore::getSetting(SettingsStore::OptType), QString());
    EXPECT_EQ(SettingsStore::getSetting(SettingsStore::OptRating), u"5"_s);
    ASSERT_TRUE(start());
    EXPECT_EQ(state->catalogue.at(1).Rating, 5);
    EXPECT_EQ(state->filters.genre, u"Jazz"_s);
    EXPECT_EQ(state->filters.category, u"Fav"_s);
}

} // namespace
