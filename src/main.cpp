#include "app/appstate.h"
#include "app/messageboxprompt.h"
#include "app/qtappwindows.h"
#include "app/startup.h"
#include "app/terminationwatcher.h"
#include "skin/themeapplier.h"

#include <QApplication>

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    QApplication::setApplicationName(AppState::AppTitle);

    MessageBoxPrompt prompt;
    ThemeApplier themeApplier;
    AppState state(QCoreApplication::applicationDirPath(), prompt, TraceHook::fromEnvironment());
    state.skinParam.SetListener(&themeApplier);
    QtAppWindows windows(state);
    Startup startup(state, windows);
    windows.setStartup(&startup);
    TerminationWatcher watcher([&startup] { startup.Terminate(); });

    QStringList words = QCoreApplication::arguments();
    words.removeFirst();
    if (!startup.SubMain(words.join(u' ')))
        return 1;
    if (startup.HasClosed()) // a signal arrived while start-up was still running
        return 0;
    return QApplication::exec();
}
