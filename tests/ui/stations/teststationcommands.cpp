#include "support/stationwindow.h"

#include "app/accessibility.h"
#include "app/frmsettings.h"
#include "base/apppaths.h"
#include "base/settingsstore.h"
#include "controls/lynxgrid.h"
#include "controls/schemebutton.h"
#include "directory/websearch.h"
#include "support/eventwait.h"
#include "support/icyserver.h"
#include "ui/player/frmlisten.h"
#include "ui/recorder/frmtc.h"
#include "ui/skin/frmskin2.h"
#include "ui/stations/userguide.h"

#include <QAccessible>
#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QContextMenuEvent>
#include <QDialogButtonBox>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QMenuBar>
#include <QPointer>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

constexpr int wait = 10000;

class CommandsTest : public StationWindowTest
{
public:
    // The recorder windows open now, in no particular order.
    static QList<FrmTC *> recorders()
    {
        QList<FrmTC *> open;
        for (QWidget *shown : QApplication::topLevelWidgets()) {
            if (auto *recorder = qobject_cast<FrmTC *>(shown); recorder && recorder->isVisible())
                open << recorder;
        }
        return open;
    }
    // Clicks a button and waits until the timer it starts has ticked.
    void clickAndTick(const char *button, const char *timerName)
    {
        click(button);
        auto *timer = window->findChild<QTimer *>(QLatin1StringView(timerName));
        EXPECT_TRUE(waitUntil([timer] { return !timer->isActive(); }, wait));
    }
    void record() { clickAndTick("cmdRecord", "TimerRecord"); }
    static void dropClosedWindows() { QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete); }
    void SetUp() override
    {
        StationWindowTest::SetUp();
        // Modal dialogs are answered by the test instead of a modal loop.
        runModal = [this](QDialog &dialog) {
            EXPECT_TRUE(dialog.isModal());
            EXPECT_EQ(dialog.parentWidget(), window.get());
            modalTitles << dialog.windowTitle();
            if (modalAnswer)
                modalAnswer(dialog);
            return dialog.result();
        };
    }
    // Clicks Listen or Replay; gives the listening window it opened, if any.
    FrmListen *listen(const char *button)
    {
        const QList<FrmListen *> before = window->findChildren<FrmListen *>();
        clickAndTick(button, "TimerListen");
        for (FrmListen *opened : window->findChildren<FrmListen *>()) {
            if (!before.contains(opened))
                return opened;
        }
        return nullptr;
    }
    std::function<void(QDialog &)> modalAnswer;
    QStringList modalTitles;

    // The station form's answer: fields set by their names, then OK.
    static std::function<void(QDialog &)> fillForm(const QList<std::pair<const char *, QString>> &fields)
    {
        return [fields](QDialog &form) {
            for (const auto &[name, text] : fields) {
                QWidget *field = form.findChild<QWidget *>(QLatin1StringView(name));
                if (auto *line = qobject_cast<QLineEdit *>(field))
                    line->setText(text);
                else if (auto *combo = qobject_cast<QComboBox *>(field))
                    combo->setCurrentText(text);
                else
                    ADD_FAILURE() << name;
            }
            form.findChild<QDialogButtonBox *>()->button(QDialogButtonBox::Ok)->click();
        };
    }
    // The texts of a menu's entries, without their access keys.
    static QString entries(const QMenu &menu)
    {
        QStringList texts;
        for (const QAction *action : menu.actions())
            texts << action->text().remove(u'&');
        return texts.join(u',');
    }
    QAction *action(const char *name) const { return child<QAction>(name); }
    // A right click at the middle of a row, or below the rows when row is -1.
    void rightClick(int row)
    {
        QWidget *viewport = grid->viewport();
        const QPoint at(40, row < 0 ? viewport->height() - 3 : grid->RowTop(row) + grid->RowHeight() / 2);
        QContextMenuEvent event(QContextMenuEvent::Mouse, at, viewport->mapToGlobal(at));
        QApplication::sendEvent(viewport, &event);
    }
};

TEST(FileTitle, IsThePartAfterTheLastSeparatorOfEitherKind)
{
    const std::pair<QString, QString> rows[] = {{u"C:\\Data\\Rec\\take.mp3"_s, u"take.mp3"_s},
                                                {u"/home/u/Rec/my take.mp3"_s, u"my take.mp3"_s},
                                                {u"/home/u/odd\\name.mp3"_s, u"name.mp3"_s},
                                                {u"C:\\Rec/take.mp3"_s, u"take.mp3"_s},
                                                {u"Rec\\"_s, QString()},
                                                {u"take.mp3"_s, u"take.mp3"_s}};
    for (const auto &[path, title] : rows)
        EXPECT_EQ(StationCommands::fileTitle(path), title) << path.toStdString();
}

