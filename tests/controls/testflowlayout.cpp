#include "controls/flowlayout.h"

#include <QLineEdit>
#include <QPushButton>
#include <QSpacerItem>
#include <QWidget>

#include <gtest/gtest.h>

namespace {

// Three fixed 100 x 20 buttons, a gap, then a line edit that may grow.
class FlowLayoutTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        flow->setContentsMargins(0, 0, 0, 0);
        flow->setSpacing(10);
        for (int i = 0; i < 3; ++i) {
            auto *button = new QPushButton(&host);
            button->setFixedSize(100, 20);
            flow->addWidget(button);
            buttons << button;
        }
        flow->addItem(new QSpacerItem(30, 1, QSizePolicy::Fixed));
        edit = new QLineEdit(&host);
        edit->setFixedHeight(20);
        edit->setMinimumWidth(150);
        edit->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
        flow->addWidget(edit);
    }
    void layOut(int width) { flow->setGeometry(QRect(0, 0, width, flow->heightForWidth(width))); }
    QWidget host;
    FlowLayout *flow = new FlowLayout(&host);
    QList<QPushButton *> buttons;
    QLineEdit *edit = nullptr;
};

TEST_F(FlowLayoutTest, OneLineWhenItFitsWithTheExpandingItemTakingTheRest)
{
    layOut(800);
    EXPECT_EQ(flow->heightForWidth(800), 20);
    EXPECT_EQ(buttons[2]->geometry(), QRect(220, 0, 100, 20));
    // After the gap of 30 and two spacings.
    EXPECT_EQ(edit->geometry().left(), 370);
    EXPECT_EQ(edit->geometry().right(), 799);
}

TEST_F(FlowLayoutTest, WrapsWhereTheWidthEndsAndNeedsOnlyTheWidestItem)
{
    layOut(250);
    EXPECT_EQ(flow->heightForWidth(250), 20 * 3 + 10 * 2);
    EXPECT_EQ(buttons[1]->geometry().topLeft(), QPoint(110, 0));
    EXPECT_EQ(buttons[2]->geometry().topLeft(), QPoint(0, 30));
    EXPECT_EQ(edit->geometry(), QRect(0, 60, 250, 20));
    EXPECT_EQ(flow->minimumSize().width(), 150);
    // Where the gap would open a line, it takes no room.
    layOut(330);
    EXPECT_EQ(flow->heightForWidth(330), 50);
    EXPECT_EQ(edit->geometry(), QRect(0, 30, 330, 20));
    edit->hide();
    EXPECT_EQ(flow->heightForWidth(330), 20) << "hidden items take no room";
}

} // namespace
