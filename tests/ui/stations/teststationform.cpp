#include "ui/stations/stationform.h"

#include "support/accessiblenames.h"
#include "support/eventwait.h"
#include "support/icyserver.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTcpServer>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

const QString separator = u"\u00b1"_s;

class StationFormTest : public ::testing::Test
{
protected:
    void open(StationForm::Purpose purpose, const Station &station)
    {
        form = std::make_unique<StationForm>(purpose, station, separator, QStringList{{}, u"Lounge"_s});
        form->setTestLimit(300);
        form->show();
    }
    template <typename T = QLineEdit> T *field(const char *name) const
    {
        T *found = form->findChild<T *>(QLatin1StringView(name));
        EXPECT_NE(found, nullptr) << name;
        return found;
    }
    QString testResult() const { return field<QLabel>("lblTest")->text(); }
    // Presses Test and waits for what the station said.
    QString test(const QString &address)
    {
        field("txtStreamUrl")->setText(address);
        field<QPushButton>("cmdTest")->click();
        EXPECT_FALSE(field<QPushButton>("cmdTest")->isEnabled()) << "one test at a time";
        EXPECT_TRUE(waitUntil([this] { return field<QPushButton>("cmdTest")->isEnabled(); }, 5000));
        return testResult();
    }
    std::unique_ptr<StationForm> form;
};

TEST_F(StationFormTest, ShowsTheStationAndGivesItBackWithWhatItDoesNotShow)
{
    Station s;
    s.Name = u"Jazz Cafe"_s;
    s.StreamURL = u"http://jazz.example/live"_s;
    s.Genre = u"Jazz"_s;
    s.Category = u"Lounge"_s;
    s.Rating = 0;
    s.LastDate = u"2030-01-01"_s;
    s.CallSign = u"JC"_s;
    open(StationForm::Purpose::Edit, s);
    EXPECT_EQ(form->windowTitle(), u"Edit Station: Jazz Cafe"_s);
    EXPECT_EQ(field<QComboBox>("cboRating")->currentIndex(), -1) << "not rated";
    expectAccessibleNames(form.get());
    field("txtName")->setText(u"  Jazz Corner "_s);
    field<QComboBox>("cboGenre")->setCurrentText(u"Smooth Jazz"_s);
    field<QCheckBox>("chkSingleSong")->setChecked(true);
    const Station edited = form->station();
    EXPECT_EQ(edited.Name, u"Jazz Corner"_s);
    EXPECT_EQ(edited.Genre, u"Smooth Jazz"_s);
    EXPECT_EQ(edited.Category, u"Lounge"_s);
    EXPECT_TRUE(edited.SingleSong);
    EXPECT_EQ(edited.Rating, 0);
    EXPECT_EQ(edited.LastDate + edited.CallSign, u"2030-01-01JC"_s);
    field<QComboBox>("cboRating")->setCurrentIndex(3);
    EXPECT_EQ(form->station().Rating, 4);
}

TEST_F(StationFormTest, OkRefusesWhatTheCatalogueCannotHoldAndSaysWhy)
{
    open(StationForm::Purpose::Add, Station::newStation());
    auto *problem = field<QLabel>("lblProblem");
    const struct
    {
        QString name, address;
        const char *focus;
        QString says;
    } rows[] = {
        {u"A \u00b1 B"_s, u"http://a.example/"_s, "txtName", u"Name may not hold"_s},
        {u"A\r\nB"_s, u"http://a.example/"_s, "txtName", u"line break"_s},
        {u"A"_s, u"javascript:alert(1)"_s, "txtStreamUrl", u"must begin with http://"_s},
        {u"A"_s, u"file:///home/me/a.mp3"_s, "txtStreamUrl", u"must begin with http://"_s},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.focus);
        field("txtName")->setText(row.name);
        field("txtStreamUrl")->setText(row.address);
        form->accept();
        EXPECT_EQ(form->result(), QDialog::Rejected) << "still open";
        EXPECT_TRUE(form->isVisible());
        EXPECT_TRUE(problem->isVisible());
        EXPECT_TRUE(problem->text().contains(row.says)) << problem->text().toStdString();
        EXPECT_EQ(form->focusWidget(), field(row.focus));
    }
    field("txtName")->setText(u"A"_s);
    field("txtStreamUrl")->setText(u"http://a.example/"_s);
    form->accept();
    EXPECT_EQ(form->result(), QDialog::Accepted);
}

TEST_F(StationFormTest, TestReportsWhatTheStationSendsAndFillsTheEmptyFields)
{
    IcyServer server;
    server.songs = {{"Artist - First", 2}};
    server.repeat = true;
    ASSERT_TRUE(server.start());
    open(StationForm::Purpose::Add, Station::newStation());
    const QString result = test(server.url());
    EXPECT_EQ(result, u"Reachable: it sends audio/mpeg.\nBit rate: 128 kbit/s\nStation name: Loopback FM\n"
                      "Now playing: Artist - First"_s);
    EXPECT_EQ(field("txtName")->text(), u"Loopback FM"_s);
    EXPECT_EQ(field("txtBitRate")->text(), u"128"_s);
    EXPECT_EQ(field<QComboBox>("cboGenre")->currentText(), u"Test"_s);
    EXPECT_EQ(field<QComboBox>("cboFormat")->currentText(), u"MP3"_s);
    EXPECT_EQ(field("txtInfoUrl")->text(), u"http://station.example/"_s);
    // What the user typed stays.
    field("txtName")->setText(u"My Loop"_s);
    field("txtInfoUrl")->setText(u"https://mine.example/"_s);
    test(server.url());
    EXPECT_EQ(field("txtName")->text(), u"My Loop"_s);
    EXPECT_EQ(field("txtInfoUrl")->text(), u"https://mine.example/"_s);
}

TEST_F(StationFormTest, TestSaysWhyAStationCannotPlayAndEndsAgainstSilence)
{
    IcyServer server;
    server.pages["/page.html"] = "HTTP/1.0 200 OK\r\nContent-Type: text/html\r\n\r\n<html/>";
    ASSERT_TRUE(server.start());
    QTcpServer silent;
    ASSERT_TRUE(silent.listen(QHostAddress::LocalHost, 0));
    open(StationForm::Purpose::Add, Station::newStation());
    EXPECT_EQ(test(u"http://127.0.0.1:%1/"_s.arg(IcyServer::refusedPort())), u"Cannot reach 127.0.0.1"_s);
    EXPECT_EQ(test(server.url(u"/gone.pls"_s)), u"The station answered 404"_s);
    EXPECT_EQ(test(server.url(u"/page.html"_s)), u"Not an audio stream"_s);
    EXPECT_EQ(test(u"http://127.0.0.1:%1/"_s.arg(silent.serverPort())),
              u"No answer from 127.0.0.1 within 1 s"_s);
    EXPECT_TRUE(field("txtName")->text().isEmpty()) << "a failed test fills nothing";
    // An address that is none is not tried.
    field("txtStreamUrl")->setText(u"javascript:alert(1)"_s);
    field<QPushButton>("cmdTest")->click();
    EXPECT_TRUE(field<QPushButton>("cmdTest")->isEnabled());
    EXPECT_TRUE(testResult().contains(u"http://"_s));
}

} // namespace
