#include "ui/recorder/frmtc.h"

#include "base/apppaths.h"
#include "base/launchoptions.h"
#include "recorder/recorderstats.h"
#include "recorder/songfileoptions.h"
#include "recorder/streamrecorder.h"
#include "recorder/titledelay.h"
#include "support/accessiblenames.h"
#include "support/eventwait.h"
#include "support/fakepowercontrol.h"
#include "support/icyserver.h"
#include "support/scriptedprompt.h"
#include "support/tempprofile.h"

#include <QAccessible>
#include <QCheckBox>
#include <QDir>
#include <QDoubleSpinBox>
#include <QFileInfo>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPointer>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QScreen>
#include <QScrollArea>
#include <QSignalSpy>
#include <QTimer>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr int Wait = 15000;

// The window's side of a recording: its inputs reach the recorder, its labels
// and buttons follow what the recorder reports. The recording itself is
// tested without a window (tests/recorder/teststreamrecorder.cpp).
class RecorderWindow : public ProfileTest
{
protected:
    void SetUp() override { ASSERT_TRUE(server.start()); }
    void TearDown() override { delete window.data(); }
    FrmTC *open()
    {
        FrmTC::Hooks hooks;
        hooks.now = [] { return QDateTime(QDate(2024, 5, 6), QTime(7, 8, 9)); };
        hooks.chooseSavePath = [this](QWidget *, const QString &current) {
            dialogShownWith = current;
            return dialogAnswer;
        };
        hooks.connection = {1000ms, {50ms, 100ms, 150ms}};
        hooks.openFolder = [this](const QString &folder) { openedFolders << folder; };
        window = new FrmTC(prompt, launch, power, nullptr, hooks);
        return window;
    }
    // Fills the inputs as the main window does, for the scripted station.
    void openFor(const QString &saveTemplate, bool singleSong, const QString &address = {})
    {
        open();
        edit("txtStream")->setText(address.isEmpty() ? server.url() : address);
        edit("txtSave")->setText(saveTemplate);
        label("LblStation")->setText(u"Loop"_s);
        child<QCheckBox>("chkSingleSong")->setChecked(singleSong);
        button("cmdMonitor")->click();
        window->show();
    }
    template <typename T> T *child(const char *name) const
    {
        T *widget = window->findChild<T *>(QLatin1StringView(name));
        EXPECT_NE(widget, nullptr) << name;
        return widget;
    }
    QLabel *label(const char *name) const { return child<QLabel>(name); }
    QLineEdit *edit(const char *name) const { return child<QLineEdit>(name); }
    QPushButton *button(const char *name) const { return child<QPushButton>(name); }
    QString text(const char *name) const { return label(name)->text(); }
    // Waits until the recording has taken at least `audio` bytes and holds
    // nothing half-read; gives the audio bytes taken.
    qint64 drainedAfter(qint64 audio) const
    {
        qint64 consumed = -1;
        EXPECT_TRUE(waitUntil(
            [&] {
                const RecorderStats::Counters counters = window->recorder().counters();
                consumed = qint64(counters.bytesTotal);
                return consumed >= audio && counters.receiveBuffer == 0;
            },
            Wait));
        return consumed;
    }
    void expectIdle() const
    {
        EXPECT_EQ(button("cmdRecord")->text(), FrmTC::captionRecord());
        for (const char *input : {"txtStream", "txtSave", "txtBreak0", "txtBreak1"})
            EXPECT_TRUE(edit(input)->isEnabled()) << input;
    }
    static QString recordings() { return AppPaths::recordingsFolder(); }
    ScriptedPrompt prompt;
    LaunchOptions launch;
    FakePowerControl power;
    IcyServer server;
    QPointer<FrmTC> window;
    QString dialogAnswer, dialogShownWith;
    QStringList openedFolders;
};