TEST_F(CommandsTest, RecordFillsANewIndependentRecorderWindowFromTheRow)
{
    writeCatalogue(catalogue5 + u"Silent|Talk|64|mp3|News|o|False|1||||i\r\n"_s);
    ASSERT_NO_FATAL_FAILURE(open());
    record();
    EXPECT_EQ(prompt.texts(), QStringList{StationCommands::recordNoStation()});
    // A station without an address opens nothing and says nothing.
    grid->GotoCell(5, 1);
    record();
    EXPECT_TRUE(recorders().isEmpty());
    EXPECT_EQ(prompt.shown.size(), 1);
    // The row as shown, also a cell not yet written back, is what the recorder gets.
    grid->GotoCell(0, 1);
    grid->setCellText(0, pos(Col::ColStation), u"Rock Two"_s);
    record();
    EXPECT_EQ(state->catalogue.at(1).Name, u"Rock Two"_s);
    ASSERT_EQ(recorders().size(), 1);
    QPointer<FrmTC> first = recorders().at(0);
    grid->GotoCell(1, 1);
    record();
    ASSERT_EQ(recorders().size(), 2);
    QPointer<FrmTC> second = recorders().at(recorders().at(0) == first ? 1 : 0);
    // Name, stream, save pattern and single song, as each window shows them.
    const auto filled = [](FrmTC *recorder) {
        const auto text = [recorder](const char *name) {
            return recorder->findChild<QLineEdit *>(QLatin1StringView(name))->text();
        };
        return QStringList{
            recorder->findChild<QLabel *>(u"LblStation"_s)->text(), text("txtStream"), text("txtSave"),
            recorder->findChild<QCheckBox *>(u"chkSingleSong"_s)->isChecked() ? u"1"_s : u""_s};
    };
    EXPECT_EQ(filled(first).join(u'|'), u"Rock Two|http://127.0.0.1:8000/a|.\\%STATION%.mp3|1"_s);
    EXPECT_EQ(filled(second).join(u'|'), u"Classic Hits|http://127.0.0.1:8000/b|o|"_s);
    // A recorder window's closing is its own; the main window's closing closes them all.
    first->close();
    dropClosedWindows();
    EXPECT_TRUE(first.isNull());
    EXPECT_FALSE(windows.ended);
    EXPECT_EQ(recorders().size(), 1);
    window->close();
    EXPECT_TRUE(windows.ended);
    dropClosedWindows();
    EXPECT_TRUE(second.isNull());
}

TEST_F(CommandsTest, ARecordingStartedFromTheListIsCompleteWhenTheListCloses)
{
    IcyServer server;
    ASSERT_TRUE(server.start());
    server.songs = {{"Artist - Song", 1000}};
    writeCatalogue(u"Loop|Test|128|mp3|Rock|.\\%STATION%_rec.mp3|False|3|||"_s + server.url() + u"|i\r\n"_s);
    // Without tags the file begins with the station's bytes.
    SettingsStore::saveBoolean(SettingsStore::WriteTags, false);
    QDir().mkpath(AppPaths::recordingsFolder());
    ASSERT_NO_FATAL_FAILURE(open());
    grid->GotoCell(0, 1);
    record();
    ASSERT_EQ(recorders().size(), 1);
    QPointer<FrmTC> recorder = recorders().at(0);
    recorder->findChild<QPushButton *>(u"cmdRecord"_s)->click();
    ASSERT_TRUE(waitUntil([&] { return recorder->stream().BytesTotal() >= 4.0 * server.metaInt; }, wait));
    window->close();
    ASSERT_FALSE(recorder.isNull()) << "closed, not yet deleted";
    EXPECT_FALSE(recorder->Recording());
    const QByteArray written = TempProfile::readFile(AppPaths::recordingsFolder() + u"Loop_rec.mp3"_s);
    EXPECT_EQ(written.size(), qint64(recorder->output().bytesWritten()));
    EXPECT_GE(written.size(), 4 * server.metaInt);
    EXPECT_TRUE(written.startsWith(server.sent(0).audio.left(server.metaInt)));
}

TEST_F(CommandsTest, CopyAddsTheRowAsALastStationAndClosingSavesIt)
{
    ASSERT_NO_FATAL_FAILURE(open());
    click("cmdCopy");
    EXPECT_EQ(grid->ItemCount(), 5) << "no current row, no copy";
    grid->GotoCell(4, pos(Col::ColGenre));
    click("cmdCopy");
    ASSERT_EQ(grid->ItemCount(), 6);
    EXPECT_EQ(grid->Row(), 5);
    EXPECT_EQ(grid->ItemData(5), 6);
    for (int col = 0; col < grid->Cols(); ++col) {
        EXPECT_EQ(grid->CellText(5, col), grid->CellText(4, col)) << col;
        EXPECT_EQ(grid->CellChecked(5, col), grid->CellChecked(4, col)) << col;
    }
    EXPECT_TRUE(state->catalogue.dirty);
    window->close();
    EXPECT_EQ(
        catalogueText().count(u"Rockabilly|Country|128|mp3|Oldies|o|False|3|||http://127.0.0.1:8000/e|i"_s),
        2);
}

