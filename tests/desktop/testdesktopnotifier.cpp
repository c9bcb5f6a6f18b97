#include "desktop/desktopnotifier.h"

#include "support/eventwait.h"
#include "support/fakenotifications.h"
#include "support/privatebus.h"

#include <QDBusConnectionInterface>
#include <QSignalSpy>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

class DesktopNotifierTest : public ::testing::Test
{
protected:
    PrivateBus bus;
    FakeNotifications service;
    QDBusConnection notifierBus = bus.connect();
    DesktopNotifier notifier{notifierBus};
};

} // namespace

TEST_F(DesktopNotifierTest, EachSongReplacesTheLastNotificationWithItsBodyEscaped)
{
    ASSERT_TRUE(service.serveOn(bus.connect()));
    QSignalSpy shown(&notifier, &DesktopNotifier::shown);
    notifier.showSong(u"Jazz <FM> & more"_s, u"Miles & Co - <b>So What</b>"_s);
    ASSERT_TRUE(shown.wait(5000));
    // The second is on its way when the third comes: the third waits for the
    // second's id, and the fourth, an empty title, shows nothing.
    notifier.showSong(u"Rock"_s, u"A - One"_s);
    notifier.showSong(u"Rock"_s, u"Two"_s);
    notifier.showSong(u"Rock"_s, u" "_s);
    ASSERT_TRUE(waitUntil([&] { return shown.size() == 3; }, 5000));
    ASSERT_EQ(service.shown.size(), 3);
    const FakeNotifications::Shown &first = service.shown[0];
    EXPECT_EQ(first.summary, u"<b>So What</b>"_s);
    EXPECT_EQ(first.body, u"Miles &amp; Co\nJazz &lt;FM&gt; &amp; more"_s);
    EXPECT_EQ(first.app, u"Tunecatch"_s);
    EXPECT_EQ(first.icon, u"tunecatch"_s);
    EXPECT_EQ(first.hints.value(u"desktop-entry"_s), u"tunecatch"_s);
    EXPECT_EQ(service.shown[1].body, u"A\nRock"_s);
    EXPECT_EQ(service.shown[2].summary, u"Two"_s);
    EXPECT_EQ(service.shown[2].body, u"Rock"_s);
    const uint replaced[] = {service.shown[0].replaces, service.shown[1].replaces, service.shown[2].replaces};
    EXPECT_EQ(std::vector(std::begin(replaced), std::end(replaced)), (std::vector<uint>{0, 41, 41}));
}

TEST_F(DesktopNotifierTest, WithoutMarkupTextsStayAsTheyAreAndLongOnesAreCut)
{
    service.capabilities = {u"body"_s};
    ASSERT_TRUE(service.serveOn(bus.connect()));
    QSignalSpy shown(&notifier, &DesktopNotifier::shown);
    notifier.showSong(u"R&B\nRadio"_s, QString(300, u'a') + u" - "_s + QString(298, u'x') + u"😀😀"_s);
    ASSERT_TRUE(shown.wait(5000));
    const QString cut = QString(DesktopNotifier::MaxTextLength - 1, u'x') + QChar(0x2026);
    EXPECT_EQ(service.shown[0].summary, cut);
    EXPECT_EQ(service.shown[0].body,
              QString(DesktopNotifier::MaxTextLength - 1, u'a') + QChar(0x2026) + u"\nR&B Radio"_s);
}

TEST_F(DesktopNotifierTest, NoBusOrNoServiceShowsNothingUntilAServiceComes)
{
    DesktopNotifier unconnected(QDBusConnection(u"no bus"_s));
    unconnected.showSong(u"Jazz"_s, u"A - B"_s);
    notifier.showSong(u"Jazz"_s, u"A - B"_s);
    // The bus answers in order: once this answer is back, the song above has met no service.
    notifierBus.interface()->serviceOwner(u"org.freedesktop.DBus"_s);
    ASSERT_TRUE(service.serveOn(bus.connect()));
    // A song that met no service is dropped, not kept for later.
    ASSERT_TRUE(waitUntil(
        [&] {
            notifier.showSong(u"Jazz"_s, u"C - D"_s);
            return !service.shown.isEmpty();
        },
        5000));
    EXPECT_EQ(service.shown[0].summary, u"D"_s);
    EXPECT_EQ(service.shown[0].replaces, 0u);
}