TEST_F(RecorderWindow, ShowsWhatItsRecordingReportsAndKeepsItsInputsMeanwhile)
{
    server.songs = {{"One", 2}, {"Zo\xeb", 60}};
    server.repeatTitles = true;
    openFor(u"./%STATION%_%SONG%.mp3"_s, true);
    button("cmdRecord")->click();
    EXPECT_EQ(button("cmdRecord")->text(), FrmTC::captionStop());
    for (const char *input : {"txtStream", "txtSave", "txtBreak0", "txtBreak1"})
        EXPECT_FALSE(edit(input)->isEnabled()) << input;
    ASSERT_TRUE(waitUntil([&] { return text("lbSong") == u"Zo\u00eb"; }, Wait));
    EXPECT_EQ(text("lbStream"), u"Loopback FM"_s);
    EXPECT_EQ(text("lbGenre"), u"Test"_s);
    EXPECT_TRUE(text("lnkStation").contains(u"http://station.example/"_s));
    auto *meta = child<QPlainTextEdit>("txtMeta");
    EXPECT_TRUE(
        waitUntil([&] { return meta->toPlainText().startsWith(u"StreamTitle='Zo\u00eb';"_s); }, Wait));
    EXPECT_TRUE(label("lbValid")->isVisible());
    button("btShow")->click();
    EXPECT_TRUE(meta->toPlainText().contains(u"icy-metaint:8000"_s));
    // The inputs that stay open while recording reach the recording at once.
    edit("txtScanSong")->setText(u"Three"_s);
    child<QCheckBox>("ChkShutDown")->setChecked(true);
    EXPECT_EQ(window->recorder().settings().scanSong, u"Three"_s);
    EXPECT_EQ(window->recorder().settings().powerAction, RecordingSettings::PowerAction::ShutDown);
    const qint64 consumed = drainedAfter(4 * server.metaInt);
    button("cmdRecord")->click();
    EXPECT_FALSE(window->Recording());
    EXPECT_TRUE(text("lbSong").isEmpty());
    expectIdle();
    EXPECT_TRUE(
        waitUntil([&] { return text("lbStore") == RecorderStats::storedSizeText(double(consumed)); }, Wait));
    EXPECT_EQ(text("lbBitrate"), u"MP3, 128 kbit/s"_s);
    EXPECT_TRUE(power.exitCalls.isEmpty());
    // What it wrote, and where, with the way there.
    const QDir folder(recordings());
    const QStringList files = folder.entryList(QDir::Files);
    ASSERT_EQ(files.size(), 2) << files.join(u',').toStdString();
    EXPECT_TRUE(text("lblSummary").startsWith(u"Wrote 2 files ("_s)) << text("lblSummary").toStdString();
    EXPECT_TRUE(text("lblSummary").contains(u", 0:00:"_s));
    EXPECT_TRUE(text("lblSummary").endsWith(u") to "_s + folder.absolutePath()));
    ASSERT_TRUE(label("lnkFolder")->isVisible());
    emit label("lnkFolder")->linkActivated(u"folder"_s);
    EXPECT_EQ(openedFolders, QStringList{folder.absolutePath()});
}

TEST_F(RecorderWindow, AFailureIsShownAndAStationWithoutTitlesTurnsOneFilePerSongOff)
{
    openFor(u"./%STATION%.mp3"_s, true, u"127.0.0.1:"_s + QString::number(IcyServer::refusedPort()) + u'/');
    button("cmdRecord")->click();
    ASSERT_TRUE(waitUntil([&] { return !window->Recording(); }, Wait));
    EXPECT_EQ(text("lbStream"), StreamConnection::TextNoConnection);
    EXPECT_EQ(text("lblSummary"), u"No file was written."_s);
    EXPECT_FALSE(label("lnkFolder")->isVisible());
    expectIdle();
    server.songs = {{"Unsent", 60}};
    server.titles = false;
    edit("txtStream")->setText(server.url());
    button("cmdRecord")->click();
    EXPECT_TRUE(waitUntil([&] { return !child<QCheckBox>("chkSingleSong")->isChecked(); }, Wait));
}

