#pragma once

#include <QString>

#include <functional>

class ModAppSkin;
class QDialog;
class QWidget;
class cSkinParam;

// The main window's Skin command: asks for a theme and a skin with the skin
// chooser and applies the answer.
class SkinCommand
{
public:
    SkinCommand(ModAppSkin &skin, cSkinParam &theme);

    // Shows the chooser modally over the main window. Unless cancelled: applies
    // the theme, lets the main window re-apply its own colours (redraw), then
    // starts the chosen skin or turns skinning off. Returns false when cancelled.
    // runModal shows the chooser and gives its result (QDialog::exec when empty).
    bool run(QWidget *mainWindow, const std::function<void()> &redraw,
             const std::function<int(QDialog &)> &runModal = {});

    // The part after the dialog: skinName is a file in the installation
    // folder to start; FrmSkin2::noSkin(), or empty when nothing was chosen,
    // turns skinning off.
    void apply(int theme, const QString &skinName, const std::function<void()> &redraw);

private:
    ModAppSkin &m_skin;
    cSkinParam &m_theme;
};
