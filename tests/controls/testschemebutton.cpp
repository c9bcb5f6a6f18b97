#include "controls/schemebutton.h"

#include "base/themecolors.h"
#include "controls/hovertracker.h"

#include <QApplication>
#include <QSignalSpy>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

TEST(SchemeButton, TracksTheMouseAndTakesTheAccentWhenPressed)
{
    const ThemeColors night = Themes::blackNight();
    SchemeButton button(u"Record"_s);
    button.setThemeColors(night);
    button.show();
    QSignalSpy hovers(button.findChild<HoverTracker *>(), &HoverTracker::hoverChanged);
    const QColor face = QColor::fromRgba(night.backFixed);
    EXPECT_EQ(button.faceColor(), face);
    QEvent enter(QEvent::Enter), leave(QEvent::Leave);
    QApplication::sendEvent(&button, &enter);
    EXPECT_TRUE(button.isHovered());
    const QColor hovered = button.faceColor();
    EXPECT_NE(hovered, face);
    QApplication::sendEvent(&button, &enter);
    QApplication::sendEvent(&button, &leave);
    EXPECT_EQ(button.faceColor(), face);
    EXPECT_EQ(hovers.size(), 2);
    // A control turned off under the mouse forgets it.
    QApplication::sendEvent(&button, &enter);
    button.setEnabled(false);
    EXPECT_FALSE(button.isHovered());
    button.setEnabled(true);
    button.setDown(true);
    EXPECT_EQ(button.faceColor(), QColor::fromRgba(night.backSel));
    EXPECT_EQ(button.textColor(), QColor::fromRgba(night.foreSel));
}

} // namespace
