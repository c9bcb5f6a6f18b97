#include "app/qtappwindows.h"

#include "app/accessibility.h"
#include "app/frmsettings.h"
#include "app/programparts.h"
#include "app/startup.h"
#include "ui/schedule/schedulingsetup.h"
#include "ui/recorder/frmtc.h"
#include "ui/player/qtmediaplayer.h"
#include "ui/stations/frmstations.h"

#include <QApplication>
#include <QUrl>

#include <utility>

FrmStations::Parts stationWindowParts(ProgramParts &parts)
{
    return {
        .catalogue = parts.catalogue,
        .filters = parts.filters,
        .appearance = parts.appearance,
        .trimTool = parts.trimTool,
        .playerTexts = parts.playerTexts,
        .launch = parts.launch,
        .trace = parts.trace,
        .installFolder = parts.installFolder,
        .openSettings =
            [&trimTool = parts.trimTool](QWidget *owner) {
                FrmSettings dialog(trimTool, owner);
                dialog.exec();
            },
    };
}

QtAppWindows::QtAppWindows(ProgramParts &parts) : m_parts(parts)
{
    QCoreApplication::instance()->installEventFilter(&m_keys);
}

void QtAppWindows::initCommonControls()
{
    QApplication::setStyle(QStringLiteral("Fusion"));
    Accessibility::install();
}

void QtAppWindows::loadMainWindow()
{
    StationCommands::Services services{
        .prompt = m_parts.prompt,
        .shell = m_shell,
        .keys = m_keys,
        .newRecorderWindow = [this] { return newRecorderWindow(); },
    };
    auto *window = new FrmStations(stationWindowParts(m_parts), std::move(services), QtMediaPlayer::create);
    window->setAttribute(Qt::WA_DeleteOnClose);
    QObject::connect(window, &FrmStations::unloaded, window, [this] {
        if (m_startup)
            m_startup->close();
    });
    m_mainWindow = track(window);
}

void QtAppWindows::showMainWindow()
{
    if (m_mainWindow)
        m_mainWindow->show();
}

void QtAppWindows::showRecorderWindow()
{
    FrmTC *window = newRecorderWindow();
    QObject::connect(window, &FrmTC::unloaded, window, [this] {
        if (m_startup)
            m_startup->close();
    });
    track(window)->show();
}

void QtAppWindows::processEvents()
{
    QCoreApplication::processEvents();
}

void QtAppWindows::unloadAllWindows()
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

void QtAppWindows::endProcess()
{
    QCoreApplication::exit(0);
}

FrmTC *QtAppWindows::newRecorderWindow()
{
    FrmTC::Hooks hooks;
    hooks.schedule = [this](const RecordingInputs &inputs, const std::function<QDateTime()> &now, QWidget *owner) {
        scheduleRecording(inputs, now, m_parts.prompt, SchedulingSetup{}, owner);
    };
    hooks.openFolder = [this](const QString &folder) {
        m_shell.openDocument(QUrl::fromLocalFile(folder).toString());
    };
    return new FrmTC(m_parts.prompt, m_parts.launch, m_power, nullptr, std::move(hooks));
}

QWidget *QtAppWindows::track(QWidget *window)
{
    m_loaded.append(window);
    return window;
}
