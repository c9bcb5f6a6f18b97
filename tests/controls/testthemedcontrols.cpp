#include "controls/hovertracker.h"
#include "controls/progresspainter.h"
#include "controls/roundedframe.h"
#include "controls/schemebutton.h"
#include "controls/themedprogressbar.h"
#include "base/themecolors.h"

#include <QAccessible>
#include <QImage>
#include <QLabel>
#include <QPainter>
#include <QSignalSpy>
#include <QVBoxLayout>
#include <QtTest/QTest>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

const ThemeColors themes[] = {Themes::paleBlue(), Themes::blackNight()};

// Contrast as the web's accessibility guidelines define it.
double contrast(const QColor &a, const QColor &b)
{
    const auto lum = [](const QColor &c) {
        const auto ch = [](double v) {
            return v <= 0.03928 ? v / 12.92 : std::pow((v + 0.055) / 1.055, 2.4);
        };
        return 0.2126 * ch(c.redF()) + 0.7152 * ch(c.greenF()) + 0.0722 * ch(c.blueF());
    };
    const double la = lum(a), lb = lum(b);
    return (std::max(la, lb) + 0.05) / (std::min(la, lb) + 0.05);
}

QImage paintBar(qreal fraction, const ProgressColors &colors)
{
    QImage image(200, 20, QImage::Format_ARGB32);
    image.fill(Qt::black);
    QPainter p(&image);
    paintProgress(p, image.rect(), fraction, {}, colors);
    return image;
}

TEST(ProgressPainter, FillsTheBarToItsFractionWithReadableColours)
{
    const ProgressColors colors = ProgressColors::fromTheme(themes[0]);
    for (const auto &[fraction, filled] :
         {std::pair{-0.5, 0}, {0.0, 0}, {0.25, 50}, {1.0, 200}, {3.0, 200}}) {
        const QImage image = paintBar(fraction, colors);
        int count = 0;
        for (int x = 0; x < image.width(); ++x)
            count += image.pixelColor(x, 10) == colors.chunk;
        EXPECT_NEAR(count, filled, 3) << fraction;
    }
    for (const ThemeColors &theme : themes) {
        const ProgressColors bar = ProgressColors::fromTheme(theme);
        EXPECT_GE(contrast(bar.textOnChunk, bar.chunk), 4.5);
        EXPECT_GE(contrast(bar.text, bar.track), 4.5);
        EXPECT_NE(bar.disabled().chunk, bar.chunk);
    }
}

TEST(ThemedProgressBar, SetsBackItsChunkWhenDisabled)
{
    ThemedProgressBar bar;
    bar.resize(200, 22);
    bar.setValue(100);
    const QPoint inChunk(20, 11);
    EXPECT_EQ(bar.grab().toImage().pixelColor(inChunk), bar.colors().chunk);
    bar.setEnabled(false);
    EXPECT_EQ(bar.grab().toImage().pixelColor(inChunk), bar.colors().disabled().chunk);
}

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

TEST(SchemeButton, TracksTheMouseAndTakesTheAccentWhenPressed)
{
    SchemeButton button(u"Record"_s);
    button.setThemeColors(themes[1]);
    button.show();
    QSignalSpy hovers(button.findChild<HoverTracker *>(), &HoverTracker::hoverChanged);
    const QColor face = QColor::fromRgba(themes[1].backFixed);
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
    EXPECT_EQ(button.faceColor(), QColor::fromRgba(themes[1].backSel));
    EXPECT_EQ(button.textColor(), QColor::fromRgba(themes[1].foreSel));
}

} // namespace
