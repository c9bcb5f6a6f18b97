#pragma once

#include <QLibrary>
#include <QString>

// The skin layer: hands every window to the skin engine library "zelvanef"
// in the installation folder. A missing engine or skin file, or a skin the
// engine refuses, only turns the stored wish off: the program goes on with
// the system look.
class ModAppSkin
{
public:
    explicit ModAppSkin(QString installFolder);
    Q_DISABLE_COPY_MOVE(ModAppSkin)

    // Reads AppSkinOn (throws AppError when it is no Boolean) and starts the
    // engine when wanted and not yet running. Returns whether it runs.
    bool skinStartup();
    // Starts or switches the skin and stores the outcome in the settings.
    void startSkinWithFile(const QString &skinFile);
    void removeSkin();
    // The user turned skinning off: the system look, and no skin at the next start.
    void skinOff();

    bool skinOn() const { return m_skinOn; }
    bool skinRunning() const { return m_running; }
    const QString &skinFile() const { return m_skinFile; }
    const QString &installFolder() const { return m_installFolder; }
    QString defaultSkinFile() const;

private:
    template <typename Fn> Fn engineFunction(const char *name);

    QString m_installFolder;
    QLibrary m_engine;
    bool m_skinOn = false;
    bool m_running = false;
    QString m_skinFile;
};
