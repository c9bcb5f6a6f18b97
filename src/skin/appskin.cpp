#include "skin/appskin.h"

#include "app/apppaths.h"
#include "app/conversions.h"
#include "app/settingsstore.h"

#include <QLibrary>

namespace {

using SkinStartFn = int (*)(const char *skinFile, int options);
using SkinRemoveFn = void (*)();

QString enginePath(const QString &installFolder)
{
    return installFolder + QStringLiteral("/zelvanef");
}

} // namespace

ModAppSkin::ModAppSkin(QString installFolder) : m_installFolder(std::move(installFolder)) {}

QString ModAppSkin::DefaultSkinFile() const
{
    return m_installFolder + QStringLiteral("/Zelvane.urf");
}

bool ModAppSkin::SkinStartup()
{
    m_skinOn = SettingsStore::GetBoolean(SettingsStore::AppSkinOn, true);
    if (Convert::BooleanText(m_skinOn).toUpper() == QStringLiteral("TRUE") && !m_running) {
        QString file = SettingsStore::GetSetting(SettingsStore::AppSkinFile);
        if (file.isEmpty())
            file = DefaultSkinFile();
        StartSkinWithFile(file);
    }
    return m_running;
}

void ModAppSkin::StartSkinWithFile(const QString &skinFile)
{
    QLibrary engine(enginePath(m_installFolder));
    if (AppPaths::FileExists(skinFile) && engine.load()) {
        if (auto start = reinterpret_cast<SkinStartFn>(engine.resolve("SkinStart"));
            start && start(skinFile.toLocal8Bit().constData(), 0) == 0) {
            m_running = true;
            SettingsStore::SaveBoolean(SettingsStore::AppSkinOn, true);
            SettingsStore::SaveSetting(SettingsStore::AppSkinFile, skinFile);
            return;
        }
    }
    SettingsStore::SaveBoolean(SettingsStore::AppSkinOn, false);
}

void ModAppSkin::RemoveSkin()
{
    if (!m_running)
        return;
    QLibrary engine(enginePath(m_installFolder));
    if (auto remove = reinterpret_cast<SkinRemoveFn>(engine.resolve("SkinRemove")))
        remove();
    m_running = false;
}
