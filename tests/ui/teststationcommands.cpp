#include "stationwindow.h"

#include "app/accessibility.h"
#include "app/apppaths.h"
#include "app/frmsettings.h"
#include "controls/lynxgrid.h"
#include "recorder/frmtc.h"
#include "support/eventwait.h"
#include "support/icyserver.h"
#include "ui/frmabout.h"
#include "ui/websearch.h"

#include <QAccessible>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QTimer>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

constexpr quint32 LeftShiftKey = 0xffe1;
constexpr quint32 RightShiftKey = 0xffe2;
constexpr quint32 LeftControlKey = 0xffe3;
constexpr int Wait = 10000;

class CommandsTest : public StationWindowTest
{
protected:
    QList<FrmTC *> recorders() const { return window->Commands().Recorders(); }

    // Clicks Record and lets TimerRecord tick.
    void record()
    {
        click("cmdRecord");
        auto *timer = window->findChild<QTimer *>(u"TimerRecord"_s);
        ASSERT_NE(timer, nullptr);
        EXPECT_TRUE(waitUntil([timer] { return !timer->isActive(); }, Wait));
    }

    // Clicks a button with a modifier key held down on the keyboard, as the platform reports it.
    void clickHolding(const char *button, quint32 keysym)
    {
        nativeKey(keysym, true);
        click(button);
        nativeKey(keysym, false);
    }

    // Runs a modal dialog's check while it is open, then closes it.
    void whileModal(const char *button, const std::function<void(QWidget *)> &check)
    {
        bool seen = false;
        QTimer::singleShot(0, window.get(), [&] {
            QWidget *dialog = QApplication::activeModalWidget();
            seen = dialog != nullptr;
            if (dialog) {
                check(dialog);
                dialog->close();
            }
        });
        click(button);
        EXPECT_TRUE(seen) << button;
    }

    QString recText(const char *name, FrmTC *recorder) const
    {
        return recorder->findChild<QLineEdit *>(QLatin1StringView(name))->text();
    }
};

TEST_F(CommandsTest, RecordFillsANewIndependentRecorderWindowFromTheRow)
{
    writeCatalogue(Catalogue5 + u"Silent|Talk|64|mp3|News|o|False|1||||i\r\n"_s);
    ASSERT_NO_FATAL_FAILURE(open());
    record();
    EXPECT_EQ(prompt.texts(), QStringList{StationCommands::RecordNoStation});
    EXPECT_EQ(prompt.shown.value(0).title, AppState::AppTitle);
    EXPECT_TRUE(recorders().isEmpty());

    // A station without an address opens nothing and says nothing.
    grid->GotoCell(5, pos(Col::ColStation));
    record();
    EXPECT_TRUE(recorders().isEmpty());
    EXPECT_EQ(prompt.shown.size(), 1);

    // The row as shown, also a cell not yet written back, is what the recorder gets.
    grid->GotoCell(0, pos(Col::ColStation));
    grid->SetCellText(0, pos(Col::ColStation), u"Rock Two"_s);
    record();
    EXPECT_EQ(state->catalogue.at(1).Name, u"Rock Two"_s);
    grid->GotoCell(1, pos(Col::ColStation));
    record();
    ASSERT_EQ(recorders().size(), 2);
    const struct
    {
        QString station, stream, save;
        bool single;
    } expected[] = {{u"Rock Two"_s, u"http://127.0.0.1:8000/a"_s, u".\\%STATION%.mp3"_s, true},
                    {u"Classic Hits"_s, u"http://127.0.0.1:8000/b"_s, u"o"_s, false}};
    for (int i = 0; i < 2; ++i) {
        FrmTC *recorder = recorders().at(i);
        EXPECT_TRUE(recorder->isVisible());
        EXPECT_FALSE(recorder->isModal());
        EXPECT_EQ(recorder->findChild<QLabel *>(u"LblStation"_s)->text(), expected[i].station);
        EXPECT_EQ(recText("txtStream", recorder), expected[i].stream);
        EXPECT_EQ(recText("txtSave", recorder), expected[i].save);
        EXPECT_EQ(recorder->findChild<QCheckBox *>(u"chkSingleSong"_s)->isChecked(), expected[i].single);
    }

    // A recorder window's closing is its own; the main window's closing closes them all.
    QPointer<FrmTC> first = recorders().at(0);
    first->close();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_TRUE(first.isNull());
    EXPECT_FALSE(windows.ended);
    EXPECT_EQ(recorders().size(), 1);
    QPointer<FrmTC> second = recorders().at(0);
    window->close();
    EXPECT_TRUE(windows.ended);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_TRUE(second.isNull());
}

