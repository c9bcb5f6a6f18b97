#include "app/qtappwindows.h"

#include "app/appstate.h"
#include "app/startup.h"
#include "ui/frmstations.h"

#include <QApplication>
#include <QCloseEvent>
#include <QLabel>
#include <QVBoxLayout>

#include <functional>

namespace {

// A top-level window that hands its unload to the closing procedure.
class ClosingWindow : public QWidget
{
public:
    explicit ClosingWindow(std::function<void()> onUnload) : m_onUnload(std::move(onUnload))
    {
        setAttribute(Qt::WA_DeleteOnClose);
    }

protected:
    void closeEvent(QCloseEvent *event) override
    {
        event->accept();
        if (m_onUnload)
            m_onUnload();
    }

private:
    std::function<void()> m_onUnload;
};

} // namespace

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
    auto *window = new ClosingWindow([this] {
        if (m_startup)
            m_startup->Close();
    });
    window->setObjectName(QStringLiteral("FrmTC"));
    window->setWindowTitle(AppState::AppTitle);
    auto *layout = new QVBoxLayout(window);
    auto *argument = new QLabel(m_state.CommandArg, window);
    argument->setObjectName(QStringLiteral("lblCommandArg"));
    argument->setTextInteractionFlags(Qt::TextSelectableByMouse);
    layout->addWidget(argument);
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