TEST_F(CommandsTest, DeleteAsksByNameAndRightShiftDeletesAllWithoutMarkingTheListChanged)
{
    ASSERT_NO_FATAL_FAILURE(open());
    click("cmdDel");
    EXPECT_TRUE(prompt.shown.isEmpty()) << "no current row, no question";
    grid->GotoCell(2, 1);
    prompt.answers = {false, true};
    click("cmdDel", leftShiftKey); // the left key is no Delete ALL
    EXPECT_EQ(grid->ItemCount(), 5);
    click("cmdDel");
    ASSERT_EQ(prompt.shown.size(), 2);
    EXPECT_EQ(prompt.shown[1].text, StationCommands::deleteQuestion(u"Jazz Cafe"_s));
    EXPECT_EQ(prompt.shown[1].byDefault, Prompt::Answer::No);
    EXPECT_EQ(shown(), u"Rock One,Classic Hits,Talk Radio,Rockabilly"_s);
    EXPECT_TRUE(state->catalogue.dirty);
    // The record stays until the file is written: a refill shows it again.
    filter("", "", "", "");
    EXPECT_EQ(shown(), allFive);
    window->close();
    EXPECT_FALSE(catalogueText().contains(u"Jazz Cafe"_s));
    EXPECT_EQ(catalogueText().count(u"\r\n"_s), 8);
    // Delete ALL after an edit and a sort leaves the file as it was.
    writeCatalogue(catalogue5);
    const QString five = catalogueText();
    ASSERT_NO_FATAL_FAILURE(open());
    editText(1, Col::ColStation, u"Classic Gold"_s);
    grid->Sort(pos(Col::ColStation));
    prompt.answers = {false, true};
    click("cmdDel", rightShiftKey);
    EXPECT_EQ(grid->ItemCount(), 5) << "answered No";
    click("cmdDel", rightShiftKey);
    EXPECT_EQ(prompt.shown.last().text, StationCommands::deleteAllQuestion());
    EXPECT_EQ(prompt.shown.last().byDefault, Prompt::Answer::No);
    EXPECT_EQ(grid->ItemCount(), 0);
    EXPECT_EQ(state->catalogue.stationCount(), 0);
    EXPECT_EQ(grid->sortColumn(), -1);
    window->close();
    EXPECT_EQ(catalogueText(), five);
    // Another change made before it still saves: the emptied list.
    writeCatalogue(catalogue5);
    ASSERT_NO_FATAL_FAILURE(open());
    grid->GotoCell(0, 0);
    click("cmdCopy");
    prompt.answers = {true};
    click("cmdDel", rightShiftKey);
    window->close();
    EXPECT_EQ(catalogueText().split(u"\r\n"_s, Qt::SkipEmptyParts).size(), 4) << "no station line";
}

TEST_F(CommandsTest, InfoSearchWebAndAboutOpenTheirAddressesThroughTheShell)
{
    // Not the last line, whose InfoUrl keeps the file's final CR.
    writeCatalogue(
        u"A|Pop|128|mp3|Rock|o|False|3|||http://a|http://a.example/?x=1&y=2\r\n"
        "B|Pop|128|mp3|Rock|o|False|3|||http://b|i\r\nC|Pop|128|mp3|Rock|o|False|3|||http://c|i\r\n"_s);
    ASSERT_NO_FATAL_FAILURE(open());
    click("cmdInfo");
    grid->GotoCell(1, 1);
    click("cmdInfo");
    EXPECT_TRUE(shell.opened.isEmpty()) << "no row; a one-character address";
    grid->GotoCell(0, 1);
    click("cmdInfo", rightShiftKey); // no key of the station check
    EXPECT_EQ(shell.opened, QStringList{u"http://a.example/?x=1&y=2"_s});
    shell.opened.clear();
    qputenv(WebSearch::hostVariable, "http://directory.test");
    click("cmdSearchWww");
    child<QLineEdit>("txtSearch")->setText(u"smooth jazz"_s);
    child<QComboBox>("cmbGenre")->setCurrentText(u"Jazz"_s);
    click("cmdSearchWww");
    qunsetenv(WebSearch::hostVariable);
    EXPECT_EQ(shell.opened,
              QStringList{WebSearch::searchAddress(u"http://directory.test"_s, u"smooth jazz"_s, u"Jazz"_s)});
    shell.opened.clear();
    modalAnswer = [](QDialog &about) {
        for (const char *link : {"lnkData", "lnkRec"}) {
            auto *label = about.findChild<QLabel *>(QLatin1StringView(link));
            emit label->linkActivated(label->text().section(u'"', 1, 1));
        }
    };
    click("cmdAbout");
    EXPECT_EQ(shell.opened, QStringList({QUrl::fromLocalFile(AppPaths::dataFolder()).toString(),
                                         QUrl::fromLocalFile(AppPaths::recordingsFolder()).toString()}));
}

