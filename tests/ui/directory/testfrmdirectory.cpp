#include "ui/directory/frmdirectory.h"

#include "base/appinfo.h"
#include "base/settingsstore.h"
#include "controls/lynxgrid.h"
#include "support/accessiblenames.h"
#include "support/directoryserver.h"
#include "support/eventwait.h"
#include "support/icyserver.h"
#include "support/stationwindow.h"
#include "ui/player/ucplaybar.h"

#include <QBuffer>
#include <QComboBox>
#include <QDir>
#include <QHeaderView>
#include <QImage>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QProgressBar>
#include <QPushButton>
#include <QTableView>
#include <QTest>

#include <gtest/gtest.h>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

constexpr int wait = 5000;
using Model = DirectoryResultModel;

QByteArray pngIcon()
{
    QImage image(48, 48, QImage::Format_ARGB32);
    image.fill(Qt::darkCyan);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return bytes;
}

// The main window over its five stations, a directory on 127.0.0.1 set as the
// server, and the directory window opened from the main window.
class DirectoryTest : public StationWindowTest
{
public:
    void SetUp() override
    {
        StationWindowTest::SetUp();
        ASSERT_TRUE(server.start());
        const QString icons = server.base() + u"/icons/"_s;
        server.files["/icons/jazz.png"] = pngIcon();
        server.stations = {
            {.uuid = u"11111111-0000-4000-8000-000000000001"_s,
             .name = u"Jazz Am Morgen"_s,
             .url = u"http://jazz.example/listen.pls"_s,
             .urlResolved = u"http://jazz.example:8000/live"_s,
             .homepage = u"https://jazz.example/"_s,
             .favicon = icons + u"jazz.png"_s,
             .tags = u"jazz,smooth jazz"_s,
             .country = u"Austria"_s,
             .language = u"german"_s,
             .codec = u"AAC+"_s,
             .bitrate = 128,
             .votes = 50,
             .clickCount = 10},
            {.uuid = u"11111111-0000-4000-8000-000000000002"_s,
             .name = u"Jazz Nights"_s,
             .url = u"http://nights.example/"_s,
             .tags = u"jazz"_s,
             .country = u"Germany"_s,
             .language = u"english"_s,
             .codec = u"MP3"_s,
             .bitrate = 64,
             .votes = 80,
             .clickCount = 40},
            // The catalogue's separator ("|" in this one), a line break and no end to the name.
            {.uuid = u"11111111-0000-4000-8000-000000000003"_s,
             .name = u"Rock | Antenne\r\nLive "_s + QString(10000, u'x'),
             .url = u"http://rock.example/stream"_s,
             .tags = u"rock"_s,
             .country = u"Germany"_s,
             .codec = u"MP3"_s,
             .bitrate = 320,
             .votes = 99},
            {.uuid = u"11111111-0000-4000-8000-000000000004"_s,
             .name = u"Klassik Lokal"_s,
             .url = u"file:///srv/music/klassik.ogg"_s,
             .tags = u"classical"_s,
             .country = u"Austria"_s,
             .codec = u"OGG"_s,
             .bitrate = 96,
             .votes = 30},
        };
        SettingsStore::saveSetting(SettingsStore::DirectoryServer, server.base());
    }
    void openDirectory()
    {
        ASSERT_NO_FATAL_FAILURE(open());
        window->activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(window.get()));
        // The key presses the button, which lets go of itself a moment later.
        QTest::keyClick(window.get(), Qt::Key_D, Qt::ControlModifier);
        ASSERT_TRUE(waitUntil([this] { return (directory = window->findChild<FrmDirectory *>()); }, wait));
        EXPECT_TRUE(directory->isVisible());
        list = directory->findChild<QTableView *>(u"lstResults"_s);
        ASSERT_TRUE(settled());
    }
    template <typename T = QWidget> T *part(const char *name) const
    {
        T *found = directory->findChild<T *>(QLatin1StringView(name));
        EXPECT_NE(found, nullptr) << name;
        return found;
    }
    // No search under way or about to start.
    bool settled()
    {
        return waitUntil([this] { return !part<QProgressBar>("spinner")->isVisible(); }, wait);
    }
    QStringList names() const
    {
        QStringList shown;
        for (int row = 0; row < model().rowCount(); ++row)
            shown << model().at(row).name.left(19);
        return shown;
    }
    const Model &model() const { return directory->results(); }
    QString status() const { return part<QLabel>("lblStatus")->text(); }
    QList<DirectoryServer::Request> searches() const
    {
        QList<DirectoryServer::Request> found;
        for (const DirectoryServer::Request &r : server.requests) {
            if (r.path == "/json/stations/search")
                found << r;
        }
        return found;
    }
    void clickRow(int row, Qt::KeyboardModifiers held = {})
    {
        QTest::mouseClick(list->viewport(), Qt::LeftButton, held,
                          list->visualRect(model().index(row, 0)).center());
    }

    DirectoryServer server;
    FrmDirectory *directory = nullptr;
    QTableView *list = nullptr;
};

