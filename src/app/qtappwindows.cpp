#include "app/qtappwindows.h"

#include "app/accessibility.h"
#include "app/appstate.h"
#include "app/startup.h"
#include "recorder/frmtc.h"
#include "ui/qtmediaplayer.h"
#include "ui/frmstations.h"

#include <QApplication>

#include <utility>

QtAppWindows::QtAppWindows(AppState &state) : m_state(state)
{
    QCoreApplication::instance()->installEventFilter(&m_keys);
}

void QtAppWindows::InitCommonControls()
{
    QApplication::setStyle(QStringLiteral("Fusion"));
    Accessibility::Install();
}

void QtAppWindows::LoadMainWindow()
{
    auto *window = new FrmStations(m_state, {m_shell, m_keys, m_power}, QtMediaPlayer::Create);
    window->setAttribute(Qt::WA_DeleteOnClose);
    QObject::connect(window, &FrmStations::unloaded, window, [this] {
        if (m_startup)
            m_startup->Close();
    });
    m_mainWindow = track(window);
}

void QtAppWindows::ShowMainWindow()
{
    if (m_mainWindow)
        m_mainWindow->show();
}

void QtAppWindows::ShowRecorderWindow()
{
    auto *window = new FrmTC(m_state, m_power);
    QObject::connect(window, &FrmTC::unloaded, window, [this] {
        if (m_startup)
            m_startup->Close();
    });
    track(window)->show();
}

void QtAppWindows::ProcessEvents()
{
    QCoreApplication::processEvents();
}

void QtAppWindows::UnloadAllWindows()
{
    // A window's own unload may run the closing procedure, which comes back
    // here: work on a copy so that the nested call finds nothing left to do.
    const QList<QPointer<QWidget>> loaded = std::exchange(m_loaded, {});
    for (auto it = loaded.crbegin(); it != loaded.crend(); ++it) {
        if (QWidget *window = *it) {
            window->close();
            QCoreApplication::processEvents();
        }
    }
}

void QtAppWindows::EndProcess()
{
    QCoreApplication::exit(0);
}

QWidget *QtAppWindows::track(QWidget *window)
{
    m_loaded.append(window);
    return window;
}
