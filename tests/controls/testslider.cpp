#include "controls/slider.h"

#include <QLabel>
#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

class SliderTest : public ::testing::Test
{
public:
    void SetUp() override
    {
        slider.setRange(0, 100);
        slider.setValue(50);
        slider.resize(116, 20);
        slider.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&slider));
        tip = slider.findChild<QLabel *>(u"ucSliderTip"_s);
        ASSERT_NE(tip, nullptr);
    }
    // The groove runs from x 8 to x 108: one value per pixel.
    static QPoint at(int value) { return {8 + value, 10}; }
    ucSlider slider;
    QLabel *tip = nullptr;
};

TEST_F(SliderTest, DraggingShowsTheValueInATipThatGoesOnRelease)
{
    QSignalSpy values(&slider, &ucSlider::valueChanged);
    EXPECT_FALSE(tip->isVisible());
    // Taken by the handle, a little off its centre: the handle does not jump.
    QTest::mousePress(&slider, Qt::LeftButton, {}, at(50) + QPoint(3, 0));
    EXPECT_EQ(slider.value(), 50);
    EXPECT_TRUE(tip->isVisible());
    EXPECT_EQ(tip->text(), u"50"_s);
    QTest::mouseMove(&slider, at(80) + QPoint(3, 0));
    EXPECT_EQ(slider.value(), 80);
    EXPECT_EQ(tip->text(), u"80"_s);
    QTest::mouseRelease(&slider, Qt::LeftButton, {}, at(80) + QPoint(3, 0));
    EXPECT_FALSE(tip->isVisible());
    EXPECT_EQ(values.size(), 1);
    // Anywhere else on the groove the handle comes to the mouse.
    QTest::mousePress(&slider, Qt::LeftButton, {}, at(10));
    EXPECT_EQ(slider.value(), 10);
    QTest::mouseMove(&slider, at(-30));
    EXPECT_EQ(slider.value(), 0) << "held at the end";
    QTest::mouseRelease(&slider, Qt::LeftButton, {}, at(-30));
    EXPECT_FALSE(tip->isVisible());
}

} // namespace
