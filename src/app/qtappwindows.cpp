#include "app/qtappwindows.h"

#include "app/appstate.h"
#include "app/startup.h"
#include "recorder/frmtc.h"
#include "ui/frmstations.h"

#include <QApplication>

QtAppWindows::QtAppWindows(AppState &state) : m_state(state) {}

void QtAppWindows::InitCommonControls()
{
    QApplication::setStyle(QStringLiteral("Fusion"));
}

void QtAppWindows::LoadMainWindow()
{
    auto *window = new FrmStations(m_state);
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
    for (auto it = m_loaded.crbegin(); it != m_loaded.crend(); ++it) {
        if (QWidget *window = *it) {
            window->close();
            QCoreApplication::processEvents();
        }
    }
    m_loaded.clear();
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
