#include "recorder/launchswitches.h"

#include <QStringList>

namespace {

// The tokens after index i up to the next one that begins with "-".
QStringList collect(const QStringList &tokens, qsizetype i)
{
    QStringList values;
    for (qsizetype j = i + 1; j < tokens.size() && !tokens[j].startsWith(u'-'); ++j)
        values.append(tokens[j]);
    return values;
}

std::optional<QString> nextToken(const QStringList &tokens, qsizetype i)
{
    if (i + 1 < tokens.size())
        return tokens[i + 1];
    return std::nullopt;
}

} // namespace

LaunchSwitches ParseLaunchSwitches(const QString &commandLine)
{
    LaunchSwitches result;
    if (commandLine.size() < 2)
        return result;
    const QStringList tokens = commandLine.split(u' ');
    for (qsizetype i = 0; i < tokens.size(); ++i) {
        const QString &token = tokens[i];
        if (token == u"-a") {
            result.Stream = collect(tokens, i).join(QString());
        } else if (token == u"-s") {
            result.Save = collect(tokens, i).join(QString());
        } else if (token == u"-w") {
            result.Station = collect(tokens, i).join(u' ');
        } else if (token == u"-t") {
            result.Minutes = nextToken(tokens, i);
            result.SelectedBreak = 0;
        } else if (token == u"-b") {
            result.Megabytes = nextToken(tokens, i);
            result.SelectedBreak = 1;
        } else if (token == u"-n") {
            result.SingleSong = true;
        } else if (token == u"-xh") {
            result.Hibernate = true;
        } else if (token == u"-xs") {
            result.ShutDown = true;
        } else if (token == u"-m") {
            ++result.MonitorClicks;
        } else if (token == u"-v") {
            result.Minimised = true;
        }
    }
    return result;
}
