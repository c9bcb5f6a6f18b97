#include "controls/roundedframe.h"

#include <QAccessible>
#include <QApplication>
#include <QLabel>
#include <QVBoxLayout>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

TEST(RoundedFrame, KeepsItsContentsInsideThePanelAndIsAGroupNamedByItsTitle)
{
    RoundedFrame frame;
    auto *label = new QLabel(u"Inside"_s);
    (new QVBoxLayout(&frame))->addWidget(label);
    frame.resize(240, 120);
    frame.show();
    const int untitledTop = frame.contentsRect().top();
    frame.setTitle(u"Recording"_s);
    QApplication::processEvents();
    EXPECT_GT(frame.contentsRect().top(), untitledTop + frame.fontMetrics().height() / 2);
    EXPECT_TRUE(frame.panelRect().contains(label->geometry()));
    QAccessibleInterface *accessible = QAccessible::queryAccessibleInterface(&frame);
    EXPECT_EQ(accessible->role(), QAccessible::Grouping);
    EXPECT_EQ(accessible->text(QAccessible::Name), u"Recording"_s);
    frame.setAccessibleName(u"Now recording"_s);
    EXPECT_EQ(accessible->text(QAccessible::Name), u"Now recording"_s);
}

} // namespace
