#pragma once

#include <QString>

// The skin layer: hands every window to the skin engine library "zelvanef"
// in the installation folder. A missing engine or skin file only turns the
// stored wish off.
class ModAppSkin
{
public:
    explicit ModAppSkin(QString installFolder);

    // Reads AppSkinOn (throws AppError when it is no Boolean) and starts the
    // engine when wanted and not yet running. Returns whether it runs.
    bool SkinStartup();
    void StartSkinWithFile(const QString &skinFile);
    void RemoveSkin();

    bool SkinOn() const { return m_skinOn; }
    bool SkinRunning() const { return m_running; }
    QString DefaultSkinFile() const;

private:
    QString m_installFolder;
    bool m_skinOn = false;
    bool m_running = false;
};
