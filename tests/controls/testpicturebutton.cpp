#include "controls/picturebutton.h"

#include <QPainter>
#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

QIcon solid(QColor color)
{
    QPixmap pixmap(28, 28);
    pixmap.fill(color);
    return QIcon(pixmap);
}

class PictureButtonTest : public ::testing::Test
{
public:
    void SetUp() override
    {
        button.setPictures({solid(Qt::red), solid(Qt::green), solid(Qt::blue), solid(Qt::gray)});
        host.resize(120, 120);
        button.setGeometry(40, 40, 40, 40);
        host.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&host));
        away();
    }
    // The mouse on the window beside the button, so that coming back onto it is an entering.
    void away() { QTest::mouseMove(&host, QPoint(5, 5)); }
    QColor shown() { return button.grab().toImage().pixelColor(20, 20); }
    QWidget host;
    ucPictureButton button{&host};
};

TEST_F(PictureButtonTest, ShowsThePictureOfItsState)
{
    EXPECT_EQ(shown(), QColor(Qt::red)) << "normal";
    QTest::mouseMove(&button, QPoint(20, 20));
    EXPECT_EQ(shown(), QColor(Qt::green)) << "under the mouse";
    QTest::mousePress(&button, Qt::LeftButton, {}, QPoint(20, 20));
    EXPECT_EQ(shown(), QColor(Qt::blue)) << "held down";
    QTest::mouseRelease(&button, Qt::LeftButton, {}, QPoint(20, 20));
    EXPECT_EQ(shown(), QColor(Qt::green)) << "released, still under the mouse";
    button.setEnabled(false);
    EXPECT_EQ(shown(), QColor(Qt::gray)) << "disabled, though under the mouse";
}

TEST_F(PictureButtonTest, InToggleModeAClickKeepsItPressedUntilTheNext)
{
    button.setToggle(true);
    QSignalSpy clicks(&button, &ucPictureButton::clicked);
    const auto click = [&] {
        QTest::mouseMove(&button, QPoint(20, 20));
        QTest::mouseClick(&button, Qt::LeftButton, {}, QPoint(20, 20));
        away();
    };
    click();
    EXPECT_EQ(shown(), QColor(Qt::blue));
    click();
    EXPECT_EQ(shown(), QColor(Qt::red));
    ASSERT_EQ(clicks.size(), 2);
    EXPECT_EQ(clicks[0][0].toBool(), true);
    EXPECT_EQ(clicks[1][0].toBool(), false);
}

TEST_F(PictureButtonTest, GlyphPicturesCarryDoubleDensityPixels)
{
    QPainterPath square;
    square.addRect(8, 8, 8, 8);
    button.setGlyph(square);
    const QPixmap twice = button.getPictures().normal.pixmap(QSize(28, 28), 2.0);
    EXPECT_EQ(twice.size(), QSize(56, 56));
    EXPECT_EQ(twice.devicePixelRatio(), 2.0);
}

} // namespace