TEST_F(RecorderWindow, ClosingTheWindowStopsTheRecordingWithItsFileComplete)
{
    server.songs = {{"Song", 60}};
    server.titles = false;
    // Without tags, as the settings say, the file is the station's bytes.
    SongFileOptions songFiles;
    songFiles.writeTags = false;
    songFiles.store();
    openFor(u"./%STATION%.mp3"_s, false);
    QSignalSpy unloaded(window.data(), &FrmTC::unloaded);
    button("cmdRecord")->click();
    const qint64 consumed = drainedAfter(3 * server.metaInt);
    window->close();
    EXPECT_EQ(unloaded.size(), 1);
    // All of it sat in the write cache until then.
    EXPECT_EQ(TempProfile::readFile(recordings() + u"Loop.mp3"_s), server.sent(0).audio.left(consumed));
}

TEST_F(RecorderWindow, LaunchAppliesItsSwitchesRecordsToItsLimitThenActs)
{
    const struct
    {
        QString switches;
        const char *limit;
        bool singleSong;
        QList<quint32> exits;
        int suspends;
        bool closes;
    } rows[] = {{u" -b 1 -n -xs"_s, "optBreak1", true, {12}, 0, true},
                {u" -t 1 -xh"_s, "optBreak0", false, {}, 1, false}};
    server.songs = {{"Long song", 400}};
    const QString file = recordings() + u"Loop Station.mp3"_s;
    for (const auto &row : rows) {
        SCOPED_TRACE(row.switches.toStdString());
        TempProfile::writeFile(file, "left from last time");
        power = FakePowerControl();
        launch.launchMode = true;
        launch.commandArg =
            u"-a "_s + server.url() + u" -w Loop Station -s ./%STATION%.mp3 -m -v"_s + row.switches;
        open();
        EXPECT_FALSE(button("cmdStations")->isEnabled());
        EXPECT_TRUE(child<QRadioButton>(row.limit)->isChecked());
        EXPECT_EQ(child<QCheckBox>("chkSingleSong")->isChecked(), row.singleSong);
        EXPECT_TRUE(child<QWidget>("monitorPanel")->isVisibleTo(window));
        EXPECT_TRUE(window->windowState() & Qt::WindowMinimized);
        auto *bar = child<QProgressBar>("Bar");
        QSignalSpy unloaded(window.data(), &FrmTC::unloaded);
        window->show();
        ASSERT_TRUE(
            waitUntil([&] { return !power.exitCalls.isEmpty() || !power.suspendCalls.isEmpty(); }, Wait));
        EXPECT_TRUE(prompt.shown.isEmpty());
        EXPECT_EQ(power.exitCalls, row.exits);
        EXPECT_EQ(power.suspendCalls.size(), row.suspends);
        EXPECT_EQ(unloaded.size(), row.closes ? 1 : 0);
        EXPECT_GE(QFileInfo(file).size(), 59 * 16000) << "a megabyte, or a minute at 128 kbit/s";
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        EXPECT_EQ(window.isNull(), row.closes);
        if (window) {
            EXPECT_EQ(bar->value(), 100);
            expectIdle();
        }
        delete window.data();
    }
}

TEST_F(RecorderWindow, TheStationsTitleDelayIsShownSetByHandAndReset)
{
    openFor(u"./%SONG%.mp3"_s, true);
    auto *delay = child<QDoubleSpinBox>("txtDelay");
    delay->setValue(3.5);
    button("btDelaySet")->click();
    EXPECT_EQ(TitleDelay(u"Loop"_s).source(), TitleDelay::Source::ByHand)
        << "the station shown, not its address";
    EXPECT_EQ(TitleDelay(u"Loop"_s).seconds(), 3.5);
    EXPECT_EQ(text("lbDelay"), TitleDelay(u"Loop"_s).text());
    EXPECT_TRUE(text("lbDelay").contains(u"3.5"_s)) << text("lbDelay").toStdString();
    button("btDelayReset")->click();
    EXPECT_EQ(TitleDelay(u"Loop"_s).source(), TitleDelay::Source::NotYetKnown);
    EXPECT_EQ(text("lbDelay"), TitleDelay(u"Loop"_s).text());
}