TEST_F(CommandsTest, ARecordingStartedFromTheListIsCompleteWhenTheListCloses)
{
    IcyServer server;
    ASSERT_TRUE(server.start());
    server.songs = {{"Artist - Song", 1000}};
    writeCatalogue(u"Loop|Test|128|mp3|Rock|.\\%STATION%_rec.mp3|False|3|||"_s + server.url() + u"|i\r\n"_s);
    QDir().mkpath(AppPaths::RecordingsFolder());
    ASSERT_NO_FATAL_FAILURE(open());
    grid->GotoCell(0, pos(Col::ColStation));
    record();
    ASSERT_EQ(recorders().size(), 1);
    QPointer<FrmTC> recorder = recorders().at(0);
    recorder->findChild<QPushButton *>(u"cmdRecord"_s)->click();
    ASSERT_TRUE(waitUntil([&] { return recorder->Stream().BytesTotal() >= 4.0 * server.metaInt; }, Wait));

    window->close();
    const QString file = AppPaths::RecordingsFolder() + u"Loop_rec.mp3"_s;
    ASSERT_FALSE(recorder.isNull()) << "closed, not yet deleted";
    EXPECT_FALSE(recorder->Recording());
    const QByteArray written = TempProfile::readFile(file);
    EXPECT_EQ(written.size(), qint64(recorder->Output().BytesWritten()));
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
    EXPECT_EQ(grid->Col(), 0);
    EXPECT_EQ(grid->ItemData(5), 6);
    for (int col = 0; col < grid->Cols(); ++col) {
        EXPECT_EQ(grid->CellText(5, col), grid->CellText(4, col)) << col;
        EXPECT_EQ(grid->CellChecked(5, col), grid->CellChecked(4, col)) << col;
    }
    EXPECT_TRUE(state->catalogue.Dirty);
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

    grid->GotoCell(2, pos(Col::ColStation));
    prompt.answers = {false, true};
    clickHolding("cmdDel", LeftShiftKey); // the left key is no Delete ALL
    EXPECT_EQ(grid->ItemCount(), 5);
    click("cmdDel");
    ASSERT_EQ(prompt.shown.size(), 2);
    EXPECT_EQ(prompt.shown[1].text, StationCommands::DeleteQuestion + u"Jazz Cafe"_s);
    EXPECT_EQ(prompt.shown[1].icon, Prompt::Icon::Warning);
    EXPECT_EQ(prompt.shown[1].title, AppState::AppTitle);
    EXPECT_EQ(shown(), u"Rock One,Classic Hits,Talk Radio,Rockabilly"_s);
    EXPECT_TRUE(state->catalogue.at(3).Deleted);
    EXPECT_TRUE(state->catalogue.Dirty);
    // The record stays until the file is written: a refill shows it again.
    filter("", "", "", "");
    EXPECT_EQ(shown(), AllFive);
    window->close();
    EXPECT_FALSE(catalogueText().contains(u"Jazz Cafe"_s));
    EXPECT_EQ(catalogueText().count(u"\r\n"_s), 8);

    // Delete ALL after an edit and a sort leaves the file as it was.
    writeCatalogue(Catalogue5);
    const QString five = catalogueText();
    ASSERT_NO_FATAL_FAILURE(open());
    editText(1, Col::ColStation, u"Classic Gold"_s);
    grid->Sort(pos(Col::ColStation));
    prompt.answers = {false, true};
    clickHolding("cmdDel", RightShiftKey);
    EXPECT_EQ(grid->ItemCount(), 5) << "answered No";
    clickHolding("cmdDel", RightShiftKey);
    EXPECT_EQ(prompt.shown.last().text, StationCommands::DeleteAllQuestion);
    EXPECT_EQ(prompt.shown.last().icon, Prompt::Icon::Warning);
    EXPECT_EQ(grid->ItemCount(), 0);
    EXPECT_EQ(state->catalogue.StationCount(), 0);
    EXPECT_EQ(grid->SortColumn(), -1);
    window->close();
    EXPECT_EQ(catalogueText(), five);

    // Another change made before it still saves: the emptied list.
    writeCatalogue(Catalogue5);
    ASSERT_NO_FATAL_FAILURE(open());
    grid->GotoCell(0, 0);
    click("cmdCopy");
    prompt.answers = {true};
    clickHolding("cmdDel", RightShiftKey);
    window->close();
    EXPECT_EQ(catalogueText().split(u"\r\n"_s, Qt::SkipEmptyParts).size(), 4) << "no station line";
}

