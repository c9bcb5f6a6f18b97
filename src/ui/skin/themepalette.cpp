#include "ui/skin/themepalette.h"

#include "skin/skinparam.h"

namespace {

QColor mix(const QColor &a, const QColor &b, qreal amountOfA)
{
    return QColor::fromRgbF(a.redF() * amountOfA + b.redF() * (1 - amountOfA),
                            a.greenF() * amountOfA + b.greenF() * (1 - amountOfA),
                            a.blueF() * amountOfA + b.blueF() * (1 - amountOfA));
}

} // namespace

QPalette themePalette(const ThemeColors &colors)
{
    const QColor window = QColor::fromRgba(colors.window);
    const QColor windowText = QColor::fromRgba(colors.windowText);
    const QColor base = QColor::fromRgba(colors.back);
    const QColor text = QColor::fromRgba(colors.fore);
    const QColor button = QColor::fromRgba(colors.backFixed);
    const QColor buttonText = QColor::fromRgba(colors.foreFixed);
    const bool dark = window.lightness() < 128;

    QPalette palette(button, window);
    palette.setColor(QPalette::Window, window);
    palette.setColor(QPalette::WindowText, windowText);
    palette.setColor(QPalette::Base, base);
    palette.setColor(QPalette::AlternateBase, QColor::fromRgba(colors.backAlt));
    palette.setColor(QPalette::Text, text);
    palette.setColor(QPalette::Button, button);
    palette.setColor(QPalette::ButtonText, buttonText);
    palette.setColor(QPalette::BrightText, QColor::fromRgba(colors.foreSel));
    palette.setColor(QPalette::Highlight, QColor::fromRgba(colors.backSel));
    palette.setColor(QPalette::HighlightedText, QColor::fromRgba(colors.foreSel));
    palette.setColor(QPalette::ToolTipBase, QColor::fromRgba(colors.backEdit));
    palette.setColor(QPalette::ToolTipText, QColor::fromRgba(colors.foreEdit));
    palette.setColor(QPalette::PlaceholderText, mix(text, base, 0.5));
    palette.setColor(QPalette::Link, QColor::fromRgba(colors.focusRect));
    // Frame and bevel shades, derived so that both light and dark themes keep their edges.
    palette.setColor(QPalette::Light, button.lighter(dark ? 130 : 112));
    palette.setColor(QPalette::Midlight, button.lighter(dark ? 115 : 106));
    palette.setColor(QPalette::Mid, button.darker(dark ? 115 : 125));
    palette.setColor(QPalette::Dark, button.darker(dark ? 140 : 160));
    palette.setColor(QPalette::Shadow, QColor(0, 0, 0, dark ? 200 : 120));

    // Disabled text stays readable but is clearly set back.
    const QColor disabledText = mix(windowText, window, 0.45);
    for (const QPalette::ColorRole role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, disabledText);
    palette.setColor(QPalette::Disabled, QPalette::Button, mix(button, window, 0.5));
    palette.setColor(QPalette::Disabled, QPalette::Base, window);
    palette.setColor(QPalette::Disabled, QPalette::Highlight,
                     mix(QColor::fromRgba(colors.backSel), window, 0.5));
    return palette;
}
