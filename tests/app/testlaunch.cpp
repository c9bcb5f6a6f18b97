// The program as a user meets it: the real windows behind start-up, and the
// real executable recording from a loopback station the way a terminal or
// a scheduled start runs it.
#include "app/appstate.h"
#include "app/qtappwindows.h"
#include "app/settingsstore.h"
#include "app/startup.h"
#include "controls/lynxgrid.h"
#include "support/icyserver.h"
#include "support/scriptedprompt.h"
#include "support/tempprofile.h"
#include "ui/frmstations.h"

#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QPushButton>
#include <QEventLoop>
#include <QTimer>
#include <QTest>

#include <gtest/gtest.h>

namespace {

// Waits for the program to end while this test's own loop keeps serving it.
bool waitForExit(QProcess &program, int milliseconds)
{
    if (program.state() == QProcess::NotRunning)
        return true;
    QEventLoop loop;
    QObject::connect(&program, &QProcess::finished, &loop, &QEventLoop::quit);
    QTimer::singleShot(milliseconds, &loop, &QEventLoop::quit);
    loop.exec();
    return program.state() == QProcess::NotRunning;
}

QString sourceFile(const QString &relative)
{
    return qEnvironmentVariable("TUNECATCH_SOURCE_DIR") + u'/' + relative;
}

class LaunchTest : public ProfileTest
{
protected:
    // A copy of the program in the profile's installation folder, so that
    // taking over an installed catalogue never touches the build tree.
    QString installProgram()
    {
        const QString program = profile.installFolder() + QStringLiteral("/tunecatch");
        EXPECT_TRUE(QFile::copy(qEnvironmentVariable("TUNECATCH_BIN_DIR") + QStringLiteral("/tunecatch"), program));
        return program;
    }

    QProcessEnvironment environment() const
    {
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
        env.remove(QStringLiteral("APPDATA"));
        for (const char *name : {"XDG_DATA_HOME", "XDG_CONFIG_HOME", "XDG_RUNTIME_DIR"})
            env.insert(QString::fromLatin1(name), qEnvironmentVariable(name));
        return env;
    }