TEST_F(CommandsTest, ListenAndReplayOpenAListeningWindowWhenTheirTimerTicks)
{
    writeCatalogue(catalogue5 + u"Silent|Talk|64|mp3|News|o|False|1||||i\r\n"_s);
    ASSERT_NO_FATAL_FAILURE(open());
    EXPECT_EQ(listen("cmdListen"), nullptr);
    EXPECT_EQ(prompt.texts(), QStringList{StationCommands::listenNoStation()});
    grid->GotoCell(5, 1);
    EXPECT_EQ(listen("cmdListen"), nullptr) << "no address, nothing to open";
    EXPECT_EQ(prompt.shown.size(), 1);
    // The row as shown is written back first and names the window.
    grid->GotoCell(2, 1);
    grid->setCellText(2, pos(Col::ColStation), u"Jazz Cafe Two"_s);
    FrmListen *station = listen("cmdListen");
    ASSERT_NE(station, nullptr);
    EXPECT_EQ(state->catalogue.at(3).Name, u"Jazz Cafe Two"_s);
    EXPECT_TRUE(station->isVisible());
    EXPECT_EQ(station->ListenRow, 2);
    EXPECT_EQ(station->windowTitle(), u"Connecting to: Jazz Cafe Two"_s);
    EXPECT_EQ(station->MPlayer().URL(), u"http://127.0.0.1:8000/c"_s);
    // Replay starts in the recordings folder; the listen row is back at -1.
    EXPECT_EQ(listen("cmdReplay"), nullptr) << "cancelled";
    const QString recording = AppPaths::recordingsFolder() + u"Jazz Cafe_take 1.mp3"_s;
    prompt.files = {recording};
    FrmListen *file = listen("cmdReplay");
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(prompt.fileFolders, QStringList(2, AppPaths::recordingsFolder()));
    EXPECT_EQ(file->ListenRow, ListenSession::FileRow);
    EXPECT_EQ(file->windowTitle(), u"Playing: Jazz Cafe_take 1.mp3"_s);
    EXPECT_EQ(file->MPlayer().URL(), recording);
}

TEST_F(CommandsTest, SkinOpensTheChooserOverTheWindowAndItsChoiceRecoloursIt)
{
    ASSERT_NO_FATAL_FAILURE(open());
    modalAnswer = [](QDialog &dialog) {
        ASSERT_NE(qobject_cast<FrmSkin2 *>(&dialog), nullptr);
        dialog.findChild<QComboBox *>(u"cmbTheme"_s)->setCurrentIndex(cSkinParam::PaleBlue);
        dialog.findChild<QListWidget *>(u"List1"_s)->setCurrentRow(0);
        dialog.findChild<QPushButton *>(u"cmdOk"_s)->click();
    };
    click("cmdSkin");
    EXPECT_EQ(modalTitles, QStringList{u"Select a Skin"_s});
    EXPECT_EQ(window->palette().color(QPalette::Window),
              QColor::fromRgba(Themes::paleBlue().window));
}

