#include "controls/progresspainter.h"

#include "base/themecolors.h"
#include "controls/themedprogressbar.h"

#include <QImage>
#include <QPainter>

#include <gtest/gtest.h>

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

} // namespace