    QStringList recordings() const
    {
        return QDir(profile.dataFolder() + QStringLiteral("Rec")).entryList({QStringLiteral("*.mp3")}, QDir::Files,
                                                                            QDir::Name);
    }
};

TEST_F(LaunchTest, AnOrdinaryStartShowsTheStationsAndClosingStoresTheFilters)
{
    QFile::copy(sourceFile(QStringLiteral("data/Stations.txt")), profile.installFolder() + QStringLiteral("/Stations.txt"));
    ScriptedPrompt prompt;
    AppState state(profile.installFolder(), prompt);
    QtAppWindows windows(state);
    Startup startup(state, windows);
    windows.setStartup(&startup);

    ASSERT_TRUE(startup.SubMain({}));

    auto *main = qobject_cast<FrmStations *>(QApplication::topLevelWidgets().isEmpty() ? nullptr : [] {
        for (QWidget *w : QApplication::topLevelWidgets())
            if (qobject_cast<FrmStations *>(w) && w->isVisible())
                return w;
        return static_cast<QWidget *>(nullptr);
    }());
    ASSERT_NE(main, nullptr);
    auto *grid = main->findChild<LynxGrid *>(QStringLiteral("LynxGrid1"));
    ASSERT_GE(state.catalogue.StationCount(), 25);
    EXPECT_EQ(grid->ItemCount(), state.catalogue.StationCount());

    main->findChild<QComboBox *>(QStringLiteral("cmbGenre"))->setCurrentText(QStringLiteral("Jazz"));
    QTest::mouseClick(main->findChild<QPushButton *>(QStringLiteral("cmdFilter")), Qt::LeftButton);
    EXPECT_LT(grid->ItemCount(), state.catalogue.StationCount());
    const QByteArray before = TempProfile::readFile(profile.dataFolder() + QStringLiteral("Stations.txt"));

    // As in the program: the window closes inside the running loop, and the
    // closing procedure ends that loop.
    QTimer::singleShot(0, main, &QWidget::close);
    EXPECT_EQ(QApplication::exec(), 0);

    EXPECT_EQ(SettingsStore::GetSetting(SettingsStore::OptGenre), QStringLiteral("Jazz"));
    EXPECT_EQ(TempProfile::readFile(profile.dataFolder() + QStringLiteral("Stations.txt")), before);
    EXPECT_TRUE(prompt.shown.isEmpty());
}

TEST_F(LaunchTest, ATerminalRecordingSplitsSongsStopsAtItsLimitAndExits)
{
    IcyServer server;
    for (int song = 1; song <= 20; ++song)
        server.songs.append({"Artist - Song " + QByteArray::number(song), 8});
    ASSERT_TRUE(server.start());

    QProcess program;
    program.setProcessEnvironment(environment());
    program.start(installProgram(), {QStringLiteral("-a"), server.url(), QStringLiteral("-w"), QStringLiteral("Loop"),
                                     QStringLiteral("FM"), QStringLiteral("-s"),
                                     QStringLiteral("./%STATION%_%SONG%.mp3"), QStringLiteral("-n"),
                                     QStringLiteral("-b"), QStringLiteral("1")});
    ASSERT_TRUE(program.waitForStarted(10000));
    ASSERT_TRUE(waitForExit(program, 60000)) << program.readAllStandardError().toStdString();
    EXPECT_EQ(program.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(program.exitCode(), 0);

    const QStringList files = recordings();
    ASSERT_GE(files.size(), 2) << files.join(u',').toStdString();
    EXPECT_TRUE(files.contains(QStringLiteral("Loop FM_Artist - Song 1.mp3"))) << files.join(u',').toStdString();
    EXPECT_TRUE(files.contains(QStringLiteral("Loop FM_Artist - Song 2.mp3")));
    const QByteArray &audio = server.sent(0).audio;
    qint64 total = 0;
    for (const QString &name : files) {
        const QByteArray bytes = TempProfile::readFile(profile.dataFolder() + QStringLiteral("Rec/") + name);
        total += bytes.size();
        ASSERT_FALSE(bytes.isEmpty()) << name.toStdString();
        EXPECT_GE(audio.indexOf(bytes), 0) << name.toStdString() << " is not a run of the station's audio";
    }
    EXPECT_GE(total, 1024 * 1024);
}

#ifdef Q_OS_UNIX
TEST_F(LaunchTest, TerminatingARecordingWritesWhatWasStillCached)
{
    IcyServer server;
    server.songs = {{"Artist - Endless", 1000}};
    server.bytesPerSecond = 64000;
    ASSERT_TRUE(server.start());

    QProcess program;
    program.setProcessEnvironment(environment());
    program.start(installProgram(), {QStringLiteral("-a"), server.url(), QStringLiteral("-w"), QStringLiteral("Loop"),
                                     QStringLiteral("-s"), QStringLiteral("./%STATION%.mp3")});
    ASSERT_TRUE(program.waitForStarted(10000));
    // Below the 64000-byte cache: only the interval before the first title is on disk.
    QTRY_VERIFY_WITH_TIMEOUT(server.clientCount() == 1 && server.sent(0).audio.size() >= 48000, 20000);
    const QString file = profile.dataFolder() + QStringLiteral("Rec/Loop.mp3");
    const qint64 before = QFileInfo(file).size();
    EXPECT_LE(before, 8000);

    program.terminate();
    ASSERT_TRUE(waitForExit(program, 20000));
    EXPECT_EQ(program.exitStatus(), QProcess::NormalExit);

    const QByteArray bytes = TempProfile::readFile(file);
    // The interval before the first title opens the file twice over, as at
    // every title change; from there on the audio runs on unbroken.
    ASSERT_GE(bytes.size(), before + 32000);
    const QByteArray &audio = server.sent(0).audio;
    EXPECT_EQ(bytes.left(8000), audio.left(8000));
    EXPECT_EQ(bytes.mid(8000, 32000), audio.left(32000));
}
#endif

} // namespace