TEST_F(DirectoryTest, TypingSearchesOnceItRestsAndFiltersAndOrderReachTheDirectory)
{
    ASSERT_NO_FATAL_FAILURE(openDirectory());
    // Opened, it lists the most liked stations.
    EXPECT_EQ(names(), (QStringList{u"Rock | Antenne Live"_s, u"Jazz Nights"_s, u"Jazz Am Morgen"_s,
                                    u"Klassik Lokal"_s}));
    EXPECT_EQ(status(), u"Stations found: 4."_s);
    // The filter boxes offer the directory's own lists.
    EXPECT_GE(part<QComboBox>("cmbTag")->findText(u"smooth jazz"_s), 1);
    EXPECT_GE(part<QComboBox>("cmbCodec")->findText(u"AAC+"_s), 1);

    server.delayMs = 200;
    QTest::keyClicks(part<QLineEdit>("txtSearch"), u"jazz"_s);
    ASSERT_TRUE(waitUntil([this] { return part<QProgressBar>("spinner")->isVisible(); }, wait));
    ASSERT_TRUE(settled());
    EXPECT_EQ(names(), (QStringList{u"Jazz Nights"_s, u"Jazz Am Morgen"_s}));
    ASSERT_EQ(searches().size(), 2) << "one search for the whole word";
    EXPECT_EQ(searches().last().query.value(u"name"_s), u"jazz"_s);

    // A new search cancels the one under way: only the last one's stations show.
    auto *text = part<QLineEdit>("txtSearch");
    text->setText(u"rock"_s);
    QTest::keyClick(text, Qt::Key_Return);
    text->setText(u"nights"_s);
    QTest::keyClick(text, Qt::Key_Return);
    ASSERT_TRUE(settled());
    EXPECT_EQ(names(), QStringList{u"Jazz Nights"_s});

    text->clear();
    part<QComboBox>("cmbTag")->setCurrentText(u"jazz"_s);
    part<QComboBox>("cmbCountry")->setCurrentText(u"Austria"_s);
    part<QComboBox>("cmbCodec")->setCurrentText(u"AAC+"_s);
    auto *rate = part<QComboBox>("cmbBitRate");
    rate->setCurrentIndex(rate->findData(128));
    ASSERT_TRUE(waitUntil([this] { return names() == QStringList{u"Jazz Am Morgen"_s}; }, wait))
        << names().join(u',').toStdString();
    const QMap<QString, QString> asked = searches().last().query;
    EXPECT_EQ(asked.value(u"tag"_s), u"jazz"_s);
    EXPECT_EQ(asked.value(u"countryExact"_s), u"true"_s);
    EXPECT_EQ(asked.value(u"codec"_s), u"AAC+"_s);
    EXPECT_EQ(asked.value(u"bitrateMin"_s), u"128"_s);

    // Headings of the directory's orders sort, counts largest first; others do not.
    part<QComboBox>("cmbTag")->setCurrentText({});
    part<QComboBox>("cmbCountry")->setCurrentText({});
    part<QComboBox>("cmbCodec")->setCurrentText({});
    rate->setCurrentIndex(0);
    QHeaderView *header = list->horizontalHeader();
    const auto clickHeading = [&](int column) {
        QTest::mouseClick(header->viewport(), Qt::LeftButton, {},
                          QPoint(header->sectionViewportPosition(column) + 10, header->height() / 2));
        EXPECT_TRUE(settled());
    };
    clickHeading(Model::ColBitRate);
    EXPECT_EQ(names().first(), u"Rock | Antenne Live"_s);
    EXPECT_EQ(searches().last().query.value(u"order"_s), u"bitrate"_s);
    EXPECT_EQ(searches().last().query.value(u"reverse"_s), u"true"_s);
    clickHeading(Model::ColBitRate);
    EXPECT_EQ(names().first(), u"Jazz Nights"_s);
    const qsizetype asks = searches().size();
    clickHeading(Model::ColCountry);
    EXPECT_EQ(searches().size(), asks);
    EXPECT_EQ(header->sortIndicatorSection(), int(Model::ColBitRate));
    EXPECT_EQ(header->sortIndicatorOrder(), Qt::AscendingOrder);
    expectAccessibleNames(directory);
}