TEST_F(CommandsTest, InfoOpensTheStationsPageWithoutModifiersOnly)
{
    writeCatalogue(u"A|Pop|128|mp3|Rock|o|False|3|||http://a|http://a.example/?x=1&y=2\r\n"
                   "B|Pop|128|mp3|Rock|o|False|3|||http://b|i\r\n"
                   "C|Pop|128|mp3|Rock|o|False|3|||http://c|i\r\n"_s);
    ASSERT_NO_FATAL_FAILURE(open());
    click("cmdInfo");
    grid->GotoCell(1, 1);
    click("cmdInfo");
    EXPECT_TRUE(shell.opened.isEmpty()) << "no row; a one-character address";
    grid->GotoCell(0, 1);
    clickHolding("cmdInfo", LeftShiftKey);
    clickHolding("cmdInfo", LeftControlKey);
    EXPECT_TRUE(shell.opened.isEmpty()) << "the station check's keys";
    clickHolding("cmdInfo", RightShiftKey);
    click("cmdInfo");
    EXPECT_EQ(shell.opened, QStringList(2, u"http://a.example/?x=1&y=2"_s));
}

TEST_F(CommandsTest, PlaylistImportReadsTheChosenFilesFolderKeepingEditsAndRefills)
{
    const QString folder = profile.root() + u"/playlists"_s;
    QDir().mkpath(folder);
    const auto playlist = [&folder](const QString &name, const QByteArray &body) {
        TempProfile::writeFile(folder + u'/' + name, body);
    };
    playlist(u"Smooth Jazz (128).pls"_s,
             "[playlist]\nNumberOfEntries=1\nFile1=http://10.0.0.1/jazz\nTitle1=(#1 - 5/9) Smooth: Jazz\n");
    playlist(u"no bit rate.pls"_s,
             "[playlist]\nNumberOfEntries=1\nFile1=http://10.0.0.1/talk\nTitle1=Talk\n");
    playlist(u"empty.pls"_s, "[playlist]\nNumberOfEntries=0\n");
    // Already in the list by its address.
    playlist(u"again_64.pls"_s,
             "[playlist]\nNumberOfEntries=1\nFile1=HTTP://127.0.0.1:8000/A\nTitle1=Again\n");
    ASSERT_NO_FATAL_FAILURE(open());

    click("cmdLoadPls");
    EXPECT_EQ(grid->ItemCount(), 5) << "cancelled";
    // A deletion renumbers the stations at the reload; the edit must stay with its station.
    grid->GotoCell(1, pos(Col::ColStation));
    prompt.answers = {true};
    click("cmdDel");
    grid->SetCellText(2, pos(Col::ColStation), u"Talk Radio Two"_s);
    grid->SetCellChanged(2, pos(Col::ColStation), true);
    prompt.files = {folder + u"/Smooth Jazz (128).pls"_s};
    clickHolding("cmdCopy", LeftShiftKey);

    EXPECT_EQ(prompt.fileFolders, QStringList(2, QString()));
    EXPECT_EQ(shown().section(u',', 0, 3), u"Rock One,Jazz Cafe,Talk Radio Two,Rockabilly"_s);
    // The folder's files come in the file system's order.
    QStringList imported;
    for (int row = 4; row < grid->ItemCount(); ++row) {
        imported << grid->CellText(row, pos(Col::ColStation)) + u'/' + grid->CellText(row, pos(Col::ColBit)) +
                        u'/' + grid->CellText(row, pos(Col::ColGenre)) + u'/' +
                        grid->CellText(row, pos(Col::ColStreamUrl));
    }
    imported.sort();
    EXPECT_EQ(imported, QStringList({u"Smooth Jazz/128/Smooth Jazz (128).pls/http://10.0.0.1/jazz"_s,
                                     u"Talk//Smooth Jazz (128).pls/http://10.0.0.1/talk"_s}));
    EXPECT_FALSE(state->catalogue.Dirty) << "saved by the import";
    const QString saved = catalogueText();
    EXPECT_TRUE(saved.contains(u"\nTalk Radio Two|Talk|"_s));
    EXPECT_FALSE(saved.contains(u"Classic Hits"_s));
    window->close();
    EXPECT_EQ(catalogueText(), saved) << "nothing left to save at closing";
}