TEST_F(RecorderWindow, ControlsKeepTheirRulesAndEachHasItsOwnName)
{
    open();
    auto *hibernate = child<QCheckBox>("ChkHibernate");
    auto *shutDown = child<QCheckBox>("ChkShutDown");
    hibernate->click();
    shutDown->click();
    EXPECT_FALSE(hibernate->isChecked());
    hibernate->click();
    EXPECT_FALSE(shutDown->isChecked());
    window->show();
    const int height = window->height();
    auto *update = window->findChild<QTimer *>(u"tmrUpdate"_s);
    // A screen reader's press opens the monitor panel as a click does.
    QAccessible::queryAccessibleInterface(button("cmdMonitor"))
        ->actionInterface()
        ->doAction(QAccessibleActionInterface::pressAction());
    ASSERT_TRUE(waitUntil([&] { return child<QWidget>("monitorPanel")->isVisible(); }, Wait));
    EXPECT_GT(window->height(), height);
    EXPECT_TRUE(update->isActive());
    // Fields and bars are named by their captions or for themselves; values are tied to their captions.
    expectAccessibleNames(window);
    for (QWidget *bar : window->findChildren<QProgressBar *>())
        EXPECT_FALSE(QAccessible::queryAccessibleInterface(bar)->text(QAccessible::Name).isEmpty())
            << bar->objectName().toStdString();
    for (QLabel *value : window->findChildren<QLabel *>()) {
        if (value->objectName().isEmpty() || !value->accessibleName().isEmpty() || !value->text().isEmpty())
            continue;
        const auto labelledBy = QAccessible::queryAccessibleInterface(value)->relations(QAccessible::Label);
        ASSERT_FALSE(labelledBy.isEmpty()) << value->objectName().toStdString();
        EXPECT_FALSE(labelledBy.first().first->text(QAccessible::Name).isEmpty());
    }
    button("cmdMonitor")->click();
    EXPECT_EQ(window->height(), height);
    EXPECT_FALSE(update->isActive());
    dialogAnswer = u"/music/chosen.mp3"_s;
    button("btSave")->click();
    EXPECT_EQ(dialogShownWith, u".\\%STATION%_%DATE%_%TIME%.mp3"_s) << "the default template";
    dialogAnswer.clear();
    button("btSave")->click();
    EXPECT_EQ(edit("txtSave")->text(), u"/music/chosen.mp3"_s);
}

// Run on a 1366 x 768 screen, and at scale 2 on 1600 x 1000 (see CMakeLists.txt).
TEST_F(RecorderWindow, FitsTheScreenWithItsMonitorAndComesBackAsItWasLeft)
{
    open();
    window->show();
    const QRect screen = window->screen()->availableGeometry();
    button("cmdMonitor")->click();
    EXPECT_TRUE(child<QWidget>("monitorPanel")->isVisibleTo(window));
    EXPECT_TRUE(screen.contains(window->frameGeometry()));
    for (const char *name : {"cmdRecord", "cmdMonitor", "cmdSchedule", "cmdStations"}) {
        const QRect at(button(name)->mapTo(window.data(), QPoint(0, 0)), button(name)->size());
        EXPECT_TRUE(window->rect().contains(at)) << name;
    }
    // What does not fit scrolls; the monitor's last line is within reach.
    auto *details = child<QScrollArea>("recorderScroll");
    details->ensureWidgetVisible(child<QWidget>("txtMeta"));
    EXPECT_TRUE(child<QWidget>("txtMeta")->visibleRegion().boundingRect().height() > 0);
    window->setGeometry(QRect(screen.topLeft() + QPoint(30, 40), window->size() - QSize(0, 60)));
    const QSize size = window->size();
    window->close();
    open();
    window->show();
    EXPECT_TRUE(button("cmdMonitor")->isChecked()) << "the monitor as it was left";
    EXPECT_EQ(window->size(), size);
    button("cmdMonitor")->click();
    EXPECT_LE(window->height(), size.height());
    EXPECT_FALSE(child<QWidget>("monitorPanel")->isVisibleTo(window));
}

} // namespace
