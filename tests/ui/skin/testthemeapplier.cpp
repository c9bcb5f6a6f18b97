#include "controls/roundedframe.h"
#include "controls/schemebutton.h"
#include "controls/themedprogressbar.h"
#include "skin/skinparam.h"
#include "ui/skin/themeapplier.h"

#include <QApplication>
#include <QDialog>
#include <QHBoxLayout>
#include <QLabel>
#include <QToolTip>
#include <QtTest/QTest>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

// Counts the paint events of the widgets it watches.
class PaintCounter : public QObject
{
public:
    QHash<QObject *, int> paints;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::Paint)
            ++paints[watched];
        return false;
    }
};

QColor pixel(QWidget *widget, QPoint at)
{
    return widget->grab().toImage().pixelColor(at);
}

class ThemeTest : public ::testing::Test
{
public:
    ThemeTest()
    {
        themes.setListener(&applier);
        auto *layout = new QHBoxLayout(&window);
        bar->setValue(100);
        (new QHBoxLayout(frame))->addWidget(new QLabel(u"Inside"_s));
        for (QWidget *control : std::initializer_list<QWidget *>{bar, frame, button}) {
            layout->addWidget(control);
            control->installEventFilter(&counter);
        }
        window.resize(480, 90);
        window.show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&window));
    }
    ~ThemeTest() override { QApplication::setPalette(QPalette()); }
    // Every self-drawn control paints again and shows the colours of the theme.
    void expectDrawnIn(const ThemeColors &colors)
    {
        for (QWidget *control : std::initializer_list<QWidget *>{bar, frame, button})
            EXPECT_TRUE(QTest::qWaitFor([&] { return counter.paints.value(control) > 0; }))
                << control->metaObject()->className();
        EXPECT_EQ(pixel(bar, bar->rect().center() + QPoint(bar->width() / 3, 0)),
                  QColor::fromRgba(colors.progressBar));
        EXPECT_EQ(pixel(frame, frame->panelRect().center()), QColor::fromRgba(colors.backAlt));
        EXPECT_EQ(pixel(button, QPoint(8, button->height() / 2)), QColor::fromRgba(colors.backFixed));
        EXPECT_EQ(QApplication::palette().color(QPalette::Window), QColor::fromRgba(colors.window));
        EXPECT_EQ(QToolTip::palette().color(QPalette::ToolTipText), QColor::fromRgba(colors.foreEdit));
    }
    ThemeApplier applier;
    cSkinParam themes;
    PaintCounter counter;
    QWidget window;
    ThemedProgressBar *bar = new ThemedProgressBar;
    RoundedFrame *frame = new RoundedFrame(u"Recording"_s);
    SchemeButton *button = new SchemeButton(u"Record"_s);
};

TEST_F(ThemeTest, AThemeChangeRedrawsEveryControlAndEveryWindow)
{
    for (const int theme : {cSkinParam::BlackNight, cSkinParam::PaleBlue, cSkinParam::BlackNight}) {
        counter.paints.clear();
        themes.setTheme(theme);
        expectDrawnIn(themes.colors());
    }
    // Windows opened later take the theme too.
    QDialog dialog;
    SchemeButton later(u"Later"_s, &dialog);
    dialog.show();
    EXPECT_EQ(dialog.palette().color(QPalette::Window), QColor::fromRgba(themes.colors().window));
    EXPECT_EQ(pixel(&later, QPoint(8, later.height() / 2)), QColor::fromRgba(themes.colors().backFixed));
}

TEST_F(ThemeTest, AnUnknownThemeIsKeptButChangesNoColour)
{
    themes.setTheme(cSkinParam::PaleBlue);
    QCoreApplication::processEvents();
    counter.paints.clear();
    themes.setTheme(7);
    EXPECT_EQ(themes.themeIndex(), 7);
    EXPECT_EQ(themes.colors().window, Themes::paleBlue().window);
    QCoreApplication::processEvents();
    EXPECT_TRUE(counter.paints.isEmpty());
    EXPECT_EQ(QApplication::palette().color(QPalette::Window), QColor::fromRgba(themes.colors().window));
}

} // namespace