TEST_F(CommandsTest, TrimStartsTheToolWithTheQuotedRecordingOrSaysItCouldNot)
{
    // A tool that writes down its arguments, one per line.
    const QString tool = profile.installFolder() + u"/trim tool.sh"_s;
    const QString out = profile.root() + u"/args.txt"_s;
    TempProfile::writeFile(tool, "#!/bin/sh\nprintf '%s\\n' \"$@\" > \"$0.tmp\" && mv \"$0.tmp\" '" +
                                     out.toUtf8() + "'\n");
    QFile::setPermissions(tool, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    state->TrimToolCommand = u"\"%APP%/trim tool.sh\" -x %MP3FILE%"_s;
    ASSERT_NO_FATAL_FAILURE(open());

    click("cmdTrim");
    const QString recording = AppPaths::RecordingsFolder() + u"my song's take.mp3"_s;
    prompt.files = {recording};
    click("cmdTrim");
    ASSERT_TRUE(waitUntil([&out] { return QFile::exists(out); }, Wait));
    EXPECT_EQ(QString::fromUtf8(TempProfile::readFile(out)), u"-x\n"_s + recording + u'\n');
    EXPECT_EQ(prompt.fileFolders, QStringList(2, AppPaths::RecordingsFolder()));
    EXPECT_TRUE(prompt.shown.isEmpty());

    state->TrimToolCommand = AppState::DefaultTrimTool;
    prompt.files = {recording};
    click("cmdTrim");
    ASSERT_EQ(prompt.shown.size(), 1);
    const QString command =
        profile.installFolder() + u"\\mp3Tools\\mp3DirectCut\\mp3DirectCut.exe \""_s + recording + u'"';
    EXPECT_EQ(prompt.shown[0].text, StationCommands::TrimNotStarted.arg(command));
    EXPECT_EQ(prompt.shown[0].title, AppState::AppTitle);
}

TEST_F(CommandsTest, AboutAndTheWebSearchOpenTheirPagesThroughTheShell)
{
    qputenv(WebSearch::HostVariable, "http://directory.test");
    ASSERT_NO_FATAL_FAILURE(open());
    click("cmdSearchWww");
    child<QLineEdit>("txtSearch")->setText(u"smooth jazz"_s);
    child<QComboBox>("cmbGenre")->setCurrentText(u"Jazz"_s);
    click("cmdSearchWww");
    qunsetenv(WebSearch::HostVariable);
    EXPECT_EQ(shell.opened,
              QStringList{u"http://directory.test/directory/index.phtml?sgenre=Jazz&maxbitrate=999&"
                          "numresult=25&s=smooth+jazz"_s});

    shell.opened.clear();
    whileModal("cmdAbout", [](QWidget *dialog) {
        EXPECT_EQ(dialog->objectName(), u"frmAbout"_s);
        const auto text = [dialog](const char *name) {
            return dialog->findChild<QLabel *>(QLatin1StringView(name))->text();
        };
        EXPECT_EQ(text("lblName"), AppState::AppTitle);
        EXPECT_EQ(text("lblVersion"), u"Version "_s + frmAbout::Version());
        EXPECT_FALSE(frmAbout::Version().isEmpty());
        EXPECT_TRUE(text("lnkRec").contains(AppPaths::RecordingsFolder()));
        for (const char *link : {"lnkData", "lnkRec"}) {
            auto *label = dialog->findChild<QLabel *>(QLatin1StringView(link));
            const QString href = label->text().section(u'"', 1, 1);
            emit label->linkActivated(href);
        }
    });
    EXPECT_EQ(shell.opened, QStringList({QUrl::fromLocalFile(AppPaths::DataFolder()).toString(),
                                         QUrl::fromLocalFile(AppPaths::RecordingsFolder()).toString()}));
}

TEST_F(CommandsTest, ScreenReadersFindWindowsByRoleAndControlsByName)
{
    Accessibility::Install();
    ASSERT_NO_FATAL_FAILURE(open());
    const auto iface = [](QObject *object) { return QAccessible::queryAccessibleInterface(object); };
    EXPECT_EQ(iface(window.get())->role(), QAccessible::Window);
    EXPECT_EQ(iface(child("txtSearch"))->text(QAccessible::Name), u"Search stations"_s);
    auto *genre = child<QComboBox>("cmbGenre");
    genre->setCurrentText(u"Rock"_s);
    EXPECT_EQ(iface(genre)->text(QAccessible::Name), u"Genre"_s);
    EXPECT_EQ(iface(genre)->text(QAccessible::Value), u"Rock"_s);
    for (const char *button : {"cmdRecord", "cmdCopy", "cmdDel", "cmdInfo", "cmdLoadPls", "cmdTrim",
                               "cmdAbout", "cmdSettings", "cmdSearchWww"}) {
        EXPECT_FALSE(iface(child(button))->text(QAccessible::Name).isEmpty()) << button;
        EXPECT_TRUE(child(button)->isEnabled()) << button;
    }
    for (const char *later : {"cmdListen", "cmdReplay", "cmdSkin"})
        EXPECT_FALSE(child(later)->isEnabled()) << later;

    FrmSettings settings(*state, window.get());
    frmAbout about(shell, window.get());
    FrmTC recorder(*state, power);
    EXPECT_EQ(iface(&settings)->role(), QAccessible::Dialog);
    EXPECT_EQ(iface(&about)->role(), QAccessible::Dialog);
    EXPECT_EQ(iface(&recorder)->role(), QAccessible::Window);
}

} // namespace
