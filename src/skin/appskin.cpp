#include "skin/appskin.h"

#include "base/apppaths.h"
#include "base/conversions.h"
#include "base/settingsstore.h"
#include "skin/engine/zelvanef.h"

#include <QFile>

ModAppSkin::ModAppSkin(QString installFolder)
    : m_installFolder(std::move(installFolder)), m_engine(m_installFolder + QStringLiteral("/zelvanef"))
{
}

QString ModAppSkin::defaultSkinFile() const
{
    return m_installFolder + QStringLiteral("/Zelvane.urf");
}

template <typename Fn> Fn ModAppSkin::engineFunction(const char *name)
{
    // A file that is no loadable library (another architecture, damaged) or
    // lacks the export counts as no engine at all.
    if (!m_engine.isLoaded() && !m_engine.load())
        return nullptr;
    return reinterpret_cast<Fn>(m_engine.resolve(name));
}

bool ModAppSkin::skinStartup()
{
    m_skinOn = SettingsStore::getBoolean(SettingsStore::AppSkinOn, true);
    if (Convert::booleanText(m_skinOn).toUpper() == QStringLiteral("TRUE") && !m_running) {
        QString file = SettingsStore::getSetting(SettingsStore::AppSkinFile);
        if (file.isEmpty())
            file = defaultSkinFile();
        startSkinWithFile(file);
    }
    return m_running;
}

void ModAppSkin::startSkinWithFile(const QString &skinFile)
{
    if (AppPaths::fileExists(skinFile)) {
        if (auto start = engineFunction<Zelvanef::SkinStartFn>("SkinStart");
            start && start(QFile::encodeName(skinFile).constData(), Zelvanef::StartOptions) == 0) {
            m_running = true;
            m_skinOn = true;
            m_skinFile = skinFile;
            SettingsStore::saveBoolean(SettingsStore::AppSkinOn, true);
            SettingsStore::saveSetting(SettingsStore::AppSkinFile, skinFile);
            return;
        }
    }
    // A skin that was running before the failed switch goes too, so that the
    // look and the stored setting agree.
    skinOff();
}

void ModAppSkin::removeSkin()
{
    if (!m_running)
        return;
    if (auto remove = engineFunction<Zelvanef::SkinRemoveFn>("SkinRemove"))
        remove();
    m_running = false;
    m_skinFile.clear();
}

void ModAppSkin::skinOff()
{
    removeSkin();
    m_skinOn = false;
    SettingsStore::saveBoolean(SettingsStore::AppSkinOn, false);
}
