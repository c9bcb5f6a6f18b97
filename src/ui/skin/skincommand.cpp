#include "ui/skin/skincommand.h"

#include "skin/appskin.h"
#include "ui/skin/frmskin2.h"
#include "skin/skinparam.h"

#include <QWidget>

SkinCommand::SkinCommand(ModAppSkin &skin, cSkinParam &theme) : m_skin(skin), m_theme(theme) {}

bool SkinCommand::run(QWidget *mainWindow, const std::function<void()> &redraw,
                      const std::function<int(QDialog &)> &runModal)
{
    FrmSkin2 dialog(m_skin.installFolder(), m_skin.skinFile(), mainWindow);
    dialog.setWindowTitle(FrmSkin2::tr("Select a Skin"));
    dialog.setWindowIcon(mainWindow->windowIcon());
    dialog.setModal(true);
    if ((runModal ? runModal(dialog) : dialog.exec()) != QDialog::Accepted)
        return false;
    apply(dialog.chosenTheme(), dialog.chosenSkin(), redraw);
    return true;
}

void SkinCommand::apply(int theme, const QString &skinName, const std::function<void()> &redraw)
{
    m_theme.setTheme(theme);
    if (redraw)
        redraw();
    if (skinName.isEmpty() || skinName == FrmSkin2::noSkin())
        m_skin.skinOff();
    else
        m_skin.startSkinWithFile(m_skin.installFolder() + u'/' + skinName);
}