TEST_F(CommandsTest, PlaylistImportReadsTheChosenFilesFolderKeepingEditsAndRefills)
{
    const QString folder = profile.root() + u"/playlists/"_s;
    QDir().mkpath(folder);
    const auto entry = [](const char *file, const char *title) -> QByteArray {
        return QByteArray("[playlist]\nNumberOfEntries=1\nFile1=") + file + "\nTitle1=" + title + '\n';
    };
    TempProfile::writeFile(folder + u"Smooth Jazz (128).pls"_s,
                           entry("http://10.0.0.1/jazz", "(#1 - 5/9) Smooth: Jazz"));
    TempProfile::writeFile(folder + u"no bit rate.pls"_s, entry("http://10.0.0.1/talk", "Talk"));
    TempProfile::writeFile(folder + u"empty.pls"_s, "[playlist]\nNumberOfEntries=0\n");
    TempProfile::writeFile(folder + u"known_64.pls"_s,
                           entry("HTTP://127.0.0.1:8000/A", "Known by its address"));
    ASSERT_NO_FATAL_FAILURE(open());
    click("cmdLoadPls");
    EXPECT_EQ(grid->ItemCount(), 5) << "cancelled";
    // A deletion renumbers the stations at the reload; the edit must stay with its station.
    grid->GotoCell(1, 1);
    prompt.answers = {true};
    click("cmdDel");
    grid->setCellText(2, pos(Col::ColStation), u"Talk Radio Two"_s);
    grid->setCellChanged(2, pos(Col::ColStation), true);
    prompt.files = {folder + u"Smooth Jazz (128).pls"_s};
    click("cmdCopy", leftShiftKey);
    EXPECT_EQ(prompt.fileFolders, QStringList(2, QString()));
    EXPECT_EQ(shown().section(u',', 0, 3), u"Rock One,Jazz Cafe,Talk Radio Two,Rockabilly"_s);
    QStringList imported; // in the file system's order
    for (int row = 4; row < grid->ItemCount(); ++row) {
        for (const Col column : {Col::ColStation, Col::ColBit, Col::ColGenre, Col::ColStreamUrl})
            imported << grid->CellText(row, pos(column));
    }
    if (imported.value(0) == u"Talk")
        std::rotate(imported.begin(), imported.begin() + 4, imported.end());
    EXPECT_EQ(imported.join(u'|'), u"Smooth Jazz|128|Smooth Jazz (128).pls|http://10.0.0.1/jazz|"
                                   "Talk||Smooth Jazz (128).pls|http://10.0.0.1/talk"_s);
    EXPECT_FALSE(state->catalogue.dirty) << "saved by the import";
    const QString saved = catalogueText();
    EXPECT_TRUE(saved.contains(u"\nTalk Radio Two|Talk|"_s));
    EXPECT_FALSE(saved.contains(u"Classic Hits"_s));
    window->close();
    EXPECT_EQ(catalogueText(), saved) << "nothing left to save at closing";
}

TEST_F(CommandsTest, ImportedListsAddTheirNewStationsSelectedOrChangeNothing)
{
    const QString folder = profile.root() + u"/lists/"_s;
    TempProfile::writeFile(folder + u"Jazz Picks.m3u"_s, "#EXTM3U\n"
                                                         "#EXTINF:-1,Jazz Cafe again\n"
                                                         "http://127.0.0.1:8000/c\n"
                                                         "#EXTINF:-1,Blue | Note\n"
                                                         "http://blue.example/live\n"
                                                         "music/local.mp3\n"
                                                         "#EXTINF:-1,Night Owls\n"
                                                         "https://owls.example/\n");
    TempProfile::writeFile(folder + u"noise.pls"_s, QByteArray("\x7f\x45\x4c\x46\x02\x01\x01\0\0\0", 10));
    ASSERT_NO_FATAL_FAILURE(open());
    QAction *import = window->findChild<QAction *>(u"actImportStations"_s);
    prompt.files = {folder + u"noise.pls"_s, folder + u"Jazz Picks.m3u"_s};
    import->trigger();
    ASSERT_EQ(prompt.shown.size(), 1);
    EXPECT_TRUE(prompt.shown[0].text.contains(u"not a station list"_s)) << prompt.shown[0].text.toStdString();
    EXPECT_EQ(grid->ItemCount(), 5);
    EXPECT_FALSE(state->catalogue.dirty);

    import->trigger();
    EXPECT_EQ(prompt.shown.value(1).text,
              u"Stations added: 2; already in the catalogue: 1; without an internet stream address: 1."_s);
    EXPECT_EQ(shown().section(u',', 5), u"Blue +- Note,Night Owls"_s);
    EXPECT_EQ(shown(Col::ColCategory).section(u',', 5), u"Jazz Picks,Jazz Picks"_s);
    EXPECT_EQ(grid->Row(), 5);
    EXPECT_EQ(grid->SelectedCount(), 2);
    EXPECT_TRUE(state->catalogue.dirty);
}

