#include "app/qtappwindows.h"

#include "app/accessibility.h"
#include "app/frmsettings.h"
#include "app/programparts.h"
#include "app/startup.h"
#include "base/appinfo.h"
#include "base/apppaths.h"
#include "base/prompt.h"
#include "ui/history/frmhistory.h"
#include "ui/schedule/schedulingsetup.h"
#include "ui/recorder/frmtc.h"
#include "ui/player/qtmediaplayer.h"
#include "ui/stations/frmstations.h"

#include <QApplication>
#include <QUrl>

#include <cstdio>
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
    FrmStations::Parts windowParts = stationWindowParts(m_parts);
    windowParts.openHistory = [this](QWidget *owner) { showHistoryWindow(owner); };
    auto *window = new FrmStations(std::move(windowParts), std::move(services), QtMediaPlayer::create);
    window->setAttribute(Qt::WA_DeleteOnClose);
    desktop().attach(*window);
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
    if (!m_desktopMessage.isEmpty())
        tell(std::exchange(m_desktopMessage, {}));
}

void QtAppWindows::showRecorderWindow()
{
    FrmTC *window = newRecorderWindow();
    m_launchReport.watch(window->recorder());
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
    QCoreApplication::exit(m_launchReport.exitStatus());
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
    auto *window = new FrmTC(m_parts.prompt, m_parts.launch, m_power, nullptr, std::move(hooks));
    desktop().attach(window->recorder());
    return window;
}

DesktopParts &QtAppWindows::desktop()
{
    if (m_desktop)
        return *m_desktop;
    m_desktop = std::make_unique<DesktopParts>(DesktopParts::Options{
        .historyPath = HistoryStore::pathIn(AppPaths::dataFolder()),
        .bus = QDBusConnection::sessionBus(),
        .notificationsOn = &FrmSettings::songNotifications,
    });
    QObject::connect(m_desktop.get(), &DesktopParts::problem, m_desktop.get(),
                     [this](const QString &message) { tell(message); });
    m_desktopMessage = m_desktop->open();
    if (m_parts.launch.launchMode && !m_desktopMessage.isEmpty())
        tell(std::exchange(m_desktopMessage, {}));
    return *m_desktop;
}

void QtAppWindows::tell(const QString &message)
{
    // An unattended recording asks no one: the message goes to its log.
    if (m_parts.launch.launchMode)
        std::fprintf(stderr, "%s\n", qPrintable(message));
    else
        m_parts.prompt.message(message, AppInfo::title, Prompt::Icon::Warning);
}

void QtAppWindows::showHistoryWindow(QWidget *owner)
{
    if (!m_historyWindow) {
        m_historyWindow = new FrmHistory(desktop().history(), m_shell, m_parts.prompt, {}, owner);
        m_historyWindow->setAttribute(Qt::WA_DeleteOnClose);
    }
    m_historyWindow->show();
    m_historyWindow->raise();
    m_historyWindow->activateWindow();
}

QWidget *QtAppWindows::track(QWidget *window)
{
    m_loaded.append(window);
    return window;
}