TEST_F(DirectoryTest, ResultsComeInPagesAsTheListScrollsUpToTheBound)
{
    server.stations = DirectoryServer::sampleStations(60);
    ASSERT_NO_FATAL_FAILURE(openDirectory());
    directory->setPaging(5, 23);
    server.requests.clear();
    directory->searchNow();
    ASSERT_TRUE(settled());
    // The list asks for pages until it is full, then one more each time it is scrolled to the end.
    for (int tries = 0; tries < 10 && model().rowCount() < 23; ++tries) {
        list->scrollToBottom();
        waitUntil([this, before = model().rowCount()] { return model().rowCount() > before; }, wait);
    }
    ASSERT_TRUE(settled());
    QList<DirectoryServer::Station> byVotes = server.stations;
    std::sort(byVotes.begin(), byVotes.end(), [](const auto &a, const auto &b) { return a.votes > b.votes; });
    QStringList expected;
    for (const auto &s : byVotes.mid(0, 23))
        expected << s.name;
    EXPECT_EQ(names(), expected);
    QStringList offsets;
    for (const auto &r : searches())
        offsets << r.query.value(u"offset"_s);
    EXPECT_EQ(offsets.join(u','), u"0,5,10,15,20"_s);
    EXPECT_TRUE(status().contains(u"first 23 stations"_s)) << status().toStdString();
    list->scrollToBottom();
    QCoreApplication::processEvents();
    EXPECT_EQ(searches().size(), 5) << "no page beyond the bound";
}

TEST_F(DirectoryTest, ASelectedStationPlaysInTheMainPlayerAndItsClickIsCounted)
{
    ASSERT_NO_FATAL_FAILURE(openDirectory());
    ScriptedPlayer *wmp1 = players.front();
    clickRow(2);
    ASSERT_TRUE(waitUntil([&] { return wmp1->URL() == u"http://jazz.example:8000/live"; }, wait));
    EXPECT_EQ(window->findChild<ucPlayBar *>()->Caption(), u"Connecting to: Jazz Am Morgen"_s);
    ASSERT_TRUE(waitUntil([&] { return server.stations[0].clickCount == 11; }, wait));
    // Nothing but internet streams is played, whatever the directory says.
    clickRow(3);
    ASSERT_TRUE(waitUntil([&] { return status().contains(u"no internet stream address"_s); }, wait));
    EXPECT_EQ(wmp1->URL(), u"http://jazz.example:8000/live"_s);
    EXPECT_EQ(server.stations[3].clickCount, 0);
}

