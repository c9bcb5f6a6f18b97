#include "recorder/launchswitches.h"

#include "recorder/stopreason.h"

#include <QCoreApplication>

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

CommandLineInfo commandLineInfo(const QStringList &arguments)
{
    for (const QString &argument : arguments) {
        if (argument == u"--help")
            return CommandLineInfo::Help;
        if (argument == u"--version")
            return CommandLineInfo::Version;
    }
    return CommandLineInfo::None;
}

QString launchHelpText()
{
    return QCoreApplication::translate(
               "LaunchSwitches",
               "Usage: tunecatch                         the station list\n"
               "       tunecatch -a ADDRESS [SWITCHES]   record at once, without the station list\n"
               "\n"
               "Any command line of two characters or more records at once. It is split at\n"
               "single blanks; a switch that takes words takes them up to the next word that\n"
               "begins with \"-\". Switches are case-sensitive, unknown words are ignored.\n"
               "\n"
               "  -a ADDRESS     the stream or playlist address (words joined without blanks)\n"
               "  -w NAME        the station name (words joined with single blanks)\n"
               "  -s TEMPLATE    the file-name template: %STATION%, %DATE%, %TIME%, %SONG%;\n"
               "                 .\\ or ./ at its start is the recordings folder\n"
               "                 (default .\\%STATION%_%DATE%_%TIME%.mp3)\n"
               "  -n             one file per song\n"
               "  -t MINUTES     stop after so many minutes\n"
               "  -b MEGABYTES   stop after so many megabytes (the later of -t and -b applies)\n"
               "  -xh            hibernate when the recording ends by itself\n"
               "  -xs            power off when the recording ends by itself\n"
               "  -m             open the monitor panel\n"
               "  -v             start with the recorder window minimised\n"
               "  --help         print this and exit\n"
               "  --version      print the version and exit\n"
               "\n"
               "Every status line goes to standard error. Exit status:\n"
               "  %1  the recording reached its limit or was stopped\n"
               "  %2  a switch or the address was wrong\n"
               "  %3  the station could not be reached or refused\n"
               "  %4  the output could not be written (folder, disk full)\n"
               "  %5  the station dropped and did not come back\n")
        .arg(ExitStatus::Done)
        .arg(ExitStatus::BadSwitches)
        .arg(ExitStatus::Unreachable)
        .arg(ExitStatus::OutputFailed)
        .arg(ExitStatus::Dropped);
}
