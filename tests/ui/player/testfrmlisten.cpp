#include "ui/player/frmlisten.h"

#include "base/launchoptions.h"
#include "base/themecolors.h"
#include "support/accessiblenames.h"
#include "support/eventwait.h"
#include "support/icyserver.h"
#include "support/scriptedplayer.h"
#include "support/tempprofile.h"

#include <QContextMenuEvent>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QSlider>
#include <QTest>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

// The listening window over a scripted player: what its session decides
// reaches the caption, the information line, the view and the player.
class ListenTest : public ProfileTest
{
protected:
    void SetUp() override
    {
        server.pages["/one.pls"] =
            IcyServer::page("[playlist]\r\nnumberofentries=1\r\nFile1=http://room.test/b\r\n"
                            "Title1=(#1 - 10/100) B\r\nLength1=-1\r\nVersion=2\r\n");
        ASSERT_TRUE(server.start());
        open(u"http://127.0.0.1:9/stream"_s);
    }
    void open(const QString &url)
    {
        window = std::make_unique<FrmListen>(launch, Themes::blackNight(), [this](QWidget *owner) {
            return new PlayerView(player = new ScriptedPlayer, nullptr, owner);
        });
        view = window->findChild<PlayerView *>(u"MPlayer"_s);
        window->ListenRow = 4;
        window->ListenUrl = url;
        window->ListenTitle = u"Test FM"_s;
        window->show();
        window->Play();
    }
    QString caption() const { return window->windowTitle(); }
    QPushButton *button(const char *name) const
    {
        return window->findChild<QPushButton *>(QLatin1StringView(name));
    }
    IcyServer server;
    LaunchOptions launch;
    ScriptedPlayer *player = nullptr;
    std::unique_ptr<FrmListen> window;
    PlayerView *view = nullptr;
};

TEST_F(ListenTest, TheCaptionTheInformationAndTheViewFollowWhatIsPlayed)
{
    EXPECT_EQ(caption(), u"Connecting to: Test FM"_s);
    EXPECT_TRUE(view->isVisible());
    ASSERT_NO_FATAL_FAILURE(open(server.url(u"/one.pls"_s)));
    EXPECT_TRUE(waitUntil([&] { return player->URL() == u"http://room.test/b"; }, 5000));
    EXPECT_EQ(caption(), u"Playing: Test FM"_s);
    EXPECT_EQ(window->findChild<QLabel *>(u"lblInfo"_s)->text(), u"Stream: http://room.test/b"_s);
    ASSERT_NO_FATAL_FAILURE(open({}));
    EXPECT_EQ(caption(), u"Stream missing: Test FM"_s);
    EXPECT_FALSE(view->isVisible());
    EXPECT_EQ(view->height(), 0);
}

TEST_F(ListenTest, EscapeLeavesFullScreenFirstAndThenClosesAndStopsThePlayer)
{
    button("cmdFullScreen")->click();
    EXPECT_FALSE(player->fullScreen()) << "only a playing player goes full screen";
    player->enter(MediaPlayer::Playing);
    button("cmdFullScreen")->click();
    ASSERT_TRUE(player->fullScreen());
    QTest::keyClick(view, Qt::Key_Escape);
    EXPECT_FALSE(player->fullScreen());
    EXPECT_TRUE(window->isVisible());
    button("cmdFullScreen")->click();
    QTest::keyClick(window.get(), Qt::Key_A);
    EXPECT_FALSE(player->fullScreen()) << "any key to the window leaves full screen";
    player->log.clear();
    QTest::keyClick(view, Qt::Key_Escape);
    EXPECT_FALSE(window->isVisible());
    EXPECT_EQ(player->log, QStringList({u"URL="_s, u"stop"_s, u"close"_s}));
}

TEST_F(ListenTest, TheContextButtonTogglesThePlayersOwnMenu)
{
    const auto requestMenu = [&] {
        QContextMenuEvent event(QContextMenuEvent::Mouse, QPoint(5, 5), view->mapToGlobal(QPoint(5, 5)));
        QApplication::sendEvent(view, &event);
        return view->findChild<QMenu *>(u"PlayerMenu"_s);
    };
    QMenu *menu = requestMenu();
    ASSERT_NE(menu, nullptr) << "on at first";
    QStringList items;
    for (QAction *action : menu->actions())
        items << action->text();
    EXPECT_EQ(items.join(u','), u"Play,Pause,Stop,Mute,Full Screen"_s);
    menu->actions().at(3)->trigger();
    EXPECT_TRUE(player->mute());
    menu->close();
    button("cmdContext")->click();
    EXPECT_FALSE(button("cmdContext")->isChecked());
    EXPECT_FALSE(view->enableContextMenu());
    delete menu;
    EXPECT_EQ(requestMenu(), nullptr);
    button("cmdContext")->click();
    EXPECT_TRUE(view->enableContextMenu());
}

TEST_F(ListenTest, SoundOnlyGetsACompactPlayerAndAFileItsPositionAndSeekBar)
{
    const auto control = [&](const char *name) {
        return window->findChild<QWidget *>(QLatin1StringView(name));
    };
    player->setMedia(false, 0, u"Artist - Song"_s);
    EXPECT_FALSE(window->compact()) << "not before the media plays";
    player->enter(MediaPlayer::Playing);
    ASSERT_TRUE(window->compact());
    EXPECT_FALSE(view->isVisible());
    EXPECT_FALSE(button("cmdFullScreen")->isVisible());
    EXPECT_LT(window->height(), 300);
    EXPECT_EQ(window->findChild<QLabel *>(u"lblStation"_s)->text(), u"Test FM"_s);
    EXPECT_EQ(window->findChild<QLabel *>(u"lblTitle"_s)->text(), u"Artist - Song"_s);
    EXPECT_FALSE(control("sldPosition")->isVisible()) << "a stream has no position";
    EXPECT_FALSE(button("cmdPlay")->isEnabled());
    player->log.clear();
    button("cmdPause")->click();
    static_cast<QSlider *>(control("sldVolume"))->setValue(30);
    EXPECT_EQ(player->volume(), 30);
    EXPECT_EQ(player->log, QStringList{u"pause"_s});
    expectAccessibleNames(window.get());

    // A file: position and seek bar.
    player->setMedia(false, 200000);
    player->setPosition(65000);
    auto *seek = static_cast<QSlider *>(control("sldPosition"));
    ASSERT_TRUE(seek->isVisible());
    EXPECT_EQ(window->findChild<QLabel *>(u"lblPosition"_s)->text(), u"1:05 / 3:20"_s);
    seek->triggerAction(QAbstractSlider::SliderPageStepAdd);
    EXPECT_EQ(player->log.last(), u"position=95000"_s);

    // Pictures after all: the picture and its buttons come back.
    player->setMedia(true, 0);
    EXPECT_FALSE(window->compact());
    EXPECT_TRUE(view->isVisible());
    EXPECT_TRUE(button("cmdFullScreen")->isVisible());
}

} // namespace
