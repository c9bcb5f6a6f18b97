#pragma once

#include "skin/skinparam.h"

#include <QObject>

#include <optional>

// Carries the colour theme to every window: the application palette (so
// dialogs, drop-down lists and tool tips follow it) and every self-drawn
// control, including those made later, which take the colours when first
// polished.
class ThemeApplier : public QObject, public ThemeListener
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(ThemeApplier)

public:
    // Needs the widget application; watches it until destroyed.
    ThemeApplier();
    ~ThemeApplier() override;

    void themeColorsChanged(const ThemeColors &colors) override;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    std::optional<ThemeColors> m_colors; // none until the first theme is applied
};
