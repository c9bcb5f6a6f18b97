#include "app/desktopshell.h"

#include <QDesktopServices>
#include <QProcess>
#include <QUrl>

bool DesktopShell::openDocument(const QString &address)
{
    return QDesktopServices::openUrl(QUrl::fromUserInput(address));
}

bool DesktopShell::startCommand(const QString &commandLine)
{
    QStringList words = QProcess::splitCommand(commandLine);
    if (words.isEmpty())
        return false;
    const QString program = words.takeFirst();
    return QProcess::startDetached(program, words);
}