TEST_F(CommandsTest, TheStationsShownOrSelectedAreExportedInTheFormatTheFileNameAsks)
{
    QStringList answers;
    chooseSaveFile = [&answers](const QString &, const QString &) { return answers.takeFirst(); };
    ASSERT_NO_FATAL_FAILURE(open());
    const QString folder = profile.root() + u"/"_s;
    const auto exportTo = [&](const char *action, const QString &name) {
        answers = {name.isEmpty() ? QString() : folder + name};
        window->findChild<QAction *>(QLatin1StringView(action))->trigger();
        return QString::fromUtf8(TempProfile::readFile(folder + name));
    };
    filter("Rock", "", "", "");
    EXPECT_EQ(exportTo("actExportStations", u"shown.pls"_s), u"[playlist]\n"
                                                             "File1=http://127.0.0.1:8000/a\n"
                                                             "Title1=Rock One\n"
                                                             "Length1=-1\n"
                                                             "File2=http://127.0.0.1:8000/b\n"
                                                             "Title2=Classic Hits\n"
                                                             "Length2=-1\n"
                                                             "NumberOfEntries=2\n"
                                                             "Version=2\n"_s);
    grid->GotoCell(1, 1);
    EXPECT_EQ(exportTo("actExportSelected", u"picked.m3u8"_s), u"#EXTM3U\n"
                                                               "#EXTINF:-1,Classic Hits\n"
                                                               "http://127.0.0.1:8000/b\n"_s);
    EXPECT_TRUE(exportTo("actExportStations", {}).isEmpty()) << "cancelled";
    EXPECT_TRUE(prompt.shown.isEmpty());
    exportTo("actExportStations", u"missing/folder.xspf"_s);
    ASSERT_EQ(prompt.shown.size(), 1);
    EXPECT_TRUE(prompt.shown[0].text.startsWith(u"Could not write folder.xspf"_s));
    filter("", "", "TV", "");
    window->findChild<QAction *>(u"actExportStations"_s)->trigger();
    EXPECT_EQ(prompt.shown.value(1).text, u"The list shows no stations to export."_s);
}

