#pragma once

#include "controls/progresspainter.h"
#include "controls/themedcontrol.h"

#include <QProgressBar>

// A progress bar in the theme's colours with its text centred on it. Being a
// QProgressBar, it tells screen readers its role and value as the standard
// control does. Drawn horizontally.
class ThemedProgressBar : public QProgressBar, public ThemedControl
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(ThemedProgressBar)

public:
    explicit ThemedProgressBar(QWidget *parent = nullptr);

    void setThemeColors(const ThemeColors &colors) override;
    const ProgressColors &colors() const { return m_colors; }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    ProgressColors m_colors;
};