TEST_F(DirectoryTest, AddedStationsAreMappedNeverDoubledAndSelectedInTheList)
{
    ASSERT_NO_FATAL_FAILURE(openDirectory());
    clickRow(0);
    clickRow(2, Qt::ControlModifier);
    part<QPushButton>("cmdAdd")->click();
    EXPECT_EQ(status(), u"Stations added: 2."_s);
    const Catalogue &catalogue = state->catalogue;
    ASSERT_EQ(catalogue.stationCount(), 7);
    EXPECT_TRUE(catalogue.dirty);
    const Station rock = catalogue.at(6);
    EXPECT_TRUE(rock.Name.startsWith(u"Rock +- Antenne Live xxx"_s)) << rock.Name.toStdString();
    EXPECT_EQ(rock.Name.size(), 60);
    const Station &jazz = catalogue.at(7);
    const QStringList fields = {jazz.Name,     jazz.Genre,     jazz.BitRate, jazz.Format,
                                jazz.Category, jazz.StreamURL, jazz.InfoUrl, jazz.OutputFile};
    EXPECT_EQ(fields, (QStringList{u"Jazz Am Morgen"_s, u"jazz"_s, u"128"_s, u"aac"_s, u"Directory"_s,
                                   u"http://jazz.example:8000/live"_s, u"https://jazz.example/"_s,
                                   Station::defaultOutputFile}));
    EXPECT_TRUE(jazz.SingleSong);
    // The list shows them selected, the first current; its category filter offers theirs.
    EXPECT_EQ(grid->ItemCount(), 7);
    EXPECT_EQ(grid->Row(), 5);
    EXPECT_TRUE(grid->ItemSelected(5) && grid->ItemSelected(6) && !grid->ItemSelected(4));
    EXPECT_GE(child<QComboBox>("cmbCategory")->findText(u"Directory"_s), 0);

    // Enter adds too, and a station already there is not added twice.
    QTest::keyClick(list, Qt::Key_Return);
    EXPECT_EQ(status(), u"Stations added: 0; already in the catalogue: 2."_s);
    part<QComboBox>("cmbCategory")->setCurrentText(u"Picks"_s);
    clickRow(1);
    QTest::mouseDClick(list->viewport(), Qt::LeftButton, {}, list->visualRect(model().index(1, 0)).center());
    EXPECT_EQ(status(), u"Stations added: 1."_s);
    EXPECT_EQ(catalogue.at(8).Category, u"Picks"_s);

    // Closing the main window saves the catalogue and closes the directory with it.
    QPointer<FrmDirectory> open = directory;
    window->close();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_TRUE(open.isNull());
    Catalogue loaded;
    loaded.load(prompt, AppInfo::title);
    EXPECT_TRUE(prompt.shown.isEmpty());
    ASSERT_EQ(loaded.stationCount(), 8);
    EXPECT_EQ(loaded.at(6).Name, rock.Name);
    EXPECT_EQ(loaded.at(8).StreamURL, u"http://nights.example/"_s);
}

TEST_F(DirectoryTest, NoUsableServerIsOneLineAndTheRestGoesOn)
{
    const QString refused = u"http://127.0.0.1:"_s + QString::number(IcyServer::refusedPort());
    const std::pair<QString, QString> rows[] = {
        {refused, u"could not be reached"_s},
        {u"ftp://127.0.0.1"_s, u"must begin with http:// or https://"_s},
        {server.base() + u"/json"_s, u"more than scheme, host and port"_s},
    };
    for (const auto &[setting, reason] : rows) {
        SettingsStore::saveSetting(SettingsStore::DirectoryServer, setting);
        ASSERT_NO_FATAL_FAILURE(openDirectory());
        EXPECT_TRUE(status().contains(reason)) << status().toStdString();
        EXPECT_EQ(model().rowCount(), 0);
        EXPECT_EQ(grid->ItemCount(), 5);
        window.reset();
    }
    EXPECT_TRUE(server.requests.isEmpty());
}

TEST_F(DirectoryTest, IconsAreFetchedForTheRowsShownAndKeptInTheCache)
{
    ASSERT_NO_FATAL_FAILURE(openDirectory());
    const QModelIndex jazz = model().index(2, Model::ColName);
    ASSERT_TRUE(
        waitUntil([&] { return !model().data(jazz, Qt::DecorationRole).value<QIcon>().isNull(); }, wait));
    const QDir cache(profile.root() + u"/cache/Tunecatch/favicons"_s);
    EXPECT_EQ(cache.entryList(QDir::Files).size(), 1);
    // Opened again, the icon comes from the cache.
    window.reset();
    server.files.clear();
    ASSERT_NO_FATAL_FAILURE(openDirectory());
    EXPECT_TRUE(waitUntil(
        [&] {
            return !model()
                        .data(model().index(2, Model::ColName), Qt::DecorationRole)
                        .value<QIcon>()
                        .isNull();
        },
        wait));
}

} // namespace