TEST_F(CommandsTest, TrimStartsTheToolWithTheQuotedRecordingOrSaysItCouldNot)
{
    // A tool that writes down its arguments, one per line.
    const QString tool = profile.installFolder() + u"/trim tool.sh"_s;
    const QString out = profile.root() + u"/args.txt"_s;
    TempProfile::writeFile(tool, "#!/bin/sh\nprintf '%s\\n' \"$@\" > \"$0.tmp\" && mv \"$0.tmp\" '" +
                                     out.toUtf8() + "'\n");
    QFile::setPermissions(tool, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    state->trimTool.command = u"\"%APP%/trim tool.sh\" -x %MP3FILE%"_s;
    ASSERT_NO_FATAL_FAILURE(open());
    click("cmdTrim");
    const QString recording = AppPaths::recordingsFolder() + u"my song's take.mp3"_s;
    prompt.files = {recording};
    click("cmdTrim");
    ASSERT_TRUE(waitUntil([&out] { return QFile::exists(out); }, wait));
    EXPECT_EQ(QString::fromUtf8(TempProfile::readFile(out)), u"-x\n"_s + recording + u'\n');
    EXPECT_EQ(prompt.fileFolders, QStringList(2, AppPaths::recordingsFolder()));
    EXPECT_TRUE(prompt.shown.isEmpty());
    state->trimTool.command = TrimTool::defaultCommand;
    prompt.files = {recording};
    click("cmdTrim");
    ASSERT_EQ(prompt.shown.size(), 1);
    EXPECT_EQ(prompt.shown[0].text,
              StationCommands::trimNotStarted(profile.installFolder() +
                                              u"\\mp3Tools\\mp3DirectCut\\mp3DirectCut.exe \""_s + recording +
                                              u'"'));
}

TEST_F(CommandsTest, ScreenReadersFindWindowsByRoleAndFieldsByTheirNames)
{
    Accessibility::install();
    ASSERT_NO_FATAL_FAILURE(open());
    const auto iface = [](QObject *object) { return QAccessible::queryAccessibleInterface(object); };
    EXPECT_EQ(iface(window.get())->role(), QAccessible::Window);
    FrmSettings settings(state->trimTool, window.get());
    EXPECT_EQ(iface(&settings)->role(), QAccessible::Dialog);
    // A set name, a buddy label, the themed panel's caption and the accent button's caption.
    const std::pair<const char *, QString> names[] = {{"txtSearch", u"Search stations"_s},
                                                      {"cmbGenre", u"Genre"_s},
                                                      {"fraFilter", u"Filter"_s},
                                                      {"cmdRecord", u"Record"_s}};
    for (const auto &[name, expected] : names)
        EXPECT_EQ(iface(child(name))->text(QAccessible::Name), expected) << name;
    EXPECT_TRUE(child<SchemeButton>("cmdRecord")->isAccent());
}

TEST_F(CommandsTest, AddAndEditGoThroughTheFormAndClosingSavesThem)
{
    ASSERT_NO_FATAL_FAILURE(open());
    activate();
    filter("Jazz", "", "", "");
    modalAnswer = fillForm({{"txtName", u"New Wave FM"_s},
                            {"txtStreamUrl", u"http://new.example:8000/live"_s},
                            {"cboGenre", u"Pop"_s},
                            {"cboCategory", u"Waves"_s}});
    QTest::keyClick(grid, Qt::Key_Insert);
    EXPECT_EQ(modalTitles, QStringList{u"Add a Station"_s});
    // The filters hid it: they are cleared, and the new station is the current row.
    EXPECT_EQ(shown(), allFive + u",New Wave FM"_s);
    EXPECT_EQ(grid->Row(), 5);
    EXPECT_EQ(grid->ItemData(5), 6);
    EXPECT_TRUE(state->filters.genre.isEmpty());
    EXPECT_EQ(child<QComboBox>("cmbGenre")->currentIndex(), 0);
    EXPECT_GE(child<QComboBox>("cmbCategory")->findText(u"Waves"_s), 0)
        << "the filter offers the new category";
    EXPECT_TRUE(state->catalogue.dirty);

    // Edit: the row as shown goes into the form; a cancelled form changes nothing.
    grid->GotoCell(2, 1);
    grid->setCellText(2, pos(Col::ColLastDate), u"2030-01-01"_s);
    modalAnswer = [](QDialog &form) { form.reject(); };
    QTest::keyClick(grid, Qt::Key_E, Qt::ControlModifier);
    EXPECT_EQ(modalTitles.last(), u"Edit Station: Jazz Cafe"_s);
    EXPECT_EQ(grid->CellText(2, pos(Col::ColGenre)), u"Jazz"_s);
    modalAnswer = fillForm({{"cboGenre", u"Smooth Jazz"_s}, {"txtBitRate", u"192"_s}});
    action("actEdit")->trigger();
    EXPECT_EQ(grid->CellText(2, pos(Col::ColGenre)), u"Smooth Jazz"_s);
    EXPECT_EQ(grid->CellText(2, pos(Col::ColBit)), u"192"_s);
    EXPECT_EQ(state->catalogue.at(3).LastDate, u"2030-01-01"_s) << "what the form does not show stays";
    window->close();
    const QString file = catalogueText();
    EXPECT_TRUE(file.contains(u"\nJazz Cafe|Smooth Jazz|192|ogg|Lounge|"_s));
    EXPECT_TRUE(file.contains(u"\nNew Wave FM|Pop||mp3|Waves|"_s));
    EXPECT_TRUE(file.contains(u"|http://new.example:8000/live|"_s));
}

TEST_F(CommandsTest, EditWithoutARowSaysSoAndARefusedFormAddsNothing)
{
    ASSERT_NO_FATAL_FAILURE(open());
    action("actEdit")->trigger();
    EXPECT_EQ(prompt.texts(), QStringList{StationCommands::editNoStation()});
    EXPECT_TRUE(modalTitles.isEmpty());
    // OK on a name holding the list's separator keeps the form open; the user gives up.
    modalAnswer = [](QDialog &form) {
        fillForm({{"txtName", u"Bad | Name"_s}, {"txtStreamUrl", u"http://bad.example/"_s}})(form);
        EXPECT_TRUE(form.findChild<QLabel *>(u"lblProblem"_s)->isVisibleTo(&form));
        form.reject();
    };
    action("actAdd")->trigger();
    EXPECT_EQ(state->catalogue.stationCount(), 5);
    EXPECT_FALSE(state->catalogue.dirty);
}

TEST_F(CommandsTest, TheMenusOfARowAndOfTheEmptyAreaReachTheSameCommands)
{
    ASSERT_NO_FATAL_FAILURE(open());
    rightClick(1);
    EXPECT_EQ(grid->Row(), 1) << "the row clicked becomes current";
    EXPECT_TRUE(window->rowMenu().isVisible());
    EXPECT_EQ(entries(window->rowMenu()),
              u"Play,Listen,Record,Schedule...,Copy,Edit...,Delete...,Information"_s);
    window->rowMenu().close();
    // Each entry is the command itself.
    action("actCopy")->trigger();
    EXPECT_EQ(grid->ItemCount(), 6);
    grid->GotoCell(0, 1);
    action("actSchedule")->trigger();
    EXPECT_TRUE(waitUntil([&] { return !scheduled.isEmpty(); }, wait));
    EXPECT_EQ(scheduled, QStringList{u"Rock One"_s});
    EXPECT_EQ(recorders().size(), 1) << "filled as Record fills it";
    action("actPlay")->trigger();
    EXPECT_EQ(players.first()->URL(), u"http://127.0.0.1:8000/a"_s);

    rightClick(-1);
    EXPECT_TRUE(window->gridMenu().isVisible());
    EXPECT_EQ(entries(window->gridMenu()), u"Add...,Directory...,Load PLS...,Check all stations"_s);
    window->gridMenu().close();
    action("actLoadPls")->trigger();
    EXPECT_EQ(prompt.fileFolders.size(), 1) << "the playlist import asked for its file";
    // The menu key opens the current row's menu.
    QContextMenuEvent menuKey(QContextMenuEvent::Keyboard, QPoint(5, 5), grid->mapToGlobal(QPoint(5, 5)));
    QApplication::sendEvent(grid, &menuKey);
    EXPECT_TRUE(window->rowMenu().isVisible());
    window->rowMenu().close();
}

TEST_F(CommandsTest, EveryCommandHasATipAMenuEntryAndItsKey)
{
    const QString readme = profile.installFolder() + u"/README.md"_s;
    TempProfile::writeFile(readme,
                           "# Tunecatch\n\n## Adding a station\n\n![The form](docs/images/form.png)\n");
    ASSERT_NO_FATAL_FAILURE(open());
    // Every command button says what it does and what a modifier key makes of it.
    QStringList inMenus;
    for (const QAction *menu : window->findChild<QMenuBar *>()->actions()) {
        for (const QAction *entry : menu->menu()->actions())
            inMenus << entry->toolTip();
    }
    const auto buttons = window->findChildren<SchemeButton *>();
    ASSERT_GE(buttons.size(), 15);
    for (const SchemeButton *button : buttons) {
        SCOPED_TRACE(button->objectName().toStdString());
        EXPECT_TRUE(button->toolTip().startsWith(button->text() + u": "));
        if (button->parentWidget()->objectName() == u"GFXOption") {
            EXPECT_TRUE(inMenus.contains(button->toolTip())) << "found in a menu as well";
        }
    }
    EXPECT_TRUE(child("cmdCopy")->toolTip().contains(u"Left Shift: import a playlist."_s));
    EXPECT_TRUE(child("cmdDel")->toolTip().contains(u"Right Shift: delete all stations."_s));
    EXPECT_TRUE(child("cmdInfo")->toolTip().contains(u"Left Shift"_s));
    EXPECT_TRUE(child("cmdInfo")->toolTip().contains(u"Left Ctrl"_s));
    const std::pair<const char *, const char *> shortcuts[] = {
        {"actAdd", "Ins"},     {"actEdit", "Ctrl+E"}, {"actDelete", "Del"},       {"actPlay", "Enter"},
        {"actFind", "Ctrl+F"}, {"actGuide", "F1"},    {"actDirectory", "Ctrl+D"}, {"actHistory", "Ctrl+H"}};
    for (const auto &[name, key] : shortcuts)
        EXPECT_EQ(action(name)->shortcut().toString(), QLatin1StringView(key)) << name;
    // The Lists button drops down the List menu's own submenu.
    QMenu *lists = action("actLists")->menu();
    ASSERT_NE(lists, nullptr);
    EXPECT_EQ(child<SchemeButton>("cmdLists")->menu(), lists);
    EXPECT_EQ(entries(*lists),
              u"Import Stations...,Export the Stations Shown...,Export the Selected Stations..."_s);

    // The keys themselves.
    activate();
    QTest::keyClick(grid, Qt::Key_F, Qt::ControlModifier);
    EXPECT_TRUE(child("txtSearch")->hasFocus());
    QTest::keyClick(child("txtSearch"), Qt::Key_Delete);
    EXPECT_TRUE(prompt.shown.isEmpty()) << "Delete in the search box is the box's";
    grid->setFocus();
    grid->GotoCell(3, 1);
    QTest::keyClick(grid, Qt::Key_Return);
    EXPECT_EQ(players.first()->URL(), u"http://127.0.0.1:8000/d"_s);
    EXPECT_FALSE(grid->isEditing());
    QTest::keyClick(grid, Qt::Key_Delete);
    ASSERT_EQ(prompt.shown.size(), 1);
    EXPECT_EQ(prompt.shown[0].text, StationCommands::deleteQuestion(u"Talk Radio"_s));
    EXPECT_EQ(prompt.shown[0].byDefault, Prompt::Answer::No);
    QTest::keyClick(grid, Qt::Key_F1);
    const QString page = AppPaths::dataFolder() + UserGuide::pageFile;
    EXPECT_EQ(shell.opened, QStringList{QUrl::fromLocalFile(page).toString()});
    const QString html = QString::fromUtf8(TempProfile::readFile(page));
    EXPECT_TRUE(html.contains(u"Adding a station"_s));
    EXPECT_TRUE(html.contains(u"<base href=\""_s + QUrl::fromLocalFile(profile.installFolder()).toString()));
    QFile::remove(readme);
    QTest::keyClick(grid, Qt::Key_F1);
    EXPECT_EQ(shell.opened.size(), 1);
    EXPECT_TRUE(prompt.shown.last().text.contains(u"README.md"_s));
}

} // namespace
